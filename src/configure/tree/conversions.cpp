// Converts the text of a value to a number or a truth value. Values are stored as text and converted at each request;
// results aren't kept.

#include "configure/tree/conversions.h"

#include "platform/ascii.h"
#include "platform/number_text.h"
#include "strings/string_table.h"

namespace Configure {
namespace {

using Tessarin::CstrLength;

/// Whether the text equals `word`, which is in lower case; upper and lower case count as equal.
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
