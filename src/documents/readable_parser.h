// A parser of the readable text form that stores nothing: it reads a text and returns one event after the other, in
// constant space.
//
// The keys and values of events point into the caller's text. Comments are overwritten with NULs in place, so every
// byte keeps its place. The form is tolerant: what a byte means depends on whether the parser looks for a key or for a
// value.
//
//                        key                                value
//   white space = 0 FF   before it: skipped; ends it        before it: skipped; ends a bare one
//   {                    before it: skipped; ends it        is the value, whatever is before it
//   }                    closes the block; key dropped      before it: skipped; ends a bare one
//   [ ( "                part of it                         [ ( begin the value; " only if nothing is before it
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
    kVector4,  // `(x,y,z,w)`, or up to the text's end
    kQuoted,   // with its quotes
    kText,     // bare, but not a number
    kInteger,  // digits, with or without a `-` in front
    kReal,     // an integer's bytes with one `.` among them
    kBlockEnd, // the value is the `}`; the key is a text before it that has no value and is ignored
    kTextEnd,  // ends a block that no `}` closes, which isn't a fault; key and value are empty
};

/// An entry, or the end of a block. The document itself is a block, too: its end is the last event, and each kBlock has
/// its own end. Bytes between a key and its value are delimiters, or bare text that a following bracket cancels.
struct ReadableEvent {
    ReadableKind kind;
    std::string_view key;   // never empty for an entry
    std::string_view value; // never empty for an entry
};

enum class ReadableError : std::uint8_t {
    kNone,
    kKeyWithoutValue,
    kOpenQuote, // a value begins with a quote and no quote closes it
};

/// What is wrong with a text, and where.
struct ReadableFailure {
    ReadableError error;
    const char* place; // the key or the quote; null if nothing is wrong
};

class ReadableParser {
public:
    /// Parses the `size` bytes at `text`, which are borrowed, and blanks their comments. REQUIRES: text[size] is a NUL
    ReadableParser(char* text, std::uint32_t size);

    /// Finds the next event. False after the last event, or if the text is wrong: see Failure.
    [[nodiscard]] bool Next(ReadableEvent& event);

    [[nodiscard]] ReadableFailure Failure() const { return failure_; }

private:
    [[nodiscard]] bool TakeValue(ReadableEvent& event);
    [[nodiscard]] bool TakeQuoted(ReadableEvent& event);
    void TakeVector(ReadableEvent& event);
    bool Fail(ReadableError error, const char* place);

    const char* position_;
    const char* end_;         // the NUL after the text; it ends a key and a bare value like any delimiter
    std::uint32_t depth_ = 1; // the open blocks, including the document
    ReadableFailure failure_{ReadableError::kNone, nullptr};
};

/// The text of a quoted value, without its quotes. A NUL ends it, and so does a blanked comment.
[[nodiscard]] std::string_view QuotedText(std::string_view value);

/// Removes the first component from `rest` and returns it: the text before the delimiter, or all of it if there is
/// none.
[[nodiscard]] std::string_view TakeComponent(std::string_view& rest, char delimiter);

} // namespace Tessarin

#endif
