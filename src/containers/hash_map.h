// The record that the i32hm_ and ptrhm_ functions work on: a map from a one-word key to a value of fixed size, by
// chaining. The library itself calls the member functions, which don't check the handle. Layout and invariants:
// hash_map.cpp.

#ifndef TESSARIN_CONTAINERS_HASH_MAP_H
#define TESSARIN_CONTAINERS_HASH_MAP_H

#include "containers/fixed_size_pool.h"

#include <cstdint>

/// One entry, a block of the map's pool. The value's bytes directly follow the fields.
struct hm_node {
    std::uintptr_t key;
    hm_node* next; // null at the chain's end
    void* value;
};

/// The order of the first six fields is fixed. Threads: one at a time per map.
///
/// The functions that every lookup calls are inline and leave rare cases to tail calls. So they need no stack frame,
/// and the cache misses of successive lookups overlap.
struct hm {
    static constexpr std::uint32_t kSignature = Tessarin::kHashMapSignature;

    std::uint32_t signature;
    std::uint32_t bucket_count; // never 0
    std::uint32_t value_size;   // bytes, never 0
    std::uint32_t count;
    omem* pool;
    hm_node** buckets;
    std::uint16_t* filters; // one per bucket, in the same heap block: the filter bits of the keys in its chain, or more

    /// Null if memory runs out, if either argument is 0, or if a size would exceed 32 bits.
    [[nodiscard]] static hm* Create(std::uint32_t bucket_count, std::uint32_t value_size);
    static void Destroy(hm* map);

    [[nodiscard]] hm_node* Find(std::uintptr_t key) const {
        const std::uint32_t index = BucketIndex(key);
        return (filters[index] & FilterBit(key)) == 0 ? nullptr : FindInChain(index, key);
    }

    /// The value in place, or null.
    [[nodiscard]] void* Get(std::uintptr_t key) const {
        hm_node* node = Find(key);
        return node == nullptr ? nullptr : node + 1;
    }

    /// Stores a copy of value_size bytes. 1; or 0 if memory runs out for a new entry; the map is then unchanged.
    std::uint32_t Set(std::uintptr_t key, const void* value) {
        if (count > bucket_count || !pool->HasFree()) [[unlikely]]
            return SetSlowly(key, value);
        const std::uint32_t index = BucketIndex(key);
        if ((filters[index] & FilterBit(key)) != 0) {
            if (hm_node* node = FindInChain(index, key)) return Store(node, value);
        }
        return Add(static_cast<hm_node*>(pool->TakeFree()), index, key, value);
    }

    void Erase(std::uintptr_t key) {
        const std::uint32_t index = BucketIndex(key);
        if ((filters[index] & FilterBit(key)) == 0) return;
        hm_node** link = &buckets[index];
        while (*link != nullptr && (*link)->key != key) link = &(*link)->next;
        if (hm_node* node = *link) Unlink(link, index, node);
    }

    void Clear();

    /// Iterates by ascending bucket, and in each chain from its head; null at the end.
    [[nodiscard]] hm_node* Begin() const { return FirstFrom(0); }
    [[nodiscard]] hm_node* Next(const hm_node* node) const {
        return node->next != nullptr ? node->next : FirstFrom(BucketIndex(node->key) + 1);
    }

private:
    /// Ignores the low three bits, which are the same in most addresses. The upper half of a 64-bit key is 0 for keys
    /// below 2^32. It has its own multiplier, which is odd, so that neighbouring upper halves get different buckets
    /// even if the number of buckets is a power of two.
    [[nodiscard]] static std::uint32_t Hash(std::uintptr_t key) {
        const auto low = static_cast<std::uint32_t>(key);
        const auto high = static_cast<std::uint32_t>(std::uint64_t{key} >> 32);
        return (low >> 3) * 0x9E3779B1U + high * 0x85EBCA6BU;
    }

    [[nodiscard]] std::uint32_t BucketIndex(std::uintptr_t key) const { return Hash(key) % bucket_count; }

    /// One bit of sixteen. It is chosen by other bits of the key than the bucket is. If a chain's filter lacks the bit,
    /// the chain doesn't contain the key, so most lookups of absent keys read no node. Nodes are far apart in memory:
    /// without filters a million misses take 1.9 times as long (containers_bench GetMillion<OurMap>/5) and a million
    /// new keys 1.2 to 1.3 times as long (SetMillion<OurMap>/0 and /1000003).
    [[nodiscard]] static std::uint32_t FilterBit(std::uintptr_t key) {
        return 1U << ((static_cast<std::uint32_t>(key) * 0x85EBCA6BU) >> 28);
    }

    [[nodiscard]] hm_node* FindInChain(std::uint32_t index, std::uintptr_t key) const {
        hm_node* node = buckets[index];
        while (node != nullptr && node->key != key) node = node->next;
        return node;
    }

    /// Makes a node the head of its chain. REQUIRES: index == BucketIndex(node->key)
    void Link(hm_node* node, std::uint32_t index) {
        node->next = buckets[index];
        buckets[index] = node;
        filters[index] = static_cast<std::uint16_t>(filters[index] | FilterBit(node->key));
    }

    /// Initialises a block of the pool as the node of a new key.
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

    /// Another key of the chain may have the same filter bit, so a bit stays until the chain is empty.
    void Unlink(hm_node** link, std::uint32_t index, hm_node* node) {
        *link = node->next;
        if (buckets[index] == nullptr) filters[index] = 0;
        --count;
        pool->Free(node);
    }

    [[nodiscard]] hm_node* FirstFrom(std::uint32_t bucket) const;
    bool AllocateBuckets(std::uint64_t number);
    void Prefetch(hm_node* const* chains, std::uint32_t index, std::uint32_t number) const;
    [[gnu::noinline]] std::uint32_t StoreAnySize(hm_node* node, const void* value);
    [[gnu::noinline, gnu::cold]] std::uint32_t SetSlowly(std::uintptr_t key, const void* value);
    void Grow();
};

#endif
