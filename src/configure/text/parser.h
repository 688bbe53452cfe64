/// The text form: one reading of it, for whoever wants to know what a text holds.
///
/// It is no tokenizer. Comments are squeezed out, quotes and braces are matched, and then the walk finds entries by
/// their `=` and cuts keys and values out of the stretches in between. A value and the key behind it are told apart by
/// looking back from the next `=`.
///
/// The walk goes breadth-first, body after body, and tells a receiver what it finds:
///
///   kTakesTexts                whether it wants keys and values; without, none is cut out, and keys can't fail
///   BeginTable(), BeginArray() the next body: first the root's, then those of the blocks, in the order of TakeBlock
///   BeginEntry()               an entry of the table at hand; a scalar without a value, unless told otherwise
///   BeginElement()             an element of the array at hand, likewise
///   TakeBlock(is_table)        the last one is no scalar but a block, whose body comes later
///   KeyPlace(), TextPlace()    where the last one's key and the scalar's text go, `cstr*`; they are there when the
///                              walk is over
///
/// The others answer whether to go on.

#ifndef TESSARIN_CONFIGURE_TEXT_PARSER_H
#define TESSARIN_CONFIGURE_TEXT_PARSER_H

#include "memory/list.h"
#include "strings/intern_batch.h"
#include "strings/string_table.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

class TextScanner {
public:
    /// A stop has 28 bits for its position.
    static constexpr std::uint32_t kMostBytes = (1U << 28) - 1;

    /// Takes a text, borrowed, squeezes out its comments in place, and matches quotes and braces. False if memory runs
    /// out or the text is too long. REQUIRES: bytes[size] is the end mark, 0xFF
    [[nodiscard]] bool Prepare(char* bytes, std::uint32_t size);

    /// False as soon as the receiver says so, a key is missing or too long, a text can't be interned, or memory runs
    /// out.
    template <class Receiver>
    [[nodiscard]] bool Walk(Receiver& receiver);

private:
    enum Kind : std::uint32_t { kEquals, kOpenQuote, kCloseQuote, kTable, kArray, kBlockEnd };

    // A byte outside of quotes that the walk may have to stop at.
    struct Stop {
        std::uint32_t position_and_kind;
        std::uint32_t partner; // of a quote and of the `{` of a block: the stop that it ends with, or begins with

        [[nodiscard]] std::uint32_t Position() const { return position_and_kind >> 4; }
        [[nodiscard]] Kind ItsKind() const { return static_cast<Kind>(position_and_kind & 15U); }
    };

    struct Range {
        std::uint32_t first, last;
    };

    // What a body holds, or a stretch of it, and stops among which are all of those in there.
    struct Body {
        Range bytes;
        Range stops;
    };

    class KeyText;

    bool MatchBrackets();
    bool AddStop(std::uint32_t position, Kind kind, std::uint32_t partner = 0);
    bool AddQuote(std::uint32_t& position);
    bool CloseBlock(std::uint32_t open, bool has_equals, std::uint32_t end);

    template <class Receiver>
    bool WalkTable(Body rest, Receiver& receiver);
    template <class Receiver>
    bool WalkArray(Body rest, Receiver& receiver);
    template <class Receiver>
    bool BeginEntry(const Body& stretch, bool behind_scalar, Receiver& receiver);
    template <class Receiver>
    bool TakeBlock(Body& rest, Receiver& receiver);
    template <class Receiver>
    bool TakeElement(Body& rest, Receiver& receiver);

    Stop& StopAt(std::uint32_t index) { return stops_[index]; }
    [[nodiscard]] Body BodyOf(std::uint32_t open);
    [[nodiscard]] std::uint32_t NextEquals(Range stops);
    [[nodiscard]] const Stop* FirstStopIn(Body& rest);
    [[nodiscard]] const Stop* QuoteAt(std::uint32_t position, Kind kind, Range stops);

    [[nodiscard]] std::uint32_t SkipWhite(std::uint32_t from, std::uint32_t last) const;
    [[nodiscard]] std::uint32_t TrimWhite(std::uint32_t first, std::uint32_t from) const;
    [[nodiscard]] std::uint32_t WordEnd(std::uint32_t from, std::uint32_t last) const;
    [[nodiscard]] std::uint32_t PieceStart(std::uint32_t first, std::uint32_t last, Range stops);

    // The scans. Each sees to it that a text comes to its place. False if there is none, or it can't be had.
    void PutPiece(std::uint32_t& position, Range stops, KeyText& key);
    [[nodiscard]] bool TakeFirstKey(const Body& stretch, cstr* place);
    [[nodiscard]] bool TakeKey(Range key_range, Range stops, cstr* place);
    [[nodiscard]] bool TakeValue(const Body& stretch, cstr* place);
    [[nodiscard]] bool TakeBare(Range stretch, cstr* place);
    [[nodiscard]] bool TakeQuoted(const Stop& quote, cstr* place);
    [[nodiscard]] bool TakeText(Range range, cstr* place);
    [[nodiscard]] bool TakePlainKey(Range key, cstr* place);
    [[nodiscard]] bool IsPlainKey(Range key) const;
    [[nodiscard]] Range KeyBehindScalar(const Body& stretch);

    const char* text_ = nullptr;           // ends with 0xFF at size_
    std::uint32_t size_ = 0;               // less the comments
    Tessarin::List<Stop> stops_;           // by ascending position
    Tessarin::List<std::uint32_t> blocks_; // of a walk: the blocks that it has met, as stops
    Tessarin::InternBatch texts_{*Tessarin::string_table};
};

template <class Receiver>
bool TextScanner::Walk(Receiver& receiver) {
    blocks_.Clear();
    if (!receiver.BeginTable() || !WalkTable({{0, size_}, {0, stops_.Count()}}, receiver)) return false;
    for (std::uint32_t next = 0; next < blocks_.Count(); ++next) {
        const std::uint32_t open = blocks_[next];
        const bool walked = StopAt(open).ItsKind() == kArray
                                ? receiver.BeginArray() && WalkArray(BodyOf(open), receiver)
                                : receiver.BeginTable() && WalkTable(BodyOf(open), receiver);
        if (!walked) return false;
    }
    return texts_.InternAll();
}

/// `rest` is what is still to be walked; while a scalar waits for its value, that is what it begins with.
template <class Receiver>
bool TextScanner::WalkTable(Body rest, Receiver& receiver) {
    bool scalar_waits = false;
    while (rest.bytes.first < rest.bytes.last) {
        const std::uint32_t equals = NextEquals(rest.stops);
        if (equals == rest.stops.last) {
            if constexpr (Receiver::kTakesTexts) return !scalar_waits || TakeValue(rest, receiver.TextPlace());
            return true;
        }
        const std::uint32_t position = StopAt(equals).Position();
        const Body stretch = {{rest.bytes.first, position}, {rest.stops.first, equals}};
        if (!BeginEntry(stretch, scalar_waits, receiver)) return false;
        rest = {{SkipWhite(position + 1, rest.bytes.last), rest.bytes.last}, {equals + 1, rest.stops.last}};
        const bool is_block = rest.bytes.first < rest.bytes.last && text_[rest.bytes.first] == '{';
        if (is_block && !TakeBlock(rest, receiver)) return false;
        scalar_waits = !is_block;
    }
    return true;
}

/// An entry whose `=` ends the stretch. In front of its key there may be the value of the one before it.
template <class Receiver>
bool TextScanner::BeginEntry(const Body& stretch, bool behind_scalar, Receiver& receiver) {
    if constexpr (!Receiver::kTakesTexts) {
        return receiver.BeginEntry();
    } else {
        if (!behind_scalar) return receiver.BeginEntry() && TakeFirstKey(stretch, receiver.KeyPlace());
        const Range key = KeyBehindScalar(stretch);
        return TakeValue({{stretch.bytes.first, key.first}, stretch.stops}, receiver.TextPlace()) &&
               receiver.BeginEntry() && TakeKey(key, stretch.stops, receiver.KeyPlace());
    }
}

template <class Receiver>
bool TextScanner::WalkArray(Body rest, Receiver& receiver) {
    rest.bytes.first = SkipWhite(rest.bytes.first, rest.bytes.last);
    while (rest.bytes.first < rest.bytes.last) {
        if (!receiver.BeginElement() || !TakeElement(rest, receiver)) return false;
        std::uint32_t next = SkipWhite(rest.bytes.first, rest.bytes.last);
        if (next < rest.bytes.last && text_[next] == ',') next = SkipWhite(next + 1, rest.bytes.last);
        rest.bytes.first = next;
    }
    return true;
}

/// The element that the rest begins with: a block, a quoted string or a bare word. The rest is then what is behind it.
template <class Receiver>
bool TextScanner::TakeElement(Body& rest, Receiver& receiver) {
    const Stop* stop = FirstStopIn(rest);
    const Kind kind = stop == nullptr ? kEquals : stop->ItsKind();
    if (kind == kTable || kind == kArray) return TakeBlock(rest, receiver);
    const Range word = {rest.bytes.first, WordEnd(rest.bytes.first, rest.bytes.last)};
    rest.bytes.first = kind == kOpenQuote ? StopAt(stop->partner).Position() + 1 : word.last;
    if constexpr (Receiver::kTakesTexts) {
        return kind == kOpenQuote ? TakeQuoted(*stop, receiver.TextPlace()) : TakeBare(word, receiver.TextPlace());
    }
    return true;
}

/// REQUIRES: the rest begins with a block. It is then what is behind it
template <class Receiver>
bool TextScanner::TakeBlock(Body& rest, Receiver& receiver) {
    const std::uint32_t open = rest.stops.first;
    const std::uint32_t close = StopAt(open).partner;
    rest.bytes.first = StopAt(close).Position() + 1;
    rest.stops.first = close + 1;
    return receiver.TakeBlock(StopAt(open).ItsKind() == kTable) && blocks_.Push(open);
}

} // namespace Configure

#endif
