// Search and sort of the read tree of the text form. Hosts see the order of a table's Units: a walk visits them by the
// addresses of their keys.

#include "configure/tree/text_read_tree.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace Configure {

TxtTableReader::Unit* TxtTableReader::Search(const char* key) const {
    const std::size_t length = std::strlen(key);
    Unit* unit = index.Find(units, key, length);
    if (unit == nullptr) static_cast<void>(Tessarin::string_table->InternLowerCase(key, length));
    return unit;
}

/// Sorts small tables without std::stable_sort, which would allocate memory for each of them; most tables are small.
void TxtTableReader::Sort() {
    constexpr std::uint32_t kFew = 16;
    const auto before = [](const Unit& left, const Unit& right) { return std::less<>()(left.key, right.key); };
    if (count > kFew) {
        std::stable_sort(units, units + count, before);
        return;
    }
    for (Unit* unit = units; unit != units + count; ++unit) {
        std::rotate(std::upper_bound(units, unit, *unit, before), unit, unit + 1);
    }
}

} // namespace Configure
