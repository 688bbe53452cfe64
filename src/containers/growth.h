/// How large a full buffer's successor is.
///
/// Sizes are 32-bit fields in the records. They are computed in 64 bits: a need beyond 32 bits is refused by the caller
/// before it asks here, and the slack on top of a need that fits is cut where it would pass them.

#ifndef TESSARIN_CONTAINERS_GROWTH_H
#define TESSARIN_CONTAINERS_GROWTH_H

#include <cstdint>

namespace Tessarin {

inline constexpr std::uint64_t kLargestSize = UINT32_MAX;

/// Twice the need below the limit, else one and a half times. Both in bytes.
[[nodiscard]] inline std::uint32_t ProportionalCapacity(std::uint32_t need, std::uint32_t doubling_limit) {
    if (need < doubling_limit) return need > kLargestSize / 2 ? UINT32_MAX : need * 2;
    // In 32-bit floats, whose rounding shows in capacities above 16 MiB. Volatile, for processors that would carry the
    // conversion and the product in wider registers.
    volatile float rounded = static_cast<float>(need);
    volatile float product = rounded * 1.5F;
    float grown = product;
    return grown >= 4294967296.0F ? UINT32_MAX : static_cast<std::uint32_t>(grown);
}

/// Above the threshold one threshold more than the need, which bounds what a very large buffer wastes.
[[nodiscard]] inline std::uint32_t ThresholdCapacity(std::uint32_t need, std::uint32_t threshold,
                                                     std::uint32_t doubling_limit) {
    if (need <= threshold) return ProportionalCapacity(need, doubling_limit);
    std::uint64_t grown = std::uint64_t{need} + threshold;
    return grown > kLargestSize ? UINT32_MAX : static_cast<std::uint32_t>(grown);
}

} // namespace Tessarin

#endif
