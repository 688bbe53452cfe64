/// A map from a one-word key to a value of fixed size: the record behind the i32hm_ and ptrhm_ functions, for the
/// library's own use without their guard. Threads: one at a time per map.

#ifndef TESSARIN_CONTAINERS_HASH_MAP_H
#define TESSARIN_CONTAINERS_HASH_MAP_H

#include "containers/fixed_size_pool.h"

#include <cstdint>

/// One block of the map's pool. The value bytes follow directly behind the fields.
struct hm_node {
    std::uintptr_t key;
    hm_node* next; // null at the chain's end
    void* value;
};

/// The order of the first six fields is fixed.
///
/// The functions that every lookup goes through are inline and leave whatever is rare to functions of their own, called
/// last: so they need no stack, and one lookup's wait for memory overlaps with the next one's.
struct hm {
    static constexpr std::uint32_t kSignature = Tessarin::kHashMapSignature;

    std::uint32_t signature;
    std::uint32_t bucket_count; // never 0
    std::uint32_t value_size;   // bytes, never 0
    std::uint32_t count;
    omem* pool;
    hm_node** buckets;
    std::uint16_t* filters;   // one a bucket, in the buckets' own block: the marks of the keys in its chain, or more
    std::uint64_t reciprocal; // of bucket_count

    /// Null if memory runs out, if either argument is 0, or if a size would pass 32 bits.
    [[nodiscard]] static hm* Create(std::uint32_t bucket_count, std::uint32_t value_size);
    static void Destroy(hm* map);

    [[nodiscard]] hm_node* Find(std::uintptr_t key) const {
        std::uint32_t index = BucketIndex(key);
        return (filters[index] & Mark(key)) == 0 ? nullptr : FindInChain(index, key);
    }

    /// The value in place, or null.
    [[nodiscard]] void* Get(std::uintptr_t key) const {
        hm_node* node = Find(key);
        return node == nullptr ? nullptr : node + 1;
    }

    /// Stores a copy of value_size bytes. 1, or 0 if memory runs out for a new entry, the map unchanged.
    std::uint32_t Set(std::uintptr_t key, const void* value) {
        if (count > bucket_count || !pool->HasFree()) [[unlikely]]
            return SetWithCare(key, value);
        std::uint32_t index = BucketIndex(key);
        if ((filters[index] & Mark(key)) != 0) {
            if (hm_node* node = FindInChain(index, key)) return Store(node, value);
        }
        return Add(static_cast<hm_node*>(pool->TakeFree()), index, key, value);
    }

    void Erase(std::uintptr_t key) {
        std::uint32_t index = BucketIndex(key);
        if ((filters[index] & Mark(key)) == 0) return;
        hm_node** link = &buckets[index];
        while (*link != nullptr && (*link)->key != key) link = &(*link)->next;
        if (hm_node* node = *link) Unlink(link, index, node);
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

    /// Hash(key) % bucket_count, by two multiplications where the compiler has a product wide enough, a division being
    /// several times as slow. The product with the reciprocal is the quotient's fraction, in units of 2^-64; that times
    /// the count is the remainder, exact for any two 32-bit numbers.
    [[nodiscard]] std::uint32_t BucketIndex(std::uintptr_t key) const {
#if defined(__SIZEOF_INT128__)
        __extension__ using Product = unsigned __int128;
        std::uint64_t fraction = reciprocal * Hash(key);
        return static_cast<std::uint32_t>((Product{fraction} * bucket_count) >> 64);
#else
        return Hash(key) % bucket_count;
#endif
    }

    /// One bit of sixteen, chosen by other bits of the key than the bucket. A chain without it doesn't hold the key:
    /// most keys that aren't there are known for it without a look at the nodes, which are far apart in memory.
    [[nodiscard]] static std::uint32_t Mark(std::uintptr_t key) {
        return 1U << ((static_cast<std::uint32_t>(key) * 0x85EBCA6BU) >> 28);
    }

    [[nodiscard]] hm_node* FindInChain(std::uint32_t index, std::uintptr_t key) const {
        hm_node* node = buckets[index];
        while (node != nullptr && node->key != key) node = node->next;
        return node;
    }

    /// Hangs a node in front of its chain. REQUIRES: index == BucketIndex(node->key)
    void Link(hm_node* node, std::uint32_t index) {
        node->next = buckets[index];
        buckets[index] = node;
        filters[index] = static_cast<std::uint16_t>(filters[index] | Mark(node->key));
    }

    /// Makes a pool block the node of a new key.
    std::uint32_t Add(hm_node* node, std::uint32_t index, std::uintptr_t key, const void* value) {
        node->key = key;
        node->value = node + 1;
        Link(node, index);
        ++count;
        return Store(node, value);
    }

    std::uint32_t Store(hm_node* node, const void* value) {
        if (value_size != sizeof(std::uint32_t)) return StoreAnySize(node, value);
        Tessarin::CopyFixed<sizeof(std::uint32_t)>(node + 1, value);
        return 1;
    }

    /// Marks of a chain's other keys can't be told from this one's, so they stay until the chain is empty.
    void Unlink(hm_node** link, std::uint32_t index, hm_node* node) {
        *link = node->next;
        if (buckets[index] == nullptr) filters[index] = 0;
        --count;
        pool->Free(node);
    }

    [[nodiscard]] hm_node* FirstFrom(std::uint32_t bucket) const;
    bool TakeBuckets(std::uint64_t number);
    void Prefetch(hm_node* const* chains, std::uint32_t index, std::uint32_t number) const;
    [[gnu::noinline]] std::uint32_t StoreAnySize(hm_node* node, const void* value);
    [[gnu::noinline, gnu::cold]] std::uint32_t SetWithCare(std::uintptr_t key, const void* value);
    void Grow();
};

#endif
