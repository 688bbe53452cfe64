// The form isn't defined by a grammar of tokens: hardly anything is an error. An entry is found by its `=`, and its key
// by searching back from there. After a scalar's `=`, the span up to the next `=` holds the scalar's value and then the
// next key; walking back over the key separates the two. Whether braces hold a table or an array: delimiters.cpp,
// CloseBlockAt.
//
// Invariants of a walk:
//
//  1. The walk of a table is always outside of quotes: it begins after a `{` or at the start, skips quotes, and
//     continues at an `=`, after it, or after a `}`. So every `{` and every `"` that it meets has a delimiter. In an
//     array a bare word may contain a quote, so the walk may stop inside it. The only delimiter in there is the closing
//     quote, which is then an ordinary byte.
//  2. A quote that begins in a span that a scan is given also ends in it.
//  3. A Rest's delimiters include all delimiters in its bytes; a table's Rest has no others.

#include "configure/text/parser.h"

#include "configure/text/delimiters.h"
#include "configure/text/key_spelling.h"

#include <algorithm>

namespace Configure {

/// The walk over all blocks of one text. The delimiters are freed with it.
class TextWalk {
public:
    explicit TextWalk(ParsedText& parsed) : parsed_(parsed), text_(parsed.bytes_) {}

    [[nodiscard]] TextFault Run();

private:
    // The part of a block that is still to be walked.
    struct Rest {
        Span bytes;
        DelimiterRange delimiters;
        std::uint32_t next_block = 0; // the first block that opens in it or later, by the delimiters' number
    };

    bool WalkBlock(std::uint32_t number, std::uint32_t opened);
    bool WalkTable(Rest rest);
    bool AddEntry(const Rest& span, bool behind_scalar);
    bool WalkArray(Rest rest);
    bool AddElement(Rest& rest);
    bool AddBlock(Rest& rest);

    [[nodiscard]] DelimiterKind FirstDelimiter(Rest& rest) const;
    [[nodiscard]] std::uint32_t WordEnd(Span span) const;
    [[nodiscard]] Span FirstKey(Span span) const;
    [[nodiscard]] bool BeginsInQuote(Span key, DelimiterRange delimiters) const;
    [[nodiscard]] Span KeyBehindScalar(const Rest& span) const;
    [[nodiscard]] std::uint32_t PieceStart(Span span, DelimiterRange delimiters) const;

    TextNode& LastNode() { return parsed_.nodes_[parsed_.nodes_.Count() - 1]; }
    bool Fail(TextFault fault, Span place) {
        fault_ = fault;
        parsed_.fault_ = place;
        return false;
    }

    ParsedText& parsed_;
    const char* text_;
    Delimiters delimiters_;
    TextFault fault_ = TextFault::kOutOfMemory; // the reason if a step returns false without giving one
};

TextFault ParsedText::Parse(char* bytes, std::uint32_t size) {
    if (size > kMostTextBytes) return TextFault::kTooLong;
    if (!comments_.Strip(bytes, size, size_)) return TextFault::kOutOfMemory;
    bytes_ = bytes;
    return TextWalk(*this).Run();
}

Span ParsedText::KeyOf(const TextNode& node) const {
    if (node.IsElement()) return {node.First(), node.First()};
    return {node.First(), TrimWhite(bytes_, node.First(), node.Equals())};
}

/// A value in quotes ends at the closing quote, whatever is between it and the next key. A quote that isn't closed ends
/// with the text.
Span ParsedText::ValueOf(const TextNode& node) const {
    const Span rest = {ValueStart(node), node.Last()};
    if (node.IsAbsent()) return {rest.first, rest.first};
    if (node.Kind() != NodeKind::kScalar) return {rest.first + 1, rest.last};
    if (!IsQuoted(node)) return node.IsElement() ? rest : BareText(rest);
    const char* const close = std::find(bytes_ + rest.first + 1, bytes_ + rest.last, '"');
    return {rest.first + 1, static_cast<std::uint32_t>(close - bytes_)};
}

/// An entry's value begins outside of quotes, so a quote there is an opening one. An element may begin with a closing
/// one.
bool ParsedText::IsQuoted(const TextNode& node) const {
    if (node.IsElement()) return node.IsQuotedElement();
    const std::uint32_t first = ValueStart(node);
    return node.Kind() == NodeKind::kScalar && first < node.Last() && bytes_[first] == '"';
}

std::uint32_t ParsedText::ValueStart(const TextNode& node) const {
    return node.IsElement() ? node.First() : SkipWhite(bytes_, node.Equals() + 1, node.Last());
}

/// The first line of a span, without white space and then commas at its end.
/// REQUIRES: the span is empty or begins with a byte that isn't white
Span ParsedText::BareText(Span span) const {
    std::uint32_t line_end = span.first;
    while (line_end < span.last && !Is(kLineEnd, bytes_[line_end])) ++line_end;
    std::uint32_t last = TrimWhite(bytes_, span.first, line_end);
    while (last > span.first && bytes_[last - 1] == ',') --last;
    return {span.first, last};
}

/// A bisection, as blocks are in breadth-first order: the last block whose first child isn't after the node.
std::uint32_t ParsedText::ParentOf(std::uint32_t node) const {
    std::uint32_t first = 0, last = blocks_.Count();
    while (last - first > 1) {
        const std::uint32_t middle = first + (last - first) / 2;
        (blocks_[middle].first_child <= node ? first : last) = middle;
    }
    return first;
}

/// Counts the blocks among the nodes since the last sample.
std::uint32_t ParsedText::BlockOf(std::uint32_t node) const {
    std::uint32_t block = samples_[node / kSampledNodes];
    for (std::uint32_t before = node - node % kSampledNodes; before != node; ++before) {
        if (nodes_[before].Kind() != NodeKind::kScalar) ++block;
    }
    return block;
}

/// The list of blocks is the queue of the walk, and grows during it. Until a block is walked, its number among the
/// delimiters' blocks stands in place of its first child.
TextFault TextWalk::Run() {
    if (!delimiters_.Find(text_, parsed_.size_)) return TextFault::kOutOfMemory;
    auto& blocks = parsed_.blocks_;
    if (!blocks.Push(ParsedText::Block{0, NodeKind::kTable})) return TextFault::kOutOfMemory;
    for (std::uint32_t number = 0; number < blocks.Count(); ++number) {
        const std::uint32_t opened = blocks[number].first_child;
        blocks[number].first_child = parsed_.nodes_.Count() & kMostTextBytes;
        if (!WalkBlock(number, opened)) return fault_;
    }
    return TextFault::kNone;
}

bool TextWalk::WalkBlock(std::uint32_t number, std::uint32_t opened) {
    if (number == 0) return WalkTable({{0, parsed_.size_}, {0, delimiters_.Count()}});
    const Delimiters::Block block = delimiters_.BlockAt(opened);
    const Span bytes = {delimiters_[block.open].position + 1U, delimiters_[block.close].position};
    const Rest rest = {bytes, {block.open + 1, block.close}, opened + 1};
    return parsed_.blocks_[number].kind == NodeKind::kTable ? WalkTable(rest) : WalkArray(rest);
}

/// While scalar_waits, the rest begins with that scalar's value.
bool TextWalk::WalkTable(Rest rest) {
    ++parsed_.counts_.tables;
    bool scalar_waits = false;
    while (rest.bytes.first < rest.bytes.last) {
        const std::uint32_t equals = delimiters_.NextEquals(rest.delimiters);
        if (equals == rest.delimiters.last) {
            if (scalar_waits) LastNode().SetValue(NodeKind::kScalar, rest.bytes.last);
            return true;
        }
        const std::uint32_t position = delimiters_[equals].position;
        if (!AddEntry({{rest.bytes.first, position}, {rest.delimiters.first, equals}}, scalar_waits)) return false;
        rest.bytes.first = SkipWhite(text_, position + 1, rest.bytes.last);
        rest.delimiters.first = equals + 1;
        const bool is_block = rest.bytes.first < rest.bytes.last && text_[rest.bytes.first] == '{';
        if (is_block && !AddBlock(rest)) return false;
        scalar_waits = !is_block;
    }
    return true;
}

/// Adds the entry whose `=` ends the span, without its value. The value of the entry before may precede its key. A
/// spelled key is never longer than its bytes in the text.
bool TextWalk::AddEntry(const Rest& span, bool behind_scalar) {
    const std::uint32_t equals = span.bytes.last;
    const Span key = behind_scalar ? KeyBehindScalar(span) : FirstKey(span.bytes);
    if (behind_scalar) LastNode().SetValue(NodeKind::kScalar, key.first);
    if (key.IsEmpty()) return Fail(TextFault::kNoKey, {equals, equals + 1});
    const KeyScan scan = behind_scalar ? KeyScan::kBehindScalar : KeyScan::kFirst;
    const bool begins_in_quote = !behind_scalar && BeginsInQuote(key, span.delimiters);
    const TextNode node = TextNode::Entry(key.first, equals, scan, begins_in_quote);
    if (key.Length() > kMostKeyBytes && !SpelledKey(text_, key, node).Fits()) return Fail(TextFault::kLongKey, key);
    ++parsed_.counts_.entries;
    return parsed_.AddNode(node);
}

bool TextWalk::WalkArray(Rest rest) {
    ++parsed_.counts_.arrays;
    rest.bytes.first = SkipWhite(text_, rest.bytes.first, rest.bytes.last);
    while (rest.bytes.first < rest.bytes.last) {
        if (!AddElement(rest)) return false;
        std::uint32_t next = SkipWhite(text_, rest.bytes.first, rest.bytes.last);
        if (next < rest.bytes.last && text_[next] == ',') next = SkipWhite(text_, next + 1, rest.bytes.last);
        rest.bytes.first = next;
    }
    return true;
}

/// Adds the element with which the rest begins: a block, a quoted string or a bare word. `rest` becomes what follows
/// it.
bool TextWalk::AddElement(Rest& rest) {
    ++parsed_.counts_.elements;
    if (!parsed_.AddNode(TextNode::Element(rest.bytes.first))) return false;
    const DelimiterKind kind = FirstDelimiter(rest);
    if (kind == kOpenTable || kind == kOpenArray) return AddBlock(rest);
    if (kind == kOpenQuote) {
        const std::uint32_t close = delimiters_[rest.delimiters.first + 1].position;
        LastNode().SetQuotedElement(close);
        rest.bytes.first = close + 1;
    } else {
        rest.bytes.first = WordEnd(rest.bytes);
        LastNode().SetValue(NodeKind::kScalar, rest.bytes.first);
    }
    return true;
}

/// Makes the last node a block. `rest` becomes what follows the block. REQUIRES: the rest begins with the block
bool TextWalk::AddBlock(Rest& rest) {
    const std::uint32_t number = delimiters_.FindBlock(rest.delimiters.first, rest.next_block);
    const Delimiters::Block block = delimiters_.BlockAt(number);
    const NodeKind kind = delimiters_[block.open].kind == kOpenTable ? NodeKind::kTable : NodeKind::kArray;
    const std::uint32_t close = delimiters_[block.close].position;
    LastNode().SetValue(kind, close);
    rest = {{close + 1, rest.bytes.last}, {block.close + 1, rest.delimiters.last}, block.next};
    return parsed_.blocks_.Push(ParsedText::Block{number & kMostTextBytes, kind});
}

/// The kind of the delimiter with which the rest of an array begins. If it doesn't begin with one, kEquals, which no
/// array contains. Removes from the rest the delimiters inside a bare word that has been passed.
DelimiterKind TextWalk::FirstDelimiter(Rest& rest) const {
    DelimiterRange& range = rest.delimiters;
    while (range.first < range.last && delimiters_[range.first].position < rest.bytes.first) ++range.first;
    const bool is_here = range.first < range.last && delimiters_[range.first].position == rest.bytes.first;
    return is_here ? delimiters_[range.first].kind : kEquals;
}

std::uint32_t TextWalk::WordEnd(Span span) const {
    std::uint32_t end = span.first;
    while (end < span.last && !Is(kWhite, text_[end]) && text_[end] != ',') ++end;
    return end;
}

/// A key with no scalar before it: the last line of the span, without white space at its ends. A line end inside a
/// quote counts, too.
Span TextWalk::FirstKey(Span span) const {
    const std::uint32_t last = TrimWhite(text_, span.first, span.last);
    std::uint32_t line = span.last;
    while (line > span.first && !Is(kLineEnd, text_[line - 1])) --line;
    const std::uint32_t first = SkipWhite(text_, line, last);
    return {first, std::max(first, last)};
}

/// Whether a quote that opens before the key closes in it.
bool TextWalk::BeginsInQuote(Span key, DelimiterRange delimiters) const {
    while (delimiters.last > delimiters.first && delimiters_[delimiters.last - 1].position >= key.first)
        --delimiters.last;
    return delimiters.last > delimiters.first && delimiters_[delimiters.last - 1].kind == kOpenQuote;
}

/// The key at the end of a span that begins with a scalar's value: the last piece, and the pieces that `:` joins to it.
Span TextWalk::KeyBehindScalar(const Rest& span) const {
    const std::uint32_t start = span.bytes.first;
    const std::uint32_t last = TrimWhite(text_, start, span.bytes.last);
    std::uint32_t first = PieceStart({start, last}, span.delimiters);
    for (;;) {
        const std::uint32_t colon = TrimWhite(text_, start, first);
        if (colon == start || text_[colon - 1] != ':') break;
        const std::uint32_t left = TrimWhite(text_, start, colon - 1);
        if (left == start) break;
        first = PieceStart({start, left}, span.delimiters);
    }
    return {first, last};
}

/// The position where the last piece of a key in the span begins: after white space, `,` or `:`. A quoted string is
/// never divided.
std::uint32_t TextWalk::PieceStart(Span span, DelimiterRange delimiters) const {
    std::uint32_t first = span.last;
    while (first > span.first && !Is(kPieceEnd, text_[first - 1])) {
        --first;
        if (text_[first] == '"') static_cast<void>(delimiters_.SkipQuoteBackwards(first, delimiters));
    }
    return first;
}

} // namespace Configure
