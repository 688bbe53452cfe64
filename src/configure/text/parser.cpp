// Invariants, once a text is prepared:
//
//  1. The stops are the bytes outside of quotes that are a quote, a brace with a partner, or an `=`, in their order.
//     What is still open at the text's end ends there, innermost first, with stops of its own at size_.
//  2. The walk of a table stands outside of quotes: it begins behind a `{` or at the start, jumps over quotes, and
//     comes to rest on an `=`, behind it, or behind a `}`. So any `{` and any `"` it meets has a stop. The walk of an
//     array may get into a quote, from a bare word with a quote in it; nothing has a stop there but the closing quote,
//     which is a byte like any other.
//  3. Quotes that begin in a stretch that a scan is given end in it.
//
// A NUL has no meaning for the scans, but ends the text that is interned.

#include "configure/text/parser.h"

#include "configure/tree/composite_key.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Configure {
namespace {

constexpr char kEndMark = '\xFF';

enum ByteClass : unsigned char {
    kWhite = 1,
    kLineEnd = 2,
    kBracket = 4, // what the matching stops at
    kInKey = 8,   // what a key isn't taken with as it stands
    kPieceEnd = 16
};

constexpr std::array<unsigned char, 256> MakeClasses() {
    std::array<unsigned char, 256> classes = {};
    auto add = [&classes](const char* bytes, int its_classes) {
        for (; *bytes != '\0'; ++bytes) {
            unsigned char& entry = classes[static_cast<unsigned char>(*bytes)];
            entry = static_cast<unsigned char>(entry | its_classes);
        }
    };
    add(" \t\n\r", kWhite | kInKey | kPieceEnd);
    add("\n\r", kLineEnd);
    add("\"{}=", kBracket);
    add("\":,\\/", kInKey);
    add(":,", kPieceEnd);
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

} // namespace

/// A key that isn't taken as it stands in the text, put together byte by byte.
class TextScanner::KeyText {
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

    /// False if the key was too long or can't be interned.
    [[nodiscard]] bool Intern(cstr* place) {
        if (!fits_) return false;
        text_[length_] = '\0';
        Tessarin::StringTable& strings = *Tessarin::string_table;
        const bool is_path =
            std::memchr(text_, '\\', length_) != nullptr || std::memchr(text_, '/', length_) != nullptr;
        *place = is_path ? strings.InternPath(text_) : strings.InternLowerCase(text_);
        return *place != nullptr;
    }

private:
    char text_[kKeyRoom];
    std::uint32_t length_ = 0;
    bool fits_ = true;
};

bool TextScanner::Prepare(char* bytes, std::uint32_t size) {
    if (size > kMostBytes) return false;
    const char* end = SqueezeComments(bytes, FindByte(bytes, bytes + size, kEndMark));
    text_ = bytes;
    size_ = static_cast<std::uint32_t>(end - bytes);
    return MatchBrackets();
}

/// One pass over the text, which also learns of each block whether an `=` stands directly in it.
bool TextScanner::MatchBrackets() {
    struct OpenBlock {
        std::uint32_t stop;
        bool has_equals;
    };
    Tessarin::List<OpenBlock> open;
    for (std::uint32_t position = 0; position < size_; ++position) {
        if (!Is(kBracket, text_[position])) continue;
        bool done = true;
        switch (text_[position]) {
        case '=':
            if (!open.IsEmpty()) open.Top().has_equals = true;
            done = AddStop(position, kEquals);
            break;
        case '"':
            done = AddQuote(position);
            break;
        case '{':
            done = open.Push({stops_.Count(), false}) && AddStop(position, kTable);
            break;
        default: // a `}` without a partner is a byte like any other
            if (open.IsEmpty()) break;
            done = CloseBlock(open.Top().stop, open.Top().has_equals, position);
            open.Pop();
        }
        if (!done) return false;
    }
    while (!open.IsEmpty()) {
        const OpenBlock block = open.Pop();
        if (!CloseBlock(block.stop, block.has_equals, size_)) return false;
    }
    return true;
}

bool TextScanner::AddStop(std::uint32_t position, Kind kind, std::uint32_t partner) {
    return stops_.Push({position << 4 | kind, partner});
}

/// The quote that opens at the position, which is then where it closes.
bool TextScanner::AddQuote(std::uint32_t& position) {
    const std::uint32_t open = stops_.Count();
    if (!AddStop(position, kOpenQuote, open + 1)) return false;
    const void* found = std::memchr(text_ + position + 1, '"', size_ - position - 1);
    position = found == nullptr ? size_ : static_cast<std::uint32_t>(static_cast<const char*>(found) - text_);
    return AddStop(position, kCloseQuote, open);
}

/// A block is an array if something stands in it, but no `=` directly.
bool TextScanner::CloseBlock(std::uint32_t open, bool has_equals, std::uint32_t end) {
    const std::uint32_t position = StopAt(open).Position();
    const bool is_table = has_equals || SkipWhite(position + 1, end) == end;
    StopAt(open) = {position << 4 | (is_table ? kTable : kArray), stops_.Count()};
    return AddStop(end, kBlockEnd, open);
}

TextScanner::Body TextScanner::BodyOf(std::uint32_t open) {
    const std::uint32_t close = StopAt(open).partner;
    return {{StopAt(open).Position() + 1, StopAt(close).Position()}, {open + 1, close}};
}

/// The next `=`, or the last stop. Braces don't count.
std::uint32_t TextScanner::NextEquals(Range stops) {
    while (stops.first < stops.last && StopAt(stops.first).ItsKind() != kEquals) ++stops.first;
    return stops.first;
}

/// The stop that the rest begins with, or null. Others that were jumped over aren't the rest's any more.
const TextScanner::Stop* TextScanner::FirstStopIn(Body& rest) {
    Range& stops = rest.stops;
    while (stops.first < stops.last && StopAt(stops.first).Position() < rest.bytes.first) ++stops.first;
    const bool is_here = stops.first < stops.last && StopAt(stops.first).Position() == rest.bytes.first;
    return is_here ? &StopAt(stops.first) : nullptr;
}

/// The stop of a quote that opens, or closes, at the position, if one does.
const TextScanner::Stop* TextScanner::QuoteAt(std::uint32_t position, Kind kind, Range stops) {
    if (text_[position] != '"') return nullptr;
    const Stop* const first = stops_.begin() + stops.first;
    const Stop* const last = stops_.begin() + stops.last;
    const Stop* stop = std::lower_bound(first, last, position,
                                        [](const Stop& its, std::uint32_t wanted) { return its.Position() < wanted; });
    return stop != last && stop->Position() == position && stop->ItsKind() == kind ? stop : nullptr;
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
std::uint32_t TextScanner::PieceStart(std::uint32_t first, std::uint32_t last, Range stops) {
    while (last > first && !Is(kPieceEnd, text_[last - 1])) {
        const Stop* quote = QuoteAt(last - 1, kCloseQuote, stops);
        last = quote == nullptr ? last - 1 : StopAt(quote->partner).Position();
    }
    return last;
}

/// A key that no scalar stands in front of: what the last line of the stretch holds. Blanks inside of it count, but
/// not beside `:` and `,`. A line end counts in a quote too.
bool TextScanner::TakeFirstKey(const Body& stretch, cstr* place) {
    const std::uint32_t last = TrimWhite(stretch.bytes.first, stretch.bytes.last);
    std::uint32_t line = stretch.bytes.last;
    while (line > stretch.bytes.first && !Is(kLineEnd, text_[line - 1])) --line;
    const std::uint32_t first = SkipWhite(line, last);
    if (first >= last) return false;
    if (IsPlainKey({first, last})) return TakePlainKey({first, last}, place);

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
            PutPiece(position, stretch.stops, key);
        }
    }
    return key.Intern(place);
}

/// Puts the byte at the position, or the quoted string that begins there, which the position then is at the end of.
void TextScanner::PutPiece(std::uint32_t& position, Range stops, KeyText& key) {
    const Stop* quote = QuoteAt(position, kOpenQuote, stops);
    if (quote == nullptr) {
        key.Put(text_[position]);
        return;
    }
    const std::uint32_t close = StopAt(quote->partner).Position();
    key.Put(text_ + position + 1, close - position - 1);
    position = close;
}

/// The key at the end of a stretch that begins with a scalar's value: the last piece, and whatever `:` joins to it.
TextScanner::Range TextScanner::KeyBehindScalar(const Body& stretch) {
    const std::uint32_t start = stretch.bytes.first;
    const std::uint32_t last = TrimWhite(start, stretch.bytes.last);
    std::uint32_t first = PieceStart(start, last, stretch.stops);
    for (;;) {
        const std::uint32_t colon = TrimWhite(start, first);
        if (colon == start || text_[colon - 1] != ':') break;
        const std::uint32_t left = TrimWhite(start, colon - 1);
        if (left == start) break;
        first = PieceStart(start, left, stretch.stops);
    }
    return {first, last};
}

/// A key behind a scalar. Its blanks don't count but in quotes.
bool TextScanner::TakeKey(Range key_range, Range stops, cstr* place) {
    if (key_range.first == key_range.last) return false;
    if (IsPlainKey(key_range)) return TakePlainKey(key_range, place);
    KeyText key;
    for (std::uint32_t position = key_range.first; position < key_range.last; ++position) {
        if (!Is(kWhite, text_[position])) PutPiece(position, stops, key);
    }
    return key.Intern(place);
}

/// Whether a key is nothing but bytes that stand for themselves, as most are.
bool TextScanner::IsPlainKey(Range key) const {
    for (std::uint32_t position = key.first; position < key.last; ++position) {
        if (Is(kInKey, text_[position])) return false;
    }
    return key.last - key.first < kKeyRoom;
}

bool TextScanner::TakePlainKey(Range key, cstr* place) {
    return texts_.Add({text_ + key.first, key.last - key.first, Tessarin::TextForm::kLowerCase, place});
}

/// What stands in quotes, or the first line less white space and then commas at its end.
bool TextScanner::TakeValue(const Body& stretch, cstr* place) {
    const std::uint32_t first = SkipWhite(stretch.bytes.first, stretch.bytes.last);
    if (first < stretch.bytes.last) {
        if (const Stop* quote = QuoteAt(first, kOpenQuote, stretch.stops)) return TakeQuoted(*quote, place);
    }
    return TakeBare({first, stretch.bytes.last}, place);
}

/// REQUIRES: the stretch is empty or begins with a byte that isn't white
bool TextScanner::TakeBare(Range stretch, cstr* place) {
    std::uint32_t line_end = stretch.first;
    while (line_end < stretch.last && !Is(kLineEnd, text_[line_end])) ++line_end;
    std::uint32_t last = TrimWhite(stretch.first, line_end);
    while (last > stretch.first && text_[last - 1] == ',') --last;
    return TakeText({stretch.first, last}, place);
}

bool TextScanner::TakeQuoted(const Stop& quote, cstr* place) {
    return TakeText({quote.Position() + 1, StopAt(quote.partner).Position()}, place);
}

bool TextScanner::TakeText(Range range, cstr* place) {
    const char* text = text_ + range.first;
    const std::uint32_t room = range.last - range.first;
    const void* nul = std::memchr(text, '\0', room);
    const std::uint32_t length =
        nul == nullptr ? room : static_cast<std::uint32_t>(static_cast<const char*>(nul) - text);
    return texts_.Add({text, length, Tessarin::TextForm::kAsIs, place});
}

} // namespace Configure
