// A tree as the flat list of its rows, which every command draws for people or writes as JSON for scripts.
//
// Rows are in depth-first order, a row before its children:
//
//     rows  root  a  a/x  a/y  b
//     depth   0   1   2    2   1
//
// The depths and the order of the rows give the whole structure, so neither making nor printing a list recurses: even a
// deeply nested file costs no stack.

#ifndef TESSARIN_TOOLS_ROW_LIST_H
#define TESSARIN_TOOLS_ROW_LIST_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Command {

enum class Shape {
    Text,    // `value` is any text
    Literal, // `value` is JSON already: a number, numbers in brackets, null
    Table,
    Array
};

struct Row {
    Shape shape = Shape::Text;
    std::string key;       // the position in an array
    std::string value;     // of a Text or a Literal
    const char* kind = ""; // what a Literal is, for people
    std::size_t count = 0; // of children
    std::size_t depth = 0; // 0 is the root
    bool is_last = true;   // of its siblings
    bool is_in_array = false;
};
using RowList = std::vector<Row>;

/// No limit on the depth of a list.
inline constexpr std::size_t kUnlimitedDepth = static_cast<std::size_t>(-1);

inline bool IsContainer(const Row& row) { return row.shape == Shape::Table || row.shape == Shape::Array; }

/// Lists a tree down to a depth, `limit` levels below the root.
/// Children  a cursor over the children of one table or array: `IsEmpty()` says whether none is left, and `Take(Row&)`
///           fills the next child's row and returns the cursor over that child's own children
template <class Children>
RowList ListTree(Row root, Children children, std::size_t limit) {
    RowList rows{std::move(root)};
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

} // namespace Command

#endif
