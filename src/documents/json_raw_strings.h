/// What the JSON form asks of RapidJSON beyond its defaults: strings that are read raw, and an answer when memory runs
/// out. The only place that knows how either is done.

#ifndef TESSARIN_DOCUMENTS_JSON_RAW_STRINGS_H
#define TESSARIN_DOCUMENTS_JSON_RAW_STRINGS_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace Tessarin {

/// RapidJSON writes to what its allocator answers without a look. This one throws instead of answering null, and the
/// one function around each use of the dependency turns that into a failure.
struct ThrowingAllocator {
    static const bool kNeedFree = true;

    static void* Malloc(std::size_t size) { return size == 0 ? nullptr : Checked(std::malloc(size)); }

    static void* Realloc(void* block, std::size_t, std::size_t size) {
        if (size != 0) return Checked(std::realloc(block, size));
        std::free(block);
        return nullptr;
    }

    static void Free(void* block) { std::free(block); }

private:
    static void* Checked(void* block) {
        if (block == nullptr) throw std::bad_alloc();
        return block;
    }
};

/// A text for RapidJSON to read in place, in which a backslash has no meaning.
///
/// In a string RapidJSON takes `\` for the start of an escape and `\\` for one backslash. So the text that it gets has
/// every backslash twice: the reader makes one of the two, and the byte behind them is an ordinary one. That is the
/// same as reading raw, since a valid text has no backslash but in its strings and comments: elsewhere the first of
/// the two is an error as the one would be, and in comments bytes are passed over.
class RawText {
public:
    /// Takes over a NUL-terminated block from malloc. Without a backslash it is used as it is.
    explicit RawText(char* text) : text_(text) {
        std::size_t backslashes = 0;
        const char* end = text;
        for (; *(end += std::strcspn(end, "\\")) != '\0'; ++end) ++backslashes;
        if (backslashes == 0) return;
        text_ = static_cast<char*>(std::malloc(static_cast<std::size_t>(end - text) + backslashes + 1));
        if (text_ != nullptr) CopyDoubled(text, text_);
        std::free(text);
    }
    ~RawText() { std::free(text_); }
    RawText(const RawText&) = delete;
    RawText& operator=(const RawText&) = delete;

    /// Null if memory ran out.
    [[nodiscard]] char* Get() const { return text_; }

private:
    static void CopyDoubled(const char* from, char* to) {
        for (; *from != '\0'; ++from) {
            if (*from == '\\') *to++ = '\\';
            *to++ = *from;
        }
        *to = '\0';
    }

    char* text_;
};

} // namespace Tessarin

#endif
