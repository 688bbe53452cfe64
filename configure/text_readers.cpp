#include "configure/text_readers.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace Configure {

TxtTableReader::Unit* TxtTableReader::Search(const char* key) const {
    const std::size_t length = std::strlen(key);
    Unit* unit = index.Find(units, key, length);
    if (unit == nullptr) static_cast<void>(Tessarin::library_state->strings.InternLowerCase(key, length));
    return unit;
}

void TxtTableReader::Sort() {
    std::sort(units, units + count,
              [](const Unit& left, const Unit& right) { return std::less<>()(left.key, right.key); });
}

} // namespace Configure
