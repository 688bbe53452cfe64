// The parser of the configuration text form. It turns bytes into two flat lists; it interns nothing and doesn't know
// the trees.
//
// A node is an entry of a table or an element of an array; a block is a table or an array; nodes.h shows the two lists.
// Whether braces hold a table or an array: delimiters.cpp, CloseBlockAt.
//
// All positions are in the text without its comments, which are stripped in place; OffsetOf and SpanOf map them back to
// the bytes as they were given.

#ifndef TESSARIN_CONFIGURE_TEXT_PARSER_H
#define TESSARIN_CONFIGURE_TEXT_PARSER_H

#include "configure/text/comments.h"
#include "configure/text/nodes.h"
#include "memory/chunked_list.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// The numbers of objects for which a loader makes room.
struct TextCounts {
    std::uint32_t tables = 0; ///< the root included
    std::uint32_t arrays = 0;
    std::uint32_t entries = 0;  ///< of all tables
    std::uint32_t elements = 0; ///< of all arrays
};

enum class TextFault {
    kNone,
    kOutOfMemory,
    kTooLong, ///< more bytes than positions can number
    kNoKey,   ///< an `=` without a key before it
    kLongKey  ///< a key of more than kMostKeyBytes
};

class ParsedText {
public:
    /// Parses a text, whose bytes are borrowed until the object ends.
    /// bytes    `size` bytes and an end mark after them; changed, as comments are stripped
    /// returns  the fault, if any: the nodes and blocks are then incomplete, and FaultSpan() is the place of the fault
    /// REQUIRES: nothing has been parsed into the object yet
    [[nodiscard]] TextFault Parse(char* bytes, std::uint32_t size);

    [[nodiscard]] const char* Bytes() const { return bytes_; }
    [[nodiscard]] const Tessarin::ChunkedList<TextNode>& Nodes() const { return nodes_; }
    /// The number of blocks; the root is the first.
    [[nodiscard]] std::uint32_t BlockCount() const { return blocks_.Count(); }
    [[nodiscard]] TextBlock BlockAt(std::uint32_t number) const {
        const std::uint32_t first = blocks_[number].first_child;
        const bool is_last = number + 1 == blocks_.Count();
        const std::uint32_t end = is_last ? nodes_.Count() : blocks_[number + 1].first_child;
        return {blocks_[number].kind, first, end - first};
    }
    [[nodiscard]] const TextCounts& Counts() const { return counts_; }

    /// The bytes from which SpelledKey makes the key; empty for an element.
    [[nodiscard]] Span KeyOf(const TextNode& node) const;
    /// The bytes of a scalar's value, without its quotes, or those between a block's braces; empty for an absent value.
    [[nodiscard]] Span ValueOf(const TextNode& node) const;
    /// Whether a scalar's value is in quotes.
    [[nodiscard]] bool IsQuoted(const TextNode& node) const;

    /// The number of the block that has a node as its child.
    [[nodiscard]] std::uint32_t ParentOf(std::uint32_t node) const;
    /// The number of the block that is a node's value. REQUIRES: the node isn't a scalar
    [[nodiscard]] std::uint32_t BlockOf(std::uint32_t node) const;

    /// Positions mapped back to the bytes as they were given.
    [[nodiscard]] std::uint32_t OffsetOf(std::uint32_t position) const { return comments_.OffsetOf(position); }
    [[nodiscard]] Span SpanOf(Span span) const { return comments_.SpanOf(span); }
    /// The place of the fault in the bytes as they were given: the key, or the `=` without a key.
    [[nodiscard]] Span FaultSpan() const { return comments_.SpanOf(fault_); }

private:
    friend class TextWalk;

    // A block's children are the nodes up to the first child of the next block.
    struct Block {
        std::uint32_t first_child : kPositionBits;
        NodeKind kind : 4;
    };
    static_assert(sizeof(Block) == 4, "a nest may have a block for every byte of the file");

    static constexpr std::uint32_t kSampledNodes = 64;

    [[nodiscard]] bool AddNode(const TextNode& node) {
        const bool is_sampled = nodes_.Count() % kSampledNodes == 0;
        return (!is_sampled || samples_.Push(blocks_.Count())) && nodes_.Push(node);
    }

    [[nodiscard]] std::uint32_t ValueStart(const TextNode& node) const;
    [[nodiscard]] Span BareText(Span span) const;

    const char* bytes_ = nullptr;
    std::uint32_t size_ = 0; // without the comments
    StrippedComments comments_;
    Tessarin::ChunkedList<TextNode> nodes_;
    Tessarin::ChunkedList<Block> blocks_;
    Tessarin::List<std::uint32_t> samples_; // for each kSampledNodes-th node how many blocks were found before it
    TextCounts counts_;
    Span fault_ = {0, 0};
};

} // namespace Configure

#endif
