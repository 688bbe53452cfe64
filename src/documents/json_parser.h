// JSON, read without storing anything: RapidJSON's reader over a text that stays as it is, and a call of a handler for
// each thing that it finds. The grammar is the standard's but for three things:
//
//   strings   have no escapes: a backslash is a byte like any other, and the first `"` ends the string
//   comments  may be wherever white space may
//   root      is an object
//
// Strings are read raw without a copy of the text. RapidJSON takes `\` for the start of an escape and `\\` for one
// backslash, so JsonStream shows it every backslash twice: the reader makes one of the two, and the byte behind them is
// an ordinary one. That is the same as reading raw, since a valid text has no backslash but in its strings and
// comments: elsewhere the first of the two is an error as the one would be, and in comments bytes are passed over.
//
//   the text   " c : \   d "     The reader decodes in situ, each string over itself. As every byte of the text becomes
//   is shown   " c : \ \ d "     one byte of the string, that string is in its place already, and nothing is written.
//   decoded      c : \   d
//
// All places are pointers into the text. A handler that ignores them pays nothing for them.

#ifndef TESSARIN_DOCUMENTS_JSON_PARSER_H
#define TESSARIN_DOCUMENTS_JSON_PARSER_H

#include "documents/throwing_allocator.h"
#include "platform/nearest_rounding.h"

#include <cstdint>
#include <string_view>

#include <rapidjson/reader.h>

namespace Tessarin {

enum class JsonError : std::uint8_t {
    kNone,
    kEmpty,          // there is nothing but white space and comments
    kRootIsNoObject, // but another value
    kBehindRoot,     // something follows the root
    kNoValue,        // no value begins here, or one of the three words is misspelled
    kNoKey,
    kNoColon,
    kNoCommaOrBrace,   // behind a member
    kNoCommaOrBracket, // behind an element
    kControlByte,      // a string has a byte below 0x20
    kOpenString,
    kNumberTooLarge, // for a double
    kNoFraction,     // a number has no digit behind its point
    kNoExponent,     // or none in its exponent
    kBadComment,     // a `/` begins none, or one doesn't end
    kStopped,        // the handler returned false
    kOutOfMemory,
};

/// What is wrong with a text, and where.
struct JsonFailure {
    JsonError error;
    const char* place; // the byte that doesn't fit, of a root or a number that is wrong the first one; null where the
                       // text isn't to blame
};

/// A text as RapidJSON's reader takes it in, by that library's concept of a stream: every backslash twice.
class JsonStream {
public:
    using Ch = char;

    explicit JsonStream(const char* text) : next_(text) {}

    // The reader copies the stream at each token, there and back. It is copied field by field: one wider load of both
    // fields, right behind a store to one of them, stalls the processor, and loads took half as long again.
    JsonStream(const JsonStream& other) : next_(other.next_), shown_(other.shown_) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): harmless to two values
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

    /// The address, so that what the reader reports as an offset is a place.
    [[nodiscard]] std::size_t Tell() const { return reinterpret_cast<std::size_t>(next_); }

    // What the reader decodes would be written here. PutEnd counts the NUL that it puts behind a string, where the
    // closing quote is.
    [[nodiscard]] char* PutBegin() const { return const_cast<char*>(next_); } // never written to
    void Put(char) {}
    std::size_t PutEnd(const char* begin) const { return static_cast<std::size_t>(next_ - begin); }

private:
    const char* next_;
    bool shown_ = false; // the backslash at next_, once
};

/// Between RapidJSON's reader and a handler: finds the places, and lets nothing through before a root object begins.
template <class Handler>
class JsonEvents {
public:
    JsonEvents(const JsonStream& stream, Handler& handler) : stream_(stream), handler_(handler) {}

    /// Of a root that is no object; null if there is none.
    [[nodiscard]] const char* WrongRoot() const { return wrong_root_; }

    // RapidJSON's events. When they come, the stream is at the first byte of what they are about, but behind the three
    // words.
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

/// What RapidJSON says of a JsonStream, as a failure.
JsonFailure JsonFailureOf(const rapidjson::ParseResult& result);

/// Reads a text up to its first NUL and calls the handler for each thing in turn, as long as it returns true:
///
///   Null(place), Bool(value, place)
///   Integer(value, as_real, place)   a number without fraction or exponent that fits in 64 bits, with or without sign
///   Real(value, place)               any other, a double
///   String(text), Key(text)          a part of the text, which itself is the place; without the quotes around it
///   BeginObject(place), EndObject(place), BeginArray(place), EndArray(place)
///
/// A place is that of the first byte. Rounds to nearest meanwhile. Depth costs heap; the handler must not throw.
template <class Handler>
JsonFailure ParseJson(const char* text, Handler& handler) {
    constexpr unsigned kFlags =
        rapidjson::kParseInsituFlag | rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag;
    const NearestRounding rounding;
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

/// A string or a number is read from a copy of the stream on the stack; until its end the stream stays at its begin.
template <>
struct rapidjson::StreamTraits<Tessarin::JsonStream> {
    enum { copyOptimization = 1 };
};

#endif
