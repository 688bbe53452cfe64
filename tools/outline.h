/// A tree as the list of its rows, which is what all commands draw for people and write as JSON for scripts.
///
/// Rows stand in the order of a reader's walk: a row, then its children with all of theirs. No depth of a file costs
/// stack.

#ifndef TESSARIN_TOOLS_OUTLINE_H
#define TESSARIN_TOOLS_OUTLINE_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Command {

enum class Shape {
    Text,    ///< `value` is any text
    Literal, ///< `value` is JSON as it stands: a number, numbers in brackets, null
    Table,
    Array
};

struct Row {
    Shape shape = Shape::Text;
    std::string key;       ///< in an array the position
    std::string value;     ///< of a Text or a Literal
    const char* kind = ""; ///< what a Literal is, for people
    std::size_t count = 0; ///< of children
    std::size_t depth = 0; ///< 0 is the row that was asked for
    bool is_last = true;   ///< of its siblings
    bool is_in_array = false;
};
using Outline = std::vector<Row>;

/// No limit on the depth that is shown.
inline constexpr std::size_t kWhole = static_cast<std::size_t>(-1);

/// Lists a tree, down to a depth.
/// Children  what is left to take of one table's or array's children: `IsEmpty()`, and `Take(Row&)`, which fills the
///           next child's row and answers that child's children
template <class Children>
Outline MakeOutline(Row root, Children children, std::size_t limit) {
    Outline rows{std::move(root)};
    std::vector<Children> levels;
    if (!children.IsEmpty() && limit > 0) levels.push_back(std::move(children));
    while (!levels.empty()) {
        if (levels.back().IsEmpty()) {
            levels.pop_back();
            continue;
        }
        Row row;
        Children below = levels.back().Take(row);
        row.depth = levels.size();
        row.is_last = levels.back().IsEmpty();
        rows.push_back(std::move(row));
        if (!below.IsEmpty() && levels.size() < limit) levels.push_back(std::move(below));
    }
    return rows;
}

/// Draws a tree, with colours or without.
void Draw(const Outline& rows, bool has_colour, std::FILE* out);

/// Writes a tree as JSON in one line, which costs no indent at any depth. Bytes that aren't UTF-8 become U+FFFD.
void WriteJson(const Outline& rows, std::FILE* out);

/// `table, 3 entries` and the like.
std::string Describe(const Row& row);

/// A text in double quotes, with what a terminal can't show or would obey, and the quotes, as escapes.
std::string Quote(std::string_view text);

/// A text as it is, but for what a terminal can't show or would obey: that is escaped as Quote does.
std::string Printable(std::string_view text);

/// A text whose bytes that aren't UTF-8 are U+FFFD.
std::string ToUtf8(std::string_view text);

} // namespace Command

#endif
