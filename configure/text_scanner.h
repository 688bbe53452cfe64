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
///   BeginEntry(key)            an entry of the table at hand; a scalar without a value, unless told otherwise
///   BeginElement()             an element of the array at hand, likewise
///   TakeText(text)             the scalar's value; null if it could not be interned
///   TakeBlock(is_table)        it is no scalar but a block, whose body comes later
///
/// All answer whether to go on.

#ifndef TESSARIN_CONFIGURE_TEXT_SCANNER_H
#define TESSARIN_CONFIGURE_TEXT_SCANNER_H

#include "core/list.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

class TextScanner {
public:
    /// A mark has 28 bits for a position.
    static constexpr std::uint32_t kMostBytes = (1U << 28) - 1;

    TextScanner() = default;
    ~TextScanner();
    TextScanner(const TextScanner&) = delete;
    TextScanner& operator=(const TextScanner&) = delete;

    /// Takes a text, borrowed, squeezes out its comments in place, and matches quotes and braces. False if memory runs
    /// out or the text is too long. REQUIRES: bytes[size] is the end mark, 0xFF
    [[nodiscard]] bool Prepare(char* bytes, std::uint32_t size);

    /// False as soon as the receiver says so, a key is missing or too long, a text can't be interned, or memory runs
    /// out.
    template <class Receiver>
    [[nodiscard]] bool Walk(Receiver& receiver);

private:
    struct Range {
        std::uint32_t first, last;
    };

    // What stands at a position, in the low four bits of its mark; the rest is the partner's position.
    enum Flag : std::uint32_t { kNone = 0, kOpenQuote = 1, kCloseQuote = 2, kTable = 4, kArray = 8 };

    [[nodiscard]] std::uint32_t FlagAt(std::uint32_t position) const { return marks_[position] & 15U; }
    [[nodiscard]] std::uint32_t Partner(std::uint32_t position) const { return marks_[position] >> 4; }

    bool MatchBrackets();
    std::uint32_t MatchQuote(std::uint32_t open);
    void CloseBlock(std::uint32_t open, bool has_equals, std::uint32_t end);

    template <class Receiver>
    bool WalkTable(Range body, Receiver& receiver);
    template <class Receiver>
    bool WalkArray(Range body, Receiver& receiver);
    template <class Receiver>
    bool BeginEntry(Range stretch, bool behind_scalar, Receiver& receiver);
    template <class Receiver>
    bool TakeBlock(std::uint32_t open, Receiver& receiver);

    [[nodiscard]] std::uint32_t NextEquals(std::uint32_t from, std::uint32_t last) const;
    [[nodiscard]] std::uint32_t SkipWhite(std::uint32_t from, std::uint32_t last) const;
    [[nodiscard]] std::uint32_t TrimWhite(std::uint32_t first, std::uint32_t from) const;
    [[nodiscard]] std::uint32_t WordEnd(std::uint32_t from, std::uint32_t last) const;
    [[nodiscard]] std::uint32_t PieceStart(std::uint32_t first, std::uint32_t last) const;

    // The scans. Each answers an interned text, null if there is none or it can't be had.
    [[nodiscard]] cstr FirstKey(Range stretch) const;
    [[nodiscard]] cstr KeyBehindScalar(Range stretch, Range& scalar) const;
    [[nodiscard]] cstr Value(Range stretch) const;
    [[nodiscard]] cstr Quoted(std::uint32_t open) const;
    [[nodiscard]] cstr Text(Range range) const;
    [[nodiscard]] cstr PlainKey(Range range) const;

    const char* text_ = nullptr;           // ends with 0xFF at size_
    std::uint32_t size_ = 0;               // less the comments
    std::uint32_t* marks_ = nullptr;       // one a position, the end's included, from calloc
    Tessarin::List<std::uint32_t> blocks_; // of a walk: the positions of the `{` that it has met
};

template <class Receiver>
bool TextScanner::Walk(Receiver& receiver) {
    blocks_.Clear();
    if (!receiver.BeginTable() || !WalkTable({0, size_}, receiver)) return false;
    for (std::uint32_t next = 0; next < blocks_.Count(); ++next) {
        const std::uint32_t open = blocks_[next];
        const Range body = {open + 1, Partner(open)};
        const bool walked = FlagAt(open) == kArray ? receiver.BeginArray() && WalkArray(body, receiver)
                                                   : receiver.BeginTable() && WalkTable(body, receiver);
        if (!walked) return false;
    }
    return true;
}

template <class Receiver>
bool TextScanner::WalkTable(Range body, Receiver& receiver) {
    bool scalar_waits = false; // its value begins at `from`
    for (std::uint32_t from = body.first; from < body.last;) {
        const std::uint32_t equals = NextEquals(from, body.last);
        if (equals == body.last) {
            if constexpr (Receiver::kTakesTexts) {
                if (scalar_waits) return receiver.TakeText(Value({from, body.last}));
            }
            return true;
        }
        if (!BeginEntry({from, equals}, scalar_waits, receiver)) return false;
        from = SkipWhite(equals + 1, body.last);
        scalar_waits = from < body.last && text_[from] != '{';
        if (from < body.last && !scalar_waits) {
            if (!TakeBlock(from, receiver)) return false;
            from = Partner(from) + 1;
        }
    }
    return true;
}

/// An entry whose `=` ends the stretch. In front of its key there may be the value of the one before it.
template <class Receiver>
bool TextScanner::BeginEntry(Range stretch, bool behind_scalar, Receiver& receiver) {
    if constexpr (!Receiver::kTakesTexts) {
        return receiver.BeginEntry(nullptr);
    } else {
        Range scalar = {stretch.first, stretch.first};
        const cstr key = behind_scalar ? KeyBehindScalar(stretch, scalar) : FirstKey(stretch);
        if (key == nullptr) return false;
        if (behind_scalar && !receiver.TakeText(Value(scalar))) return false;
        return receiver.BeginEntry(key);
    }
}

template <class Receiver>
bool TextScanner::WalkArray(Range body, Receiver& receiver) {
    for (std::uint32_t from = SkipWhite(body.first, body.last); from < body.last;) {
        if (!receiver.BeginElement()) return false;
        const std::uint32_t flag = FlagAt(from);
        std::uint32_t behind = 0;
        if (flag == kTable || flag == kArray) {
            if (!TakeBlock(from, receiver)) return false;
            behind = Partner(from) + 1;
        } else {
            behind = flag == kOpenQuote ? Partner(from) + 1 : WordEnd(from, body.last);
            if constexpr (Receiver::kTakesTexts) {
                if (!receiver.TakeText(flag == kOpenQuote ? Quoted(from) : Value({from, behind}))) return false;
            }
        }
        from = SkipWhite(behind, body.last);
        if (from < body.last && text_[from] == ',') from = SkipWhite(from + 1, body.last);
    }
    return true;
}

template <class Receiver>
bool TextScanner::TakeBlock(std::uint32_t open, Receiver& receiver) {
    return receiver.TakeBlock(FlagAt(open) == kTable) && blocks_.Push(open);
}

} // namespace Configure

#endif
