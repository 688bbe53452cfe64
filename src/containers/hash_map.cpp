// Hash maps: an array of buckets, each the head of a chain of nodes from a fixed-size pool.
//
//     buckets     [ chain 0 | chain 1 | ... ]      chain --> [ key, next, value | value's bytes ] --next--> ... null
//     filters     [ 16 bits | 16 bits | ... ]      after the buckets in one heap block
//
// Invariants:
//
//  1. A node's key hashes to the bucket whose chain it is in, and no key occurs twice.
//  2. Nodes never move: growth relinks them. So callers may keep pointers to nodes and values.
//  3. A node's size is a multiple of a pointer's size: pool blocks lie back to back, and every node must be aligned.
//  4. A bucket's filter has the bit of every key in its chain. It may have other bits, too.
//  5. `buckets`, `filters` and `bucket_count` change together, in AllocateBuckets.

#include "containers/hash_map.h"

#include "containers/growth.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <type_traits>

static_assert(std::is_standard_layout_v<hm> && std::is_standard_layout_v<hm_node>);
static_assert(sizeof(hm_node) == 3 * sizeof(void*)); // the value follows directly

namespace {

/// Makes the pool of nodes, or returns null. Small maps get small chunks.
omem* CreatePool(std::uint32_t bucket_count, std::uint32_t value_size) {
    std::uint64_t node_size = std::uint64_t{sizeof(hm_node)} + value_size;
    node_size = (node_size + alignof(hm_node) - 1) / alignof(hm_node) * alignof(hm_node);
    if (node_size > Tessarin::kLargestSize) return nullptr;
    return omem::Create(static_cast<std::uint32_t>(node_size), std::clamp(bucket_count / 2 + 1, 16U, 128U));
}

} // namespace

/// Allocates the record, the buckets and the pool, in this order; if one can't be allocated, the others are freed.
hm* hm::Create(std::uint32_t bucket_count, std::uint32_t value_size) {
    if (bucket_count == 0 || value_size == 0) return nullptr;
    auto* map = static_cast<hm*>(std::malloc(sizeof(hm)));
    if (map == nullptr) return nullptr;
    *map = hm{kSignature, 0, value_size, 0, nullptr, nullptr, nullptr};
    if (map->AllocateBuckets(bucket_count)) map->pool = CreatePool(bucket_count, value_size);
    if (map->pool != nullptr) return map;
    std::free(map->buckets);
    std::free(map);
    return nullptr;
}

/// Doesn't visit the nodes: they are freed with the pool's chunks.
void hm::Destroy(hm* map) {
    omem::Destroy(map->pool);
    std::free(map->buckets);
    std::free(map);
}

/// Replaces the buckets by empty ones; the caller frees the old ones. False if memory runs out or if their size in
/// bytes would exceed 32 bits; the map is then unchanged.
bool hm::AllocateBuckets(std::uint64_t number) {
    const std::uint64_t bytes = number * (sizeof(*buckets) + sizeof(*filters));
    if (bytes > Tessarin::kLargestSize) return false;
    void* block = std::malloc(static_cast<std::size_t>(bytes));
    if (block == nullptr) return false;
    std::memset(block, 0, static_cast<std::size_t>(bytes));
    buckets = static_cast<hm_node**>(block);
    filters = reinterpret_cast<std::uint16_t*>(buckets + number);
    bucket_count = static_cast<std::uint32_t>(number);
    return true;
}

/// Loops over all chains call it for each chain: it prefetches nodes of later chains, as nodes aren't in order in
/// memory.
void hm::Prefetch(hm_node* const* chains, std::uint32_t index, std::uint32_t number) const {
    constexpr std::uint32_t kAhead = 8;
    if (number - index <= 2 * kAhead) return;
    __builtin_prefetch(chains[index + 2 * kAhead]);
    if (chains[index + kAhead] != nullptr) __builtin_prefetch(chains[index + kAhead]->next);
}

/// Doubles the buckets. If memory runs out, the chains just get longer. Each old chain is read from its head, and each
/// node becomes the head of its new chain, so the order within a chain is reversed.
void hm::Grow() {
    const std::uint32_t old_number = bucket_count;
    hm_node** old = buckets;
    if (!AllocateBuckets(std::uint64_t{old_number} * 2)) return;
    for (std::uint32_t i = 0; i < old_number; ++i) {
        Prefetch(old, i, old_number);
        for (hm_node* node = old[i]; node != nullptr;) {
            hm_node* next = node->next;
            Link(node, BucketIndex(node->key));
            node = next;
        }
    }
    std::free(old);
}

/// Set for a map whose buckets may have to grow or whose pool may have no free node.
std::uint32_t hm::SetSlowly(std::uintptr_t key, const void* value) {
    if (count > bucket_count) Grow();
    if (hm_node* node = Find(key)) return Store(node, value);
    auto* node = static_cast<hm_node*>(pool->Alloc());
    return node == nullptr ? 0 : Add(node, BucketIndex(key), key, value);
}

/// Not inlined, so that the functions that every set calls need no stack frame for the call of the copy.
std::uint32_t hm::StoreAnySize(hm_node* node, const void* value) {
    Tessarin::CopyBytes(node + 1, value, value_size);
    return 1;
}

/// The number of buckets stays, and the pool keeps its chunks. A node's `next` can be read after the node was freed,
/// because the pool writes nothing into free blocks.
void hm::Clear() {
    for (std::uint32_t i = 0; i < bucket_count; ++i) {
        Prefetch(buckets, i, bucket_count);
        for (hm_node* node = buckets[i]; node != nullptr; node = node->next) pool->Free(node);
        buckets[i] = nullptr;
        filters[i] = 0;
    }
    count = 0;
}

/// The head of the first chain in this bucket or a later one. So an iteration visits all buckets as well as all
/// entries.
hm_node* hm::FirstFrom(std::uint32_t bucket) const {
    for (; bucket < bucket_count; ++bucket) {
        if (buckets[bucket] != nullptr) return buckets[bucket];
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------- the exported functions

using Tessarin::IsLive;

hm* i32hm_create(uint32_t bucket_count, uint32_t value_size) { return hm::Create(bucket_count, value_size); }

void i32hm_destroy(hm* map) {
    if (IsLive(map)) hm::Destroy(map);
}

uint32_t i32hm_empty(hm* map) { return IsLive(map) && map->count != 0 ? 0 : 1; }

void i32hm_clear(hm* map) {
    if (IsLive(map)) map->Clear();
}

void* i32hm_get(hm* map, uintptr_t key) { return IsLive(map) ? map->Get(key) : nullptr; }

hm_node* i32hm_find(hm* map, uintptr_t key) { return IsLive(map) ? map->Find(key) : nullptr; }

void* i32hm_ptr2value(hm_node* node) { return node == nullptr ? nullptr : node->value; }

uint32_t i32hm_set(hm* map, uintptr_t key, const void* value) {
    return IsLive(map) && value != nullptr ? map->Set(key, value) : 0;
}

void i32hm_erase_key(hm* map, uintptr_t key) {
    if (IsLive(map)) map->Erase(key);
}

void i32hm_erase_ptr(hm* map, hm_node* node) {
    if (IsLive(map) && node != nullptr) map->Erase(node->key);
}

hm_node* i32hm_begin(hm* map) { return IsLive(map) ? map->Begin() : nullptr; }

hm_node* i32hm_next(hm* map, hm_node* node) { return IsLive(map) && node != nullptr ? map->Next(node) : nullptr; }

// The names with the prefix ptrhm_ are aliases: a function has the same address under both names, so a host may compare
// them.

hm* ptrhm_create(uint32_t bucket_count, uint32_t value_size) __attribute__((alias("i32hm_create")));
void ptrhm_destroy(hm* map) __attribute__((alias("i32hm_destroy")));
uint32_t ptrhm_empty(hm* map) __attribute__((alias("i32hm_empty")));
void ptrhm_clear(hm* map) __attribute__((alias("i32hm_clear")));
void* ptrhm_get(hm* map, uintptr_t key) __attribute__((alias("i32hm_get")));
hm_node* ptrhm_find(hm* map, uintptr_t key) __attribute__((alias("i32hm_find")));
void* ptrhm_ptr2value(hm_node* node) __attribute__((alias("i32hm_ptr2value")));
uint32_t ptrhm_set(hm* map, uintptr_t key, const void* value) __attribute__((alias("i32hm_set")));
void ptrhm_erase_key(hm* map, uintptr_t key) __attribute__((alias("i32hm_erase_key")));
void ptrhm_erase_ptr(hm* map, hm_node* node) __attribute__((alias("i32hm_erase_ptr")));
hm_node* ptrhm_begin(hm* map) __attribute__((alias("i32hm_begin")));
hm_node* ptrhm_next(hm* map, hm_node* node) __attribute__((alias("i32hm_next")));
