/// A map from a one-word key to a value of fixed size: the record behind the i32hm_ and ptrhm_ functions, for the
/// library's own use without their guard. Threads: one at a time per map.

#ifndef TESSARIN_CONTAINERS_HASH_MAP_H
#define TESSARIN_CONTAINERS_HASH_MAP_H

#include "containers/object_pool.h"

#include <cstdint>

/// One block of the map's pool. The value bytes follow directly behind the fields.
struct hm_node {
    std::uintptr_t key;
    hm_node* next; // null at the chain's end
    void* value;
};

/// The order of the first six fields is fixed.
struct hm {
    static constexpr std::uint32_t kSignature = Tessarin::kHashMapSignature;

    std::uint32_t signature;
    std::uint32_t bucket_count; // never 0
    std::uint32_t value_size;   // bytes, never 0
    std::uint32_t count;
    omem* pool;
    hm_node** buckets;
    std::uint64_t reciprocal; // of bucket_count

    /// Null if memory runs out, if either argument is 0, or if a size would pass 32 bits.
    [[nodiscard]] static hm* Create(std::uint32_t bucket_count, std::uint32_t value_size);
    static void Destroy(hm* map);

    [[nodiscard]] hm_node* Find(std::uintptr_t key) const {
        hm_node* node = *Bucket(key);
        while (node != nullptr && node->key != key) node = node->next;
        return node;
    }

    /// The value in place, or null.
    [[nodiscard]] void* Get(std::uintptr_t key) const {
        hm_node* node = Find(key);
        return node == nullptr ? nullptr : node->value;
    }

    /// Stores a copy of value_size bytes. False if memory runs out for a new entry, the map unchanged.
    bool Set(std::uintptr_t key, const void* value);

    void Erase(std::uintptr_t key) {
        hm_node** link = Bucket(key);
        while (*link != nullptr && (*link)->key != key) link = &(*link)->next;
        hm_node* node = *link;
        if (node == nullptr) return;
        *link = node->next;
        pool->Free(node);
        --count;
    }

    void Clear();

    /// A walk, by ascending bucket and from each chain's head; null at the end.
    [[nodiscard]] hm_node* Begin() const { return FirstFrom(0); }
    [[nodiscard]] hm_node* Next(const hm_node* node) const {
        return node->next != nullptr ? node->next : FirstFrom(BucketIndex(node->key) + 1);
    }

private:
    /// The low three bits, the same in most addresses, don't count. The upper half of a wide key is spread by a factor
    /// of its own: it is 0 for keys below 2^32, and an odd factor lets neighbouring halves land in different buckets
    /// even if there is a power of two of them.
    [[nodiscard]] static std::uint32_t Hash(std::uintptr_t key) {
        auto low = static_cast<std::uint32_t>(key);
        auto high = static_cast<std::uint32_t>(std::uint64_t{key} >> 32);
        return (low >> 3) * 0x9E3779B1U + high * 0x85EBCA6BU;
    }

    /// Hash(key) % bucket_count, by two multiplications where the compiler has a product wide enough: a division takes
    /// longer than the rest of a lookup in the cache. The reciprocal's lower bits give the remainder's fraction.
    [[nodiscard]] std::uint32_t BucketIndex(std::uintptr_t key) const {
#if defined(__SIZEOF_INT128__)
        __extension__ using Product = unsigned __int128;
        std::uint64_t fraction = reciprocal * Hash(key);
        return static_cast<std::uint32_t>((Product{fraction} * bucket_count) >> 64);
#else
        return Hash(key) % bucket_count;
#endif
    }

    [[nodiscard]] hm_node** Bucket(std::uintptr_t key) const { return &buckets[BucketIndex(key)]; }

    [[nodiscard]] hm_node* FirstFrom(std::uint32_t bucket) const;
    void SetBuckets(hm_node** fresh, std::uint32_t fresh_count);
    [[gnu::noinline, gnu::cold]] void Grow();
};

#endif
