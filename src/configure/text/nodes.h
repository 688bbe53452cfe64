// The result of parsing the text form: nodes and blocks.
//
// A node is an entry of a table or an element of an array. A block is a table or an array: the root, or the content of
// a node's braces. Both are in breadth-first order: the root's entries, then the children of each block, in the order
// in which the blocks are found. So a block's children are consecutive nodes. Whether braces hold a table or an array:
// delimiters.cpp, CloseBlockAt.
//
//     a = { x = 1  b = { 2 } }  c = 3
//
//     nodes    0: a, a table    1: c "3"    2: x "1"    3: b, an array    4: "2"
//     blocks   0: the root, nodes 0 and 1    1: node 0's, nodes 2 and 3    2: node 3's, node 4

#ifndef TESSARIN_CONFIGURE_TEXT_NODES_H
#define TESSARIN_CONFIGURE_TEXT_NODES_H

#include "configure/text/characters.h"

#include <cstdint>

namespace Configure {

enum class NodeKind : std::uint32_t { kScalar, kTable, kArray };

/// How a key is spelled from its bytes.
enum class KeyScan : std::uint32_t {
    kNone,        ///< there is no key: an element of an array
    kFirst,       ///< no scalar is before the key: blanks count, but not beside `:` and `,`
    kBehindScalar ///< a scalar is before the key: blanks don't count
};

/// The positions of a node in the text. ParsedText computes its key and its value from them when they are requested.
class TextNode {
public:
    /// An entry whose value isn't known yet.
    static TextNode Entry(std::uint32_t key_first, std::uint32_t equals, KeyScan scan, bool key_begins_in_quote) {
        TextNode node(key_first, scan);
        node.equals_ = equals & kMostTextBytes;
        node.key_begins_in_quote_ = key_begins_in_quote ? 1 : 0;
        node.is_absent_ = 1;
        return node;
    }

    /// An element of an array that begins at a position. It counts as a bare word; SetValue or SetQuotedElement may
    /// make it something else later.
    static TextNode Element(std::uint32_t first) { return {first, KeyScan::kNone}; }

    [[nodiscard]] NodeKind Kind() const { return kind_; }
    [[nodiscard]] KeyScan Scan() const { return scan_; }
    [[nodiscard]] bool IsElement() const { return scan_ == KeyScan::kNone; }
    /// Whether a scalar has no value at all, which differs from an empty one: its block ends after its `=`.
    [[nodiscard]] bool IsAbsent() const { return is_absent_ != 0; }
    /// Whether the key's bytes begin inside a quote that was opened on an earlier line. The closing quote is then an
    /// ordinary byte of the key.
    [[nodiscard]] bool KeyBeginsInQuote() const { return key_begins_in_quote_ != 0; }
    [[nodiscard]] bool IsQuotedElement() const { return is_quoted_element_ != 0; }

    /// The position of the first byte of an entry's key, or of an element.
    [[nodiscard]] std::uint32_t First() const { return first_; }
    /// The position of an entry's `=`.
    [[nodiscard]] std::uint32_t Equals() const { return equals_; }
    /// The end of the value's bytes: after a bare word, at a closing quote or brace, or the latest position at which an
    /// entry's scalar can end.
    [[nodiscard]] std::uint32_t Last() const { return last_; }

    void SetValue(NodeKind kind, std::uint32_t last) {
        kind_ = kind;
        is_absent_ = 0;
        last_ = last;
    }
    void SetQuotedElement(std::uint32_t closing_quote) {
        is_quoted_element_ = 1;
        last_ = closing_quote;
    }

private:
    TextNode(std::uint32_t first, KeyScan scan)
        : first_(first & kMostTextBytes), kind_(NodeKind::kScalar), scan_(scan), equals_(0), key_begins_in_quote_(0),
          is_absent_(0), is_quoted_element_(0), last_(first) {}

    std::uint32_t first_ : kPositionBits;
    NodeKind kind_ : 2;
    KeyScan scan_ : 2;
    std::uint32_t equals_ : kPositionBits;
    std::uint32_t key_begins_in_quote_ : 1;
    std::uint32_t is_absent_ : 1;
    std::uint32_t is_quoted_element_ : 1;
    std::uint32_t last_;
};
static_assert(sizeof(TextNode) == 12, "a load holds one for every entry of the file");

struct TextBlock {
    NodeKind kind;
    std::uint32_t first_child; ///< a node
    std::uint32_t child_count;
};

} // namespace Configure

#endif
