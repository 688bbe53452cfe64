// Matching with a single point to return to: each `*` first matches nothing, and after a mismatch only the last `*` is
// extended by a byte. An earlier `*` needn't be extended again, since the last one can match any text instead. So a
// match costs at most the product of both lengths.

#include "tools/glob.h"

#include <algorithm>
#include <cstddef>

namespace Command {

bool MatchesGlob(std::string_view name, std::string_view pattern) {
    std::size_t name_at = 0, pattern_at = 0;
    std::size_t star = std::string_view::npos, star_end = 0; // the last `*`, and the end of what it matches
    while (name_at < name.size()) {
        if (pattern_at < pattern.size() && pattern[pattern_at] == '*') {
            star = pattern_at++;
            star_end = name_at;
        } else if (pattern_at < pattern.size() &&
                   (pattern[pattern_at] == '?' || pattern[pattern_at] == name[name_at])) {
            ++pattern_at, ++name_at;
        } else if (star != std::string_view::npos) {
            pattern_at = star + 1;
            name_at = ++star_end;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + static_cast<std::ptrdiff_t>(pattern_at), pattern.end(),
                       [](char c) { return c == '*'; });
}

} // namespace Command
