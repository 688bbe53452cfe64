// The parser of the configuration text form: bytes in, two flat lists out. It interns nothing and knows no tree.
//
// A node is an entry of a table or an element of an array, a block a table or an array; nodes.h shows the two lists.
// All positions are in the text without its comments, which are stripped in place; OffsetOf and SpanOf lead back to the
// bytes as they were given.

#ifndef TESSARIN_CONFIGURE_TEXT_PARSER_H
#define TESSARIN_CONFIGURE_TEXT_PARSER_H

#include "configure/text/comments.h"
#include "configure/text/nodes.h"
#include "memory/chunked_list.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// What a loader makes room for.
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
    kNoKey,   ///< an `=` without a key in front of it
    kLongKey  ///< a key of more than kMostKeyBytes
};

class ParsedText {
public:
    /// Parses a text, whose bytes are borrowed until the object ends.
    /// bytes    `size` bytes and an end mark behind them; changed as comments are stripped
    /// returns  what is wrong, with nodes and blocks then in parts; FaultSpan() has its place
    /// REQUIRES: nothing has been parsed into the object yet
    [[nodiscard]] TextFault Parse(char* bytes, std::uint32_t size);

    [[nodiscard]] const char* Bytes() const { return bytes_; }
    [[nodiscard]] const Tessarin::ChunkedList<TextNode>& Nodes() const { return nodes_; }
    /// The root first.
    [[nodiscard]] const Tessarin::List<TextBlock>& Blocks() const { return blocks_; }
    [[nodiscard]] const TextCounts& Counts() const { return counts_; }

    /// The bytes that SpelledKey makes the key of; empty for an element.
    [[nodiscard]] Span KeyOf(const TextNode& node) const;
    /// The bytes of a scalar's value, without its quotes, or those between a block's braces; empty for an absent value.
    [[nodiscard]] Span ValueOf(const TextNode& node) const;
    /// Whether a scalar's value is in quotes.
    [[nodiscard]] bool IsQuoted(const TextNode& node) const;

    /// The block that a node is a child of, by its number.
    [[nodiscard]] std::uint32_t ParentOf(std::uint32_t node) const;
    /// The block that a node has as its value, by its number. REQUIRES: it isn't a scalar
    [[nodiscard]] std::uint32_t BlockOf(std::uint32_t node) const;

    /// Offsets in the bytes as they were given.
    [[nodiscard]] std::uint32_t OffsetOf(std::uint32_t position) const { return comments_.OffsetOf(position); }
    [[nodiscard]] Span SpanOf(Span span) const { return comments_.SpanOf(span); }
    /// The place of what is wrong, in the bytes as they were given: the key, or the `=` that has none.
    [[nodiscard]] Span FaultSpan() const { return comments_.SpanOf(fault_); }

private:
    friend class TextWalk;

    [[nodiscard]] std::uint32_t ValueStart(const TextNode& node) const;
    [[nodiscard]] Span BareText(Span span) const;

    const char* bytes_ = nullptr;
    std::uint32_t size_ = 0; // less the comments
    StrippedComments comments_;
    Tessarin::ChunkedList<TextNode> nodes_;
    Tessarin::List<TextBlock> blocks_;
    TextCounts counts_;
    Span fault_ = {0, 0};
};

} // namespace Configure

#endif
