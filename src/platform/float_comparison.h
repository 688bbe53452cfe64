// Comparisons of floats by their bits, with the results that the operators give in the default environment. The
// operators themselves depend on the host's environment: they take denormals for zero if it flushes them, and a NaN may
// trap.

#ifndef TESSARIN_PLATFORM_FLOAT_COMPARISON_H
#define TESSARIN_PLATFORM_FLOAT_COMPARISON_H

#include <bit>
#include <cstdint>

namespace Tessarin {

inline bool IsFinite(float number) { return std::bit_cast<std::uint32_t>(number) << 1 < 0xFF000000U; }
inline bool IsNan(float number) { return std::bit_cast<std::uint32_t>(number) << 1 > 0xFF000000U; }

/// The bits as an integer that is in the same order as the floats that aren't NaN; 0 for both zeros.
inline std::int32_t OrderOf(float number) {
    const auto bits = std::bit_cast<std::int32_t>(number);
    return bits < 0 ? -(bits & INT32_MAX) : bits;
}

/// one == other: false for a NaN, and the two zeros are equal.
inline bool IsEqual(float one, float other) { return OrderOf(one) == OrderOf(other) && !IsNan(one); }

/// one > other: false if one of them is a NaN.
inline bool IsGreater(float one, float other) { return OrderOf(one) > OrderOf(other) && !IsNan(one) && !IsNan(other); }

} // namespace Tessarin

#endif
