// Converts the text of a value. A null text converts to the zero of each type. The other direction, a number that
// becomes a Unit's text, is SetInteger and SetFloat in edit_tree.h.

#ifndef TESSARIN_CONFIGURE_TREE_CONVERSIONS_H
#define TESSARIN_CONFIGURE_TREE_CONVERSIONS_H

#include "tessarin/interval.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

[[nodiscard]] std::int32_t IntegerOf(cstr text);
[[nodiscard]] float FloatOf(cstr text);
[[nodiscard]] bool BoolOf(cstr text);
[[nodiscard]] Interval IntervalOf(cstr text);
[[nodiscard]] bool HoldsInterval(cstr text);

} // namespace Configure

#endif
