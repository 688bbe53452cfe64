// Storage for the objects of one type of an edited file: cut from chunks that the file owns, so that an object has no
// heap block of its own.
//
//     newest_ -> | next | object | object | room | -> | next | object ... object | -> null
//     free_   -> a returned object -> another one -> null
//
// Invariants:
//  1. An object never moves. Storage that is returned is taken again before new storage, so adding and removing in turn
//     doesn't grow the chunks.
//  2. Chunks are freed all at once. What the objects own must be freed before.

#ifndef TESSARIN_CONFIGURE_TREE_OBJECT_CHUNKS_H
#define TESSARIN_CONFIGURE_TREE_OBJECT_CHUNKS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace Configure {

template <class T>
class ObjectChunks {
public:
    ObjectChunks() = default;
    ~ObjectChunks() { Release(); }
    ObjectChunks(const ObjectChunks&) = delete;
    ObjectChunks& operator=(const ObjectChunks&) = delete;

    /// Storage for one object; null if memory runs out.
    [[nodiscard]] void* Take() {
        if (free_ != nullptr) return std::exchange(free_, NextFree(free_));
        if (left_ == 0 && !AddChunk()) [[unlikely]]
            return nullptr;
        --left_;
        return std::exchange(next_, next_ + sizeof(T));
    }

    /// Takes an object's storage back. Its last bytes are overwritten now, the others when the storage is taken again.
    void Return(void* object) {
        std::memcpy(LinkIn(object), &free_, sizeof free_);
        free_ = object;
    }

    /// Frees all chunks.
    void Release() {
        while (newest_ != nullptr) std::free(std::exchange(newest_, newest_->next));
        free_ = nullptr;
        left_ = 0;
        chunk_objects_ = kFirstObjects;
    }

private:
    struct alignas(std::max_align_t) Chunk {
        Chunk* next;
    };
    static_assert(alignof(T) <= alignof(Chunk) && sizeof(T) >= sizeof(void*));

    static constexpr std::uint32_t kFirstObjects = 8;
    static constexpr std::uint32_t kMostObjects = 1024; // some 48 KB: a chunk is at most half empty, or that large

    static unsigned char* LinkIn(void* object) {
        return static_cast<unsigned char*>(object) + sizeof(T) - sizeof(void*);
    }
    static void* NextFree(void* object) {
        void* next;
        std::memcpy(&next, LinkIn(object), sizeof next);
        return next;
    }

    [[gnu::noinline]] bool AddChunk() {
        auto* const chunk = static_cast<Chunk*>(std::malloc(sizeof(Chunk) + chunk_objects_ * sizeof(T)));
        if (chunk == nullptr) return false;
        chunk->next = newest_;
        newest_ = chunk;
        next_ = reinterpret_cast<unsigned char*>(chunk + 1);
        left_ = chunk_objects_;
        chunk_objects_ = std::min(chunk_objects_ * 2, kMostObjects);
        return true;
    }

    Chunk* newest_ = nullptr;
    void* free_ = nullptr;          // returned objects, linked through their last bytes
    unsigned char* next_ = nullptr; // the newest chunk has room for `left_` objects from here on
    std::uint32_t left_ = 0;
    std::uint32_t chunk_objects_ = kFirstObjects; // of the next chunk
};

} // namespace Configure

#endif
