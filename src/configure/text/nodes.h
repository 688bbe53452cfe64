// What the parser of the text form makes of a text.
//
// A node is an entry of a table or an element of an array. A block is a table or an array: the root, or what a node has
// in its braces. Both are in breadth-first order: the root's entries, then the children of each block, in the order in
// which the blocks are found. So a block's children are a run of nodes.
//
//     a = { x = 1  b = { 2 } }  c = 3
//
//     nodes    0: a, a table    1: c "3"    2: x "1"    3: b, an array    4: "2"
//     blocks   0: the root, nodes 0 and 1    1: node 0's, nodes 2 and 3    2: node 3's, node 4
//

#ifndef TESSARIN_CONFIGURE_TEXT_NODES_H
#define TESSARIN_CONFIGURE_TEXT_NODES_H

#include "configure/text/characters.h"

#include <cstdint>

namespace Configure {

enum class NodeKind : std::uint32_t { kScalar, kTable, kArray };

/// How a key is spelled from its bytes.
enum class KeyScan : std::uint32_t {
    kNone,        ///< there is no key: an element of an array
    kFirst,       ///< no scalar stands in front: blanks count, but not beside `:` and `,`
    kBehindScalar ///< blanks don't count
};

class TextNode {
public:
    /// A scalar without a value.
    TextNode(Span key, KeyScan scan, bool begins_in_quote)
        : key_first_(key.first & kMostTextBytes), kind_(NodeKind::kScalar), scan_(scan),
          key_last_(key.last & kMostTextBytes), begins_in_quote_(begins_in_quote ? 1 : 0), is_absent_(1),
          is_quoted_(0), text_{0, 0} {}

    [[nodiscard]] NodeKind Kind() const { return kind_; }
    [[nodiscard]] KeyScan Scan() const { return scan_; }
    /// The bytes that SpellKey makes the key of; empty for an element.
    [[nodiscard]] Span Key() const { return {key_first_, key_last_}; }
    /// Whether the key's bytes begin inside of a quote that was opened on a line before it. Its closing quote is then a
    /// byte of the key like any other.
    [[nodiscard]] bool KeyBeginsInQuote() const { return begins_in_quote_ != 0; }

    /// A scalar's value without its quotes, or what is between a block's braces.
    [[nodiscard]] Span Text() const { return text_; }
    /// Whether a scalar has no value at all, which isn't the same as an empty one: the text ends behind its `=`.
    [[nodiscard]] bool IsAbsent() const { return is_absent_ != 0; }
    [[nodiscard]] bool IsQuoted() const { return is_quoted_ != 0; }

    void SetText(Span text, bool is_quoted) {
        text_ = text;
        is_absent_ = 0;
        is_quoted_ = is_quoted ? 1 : 0;
    }
    void SetBlock(NodeKind kind, Span text) {
        kind_ = kind;
        SetText(text, false);
    }

private:
    std::uint32_t key_first_ : kPositionBits;
    NodeKind kind_ : 2;
    KeyScan scan_ : 2;
    std::uint32_t key_last_ : kPositionBits;
    std::uint32_t begins_in_quote_ : 1;
    std::uint32_t is_absent_ : 1;
    std::uint32_t is_quoted_ : 1;
    Span text_;
};
static_assert(sizeof(TextNode) == 16, "a load holds one for every entry of the file");

struct TextBlock {
    static constexpr std::uint32_t kNoNode = UINT32_MAX;

    std::uint32_t node; ///< that has the block as its value; kNoNode for the root
    NodeKind kind;
    std::uint32_t first_child; ///< a node
    std::uint32_t child_count;
};

} // namespace Configure

#endif
