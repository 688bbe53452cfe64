/// \file
/// A numeric range as configuration files write it: `[1,5]`, `(0.5,2]`, `[0,100)`. C++ only.

#ifndef TESSARIN_INTERVAL_H
#define TESSARIN_INTERVAL_H

#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

/// The flags in Interval::flags.
enum IntervalFlags : std::uint32_t {
    INTERVAL_LOWER_REAL = 1, ///< the lower bound was written with a `.` after its first byte
    INTERVAL_UPPER_REAL = 2, ///< likewise the upper one
    INTERVAL_LOWER_OPEN = 4, ///< opened with `(`: the lower bound itself is outside
    INTERVAL_UPPER_OPEN = 8  ///< closed with `)`: the upper bound itself is outside
};

/// A range, used by value. Each bound is stored as a float and as an integer. If the bound was written as a real, the
/// integer is its truncation towards zero (limited to the range of 32 bits, 0 for a NaN); if it was written as an
/// integer, the float is the one nearest to it. With all fields zero it is the empty value, `[0,0]`.
///
/// The text form is found anywhere in a text: the first `(` or `[`, after it the first `)` or `]`, and between them the
/// first `,`. Brackets may be mixed; bytes around them are ignored. A bound begins with its first byte that isn't a
/// blank and ends before the next blank. With a `.` anywhere but at its first byte it is a real, otherwise an integer,
/// whose digits end at the first byte that isn't one. A bound of 64 bytes or more counts as 0, a missing one too.
/// Numbers read the same in every locale.
///
/// Results of type `unsigned char` are 1 or 0.
///
/// Threads: an object is used by one thread at a time, or read by many; the static members may run on any thread.
class TESSARIN_API Interval {
public:
    float lower;            ///< the lower bound, if it was written as a real
    float upper;            ///< likewise the upper one
    std::int32_t lower_int; ///< the lower bound, if it was written as an integer
    std::int32_t upper_int; ///< likewise the upper one
    std::uint32_t flags;    ///< IntervalFlags

    /// The empty value.
    Interval();
    ~Interval();
    /// A copy.
    Interval(const Interval& other) = default;
    /// Copies all fields.
    Interval& operator=(const Interval& other);

    /// Makes it the empty value.
    void Reset();

    /// Reads the first interval in a text and puts its bounds in order: bounds that are reversed by more than
    /// 1.1920929e-7 are exchanged with all that belongs to them, their flags too.
    /// text     ends with a NUL; or has `length` bytes, which are all read
    /// returns  1; 0 for a text without an interval, the object then empty, and for null, the object then unchanged
    unsigned char Load(const char* text);
    unsigned char Load(const char* text, std::uint32_t length);

    /// Whether a number is inside. An integer is compared exactly with a bound that was written as one; a float is
    /// compared with a tolerance of 1.1920929e-7. Rounding loses the tolerance in values above 2: a closed bound then
    /// doesn't include its own value.
    /// returns  0 also if `flags` holds bits that aren't IntervalFlags
    unsigned char Hit(std::int32_t value) const;
    unsigned char Hit(float value) const;

    /// The number, or the bound that it is beyond. Open flags are ignored: the result may be a bound for which Hit
    /// returns 0.
    std::int32_t Clamp(std::int32_t value) const;
    float Clamp(float value) const;

    /// Copies out the bounds as they were written. The integers pass through a float, which is exact up to 2^24; beyond
    /// 32 bits they are limited to that range. Always 1.
    unsigned char To(std::int32_t& lower_bound, std::int32_t& upper_bound);
    unsigned char To(float& lower_bound, float& upper_bound);

    /// One of a hundred values: the lower bound and 99 even steps above it. The upper bound is never reached; open
    /// flags are ignored. All draws of a process come from one seed, which starts from the clock.
    /// Threads: any; each draw takes its own number from the seed.
    float Random() const;

    /// Whether a text has an interval in it, as Load finds it; 0 for null.
    static unsigned char CanToInterval(const char* text);
    static unsigned char CanToInterval(const char* text, std::uint32_t length);

private:
    /// Load, without putting the bounds in order.
    unsigned char _Load(const char* text, std::uint32_t length);
    static unsigned char _CanToInterval(const char* text, std::uint32_t length);
    /// Reads one bound.
    static void _GetValue(const char* text, std::uint32_t length, float& float_value, std::int32_t& int_value,
                          std::int32_t& is_real);
    /// The number in the bytes from `start` up to but not including `end`; 0 for no bytes and for 64 or more.
    static std::int32_t _GetInteger(const char* text, std::uint32_t start, std::uint32_t end);
    static float _GetFloat(const char* text, std::uint32_t start, std::uint32_t end);
    /// The position of the first such byte at or after `position`; `length` if there is none, `position` if it isn't
    /// below `length`.
    static std::uint32_t _NextPosIsLeftBracket(const char* text, std::uint32_t length, std::uint32_t position);
    static std::uint32_t _NextPosIsRightBracket(const char* text, std::uint32_t length, std::uint32_t position);
    static std::uint32_t _NextPosIsSeparator(const char* text, std::uint32_t length, std::uint32_t position);
};

} // namespace Configure

#endif
