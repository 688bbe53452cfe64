// Growth rules: the capacity of the buffer that replaces a full one.
//
// Sizes are 32-bit fields in the records, and are computed in 64 bits. The caller rejects a need beyond 32 bits before
// it calls these functions; if slack would take a capacity beyond 32 bits, the slack is cut off.

#ifndef TESSARIN_CONTAINERS_GROWTH_H
#define TESSARIN_CONTAINERS_GROWTH_H

#include <cstdint>

namespace Tessarin {

inline constexpr std::uint64_t kLargestSize = UINT32_MAX;

/// Twice the need if it is below the limit, else one and a half times the need. All in bytes.
[[nodiscard]] inline std::uint32_t ProportionalCapacity(std::uint32_t need, std::uint32_t doubling_limit) {
    if (need < doubling_limit) return need > kLargestSize / 2 ? UINT32_MAX : need * 2;
    // Computed in 32-bit floats: hosts see their rounding in capacities above 16 MiB. Volatile, because some processors
    // would keep the conversion and the product in wider registers.
    const volatile float rounded = static_cast<float>(need);
    const volatile float product = rounded * 1.5F;
    const float grown = product;
    return grown >= 4294967296.0F ? UINT32_MAX : static_cast<std::uint32_t>(grown);
}

/// ProportionalCapacity if the need is at most the threshold. Beyond it, the need plus one threshold, so that a very
/// large buffer doesn't waste more than that.
[[nodiscard]] inline std::uint32_t ThresholdCapacity(std::uint32_t need, std::uint32_t threshold,
                                                     std::uint32_t doubling_limit) {
    if (need <= threshold) return ProportionalCapacity(need, doubling_limit);
    const std::uint64_t grown = std::uint64_t{need} + threshold;
    return grown > kLargestSize ? UINT32_MAX : static_cast<std::uint32_t>(grown);
}

} // namespace Tessarin

#endif
