// The form is no grammar of tokens: hardly anything is an error. An entry is found by its `=`, and its key by looking
// back from there. Behind a scalar, the span up to the next `=` holds the scalar's value and then the next key; the two
// are told apart by walking back over the key.
//
// Invariants of a walk:
//
//  1. A table is walked outside of quotes: the walk begins behind a `{` or at the start, jumps over quotes, and goes on
//     from an `=`, from behind it, or from behind a `}`. So every `{` and every `"` that it meets has a delimiter. The
//     walk of an array may get into a quote, from a bare word with a quote in it; nothing has a delimiter there but the
//     closing quote, which is a byte like any other.
//  2. Quotes that begin in a span that a scan is given end in it.
//  3. The delimiters of a Rest are all of those in its bytes, and in a table's none besides.

#include "configure/text/parser.h"

#include "configure/text/delimiters.h"
#include "configure/text/key_spelling.h"

#include <algorithm>

namespace Configure {

/// The walk over all blocks of one text, whose delimiters are gone when it ends.
class TextWalk {
public:
    explicit TextWalk(ParsedText& parsed) : parsed_(parsed), text_(parsed.bytes_) {}

    [[nodiscard]] TextFault Run();

private:
    // What is still to be walked of a block.
    struct Rest {
        Span bytes;
        DelimiterRange delimiters;
    };

    bool WalkBlock(std::uint32_t number);
    bool WalkTable(Rest rest);
    bool AddEntry(const Rest& span, bool behind_scalar);
    bool AddNode(Span key, KeyScan scan, bool begins_in_quote);
    bool WalkArray(Rest rest);
    bool AddElement(Rest& rest);
    bool AddBlock(Rest& rest);

    [[nodiscard]] const Delimiter* FirstDelimiter(Rest& rest) const;
    [[nodiscard]] Span Between(const Delimiter& open) const;
    [[nodiscard]] Span BareText(Span span) const;
    [[nodiscard]] std::uint32_t WordEnd(Span span) const;
    [[nodiscard]] Span FirstKey(Span span) const;
    [[nodiscard]] bool BeginsInQuote(Span key, DelimiterRange delimiters) const;
    [[nodiscard]] Span KeyBehindScalar(const Rest& span) const;
    [[nodiscard]] std::uint32_t PieceStart(Span span, DelimiterRange delimiters) const;

    TextNode& LastNode() { return parsed_.nodes_.Top(); }
    void SetValue(const Rest& span);
    bool Fail(TextFault fault, Span place) {
        fault_ = fault;
        parsed_.fault_ = place;
        return false;
    }

    ParsedText& parsed_;
    const char* text_;
    Delimiters delimiters_;
    Tessarin::List<std::uint32_t> opens_;       // the delimiter at which each block opens; the root has none
    TextFault fault_ = TextFault::kOutOfMemory; // what a refusal means that doesn't say anything else
};

TextFault ParsedText::Parse(char* bytes, std::uint32_t size) {
    if (size > kMostTextBytes) return TextFault::kTooLong;
    if (!comments_.Strip(bytes, size, size_)) return TextFault::kOutOfMemory;
    bytes_ = bytes;
    return TextWalk(*this).Run();
}

// In both lists what is looked for ascends, as blocks are in breadth-first order.

std::uint32_t ParsedText::ParentOf(std::uint32_t node) const {
    const auto before = [](std::uint32_t wanted, const TextBlock& block) {
        return wanted < block.first_child + block.child_count;
    };
    return static_cast<std::uint32_t>(std::upper_bound(blocks_.begin(), blocks_.end(), node, before) - blocks_.begin());
}

std::uint32_t ParsedText::BlockOf(std::uint32_t node) const {
    const auto before = [](const TextBlock& block, std::uint32_t wanted) { return block.node < wanted; };
    return static_cast<std::uint32_t>(std::lower_bound(blocks_.begin() + 1, blocks_.end(), node, before) -
                                      blocks_.begin());
}

/// The list of blocks is the queue of the walk, and grows while it is gone through.
TextFault TextWalk::Run() {
    if (!delimiters_.Find(text_, parsed_.size_)) return TextFault::kOutOfMemory;
    Tessarin::List<TextBlock>& blocks = parsed_.blocks_;
    if (!blocks.Push({TextBlock::kNoNode, NodeKind::kTable, 0, 0}) || !opens_.Push(0)) return TextFault::kOutOfMemory;
    for (std::uint32_t number = 0; number < blocks.Count(); ++number) {
        blocks[number].first_child = parsed_.nodes_.Count();
        if (!WalkBlock(number)) return fault_;
        blocks[number].child_count = parsed_.nodes_.Count() - blocks[number].first_child;
    }
    return TextFault::kNone;
}

bool TextWalk::WalkBlock(std::uint32_t number) {
    if (number == 0) return WalkTable({{0, parsed_.size_}, {0, delimiters_.Count()}});
    const std::uint32_t open = opens_[number];
    const Rest rest = {Between(delimiters_[open]), {open + 1, delimiters_[open].partner}};
    return parsed_.blocks_[number].kind == NodeKind::kTable ? WalkTable(rest) : WalkArray(rest);
}

/// While a scalar waits for its value, that is what the rest begins with.
bool TextWalk::WalkTable(Rest rest) {
    ++parsed_.counts_.tables;
    bool scalar_waits = false;
    while (rest.bytes.first < rest.bytes.last) {
        const std::uint32_t equals = delimiters_.NextEquals(rest.delimiters);
        if (equals == rest.delimiters.last) {
            if (scalar_waits) SetValue(rest);
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

/// Adds the entry whose `=` ends the span, without its value. In front of its key may be the value of the one before.
bool TextWalk::AddEntry(const Rest& span, bool behind_scalar) {
    const Span key = behind_scalar ? KeyBehindScalar(span) : FirstKey(span.bytes);
    if (behind_scalar) SetValue({{span.bytes.first, key.first}, span.delimiters});
    if (key.IsEmpty()) return Fail(TextFault::kNoKey, {span.bytes.last, span.bytes.last + 1});
    ++parsed_.counts_.entries;
    if (behind_scalar) return AddNode(key, KeyScan::kBehindScalar, false);
    return AddNode(key, KeyScan::kFirst, BeginsInQuote(key, span.delimiters));
}

/// A key is never longer than its bytes in the text.
bool TextWalk::AddNode(Span key, KeyScan scan, bool begins_in_quote) {
    const TextNode node(key, scan, begins_in_quote);
    if (key.Length() > kMostKeyBytes && !SpelledKey(text_, node).Fits()) return Fail(TextFault::kLongKey, key);
    return parsed_.nodes_.Push(node);
}

/// Gives the last entry its value: what is in quotes, or the first line of the span. What is behind either is dropped.
void TextWalk::SetValue(const Rest& span) {
    const std::uint32_t first = SkipWhite(text_, span.bytes.first, span.bytes.last);
    const bool is_quoted = first < span.bytes.last && text_[first] == '"';
    if (is_quoted) {
        LastNode().SetText(Between(delimiters_[span.delimiters.first]), true);
    } else {
        LastNode().SetText(BareText({first, span.bytes.last}), false);
    }
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

/// Adds the element that the rest begins with: a block, a quoted string or a bare word. The rest is then what is behind
/// it.
bool TextWalk::AddElement(Rest& rest) {
    ++parsed_.counts_.elements;
    if (!AddNode({rest.bytes.first, rest.bytes.first}, KeyScan::kNone, false)) return false;
    const Delimiter* delimiter = FirstDelimiter(rest);
    const DelimiterKind kind = delimiter == nullptr ? kEquals : delimiter->kind;
    if (kind == kOpenTable || kind == kOpenArray) return AddBlock(rest);
    if (kind == kOpenQuote) {
        LastNode().SetText(Between(*delimiter), true);
        rest.bytes.first = delimiters_[delimiter->partner].position + 1U;
    } else {
        const Span word = {rest.bytes.first, WordEnd(rest.bytes)};
        LastNode().SetText(word, false);
        rest.bytes.first = word.last;
    }
    return true;
}

/// Makes the last node a block. The rest is then what is behind it. REQUIRES: the rest begins with the block
bool TextWalk::AddBlock(Rest& rest) {
    const std::uint32_t open = rest.delimiters.first;
    const std::uint32_t close = delimiters_[open].partner;
    const NodeKind kind = delimiters_[open].kind == kOpenTable ? NodeKind::kTable : NodeKind::kArray;
    LastNode().SetBlock(kind, Between(delimiters_[open]));
    rest.bytes.first = delimiters_[close].position + 1U;
    rest.delimiters.first = close + 1;
    return parsed_.blocks_.Push({parsed_.nodes_.Count() - 1, kind, 0, 0}) && opens_.Push(open);
}

/// The delimiter that the rest begins with, or null. Others that a bare word has passed aren't the rest's any more.
const Delimiter* TextWalk::FirstDelimiter(Rest& rest) const {
    DelimiterRange& range = rest.delimiters;
    while (range.first < range.last && delimiters_[range.first].position < rest.bytes.first) ++range.first;
    const bool is_here = range.first < range.last && delimiters_[range.first].position == rest.bytes.first;
    return is_here ? &delimiters_[range.first] : nullptr;
}

/// What is in a pair of quotes or braces.
Span TextWalk::Between(const Delimiter& open) const { return {open.position + 1U, delimiters_[open.partner].position}; }

/// The first line, less white space and then commas at its end.
/// REQUIRES: the span is empty or begins with a byte that isn't white
Span TextWalk::BareText(Span span) const {
    std::uint32_t line_end = span.first;
    while (line_end < span.last && !Is(kLineEnd, text_[line_end])) ++line_end;
    std::uint32_t last = TrimWhite(text_, span.first, line_end);
    while (last > span.first && text_[last - 1] == ',') --last;
    return {span.first, last};
}

std::uint32_t TextWalk::WordEnd(Span span) const {
    std::uint32_t end = span.first;
    while (end < span.last && !Is(kWhite, text_[end]) && text_[end] != ',') ++end;
    return end;
}

/// A key that no scalar stands in front of: the last line of the span, less white space at its ends. A line end counts
/// in a quote, too.
Span TextWalk::FirstKey(Span span) const {
    const std::uint32_t last = TrimWhite(text_, span.first, span.last);
    std::uint32_t line = span.last;
    while (line > span.first && !Is(kLineEnd, text_[line - 1])) --line;
    const std::uint32_t first = SkipWhite(text_, line, last);
    return {first, std::max(first, last)};
}

/// Whether a quote that opens in front of the key closes in it.
bool TextWalk::BeginsInQuote(Span key, DelimiterRange delimiters) const {
    while (delimiters.last > delimiters.first && delimiters_[delimiters.last - 1].position >= key.first)
        --delimiters.last;
    return delimiters.last > delimiters.first && delimiters_[delimiters.last - 1].kind == kOpenQuote;
}

/// The key at the end of a span that begins with a scalar's value: the last piece, and whatever `:` joins to it.
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

/// Where the piece of a key begins that ends the span: behind white space, `,` or `:`. A quoted string is one unit.
std::uint32_t TextWalk::PieceStart(Span span, DelimiterRange delimiters) const {
    std::uint32_t first = span.last;
    while (first > span.first && !Is(kPieceEnd, text_[first - 1])) {
        const Delimiter* quote = delimiters_.QuoteAt(text_, first - 1, kCloseQuote, delimiters);
        first = quote == nullptr ? first - 1 : delimiters_[quote->partner].position;
    }
    return first;
}

} // namespace Configure
