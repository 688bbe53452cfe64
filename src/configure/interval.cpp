// Intervals: parsing, tests, conversions and random numbers. The last bit of a float decides what is inside an
// interval, so each step of the arithmetic is in single precision: each sum is stored in a volatile, which wider
// registers and fused operations can't bypass.
//
// Invariants:
//  - Hosts may write to the fields, so no operation relies on them: for any bits, even a nan or bounds out of order,
//    each operation returns something and no conversion is undefined.
//  - A scan returns at most `length`, and adding to a position that it found stays within `length`: nothing wraps, even
//    for the largest length of 32 bits.
//  - The seed of Random is the only state outside an object.

#include "tessarin/interval.h"

#include "platform/float_comparison.h"
#include "platform/float_environment.h"
#include "platform/number_text.h"

#include <atomic>
#include <cstring>
#include <ctime>
#include <limits>
#include <utility>

namespace Configure {
namespace {

using Tessarin::IsEqual;
using Tessarin::IsGreater;
using Tessarin::IsNan;
using Tessarin::NearestFloat;

constexpr float kTolerance = 1.1920929e-7F;
constexpr std::uint32_t kMostTokenBytes = 63;
constexpr std::uint32_t kAllFlags =
    INTERVAL_LOWER_REAL | INTERVAL_UPPER_REAL | INTERVAL_LOWER_OPEN | INTERVAL_UPPER_OPEN;

bool IsWhite(char byte) { return byte == '\t' || byte == '\n' || byte == '\r' || byte == ' '; }

std::uint32_t LengthOf(const char* text) {
    const std::size_t length = std::strlen(text);
    return length > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(length);
}

/// The position of the first of either byte from `position` on, or `length`.
std::uint32_t NextOf(char one, char other, const char* text, std::uint32_t length, std::uint32_t position) {
    while (position < length && text[position] != one && text[position] != other) ++position;
    return position;
}

/// Rounds towards zero, clamped to the range of an integer; 0 for a nan.
std::int32_t Truncate(float value) {
    constexpr float kBeyond = 2147483648.0F;
    if (!IsGreater(kBeyond, value)) return IsNan(value) ? 0 : std::numeric_limits<std::int32_t>::max();
    if (IsGreater(-kBeyond, value)) return std::numeric_limits<std::int32_t>::min();
    const Tessarin::DefaultFloatEnvironment environment; // a fraction sets a flag
    const volatile float operand = value;
    const volatile auto truncated = static_cast<std::int32_t>(operand);
    return truncated;
}

float Sum(float one, float other) {
    const Tessarin::DefaultFloatEnvironment environment;
    const volatile float left = one, right = other;
    const volatile float sum = left + right;
    return sum;
}

std::uint32_t Exchanged(std::uint32_t flags, std::uint32_t lower, std::uint32_t upper) {
    const std::uint32_t rest = flags & ~(lower | upper);
    return rest | ((flags & lower) != 0 ? upper : 0) | ((flags & upper) != 0 ? lower : 0);
}

/// The next number of the process's own sequence. The state is the last number; before the first number the clock
/// replaces it.
std::uint32_t NextRandom() {
    static std::atomic<std::uint64_t> state = 0; // the last number, and above its 32 bits whether there is one
    constexpr std::uint64_t kStarted = std::uint64_t{1} << 32;
    std::uint64_t last = state.load(std::memory_order_relaxed);
    std::uint32_t next = 0;
    do {
        const std::uint32_t seed =
            last == 0 ? static_cast<std::uint32_t>(std::time(nullptr)) : static_cast<std::uint32_t>(last);
        next = seed * 214013U + 2531011U;
    } while (!state.compare_exchange_weak(last, kStarted | next, std::memory_order_relaxed));
    return next;
}

} // namespace

Interval::Interval() : lower(0), upper(0), lower_int(0), upper_int(0), flags(0) {}

Interval::~Interval() {} // NOLINT(modernize-use-equals-default): has a symbol of its own

Interval& Interval::operator=(const Interval& other) {
    if (this == &other) return *this;
    lower = other.lower;
    upper = other.upper;
    lower_int = other.lower_int;
    upper_int = other.upper_int;
    flags = other.flags;
    return *this;
}

void Interval::Reset() { *this = Interval(); }

unsigned char Interval::Load(const char* text) { return text == nullptr ? 0 : Load(text, LengthOf(text)); }

unsigned char Interval::Load(const char* text, std::uint32_t length) {
    if (text == nullptr || _Load(text, length) == 0) return 0;
    if (IsGreater(Sum(lower, -kTolerance), upper)) {
        std::swap(lower, upper);
        std::swap(lower_int, upper_int);
        flags = Exchanged(flags, INTERVAL_LOWER_REAL, INTERVAL_UPPER_REAL);
        flags = Exchanged(flags, INTERVAL_LOWER_OPEN, INTERVAL_UPPER_OPEN);
    }
    return 1;
}

unsigned char Interval::Hit(float value) const {
    if ((flags & ~kAllFlags) != 0) return 0;
    const float real_lower = (flags & INTERVAL_LOWER_REAL) != 0 ? lower : NearestFloat(lower_int);
    const float real_upper = (flags & INTERVAL_UPPER_REAL) != 0 ? upper : NearestFloat(upper_int);
    const float above = Sum(value, kTolerance), below = Sum(value, -kTolerance);
    const bool over_lower = IsGreater((flags & INTERVAL_LOWER_OPEN) != 0 ? below : above, real_lower);
    const bool under_upper = IsGreater(real_upper, (flags & INTERVAL_UPPER_OPEN) != 0 ? above : below);
    return over_lower && under_upper ? 1 : 0;
}

unsigned char Interval::Hit(std::int32_t value) const {
    if ((flags & ~kAllFlags) != 0) return 0;
    const float real = NearestFloat(value);
    const bool lower_is_real = (flags & INTERVAL_LOWER_REAL) != 0, upper_is_real = (flags & INTERVAL_UPPER_REAL) != 0;
    const bool at_lower = lower_is_real ? IsEqual(real, lower) : value == lower_int;
    const bool at_upper = upper_is_real ? IsEqual(real, upper) : value == upper_int;
    const bool over_lower = lower_is_real ? IsGreater(real, lower) : value > lower_int;
    const bool under_upper = upper_is_real ? IsGreater(upper, real) : value < upper_int;
    const bool lower_holds = over_lower || (at_lower && (flags & INTERVAL_LOWER_OPEN) == 0);
    const bool upper_holds = under_upper || (at_upper && (flags & INTERVAL_UPPER_OPEN) == 0);
    return lower_holds && upper_holds ? 1 : 0;
}

std::int32_t Interval::Clamp(std::int32_t value) const {
    const std::int32_t raised = value > lower_int ? value : lower_int;
    return upper_int > raised ? raised : upper_int;
}

float Interval::Clamp(float value) const {
    const float raised = IsGreater(value, lower) ? value : lower;
    return IsGreater(upper, raised) ? raised : upper;
}

unsigned char Interval::To(std::int32_t& lower_bound, std::int32_t& upper_bound) {
    float real_lower = 0, real_upper = 0;
    static_cast<void>(To(real_lower, real_upper));
    lower_bound = Truncate(real_lower);
    upper_bound = Truncate(real_upper);
    return 1;
}

unsigned char Interval::To(float& lower_bound, float& upper_bound) {
    lower_bound = (flags & INTERVAL_LOWER_REAL) != 0 ? lower : NearestFloat(lower_int);
    upper_bound = (flags & INTERVAL_UPPER_REAL) != 0 ? upper : NearestFloat(upper_int);
    return 1;
}

float Interval::Random() const {
    const volatile std::uint32_t percent = NextRandom() % 100;
    const Tessarin::DefaultFloatEnvironment environment;
    // The order of the steps decides which hundred values there are.
    const volatile float from = lower, to = upper;
    const volatile float part = static_cast<float>(percent) * 0.01F;
    const volatile float width = to - from;
    const volatile float above = part * width;
    const volatile float drawn = above + from;
    return drawn;
}

unsigned char Interval::CanToInterval(const char* text) {
    return text == nullptr ? 0 : _CanToInterval(text, LengthOf(text));
}

unsigned char Interval::CanToInterval(const char* text, std::uint32_t length) {
    return text == nullptr ? 0 : _CanToInterval(text, length);
}

unsigned char Interval::_Load(const char* text, std::uint32_t length) {
    Reset();
    if (length == 0 || _CanToInterval(text, length) == 0) return 0;
    const std::uint32_t open = _NextPosIsLeftBracket(text, length, 0);
    const std::uint32_t close = _NextPosIsRightBracket(text, length, open + 1);
    const std::uint32_t separator = _NextPosIsSeparator(text, close, open + 1);
    std::int32_t lower_is_real = 0, upper_is_real = 0;
    _GetValue(text + open + 1, separator - open - 1, lower, lower_int, lower_is_real);
    _GetValue(text + separator + 1, close - separator - 1, upper, upper_int, upper_is_real);
    if (lower_is_real != 0) flags |= INTERVAL_LOWER_REAL;
    if (upper_is_real != 0) flags |= INTERVAL_UPPER_REAL;
    if (text[open] == '(') flags |= INTERVAL_LOWER_OPEN;
    if (text[close] == ')') flags |= INTERVAL_UPPER_OPEN;
    return 1;
}

unsigned char Interval::_CanToInterval(const char* text, std::uint32_t length) {
    const std::uint32_t open = _NextPosIsLeftBracket(text, length, 0);
    if (open == length) return 0;
    const std::uint32_t close = _NextPosIsRightBracket(text, length, open + 1);
    return close < length && _NextPosIsSeparator(text, close, open + 1) < close ? 1 : 0;
}

void Interval::_GetValue(const char* text, std::uint32_t length, float& float_value, std::int32_t& int_value,
                         std::int32_t& is_real) {
    std::uint32_t start = 0;
    while (start < length && IsWhite(text[start])) ++start;
    // The first byte belongs to the token whatever it is, and isn't examined for a point.
    std::uint32_t end = start < length ? start + 1 : start;
    is_real = 0;
    for (; end < length && !IsWhite(text[end]); ++end) {
        if (text[end] == '.') is_real = 1;
    }
    if (is_real != 0) {
        float_value = _GetFloat(text, start, end);
        int_value = Truncate(float_value);
    } else {
        int_value = _GetInteger(text, start, end);
        float_value = NearestFloat(int_value);
    }
}

std::int32_t Interval::_GetInteger(const char* text, std::uint32_t start, std::uint32_t end) {
    if (start >= end || end - start > kMostTokenBytes) return 0;
    return Tessarin::TextToInteger(text + start, text + end);
}

float Interval::_GetFloat(const char* text, std::uint32_t start, std::uint32_t end) {
    if (start >= end || end - start > kMostTokenBytes) return 0;
    return Tessarin::TextToFloat(text + start, text + end);
}

std::uint32_t Interval::_NextPosIsLeftBracket(const char* text, std::uint32_t length, std::uint32_t position) {
    return NextOf('(', '[', text, length, position);
}

std::uint32_t Interval::_NextPosIsRightBracket(const char* text, std::uint32_t length, std::uint32_t position) {
    return NextOf(')', ']', text, length, position);
}

std::uint32_t Interval::_NextPosIsSeparator(const char* text, std::uint32_t length, std::uint32_t position) {
    return NextOf(',', ',', text, length, position);
}

} // namespace Configure
