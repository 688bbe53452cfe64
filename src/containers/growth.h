// Growth rules: the capacity of the buffer that replaces a full one.
//
// Sizes are 32-bit fields in the records, and are computed in 64 bits. The caller rejects a need beyond 32 bits before
// it calls these functions; if slack would take a capacity beyond 32 bits, the slack is cut off.

#ifndef TESSARIN_CONTAINERS_GROWTH_H
#define TESSARIN_CONTAINERS_GROWTH_H

#include <bit>
#include <cstdint>

namespace Tessarin {

inline constexpr std::uint64_t kLargestSize = UINT32_MAX;

/// The nearest number that a 32-bit float can have, in integers: the host's rounding must not matter. A tie goes to the
/// even one. The number may be a multiple of a fraction: rounding keeps 24 bits wherever the point is.
[[nodiscard]] constexpr std::uint64_t RoundedToFloat(std::uint64_t number) {
    constexpr int kFloatBits = 24;
    const int excess = static_cast<int>(std::bit_width(number)) - kFloatBits;
    if (excess <= 0) return number;
    const std::uint64_t unit = std::uint64_t{1} << excess, rest = number % unit, below = number - rest;
    const bool is_odd = (below / unit) % 2 == 1;
    return rest > unit / 2 || (rest == unit / 2 && is_odd) ? below + unit : below;
}

/// Twice the need if it is below the limit, else one and a half times the need. All in bytes.
[[nodiscard]] inline std::uint32_t ProportionalCapacity(std::uint32_t need, std::uint32_t doubling_limit) {
    if (need < doubling_limit) return need > kLargestSize / 2 ? UINT32_MAX : need * 2;
    // Rounded like 32-bit floats, as hosts see that in capacities above 16 MiB.
    const std::uint64_t grown = RoundedToFloat(RoundedToFloat(need) * 3) / 2;
    return grown > kLargestSize ? UINT32_MAX : static_cast<std::uint32_t>(grown);
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
