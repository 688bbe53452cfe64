#include "configure/text_readers.h"

#include <algorithm>
#include <functional>

namespace Configure {

// Halves the run until one Unit is left, without a branch that depends on the comparison: half of those would be
// foreseen wrongly, which costs more than the step.
TxtTableReader::Unit* TxtTableReader::Search(cstr key) const {
    if (count == 0) return nullptr;
    Unit* first = units;
    for (std::uint32_t left = count; left > 1;) {
        const std::uint32_t half = left / 2;
        first = std::less_equal<>()(first[half].key, key) ? first + half : first;
        left -= half;
    }
    return first->key == key ? first : nullptr;
}

void TxtTableReader::Sort() {
    std::sort(units, units + count,
              [](const Unit& left, const Unit& right) { return std::less<>()(left.key, right.key); });
}

} // namespace Configure
