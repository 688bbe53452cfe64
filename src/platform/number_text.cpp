// Numbers from text and back. std::from_chars does the rounding, as it ignores the locale. It doesn't get the text of a
// real as it is, for three reasons:
//  - it leaves the value unset if that is out of range, and doesn't say whether it is too large (infinity) or too small
//    (zero);
//  - implementations give up on exponents beyond some ten thousand, although enough digits may bring the value back
//    into range;
//  - it accepts neither a plus sign nor "0x".
// So the text is read here into its significant digits and a power of the base, and from_chars gets a canonical text of
// bounded length: the digits as an integer, and an exponent. The only purpose is exact values. A short cut that passes
// the text to from_chars directly makes the benchmark LoadReadable no faster.
//
// Invariants of Numeral, after each byte read:
// 1. Its value is `digits`, read as an integer, times base to the power of `power`, plus less than one unit of the last
//    digit.
// 2. `digits` never starts with a zero; a value of zero has no digits.
// 3. `lost` is set if and only if a digit other than zero was left out.

#include "platform/number_text.h"

#include "platform/ascii.h"
#include "platform/float_environment.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace Tessarin {
namespace {

// The point half way between two neighbouring doubles has up to 767 decimal digits, and fewer hexadecimal ones. If a
// text agrees with all of these digits, only whether some later digit is nonzero decides on which side of the point it
// is.
constexpr int kMostDigits = 768;

// Replaces every larger exponent: no text that fits in memory has enough digits to compensate for it. Adding to it
// doesn't overflow.
constexpr std::int64_t kFarExponent = 100'000'000'000'000'000;

struct Numeral {
    char digits[kMostDigits + 1];
    int count = 0;
    std::int64_t power = 0;
    bool lost = false;
};

/// The differences between decimal and hexadecimal: the digits, the letter before the exponent, and by how much the
/// exponent changes when the point moves by one digit.
struct Notation {
    int base;
    char exponent_mark;
    int exponent_per_digit;
    std::chars_format format;
};

constexpr Notation kDecimal = {10, 'e', 1, std::chars_format::general};
constexpr Notation kHexadecimal = {16, 'p', 4, std::chars_format::hex};

bool IsSpace(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

bool IsDecimalDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool IsDigit(char byte, int base) {
    return IsDecimalDigit(byte) || (base == 16 && LowerCase(byte) >= 'a' && LowerCase(byte) <= 'f');
}

/// Moves `first` past white space and one sign.
/// returns  whether the sign is a minus
bool SkipSign(const char*& first, const char* last) {
    while (first != last && IsSpace(*first)) ++first;
    if (first == last || (*first != '-' && *first != '+')) return false;
    return *first++ == '-';
}

/// Whether the text begins with `word`, which is in lower case.
bool BeginsWith(const char* first, const char* last, const char* word) {
    for (; *word != '\0'; ++word, ++first) {
        if (first == last || LowerCase(*first) != *word) return false;
    }
    return true;
}

void TakeDigit(Numeral& numeral, char digit, bool in_fraction) {
    const bool leading_zero = numeral.count == 0 && digit == '0';
    const bool left_out = numeral.count == kMostDigits;
    if (!leading_zero && !left_out) numeral.digits[numeral.count++] = digit;
    if (left_out && digit != '0') numeral.lost = true;
    // A digit that is kept multiplies the integer by the base; if the digit is in the fraction, the power compensates.
    // A digit that is left out doesn't change the integer; if it is before the point, the power compensates.
    if (in_fraction && !left_out) --numeral.power;
    if (!in_fraction && left_out) ++numeral.power;
}

/// Reads digits with at most one point.
/// returns  where they end; null if there is no digit
const char* ReadDigits(const char* first, const char* last, int base, Numeral& numeral) {
    bool has_digit = false, in_fraction = false;
    for (; first != last; ++first) {
        if (IsDigit(*first, base)) {
            TakeDigit(numeral, *first, in_fraction);
            has_digit = true;
        } else if (*first == '.' && !in_fraction) {
            in_fraction = true;
        } else {
            break;
        }
    }
    return has_digit ? first : nullptr;
}

/// The exponent that the text begins with; 0 if it doesn't begin with one, or if no digit follows the mark.
std::int64_t ReadExponent(const char* first, const char* last, char mark) {
    if (first == last || LowerCase(*first) != mark) return 0;
    ++first;
    const bool signed_once = first != last && (*first == '-' || *first == '+');
    const bool negative = signed_once && *first == '-';
    if (signed_once) ++first;
    std::int64_t exponent = 0;
    for (; first != last && IsDecimalDigit(*first); ++first) {
        exponent = std::min(exponent * 10 + (*first - '0'), kFarExponent);
    }
    return negative ? -exponent : exponent;
}

/// The double nearest to the numeral's digits with that exponent; `out_of_range` if the value is too large or too
/// small.
double Round(const Numeral& numeral, std::int64_t exponent, const Notation& notation, double out_of_range) {
    char text[kMostDigits + 32];
    std::memcpy(text, numeral.digits, static_cast<std::size_t>(numeral.count));
    char* end = text + numeral.count;
    *end++ = notation.exponent_mark;
    end = std::to_chars(end, text + sizeof text, exponent).ptr;

    double value = out_of_range;
    const DefaultFloatEnvironment environment;
    const std::from_chars_result result = std::from_chars(text, end, value, notation.format);
    return result.ec == std::errc() ? value : out_of_range;
}

/// The value of digits with or without an exponent after them; 0 if there are no digits.
double ReadNumeral(const char* first, const char* last, const Notation& notation) {
    Numeral numeral;
    const char* behind = ReadDigits(first, last, notation.base, numeral);
    if (numeral.count == 0) return 0.0;
    if (numeral.lost) {
        numeral.digits[numeral.count++] = '1';
        --numeral.power;
    }
    const std::int64_t exponent =
        numeral.power * notation.exponent_per_digit + ReadExponent(behind, last, notation.exponent_mark);
    // The exponent of the digit place in front of the leading digit.
    const std::int64_t magnitude = std::int64_t{numeral.count} * notation.exponent_per_digit + exponent;
    return Round(numeral, exponent, notation, magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0);
}

double ReadMagnitude(const char* first, const char* last) {
    if (BeginsWith(first, last, "inf")) return std::numeric_limits<double>::infinity();
    if (BeginsWith(first, last, "nan")) return std::numeric_limits<double>::quiet_NaN();
    // If no digit follows "0x", the number is the zero and ends before the letter: zero too.
    if (BeginsWith(first, last, "0x")) return ReadNumeral(first + 2, last, kHexadecimal);
    return ReadNumeral(first, last, kDecimal);
}

/// Whether a number begins here. If none does, the sign before it is ignored.
bool BeginsNumber(const char* first, const char* last) {
    if (BeginsWith(first, last, "inf") || BeginsWith(first, last, "nan")) return true;
    if (BeginsWith(first, last, ".")) ++first;
    return first != last && IsDecimalDigit(*first);
}

template <class Integer>
IntegerText DecimalText(Integer number) {
    IntegerText text;
    char* end = std::to_chars(text.text, text.text + sizeof text.text - 1, number).ptr;
    *end = '\0';
    text.length = static_cast<std::uint32_t>(end - text.text);
    return text;
}

} // namespace

std::int32_t TextToInteger(const char* first, const char* last) {
    const bool negative = SkipSign(first, last);
    std::uint64_t magnitude = 0;
    const std::from_chars_result result = std::from_chars(first, last, magnitude);
    if (result.ec == std::errc::result_out_of_range) magnitude = std::numeric_limits<std::uint64_t>::max();

    const std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    const std::uint64_t held = std::min(magnitude, negative ? most + 1 : most);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(negative ? 0 - held : held));
}

double TextToReal(const char* first, const char* last) {
    const bool negative = SkipSign(first, last);
    if (!BeginsNumber(first, last)) return 0.0;
    const double magnitude = ReadMagnitude(first, last);
    return negative ? -magnitude : magnitude;
}

float TextToFloat(const char* first, const char* last) {
    const DefaultFloatEnvironment environment;
    // Volatile, because otherwise compilers postpone the narrowing until the host's rounding is restored.
    const volatile float nearest = static_cast<float>(TextToReal(first, last));
    return nearest;
}

IntegerText IntegerToText(std::int32_t number) { return DecimalText(number); }

IntegerText IntegerToText(std::uint32_t number) { return DecimalText(number); }

RealText RealToText(float number) {
    constexpr int kDecimals = 6;
    RealText text;
    const DefaultFloatEnvironment environment;
    const volatile float operand = number; // the widening of a float can depend on the environment, too
    // The largest float has 39 digits before the point, so every number fits.
    char* end =
        std::to_chars(text.text, text.text + sizeof text.text - 1, double{operand}, std::chars_format::fixed, kDecimals)
            .ptr;
    *end = '\0';
    text.length = static_cast<std::uint32_t>(end - text.text);
    return text;
}

} // namespace Tessarin
