// The readable text form, read without storing anything: a text in, one event after the other out, in constant space.
//
// All that an event shows points into the text as it was given. Comments are overwritten with NULs in place, so every
// byte keeps its place. The form is forgiving: what a byte means depends on whether a key or a value is looked for.
//
//                        key                                value
//   white space = 0 FF   before it: skipped; ends it        before it: skipped; ends a bare one
//   {                    before it: skipped; ends it        is the value, whatever stood before
//   }                    closes the block, dropping it      before it: skipped; ends a bare one
//   [ ( "                part of it                         [ ( are the value; " is if nothing stood before
//
// A document, and its events' keys and values:
//
//   size = [1,2,3]   body { name = "a b"   x }         layer 7     (the text's end)
//   kVector3         kBlock kQuoted        kBlockEnd   kInteger    kTextEnd, of the document
//   key    value                           key value

#ifndef TESSARIN_DOCUMENTS_READABLE_PARSER_H
#define TESSARIN_DOCUMENTS_READABLE_PARSER_H

#include <cstdint>
#include <string_view>

namespace Tessarin {

enum class ReadableKind : std::uint8_t {
    kBlock,    // the value is its `{`
    kVector3,  // `[x,y,z]`, or up to the text's end
    kVector4,  // `(x,y,z,w)`, likewise
    kQuoted,   // with its quotes
    kText,     // bare, and no number
    kInteger,  // digits with a `-` in front or none
    kReal,     // likewise with one `.`
    kBlockEnd, // the value is the `}`, the key what stood before it without a value, which doesn't count
    kTextEnd,  // ends a block that no `}` closes, which is no fault; key and value are empty
};

/// An entry, or the end of a block. The document itself is a block, too: its end is the last event, and each kBlock has
/// an end of its own. Bytes between a key and its value are delimiters, or bare text that a bracket has made void.
struct ReadableEvent {
    ReadableKind kind;
    std::string_view key;   // never empty for an entry
    std::string_view value; // never empty for an entry
};

enum class ReadableError : std::uint8_t {
    kNone,
    kKeyWithoutValue,
    kOpenQuote, // no quote closes a value that begins with one
};

/// What is wrong with a text, and where.
struct ReadableFailure {
    ReadableError error;
    const char* place; // of the key, or of the quote; null if nothing is wrong
};

class ReadableParser {
public:
    /// Takes `size` bytes, borrowed, and blanks their comments. REQUIRES: text[size] is a NUL
    ReadableParser(char* text, std::uint32_t size);

    /// Finds the next event. False behind the last one, or where the text is wrong: see Failure.
    [[nodiscard]] bool Next(ReadableEvent& event);

    [[nodiscard]] ReadableFailure Failure() const { return failure_; }

private:
    [[nodiscard]] bool TakeValue(ReadableEvent& event);
    [[nodiscard]] bool TakeQuoted(ReadableEvent& event);
    void TakeVector(ReadableEvent& event);
    bool Fail(ReadableError error, const char* place);

    const char* position_;
    const char* end_;         // the NUL behind the text, which ends a key and a bare value as any delimiter does
    std::uint32_t depth_ = 1; // blocks that are open, with the document
    ReadableFailure failure_{ReadableError::kNone, nullptr};
};

/// The text that a quoted value stands for. A NUL ends it, and so does a comment that was blanked.
[[nodiscard]] std::string_view QuotedText(std::string_view value);

/// Cuts a component off the front of a vector's: what stands before the delimiter, or all there is.
[[nodiscard]] std::string_view TakeComponent(std::string_view& rest, char delimiter);

} // namespace Tessarin

#endif
