// A value is text until somebody asks for it as something else; nothing that is converted is kept.

#include "configure/tree/conversions.h"

#include "platform/ascii.h"
#include "platform/number_text.h"
#include "strings/string_table.h"

namespace Configure {
namespace {

using Tessarin::CstrLength;

/// Whether the text is `word`, which is in lower case, in any case.
bool IsWord(cstr text, const char* word) {
    while (*word != '\0' && Tessarin::LowerCase(*text) == *word) ++text, ++word;
    return *word == '\0' && *text == '\0';
}

} // namespace

std::int32_t IntegerOf(cstr text) {
    return text == nullptr ? 0 : Tessarin::TextToInteger(text, text + CstrLength(text));
}

float FloatOf(cstr text) { return text == nullptr ? 0.0F : Tessarin::TextToFloat(text, text + CstrLength(text)); }

bool BoolOf(cstr text) { return text != nullptr && !IsWord(text, "0") && !IsWord(text, "false"); }

Interval IntervalOf(cstr text) {
    Interval interval;
    if (text != nullptr) static_cast<void>(interval.Load(text, CstrLength(text)));
    return interval;
}

bool HoldsInterval(cstr text) { return text != nullptr && Interval::CanToInterval(text, CstrLength(text)) != 0; }

} // namespace Configure
