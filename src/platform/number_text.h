// Numbers from text and back, the same in every locale.
//
// A text to be read is the bytes from `first` up to, but not including, `last`. Reading stops at the first byte that
// doesn't belong to the number, so a NUL ends it too. Nothing is allocated and nothing fails: a text that isn't a
// number is read as zero. Threads: any.

#ifndef TESSARIN_PLATFORM_NUMBER_TEXT_H
#define TESSARIN_PLATFORM_NUMBER_TEXT_H

#include <cstdint>

namespace Tessarin {

/// Reads white space, an optional sign and decimal digits.
/// returns  the value, clamped to a signed 64-bit integer, cut to its low 32 bits: far out of range it is -1 or 0
std::int32_t TextToInteger(const char* first, const char* last);

/// Reads white space, an optional sign, and one of: decimal digits with an optional fraction and exponent; `0x` and
/// hexadecimal digits with an optional fraction and binary exponent; `inf`, `infinity` or `nan`. Letters may have
/// either case. Rounds to nearest.
/// returns  the value; infinity with the sign if it is too large, zero with the sign if it is too small
double TextToReal(const char* first, const char* last);

/// The result of TextToReal, rounded to nearest once more, to single precision.
float TextToFloat(const char* first, const char* last);

/// A number as text, ended with a NUL.
template <std::uint32_t Room>
struct NumberText {
    char text[Room];
    std::uint32_t length;
};

/// Decimal digits, with a minus sign for a negative number.
using IntegerText = NumberText<12>;
IntegerText IntegerToText(std::int32_t number);
IntegerText IntegerToText(std::uint32_t number);

/// Decimal digits, six of them after the point, rounded to nearest; or `inf` or `nan`. A minus sign if the sign bit is
/// set. JSON and the command print reals in other ways: documents/json_save.cpp, tools/table_document.cpp.
using RealText = NumberText<48>;
RealText RealToText(float number);

} // namespace Tessarin

#endif
