/// How RapidJSON is made to read strings raw, and to answer when memory runs out.

#ifndef TESSARIN_DOCUMENTS_JSON_RAW_STRINGS_H
#define TESSARIN_DOCUMENTS_JSON_RAW_STRINGS_H

#include <cstddef>
#include <cstdlib>
#include <new>

#include <rapidjson/allocators.h>
#include <rapidjson/rapidjson.h>
#include <rapidjson/stream.h>

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

/// A NUL-terminated text in which a backslash has no meaning, read and cut into strings in place.
///
/// In a string RapidJSON takes `\` for the start of an escape, and `\\` for one backslash. So this stream hands out
/// every backslash twice: the reader makes one of the two, and the byte behind them is an ordinary one. That is the
/// same as reading raw, since a valid text has no backslash but in its strings and comments: elsewhere the first of
/// the two is an error as the one would be, and in comments bytes are passed over. What a string keeps never has more
/// bytes than it was read from, so writing in place stays behind reading.
class RawStringStream {
public:
    using Ch = char;

    explicit RawStringStream(char* text) : from_(text), start_(text) {}

    [[nodiscard]] Ch Peek() const { return *from_; }

    Ch Take() {
        if (*from_ == '\\') {
            handed_out_once_ = !handed_out_once_;
            if (handed_out_once_) return '\\';
        }
        return *from_++;
    }

    [[nodiscard]] std::size_t Tell() const { return static_cast<std::size_t>(from_ - start_); }

    Ch* PutBegin() { return to_ = from_; }
    void Put(Ch byte) { *to_++ = byte; }
    std::size_t PutEnd(Ch* begin) { return static_cast<std::size_t>(to_ - begin); }
    void Flush() {}

private:
    char* from_;
    char* to_ = nullptr;
    char* start_;
    bool handed_out_once_ = false; // of the backslash at from_
};

} // namespace Tessarin

/// Lets the reader work on a copy of the stream in its registers.
template <>
struct rapidjson::StreamTraits<Tessarin::RawStringStream> {
    enum { copyOptimization = 1 };
};

#endif
