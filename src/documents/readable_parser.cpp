// A first pass blanks the comments, also those inside quotes. A second pass reads keys and values in turn, each in one
// scan, with a table that says what each byte ends. Nothing is copied, and only the number of open blocks is
// remembered.

#include "documents/readable_parser.h"

#include <array>
#include <cstring>

namespace Tessarin {
namespace {

// What a byte does: before a key it is skipped; it ends a key; it ends a value; it begins a value.
enum : unsigned char { kBeforeKey = 1, kEndsKey = 2, kEndsValue = 4, kBeginsValue = 8 };

constexpr auto kClasses = [] {
    std::array<unsigned char, 256> classes{};
    constexpr unsigned char kSeparators[] = {0x00, '\t', '\n', '\r', ' ', '=', 0xFF};
    for (const unsigned char separator : kSeparators) classes[separator] = kBeforeKey | kEndsKey | kEndsValue;
    classes['{'] = kBeforeKey | kEndsKey | kBeginsValue;
    classes['}'] = kEndsKey | kEndsValue;
    classes['['] = kBeginsValue;
    classes['('] = kBeginsValue;
    return classes;
}();

/// Whether the byte is of one of the classes.
bool Is(char byte, unsigned char classes) { return (kClasses[static_cast<unsigned char>(byte)] & classes) != 0; }

std::string_view Span(const char* first, const char* last) { return {first, static_cast<std::size_t>(last - first)}; }

const char* Find(const char* first, const char* last, char byte) {
    return static_cast<const char*>(std::memchr(first, byte, static_cast<std::size_t>(last - first)));
}

/// The end of the comment whose two hyphens are at `at`: a comment that begins with `--[[` ends after the next `--`,
/// any other at the end of its line.
char* CommentEnd(char* at, char* end) {
    if (end - at > 3 && at[2] == '[' && at[3] == '[') {
        at += 4;
        while (at + 1 < end && (at[0] != '-' || at[1] != '-')) ++at;
        return at + 1 < end ? at + 2 : end;
    }
    while (at < end && *at != '\r' && *at != '\n') ++at;
    return at;
}

/// Overwrites comments with NULs, in quotes too.
void BlankComments(char* text, std::size_t size) {
    char* const end = text + size;
    char* at = text;
    while ((at = static_cast<char*>(std::memchr(at, '-', static_cast<std::size_t>(end - at)))) != nullptr) {
        if (at + 1 == end || at[1] != '-') {
            ++at;
            continue;
        }
        char* const comment_end = CommentEnd(at, end);
        std::memset(at, 0, static_cast<std::size_t>(comment_end - at));
        at = comment_end;
    }
}

/// The kind of a bare value. It is a number if it has only digits, at most one `.`, which makes it a real, and possibly
/// a `-` in front.
ReadableKind Classify(const char* first, const char* last) {
    ReadableKind kind = ReadableKind::kInteger;
    for (const char* at = first; at != last; ++at) {
        if (*at >= '0' && *at <= '9') continue;
        if (*at == '-' && at == first) continue;
        if (*at != '.' || kind == ReadableKind::kReal) return ReadableKind::kText;
        kind = ReadableKind::kReal;
    }
    return kind;
}

} // namespace

ReadableParser::ReadableParser(char* text, std::uint32_t size) : position_(text), end_(text + size) {
    BlankComments(text, size);
}

bool ReadableParser::Next(ReadableEvent& event) {
    if (depth_ == 0) return false;
    const char* at = position_;
    while (at != end_ && Is(*at, kBeforeKey)) ++at;
    if (at == end_) {
        --depth_;
        position_ = at;
        event = {ReadableKind::kTextEnd, Span(at, at), Span(at, at)};
        return true;
    }
    const char* const first = at;
    while (!Is(*at, kEndsKey)) ++at;
    event.key = Span(first, at);
    position_ = at;
    if (*at != '}') return TakeValue(event);
    --depth_;
    ++position_;
    event.kind = ReadableKind::kBlockEnd;
    event.value = Span(at, at + 1);
    return true;
}

/// Finds the value of the event's key and moves past it.
bool ReadableParser::TakeValue(ReadableEvent& event) {
    const char* at = position_;
    while (at != end_ && Is(*at, kEndsValue)) ++at;
    if (at == end_) return Fail(ReadableError::kKeyWithoutValue, event.key.data());
    position_ = at;
    if (*at == '"') return TakeQuoted(event);
    while (!Is(*at, kEndsValue | kBeginsValue)) ++at;
    if (Is(*at, kEndsValue)) {
        event.kind = Classify(position_, at);
        event.value = Span(position_, at);
        position_ = at;
        return true;
    }
    position_ = at;
    if (*at != '{') {
        TakeVector(event);
        return true;
    }
    ++depth_;
    ++position_;
    event.kind = ReadableKind::kBlock;
    event.value = Span(at, position_);
    return true;
}

bool ReadableParser::TakeQuoted(ReadableEvent& event) {
    const char* const closing = Find(position_ + 1, end_, '"');
    if (closing == nullptr) return Fail(ReadableError::kOpenQuote, position_);
    event.kind = ReadableKind::kQuoted;
    event.value = Span(position_, closing + 1);
    position_ = closing + 1;
    return true;
}

void ReadableParser::TakeVector(ReadableEvent& event) {
    const bool has_three = *position_ == '[';
    const char* const closing = Find(position_, end_, has_three ? ']' : ')');
    const char* const last = closing == nullptr ? end_ : closing + 1;
    event.kind = has_three ? ReadableKind::kVector3 : ReadableKind::kVector4;
    event.value = Span(position_, last);
    position_ = last;
}

bool ReadableParser::Fail(ReadableError error, const char* place) {
    failure_ = {error, place};
    depth_ = 0;
    return false;
}

std::string_view QuotedText(std::string_view value) {
    const std::string_view inside = value.substr(1, value.size() - 2);
    return inside.substr(0, inside.find('\0'));
}

std::string_view TakeComponent(std::string_view& rest, char delimiter) {
    const std::size_t length = rest.find(delimiter);
    const std::string_view component = rest.substr(0, length);
    rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
    return component;
}

} // namespace Tessarin
