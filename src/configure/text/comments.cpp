// `--` begins a comment, even inside quotes. It ends before the line's end; a block comment, which begins with `--[[`,
// ends after the next `]]`. Nothing replaces a comment, so the bytes on both sides of a block comment are joined.

#include "configure/text/comments.h"

#include <algorithm>
#include <cstring>

namespace Configure {
namespace {

/// The first byte equal to `byte` from `first` on, or `last`.
char* FindByte(char* first, char* last, char byte) {
    void* found = std::memchr(first, byte, static_cast<std::size_t>(last - first));
    return found == nullptr ? last : static_cast<char*>(found);
}

/// The first of two adjacent bytes equal to `byte`, or `last`. May read the byte at `last`.
char* FindPair(char* first, char* last, char byte) {
    char* found = FindByte(first, last, byte);
    while (found != last && found[1] != byte) found = FindByte(found + 1, last, byte);
    return found;
}

/// The end of a comment. `first` is the position after its dashes.
char* CommentEnd(char* first, char* last) {
    if (last - first < 2 || first[0] != '[' || first[1] != '[') {
        while (first != last && !Is(kLineEnd, *first)) ++first;
        return first;
    }
    char* brackets = FindPair(first, last, ']');
    return brackets == last ? last : brackets + 2;
}

} // namespace

bool StrippedComments::Strip(char* bytes, std::uint32_t size, std::uint32_t& left) {
    char* const last = FindByte(bytes, bytes + size, kEndMark);
    char* kept = FindPair(bytes, last, '-');
    for (char* comment = kept; comment != last;) {
        char* behind = CommentEnd(comment + 2, last);
        comment = FindPair(behind, last, '-');
        if (!cuts_.Push({static_cast<std::uint32_t>(kept - bytes), static_cast<std::uint32_t>(behind - kept)}))
            return false;
        const auto length = static_cast<std::size_t>(comment - behind);
        std::memmove(kept, behind, length);
        kept += length;
    }
    *kept = kEndMark;
    left = static_cast<std::uint32_t>(kept - bytes);
    return true;
}

std::uint32_t StrippedComments::OffsetOf(std::uint32_t position) const {
    const auto before = [](std::uint32_t wanted, const Cut& cut) { return wanted < cut.position; };
    const Cut* const next = std::upper_bound(cuts_.begin(), cuts_.end(), position, before);
    return next == cuts_.begin() ? position : position + next[-1].distance;
}

Span StrippedComments::SpanOf(Span span) const {
    const std::uint32_t first = OffsetOf(span.first);
    return {first, span.IsEmpty() ? first : OffsetOf(span.last - 1) + 1};
}

} // namespace Configure
