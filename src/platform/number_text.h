// Numbers from text and back, the same in every locale.
//
// A text to be read is the bytes from `first` up to `last`; it ends sooner at the first byte that doesn't belong to the
// number, so a NUL ends it too. Nothing is allocated and nothing fails: what is no number is zero. Threads: any.

#ifndef TESSARIN_PLATFORM_NUMBER_TEXT_H
#define TESSARIN_PLATFORM_NUMBER_TEXT_H

#include <cstdint>

namespace Tessarin {

/// White space, a sign or none, decimal digits.
/// returns  the low 32 bits of the value held to the range of 64 signed bits: far out of range is -1 or 0
std::int32_t TextToInteger(const char* first, const char* last);

/// White space, a sign or none, then decimal digits with a fraction and an exponent, hexadecimal ones behind `0x` with
/// a binary exponent, `inf`, `infinity` or `nan`, in either case. Rounded to nearest.
/// returns  the value; infinity of the sign when it is too large, zero of the sign when it is too small
double TextToReal(const char* first, const char* last);

/// TextToReal, rounded on to single precision, to nearest too.
float TextToFloat(const char* first, const char* last);

/// A number as text, ended with a NUL.
template <std::uint32_t Room>
struct NumberText {
    char text[Room];
    std::uint32_t length;
};

/// Decimal digits, with a minus sign where it is needed.
using IntegerText = NumberText<12>;
IntegerText IntegerToText(std::int32_t number);
IntegerText IntegerToText(std::uint32_t number);

/// Decimal digits with a point and six of them behind it, rounded to nearest; `inf` or `nan`, with a minus sign where
/// it is set.
using RealText = NumberText<48>;
RealText RealToText(float number);

} // namespace Tessarin

#endif
