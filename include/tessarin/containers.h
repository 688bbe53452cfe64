/// Plain containers and allocators: flat arrays (farr_), command queues (cmd_), hash maps (i32hm_, ptrhm_), object
/// pools (omem_) and incremental pools (imem_). Usable from C99 and from C++17.
///
/// Every family works through a handle, a pointer to a record that begins with a signature. All functions but those
/// that say otherwise test their handle first: for null, or a record with another signature, they do nothing and
/// answer 0 or null. A destroyed handle must not be used again.
///
/// Threads: nothing here is locked; one thread at a time per object. Sizes are in bytes unless a line says otherwise.

#ifndef TESSARIN_CONTAINERS_H
#define TESSARIN_CONTAINERS_H

#include "tessarin/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/// A growable run of elements of one fixed size, kept as raw bytes in one heap block.
typedef struct farr farr;

/// A first-in, first-out queue of records of any length, each contiguous, in one ring of bytes.
typedef struct cmd cmd;

/// A map from a one-word key to a value of fixed size. Nodes never move while their entry lives.
typedef struct hm hm;

/// One entry of a hash map: borrowed from the map, valid until that entry is erased or the map cleared or destroyed.
typedef struct hm_node hm_node;

/// An allocator of blocks of one fixed size.
typedef struct omem omem;

/// An allocator that deals out runs of bytes and takes nothing back until it is destroyed.
typedef struct imem imem;

// ---------------------------------------------------------------------------------------------------- flat arrays

/// Makes an array with room for 12 elements.
/// element_size  bytes per element; 0 answers null
/// returns       the caller's handle, ended with farr_destroy; null when memory runs out or 12 elements pass 4 GiB
TESSARIN_API farr* farr_create(uint32_t element_size);

/// Makes an array with room for `elements` elements. As farr_create; 0 in either argument answers null.
TESSARIN_API farr* farr_create_capacity(uint32_t element_size, uint32_t elements);

/// Frees the buffer and the record.
TESSARIN_API void farr_destroy(farr* arr);

/// Elements in use.
TESSARIN_API uint32_t farr_count(farr* arr);

/// Size of the buffer in bytes, not in elements.
TESSARIN_API uint32_t farr_capacity(farr* arr);

/// 1 if the array has no element or the handle is bad, else 0.
TESSARIN_API uint32_t farr_empty(farr* arr);

/// The size in bytes above which the buffer grows by that same amount a step instead of in proportion; 8 MiB at first.
TESSARIN_API uint32_t farr_threshold(farr* arr);

/// Sets the threshold, in bytes, to the larger of the argument and the element size.
TESSARIN_API void farr_reset_threshold(farr* arr, uint32_t threshold);

/// Empties the array and changes its element size; buffer and threshold stay.
/// An element size of 0 is taken as it is: every element then lies at the start of the buffer.
TESSARIN_API void farr_reset(farr* arr, uint32_t element_size);

/// Empties the array; the buffer stays.
TESSARIN_API void farr_clear(farr* arr);

/// The element at `index`, or null beyond the last. Element pointers, here and below, are borrowed: they are valid
/// until the buffer is replaced by a growing farr_push, farr_push_element or farr_resize, or by farr_adapt.
TESSARIN_API void* farr_at(farr* arr, uint32_t index);

/// Appends one element, its bytes unset, and answers it.
/// A full buffer is replaced: by its need plus the threshold if the need is above the threshold, by twice the need
/// below 65535 bytes, else by one and a half times the need.
/// returns  the element; null when memory runs out or the need passes 4 GiB, the array unchanged
TESSARIN_API void* farr_push(farr* arr);

/// Appends a copy of the element at `source`; growth and failure as in farr_push. A null source answers null and
/// changes nothing. A source inside the array itself is accepted.
TESSARIN_API void* farr_push_element(farr* arr, const void* source);

/// Makes the array `new_count` elements long. A `new_count` of 0 changes nothing (farr_clear empties).
/// A buffer that is too small is replaced by one of exactly the size needed. Added elements are zeroed if
/// `zero_fill` is not 0, else unset. When memory runs out the array is unchanged, which farr_count shows.
TESSARIN_API void farr_resize(farr* arr, uint32_t new_count, uint32_t zero_fill);

/// Removes the element at `index`, keeping the order of the rest; an index beyond the last does nothing.
TESSARIN_API void farr_erase(farr* arr, uint32_t index);

/// Removes the element at `index` by moving the last one into its place; an index beyond the last does nothing.
TESSARIN_API void farr_fast_erase(farr* arr, uint32_t index);

/// Removes the last element, if there is one.
TESSARIN_API void farr_popback(farr* arr);

/// Replaces the buffer by one of exactly the bytes in use. When memory runs out the array is unchanged.
TESSARIN_API void farr_adapt(farr* arr);

/// A new, independent array with the same fields and a copy of the whole buffer, used bytes or not.
/// returns  the caller's handle, ended with farr_destroy; null when memory runs out
TESSARIN_API farr* farr_copy(farr* arr);

/// The first element, or null if there is none. A walk goes from here by farr_next until null.
TESSARIN_API void* farr_begin(farr* arr);

/// Always null, the element that ends a walk; the handle is not looked at.
TESSARIN_API void* farr_end(farr* arr);

/// The element behind `element`, or null behind the last one.
/// REQUIRES: `element` is an element of this array
TESSARIN_API void* farr_next(farr* arr, void* element);

/// Sorts all elements with the runtime library's qsort; the order of equal elements is not defined.
/// A null `compare` does nothing.
TESSARIN_API void farr_sort(farr* arr, int (*compare)(const void*, const void*));

/// Sorts the elements from `first` up to but not including `last`; does nothing unless first < last <= count.
TESSARIN_API void farr_sort_particular(farr* arr, uint32_t first, uint32_t last,
                                       int (*compare)(const void*, const void*));

// ------------------------------------------------------------------------------------------------- command queues

// A command is a run of bytes whose first word, a uint32_t, is its size in bytes, that word included: at least 4. The
// queue reads that word and nothing else of it. Commands lie back to back and are not aligned: sizes that are multiples
// of 8 keep every command at a multiple of 8. Command pointers, here and below, are borrowed: they are valid until the
// queue grows, is adapted or destroyed; what a popped one points at, until the next push.

/// Makes an empty queue.
/// capacity  size of the buffer in bytes; 0 answers null
/// returns   the caller's handle, ended with cmd_destroy; null when memory runs out
TESSARIN_API cmd* cmd_create(uint32_t capacity);

/// Frees the buffer and the record.
TESSARIN_API void cmd_destroy(cmd* queue);

/// Commands in the queue.
TESSARIN_API uint32_t cmd_count(cmd* queue);

/// Size of the buffer in bytes. It grows with the pushes and shrinks by cmd_adapt alone.
TESSARIN_API uint32_t cmd_capacity(cmd* queue);

/// 1 if the queue has no command, else 0. A bad handle answers 0 too, unlike farr_empty.
TESSARIN_API uint32_t cmd_empty(cmd* queue);

/// Reserves room for one command at the tail and counts it in; the caller fills it.
/// Where no contiguous room is left the buffer is replaced: by twice the old capacity plus `size` if that sum is below
/// 65536 bytes, else by one and a half times the sum.
/// size     bytes, the size word included; 0 answers null
/// returns  the room, its bytes unset; null when memory runs out or the sum passes 4 GiB, the queue unchanged
/// REQUIRES: the first word equals `size` before cmd_pop gets to the command
TESSARIN_API void* cmd_push(cmd* queue, uint32_t size);

/// Appends a copy of a command, of as many bytes as its first word says; growth as in cmd_push. Does nothing for a null
/// command, one of size 0, or when memory runs out, which cmd_count shows. A command of the queue itself is accepted,
/// also one that has just been popped.
TESSARIN_API void cmd_push_element(cmd* queue, const void* command);

/// The oldest command, in place, or null if there is none.
TESSARIN_API void* cmd_front(cmd* queue);

/// Removes the oldest command, if there is one. A command whose first word leads out of the bytes in use empties the
/// queue, since nothing behind it can be found; any other wrong size shifts the commands behind it.
TESSARIN_API void cmd_pop(cmd* queue);

/// Empties the queue; the buffer stays.
TESSARIN_API void cmd_clear(cmd* queue);

/// Replaces the buffer by one of exactly the bytes in use, so that the next push grows it.
/// returns  1, also if the buffer had that size; 0 for an empty queue, or when memory runs out, the queue unchanged
TESSARIN_API uint32_t cmd_adapt(cmd* queue);

// ------------------------------------------------------------------------------------------------------ hash maps

// The two prefixes name the same functions, one address each: i32hm_ reads well for integer keys, ptrhm_ for
// addresses. A key below 2^32 falls into the bucket ((key >> 3) * 0x9E3779B1 mod 2^32) mod bucket_count; the upper
// half of a wider key is folded in, so that addresses 4 GiB apart don't share a bucket for that reason. Keys that
// differ only in their low three bits share a bucket and are still separate entries.

/// Makes an empty map.
/// bucket_count  buckets at the start; 0 answers null
/// value_size    bytes per value; 0 answers null
/// returns       the caller's handle, ended with i32hm_destroy; null when memory runs out
TESSARIN_API hm* i32hm_create(uint32_t bucket_count, uint32_t value_size);

/// Frees the map with all its nodes.
TESSARIN_API void i32hm_destroy(hm* map);

/// 1 if the map has no entry or the handle is bad, else 0.
TESSARIN_API uint32_t i32hm_empty(hm* map);

/// Removes all entries; the buckets and the pool keep the size that they have grown to.
TESSARIN_API void i32hm_clear(hm* map);

/// The value bytes of `key`, in place, or null. Borrowed as the node is; aligned as a pointer is.
TESSARIN_API void* i32hm_get(hm* map, uintptr_t key);

/// The node of `key`, or null.
TESSARIN_API hm_node* i32hm_find(hm* map, uintptr_t key);

/// The value bytes of a node; null for a null node.
TESSARIN_API void* i32hm_ptr2value(hm_node* node);

/// Stores a copy of `value_size` bytes under `key`, over the value that was there or as a new entry.
/// Doubles the buckets first if the map holds more entries than buckets, also when it then only replaces a value.
/// returns  1; 0 for a null value, or when memory runs out for a new entry, the map unchanged
TESSARIN_API uint32_t i32hm_set(hm* map, uintptr_t key, const void* value);

/// Removes the entry of `key`, if there is one.
TESSARIN_API void i32hm_erase_key(hm* map, uintptr_t key);

/// Removes the entry that has the key of `node`, which may be a node of another map or a copy.
TESSARIN_API void i32hm_erase_ptr(hm* map, hm_node* node);

/// The first node of a walk, or null. The walk goes by ascending bucket, in a bucket from the newest entry on (a
/// doubling of the buckets reverses that).
TESSARIN_API hm_node* i32hm_begin(hm* map);

/// The node behind `node`, or null at the end.
/// REQUIRES: `node` is in this map; an erased node has no successor
TESSARIN_API hm_node* i32hm_next(hm* map, hm_node* node);

TESSARIN_API hm* ptrhm_create(uint32_t bucket_count, uint32_t value_size);  ///< i32hm_create
TESSARIN_API void ptrhm_destroy(hm* map);                                   ///< i32hm_destroy
TESSARIN_API uint32_t ptrhm_empty(hm* map);                                 ///< i32hm_empty
TESSARIN_API void ptrhm_clear(hm* map);                                     ///< i32hm_clear
TESSARIN_API void* ptrhm_get(hm* map, uintptr_t key);                       ///< i32hm_get
TESSARIN_API hm_node* ptrhm_find(hm* map, uintptr_t key);                   ///< i32hm_find
TESSARIN_API void* ptrhm_ptr2value(hm_node* node);                          ///< i32hm_ptr2value
TESSARIN_API uint32_t ptrhm_set(hm* map, uintptr_t key, const void* value); ///< i32hm_set
TESSARIN_API void ptrhm_erase_key(hm* map, uintptr_t key);                  ///< i32hm_erase_key
TESSARIN_API void ptrhm_erase_ptr(hm* map, hm_node* node);                  ///< i32hm_erase_ptr
TESSARIN_API hm_node* ptrhm_begin(hm* map);                                 ///< i32hm_begin
TESSARIN_API hm_node* ptrhm_next(hm* map, hm_node* node);                   ///< i32hm_next

// --------------------------------------------------------------------------------------------------- object pools

/// Makes a pool with one chunk of free blocks.
/// block_size        bytes per block, the stride in a chunk, never rounded; 0 answers null
/// blocks_per_chunk  blocks in one chunk; 0 answers null
/// returns           the caller's handle, ended with omem_destroy; null when memory runs out or a chunk passes 4 GiB
TESSARIN_API omem* omem_create(uint32_t block_size, uint32_t blocks_per_chunk);

/// Frees all chunks and the record, whoever holds blocks.
/// returns  the number of blocks that were not given back; 0 for a bad handle
TESSARIN_API int32_t omem_destroy(omem* pool);

/// Takes a free block, its bytes unset: the one given back last, in a new chunk the highest address first.
/// returns  the block, borrowed from the pool; null when memory runs out
TESSARIN_API void* omem_alloc(omem* pool);

/// Gives a block back. A null block is ignored.
/// REQUIRES: the block is of this pool and not free
TESSARIN_API void omem_free(omem* pool, void* block);

/// Makes every block of every chunk free again; the chunks stay.
TESSARIN_API void omem_clear(omem* pool);

// ---------------------------------------------------------------------------------------------- incremental pools

/// Makes a pool with one empty chunk.
/// chunk_size  bytes of a chunk and the largest single request; 0 answers null
/// returns     the caller's handle, ended with imem_destroy; null when memory runs out
TESSARIN_API imem* imem_create(uint32_t chunk_size);

/// Frees all chunks and the record.
TESSARIN_API void imem_destroy(imem* pool);

/// Deals out `size` bytes, unset and unaligned: requests lie back to back.
/// returns  the bytes, valid until imem_destroy; null for a size of 0 or above the chunk size, or when memory runs out
TESSARIN_API void* imem_alloc(imem* pool, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
