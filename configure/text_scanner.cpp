// Invariants, once a text is prepared:
//
//  1. marks_[p] is 0 but at a quote, and at a `{` outside of quotes: partner * 16 + flag. An open quote or brace at the
//     text's end has size_ as its partner. A `}` has no mark.
//  2. Positions that the walk of a table stands on are outside of quotes: it begins behind a `{` or at the start, jumps
//     over quotes, and comes to rest on an `=`, behind it, or behind a `}`. So any `{` and any `"` it meets has a mark.
//     The walk of an array may get into a quote, from a bare word with a quote in it; nothing has a mark there but the
//     closing quote, which is a byte like any other.
//  3. What is inside the stretch that a scan is given is matched inside of it.
//
// A NUL has no meaning for the scans, but ends the text that is interned.

#include "configure/text_scanner.h"

#include "configure/key_spelling.h"
#include "core/library_state.h"

#include <array>
#include <cstdlib>
#include <cstring>

namespace Configure {
namespace {

constexpr char kEndMark = '\xFF';

enum ByteClass : unsigned char {
    kWhite = 1,
    kLineEnd = 2,
    kBracket = 4, // what the matching stops at
    kInKey = 8    // what a key isn't taken with as it stands
};

constexpr std::array<unsigned char, 256> MakeClasses() {
    std::array<unsigned char, 256> classes = {};
    auto add = [&classes](const char* bytes, int its_classes) {
        for (; *bytes != '\0'; ++bytes) {
            unsigned char& entry = classes[static_cast<unsigned char>(*bytes)];
            entry = static_cast<unsigned char>(entry | its_classes);
        }
    };
    add(" \t\n\r", kWhite | kInKey);
    add("\n\r", kLineEnd);
    add("\"{}=", kBracket);
    add("\":,\\/", kInKey);
    classes[0] = kInKey;
    return classes;
}

constexpr std::array<unsigned char, 256> kClasses = MakeClasses();

bool Is(ByteClass wanted, char byte) { return (kClasses[static_cast<unsigned char>(byte)] & wanted) != 0; }

/// The first such byte from `first` on, or `last`.
char* FindByte(char* first, char* last, char byte) {
    void* found = std::memchr(first, byte, static_cast<std::size_t>(last - first));
    return found == nullptr ? last : static_cast<char*>(found);
}

/// The first place of two such bytes, or `last`. May read the byte at `last`.
char* FindPair(char* first, char* last, char byte) {
    char* found = FindByte(first, last, byte);
    while (found != last && found[1] != byte) found = FindByte(found + 1, last, byte);
    return found;
}

/// Where the comment ends whose text begins at `first`, behind its dashes.
char* CommentEnd(char* first, char* last) {
    if (last - first < 2 || first[0] != '[' || first[1] != '[') {
        while (first != last && !Is(kLineEnd, *first)) ++first;
        return first;
    }
    char* brackets = FindPair(first, last, ']');
    return brackets == last ? last : brackets + 2;
}

/// Moves what isn't comment together. Answers the text's new end, which has its end mark. Quotes don't count here.
char* SqueezeComments(char* text, char* last) {
    char* kept = FindPair(text, last, '-');
    for (char* comment = kept; comment != last;) {
        char* behind = CommentEnd(comment + 2, last);
        comment = FindPair(behind, last, '-');
        const auto length = static_cast<std::size_t>(comment - behind);
        std::memmove(kept, behind, length);
        kept += length;
    }
    *kept = kEndMark;
    return kept;
}

/// A key that isn't taken as it stands in the text, put together byte by byte.
class KeyText {
public:
    void Put(const char* bytes, std::uint32_t count) {
        fits_ = fits_ && count < kKeyRoom - length_;
        if (!fits_) return;
        std::memcpy(text_ + length_, bytes, count);
        length_ += count;
    }
    void Put(char byte) { Put(&byte, 1); }
    void PutBlanks(std::uint32_t count) {
        for (; fits_ && count != 0; --count) Put(' ');
    }

    /// Null if the key was too long or can't be interned.
    cstr Intern() {
        if (!fits_) return nullptr;
        text_[length_] = '\0';
        Tessarin::StringTable& strings = Tessarin::library_state->strings;
        const bool is_path =
            std::memchr(text_, '\\', length_) != nullptr || std::memchr(text_, '/', length_) != nullptr;
        return is_path ? strings.InternPath(text_) : strings.InternLowerCase(text_);
    }

private:
    char text_[kKeyRoom];
    std::uint32_t length_ = 0;
    bool fits_ = true;
};

} // namespace

TextScanner::~TextScanner() { std::free(marks_); }

bool TextScanner::Prepare(char* bytes, std::uint32_t size) {
    if (size > kMostBytes) return false;
    char* end = SqueezeComments(bytes, FindByte(bytes, bytes + size, kEndMark));
    text_ = bytes;
    size_ = static_cast<std::uint32_t>(end - bytes);
    marks_ = static_cast<std::uint32_t*>(std::calloc(std::size_t{size_} + 1, sizeof *marks_));
    return marks_ != nullptr && MatchBrackets();
}

/// One pass over the text, which also learns of each block whether an `=` stands directly in it.
bool TextScanner::MatchBrackets() {
    struct OpenBlock {
        std::uint32_t position;
        bool has_equals;
    };
    Tessarin::List<OpenBlock> open;
    for (std::uint32_t position = 0; position < size_; ++position) {
        if (!Is(kBracket, text_[position])) continue;
        const char byte = text_[position];
        if (byte == '"') {
            position = MatchQuote(position);
        } else if (byte == '{') {
            if (!open.Push({position, false})) return false;
        } else if (!open.IsEmpty() && byte == '=') {
            open.Top().has_equals = true;
        } else if (!open.IsEmpty()) {
            const OpenBlock block = open.Pop();
            CloseBlock(block.position, block.has_equals, position);
        }
    }
    while (!open.IsEmpty()) {
        const OpenBlock block = open.Pop();
        CloseBlock(block.position, block.has_equals, size_);
    }
    return true;
}

/// Answers where the quote closes.
std::uint32_t TextScanner::MatchQuote(std::uint32_t open) {
    const void* found = std::memchr(text_ + open + 1, '"', size_ - open - 1);
    const auto close = found == nullptr ? size_ : static_cast<std::uint32_t>(static_cast<const char*>(found) - text_);
    marks_[open] = close << 4 | kOpenQuote;
    marks_[close] = open << 4 | kCloseQuote;
    return close;
}

/// A block is an array if something stands in it, but no `=` directly.
void TextScanner::CloseBlock(std::uint32_t open, bool has_equals, std::uint32_t end) {
    const bool is_table = has_equals || SkipWhite(open + 1, end) == end;
    marks_[open] = end << 4 | (is_table ? kTable : kArray);
}

/// The next `=` that isn't quoted, or `last`. Braces don't count.
std::uint32_t TextScanner::NextEquals(std::uint32_t from, std::uint32_t last) const {
    for (; from < last; ++from) {
        if (!Is(kBracket, text_[from])) continue;
        if (text_[from] == '=') return from;
        if (FlagAt(from) == kOpenQuote) from = Partner(from);
    }
    return last;
}

/// `from` may be one behind `last`, where an open block or quote at the text's end leads to.
std::uint32_t TextScanner::SkipWhite(std::uint32_t from, std::uint32_t last) const {
    while (from < last && Is(kWhite, text_[from])) ++from;
    return from;
}

/// Behind the last byte before `from` that isn't white; `first` if there is none.
std::uint32_t TextScanner::TrimWhite(std::uint32_t first, std::uint32_t from) const {
    while (from > first && Is(kWhite, text_[from - 1])) --from;
    return from;
}

std::uint32_t TextScanner::WordEnd(std::uint32_t from, std::uint32_t last) const {
    while (from < last && !Is(kWhite, text_[from]) && text_[from] != ',') ++from;
    return from;
}

/// Where the piece of a key begins that ends at `last`: behind white space, `,` or `:`. A quoted string is one unit.
std::uint32_t TextScanner::PieceStart(std::uint32_t first, std::uint32_t last) const {
    while (last > first) {
        const char byte = text_[last - 1];
        if (Is(kWhite, byte) || byte == ',' || byte == ':') break;
        last = FlagAt(last - 1) == kCloseQuote ? Partner(last - 1) : last - 1;
    }
    return last;
}

/// A key that no scalar stands in front of: what the last line of the stretch holds. Blanks inside of it count, but
/// not beside `:` and `,`. A line end counts in a quote too.
cstr TextScanner::FirstKey(Range stretch) const {
    const std::uint32_t last = TrimWhite(stretch.first, stretch.last);
    std::uint32_t line = stretch.last;
    while (line > stretch.first && !Is(kLineEnd, text_[line - 1])) --line;
    const std::uint32_t first = SkipWhite(line, last);
    if (first >= last) return nullptr;
    if (cstr plain = PlainKey({first, last})) return plain;

    KeyText key;
    std::uint32_t blanks = 0;
    for (std::uint32_t position = first; position < last; ++position) {
        const char byte = text_[position];
        if (Is(kWhite, byte)) {
            ++blanks;
        } else if (byte == ':' || byte == ',') {
            key.Put(byte);
            blanks = 0;
            position = SkipWhite(position + 1, last) - 1;
        } else {
            key.PutBlanks(blanks);
            blanks = 0;
            if (FlagAt(position) != kOpenQuote) {
                key.Put(byte);
            } else {
                const std::uint32_t close = Partner(position);
                key.Put(text_ + position + 1, close - position - 1);
                position = close;
            }
        }
    }
    return key.Intern();
}

/// A key and the scalar in front of it. The key is the last piece of the stretch, and whatever `:` joins to it; blanks
/// don't count but in quotes.
cstr TextScanner::KeyBehindScalar(Range stretch, Range& scalar) const {
    const std::uint32_t last = TrimWhite(stretch.first, stretch.last);
    std::uint32_t first = PieceStart(stretch.first, last);
    for (;;) {
        const std::uint32_t colon = TrimWhite(stretch.first, first);
        if (colon == stretch.first || text_[colon - 1] != ':') break;
        const std::uint32_t left = TrimWhite(stretch.first, colon - 1);
        if (left == stretch.first) break;
        first = PieceStart(stretch.first, left);
    }
    scalar = {stretch.first, first};
    if (first == last) return nullptr;
    if (cstr plain = PlainKey({first, last})) return plain;

    KeyText key;
    for (std::uint32_t position = first; position < last; ++position) {
        if (Is(kWhite, text_[position])) continue;
        if (FlagAt(position) != kOpenQuote) {
            key.Put(text_[position]);
        } else {
            const std::uint32_t close = Partner(position);
            key.Put(text_ + position + 1, close - position - 1);
            position = close;
        }
    }
    return key.Intern();
}

/// A key of nothing but bytes that stand for themselves, as most are; null for any other.
cstr TextScanner::PlainKey(Range range) const {
    if (range.last - range.first >= kKeyRoom) return nullptr;
    for (std::uint32_t position = range.first; position < range.last; ++position) {
        if (Is(kInKey, text_[position])) return nullptr;
    }
    return Tessarin::library_state->strings.InternLowerCase(text_ + range.first, range.last - range.first);
}

/// What stands in quotes, or the first line less white space and then commas at its end.
cstr TextScanner::Value(Range stretch) const {
    const std::uint32_t first = SkipWhite(stretch.first, stretch.last);
    if (first < stretch.last && FlagAt(first) == kOpenQuote) return Quoted(first);
    std::uint32_t line_end = first;
    while (line_end < stretch.last && !Is(kLineEnd, text_[line_end])) ++line_end;
    std::uint32_t last = TrimWhite(first, line_end);
    while (last > first && text_[last - 1] == ',') --last;
    return Text({first, last});
}

cstr TextScanner::Quoted(std::uint32_t open) const { return Text({open + 1, Partner(open)}); }

cstr TextScanner::Text(Range range) const {
    const char* text = text_ + range.first;
    const std::size_t room = range.last - range.first;
    const void* nul = std::memchr(text, '\0', room);
    const std::size_t length = nul == nullptr ? room : static_cast<std::size_t>(static_cast<const char*>(nul) - text);
    return Tessarin::library_state->strings.Intern(text, length);
}

} // namespace Configure
