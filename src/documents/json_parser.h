// A JSON parser that stores nothing: RapidJSON's reader reads a text, which isn't changed, and a handler is called for
// each thing that the reader finds. The grammar differs from the standard's in three things:
//
//   strings   have no escapes: a backslash is a byte like any other, and the first `"` ends the string
//   comments  may be wherever white space may
//   root      is an object
//
// Strings are read raw without a copy of the text. RapidJSON takes `\` for the start of an escape and `\\` for one
// backslash, so JsonStream shows it every backslash twice: the reader makes one backslash of the two, and the byte
// after them is an ordinary one. The result is the same as if strings were read raw, because a valid text has
// backslashes only in its strings and comments. Elsewhere a single backslash would be an error, and so is the first of
// the two; and the reader skips the bytes of comments.
//
//   the text   " c : \   d "     The reader decodes in situ, each string over itself. As every byte of the text becomes
//   is shown   " c : \ \ d "     one byte of the string, that string is in its place already, and nothing is written.
//   decoded      c : \   d
//
// All places are pointers into the text. If a handler ignores them, they cost nothing.

#ifndef TESSARIN_DOCUMENTS_JSON_PARSER_H
#define TESSARIN_DOCUMENTS_JSON_PARSER_H

#include "documents/throwing_allocator.h"
#include "platform/float_environment.h"

#include <cstdint>
#include <string_view>

#include <rapidjson/reader.h>

namespace Tessarin {

enum class JsonError : std::uint8_t {
    kNone,
    kEmpty,          // the text has only white space and comments
    kRootIsNoObject, // the root is another value
    kBehindRoot,     // something follows the root
    kNoValue,        // no value begins here, or `null`, `true` or `false` is misspelled
    kNoKey,
    kNoColon,
    kNoCommaOrBrace,   // after a member
    kNoCommaOrBracket, // after an element
    kControlByte,      // a string has a byte below 0x20
    kOpenString,
    kNumberTooLarge, // for a double
    kNoFraction,     // a number has no digit after its point
    kNoExponent,     // a number has no digit in its exponent
    kBadComment,     // a `/` doesn't begin a comment, or a comment doesn't end
    kStopped,        // the handler returned false
    kOutOfMemory,
};

/// What is wrong with a text, and where.
struct JsonFailure {
    JsonError error;
    // The byte that doesn't fit; for a wrong root or number its first byte; null if the text isn't the cause.
    const char* place;
};

/// A text in the form in which RapidJSON's reader reads it, with every backslash twice: a model of that library's
/// stream concept.
class JsonStream {
public:
    using Ch = char;

    explicit JsonStream(const char* text) : next_(text) {}

    // At each token the reader copies the stream to a local one and back. The copies are made field by field: one wider
    // load of both fields right after a store to one of them stalls the processor, and loads then take half as long
    // again.
    JsonStream(const JsonStream& other) : next_(other.next_), shown_(other.shown_) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): harmless for two plain values
    JsonStream& operator=(const JsonStream& other) {
        next_ = other.next_;
        shown_ = other.shown_;
        return *this;
    }

    [[nodiscard]] const char* Next() const { return next_; }

    [[nodiscard]] char Peek() const { return *next_; }
    char Take() {
        const char byte = *next_;
        shown_ = byte == '\\' && !shown_;
        if (!shown_) ++next_;
        return byte;
    }

    /// The current address. The reader reports it as an offset, so each reported offset is a place.
    [[nodiscard]] std::size_t Tell() const { return reinterpret_cast<std::size_t>(next_); }

    // The reader would write decoded strings through these. PutEnd counts the NUL that the reader puts after a string,
    // in the place of the closing quote.
    [[nodiscard]] char* PutBegin() const { return const_cast<char*>(next_); } // never written to
    void Put(char) {}
    std::size_t PutEnd(const char* begin) const { return static_cast<std::size_t>(next_ - begin); }

private:
    const char* next_;
    bool shown_ = false; // the backslash at next_, once
};

/// Passes RapidJSON's events on to a handler: adds the places, and stops the reader if the root isn't an object.
template <class Handler>
class JsonEvents {
public:
    JsonEvents(const JsonStream& stream, Handler& handler) : stream_(stream), handler_(handler) {}

    /// The place of a root that isn't an object; null if there is no such root.
    [[nodiscard]] const char* WrongRoot() const { return wrong_root_; }

    // RapidJSON's events. When one is called, the stream is at the first byte of the thing that was found; for `null`,
    // `true` and `false` it is after the word.
    bool Null() { return InRoot(4) && handler_.Null(Place(4)); }
    bool Bool(bool value) { return InRoot(value ? 4 : 5) && handler_.Bool(value, Place(value ? 4 : 5)); }
    bool Int(std::int32_t value) { return Integer(value, value); }
    bool Uint(std::uint32_t value) { return Integer(value, value); }
    bool Int64(std::int64_t value) { return Integer(value, static_cast<double>(value)); }
    bool Uint64(std::uint64_t value) { return Integer(static_cast<std::int64_t>(value), static_cast<double>(value)); }
    bool Double(double value) { return InRoot() && handler_.Real(value, Place()); }
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; } // never asked for
    bool String(const char* text, rapidjson::SizeType size, bool) { return InRoot() && handler_.String({text, size}); }
    bool Key(const char* text, rapidjson::SizeType size, bool) { return handler_.Key({text, size}); }
    bool StartObject() {
        in_root_ = true;
        return handler_.BeginObject(Place());
    }
    bool EndObject(rapidjson::SizeType) { return handler_.EndObject(Place()); }
    bool StartArray() { return InRoot() && handler_.BeginArray(Place()); }
    bool EndArray(rapidjson::SizeType) { return handler_.EndArray(Place()); }

private:
    bool Integer(std::int64_t value, double as_real) { return InRoot() && handler_.Integer(value, as_real, Place()); }

    [[nodiscard]] const char* Place(std::size_t back = 0) const { return stream_.Next() - back; }

    bool InRoot(std::size_t back = 0) {
        if (!in_root_) [[unlikely]]
            wrong_root_ = Place(back);
        return in_root_;
    }

    const JsonStream& stream_;
    Handler& handler_;
    bool in_root_ = false;
    const char* wrong_root_ = nullptr;
};

/// RapidJSON's result for a JsonStream, as a failure.
JsonFailure JsonFailureOf(const rapidjson::ParseResult& result);

/// Reads a text up to its first NUL and calls the handler for each thing in turn, as long as it returns true:
///
///   Null(place), Bool(value, place)
///   Integer(value, as_real, place)   a number without fraction or exponent that fits in 64 bits, signed or unsigned
///   Real(value, place)               any other number, a double
///   String(text), Key(text)          a part of the text, without its quotes; its address is its place
///   BeginObject(place), EndObject(place), BeginArray(place), EndArray(place)
///
/// A place is that of the thing's first byte. Rounding is to nearest meanwhile. Nesting costs heap, not stack. The
/// handler must not throw.
template <class Handler>
JsonFailure ParseJson(const char* text, Handler& handler) {
    constexpr unsigned kFlags =
        rapidjson::kParseInsituFlag | rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag;
    const DefaultFloatEnvironment environment;
    try {
        ThrowingAllocator heap;
        rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator> reader(&heap);
        JsonStream stream(text);
        JsonEvents<Handler> events(stream, handler);
        const rapidjson::ParseResult result = reader.template Parse<kFlags>(stream, events);
        if (events.WrongRoot() != nullptr) return {JsonError::kRootIsNoObject, events.WrongRoot()};
        return JsonFailureOf(result);
    } catch (const std::bad_alloc&) {
        return {JsonError::kOutOfMemory, nullptr};
    }
}

} // namespace Tessarin

/// A string or a number is read from a copy of the stream on the stack; the original moves only when the string or
/// number is complete.
template <>
struct rapidjson::StreamTraits<Tessarin::JsonStream> {
    enum { copyOptimization = 1 };
};

#endif
