/// \file
/// Plain containers and allocators: flat arrays (farr_), command queues (cmd_), hash maps (i32hm_, ptrhm_), fixed-size
/// pools (omem_) and incremental pools (imem_). Usable from C99 and from C++17.
///
/// Every family works through a handle, a pointer to a record that begins with a signature. All functions except those
/// that say otherwise test their handle first: for null, or a record with another signature, they do nothing and
/// return 0 or null.
/// REQUIRES: a destroyed handle isn't used again.
/// Sizes are in bytes unless a line says otherwise.
///
/// Threads: nothing here is locked; one thread at a time per object.

#ifndef TESSARIN_CONTAINERS_H
#define TESSARIN_CONTAINERS_H

#include "tessarin/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/// A growable array of elements of one fixed size, kept as raw bytes in one heap block.
typedef struct farr farr;

/// A first-in, first-out queue of records of any length, each contiguous, in one ring buffer of bytes.
typedef struct cmd cmd;

/// A map from a one-word key to a value of fixed size. Nodes never move while their entry lives.
typedef struct hm hm;

/// One entry of a hash map: borrowed from the map, valid until that entry is erased or the map cleared or destroyed.
typedef struct hm_node hm_node;

/// An allocator of blocks of one fixed size.
typedef struct omem omem;

/// A bump allocator: it allocates bytes one request after the other, and frees nothing until it is destroyed.
typedef struct imem imem;

// ---------------------------------------------------------------------------------------------------- flat arrays

/// Makes an array with room for 12 elements.
/// element_size  bytes per element
/// returns       a handle that the caller owns and ends with farr_destroy; null for an `element_size` of 0, when memory
///               runs out or if 12 elements exceed 4 GiB
TESSARIN_API farr* farr_create(uint32_t element_size);

/// Makes an array with room for `elements` elements. Otherwise as farr_create; null for 0 in either argument.
TESSARIN_API farr* farr_create_capacity(uint32_t element_size, uint32_t elements);

/// Ends the array: frees its buffer and its record.
TESSARIN_API void farr_destroy(farr* arr);

/// The number of elements in use.
TESSARIN_API uint32_t farr_count(farr* arr);

/// The size of the buffer in bytes, not in elements.
TESSARIN_API uint32_t farr_capacity(farr* arr);

/// 1 if the array has no element or the handle is bad, else 0.
TESSARIN_API uint32_t farr_empty(farr* arr);

/// The size in bytes above which each growth adds that same amount to the buffer, instead of growing it in proportion;
/// 8 MiB at first.
TESSARIN_API uint32_t farr_threshold(farr* arr);

/// Sets the threshold, in bytes, to the larger of the argument and the element size.
TESSARIN_API void farr_reset_threshold(farr* arr, uint32_t threshold);

/// Empties the array and changes its element size; buffer and threshold stay.
/// An element size of 0 is accepted: every element is then at the start of the buffer.
TESSARIN_API void farr_reset(farr* arr, uint32_t element_size);

/// Empties the array; the buffer stays.
TESSARIN_API void farr_clear(farr* arr);

/// The element at `index`, or null beyond the last. Element pointers, here and below, are borrowed: they are valid
/// until the buffer is replaced by a growing farr_push, farr_push_element or farr_resize, or by farr_adapt, or freed by
/// farr_destroy.
TESSARIN_API void* farr_at(farr* arr, uint32_t index);

/// Appends one element, its bytes unset.
/// A full buffer is replaced. The need is the size in bytes of all elements, the new one included. The new buffer has
/// the need plus the threshold if the need is above the threshold; otherwise twice the need if the need is below 65535
/// bytes, else one and a half times the need.
/// returns  the element; null, the array unchanged, when memory runs out or if the need exceeds 4 GiB
TESSARIN_API void* farr_push(farr* arr);

/// Appends a copy of the element at `source`, which may be in the array itself; growth and failure as in farr_push.
/// returns  the new element; null for a null `source`, too
TESSARIN_API void* farr_push_element(farr* arr, const void* source);

/// Makes the array `new_count` elements long. A `new_count` of 0 changes nothing (farr_clear empties the array).
/// A buffer that is too small is replaced by one of exactly the size needed. Added elements are zeroed if
/// `zero_fill` isn't 0, else unset. When memory runs out the array is unchanged; farr_count shows it.
TESSARIN_API void farr_resize(farr* arr, uint32_t new_count, uint32_t zero_fill);

/// Removes the element at `index`, keeping the order of the rest; an index beyond the last does nothing.
TESSARIN_API void farr_erase(farr* arr, uint32_t index);

/// Removes the element at `index` by moving the last one into its place; an index beyond the last does nothing.
TESSARIN_API void farr_fast_erase(farr* arr, uint32_t index);

/// Removes the last element, if there is one.
TESSARIN_API void farr_popback(farr* arr);

/// Replaces the buffer by one of exactly the bytes in use. When memory runs out the array is unchanged.
TESSARIN_API void farr_adapt(farr* arr);

/// Makes a new, independent array with the same fields and a copy of the whole buffer, used bytes or not.
/// returns  a handle that the caller owns and ends with farr_destroy; null when memory runs out
TESSARIN_API farr* farr_copy(farr* arr);

/// The first element, or null if there is none. A walk begins here and calls farr_next until that returns null.
TESSARIN_API void* farr_begin(farr* arr);

/// Always null, which ends a walk; the handle isn't tested.
TESSARIN_API void* farr_end(farr* arr);

/// The element after `element`, or null after the last one.
/// REQUIRES: `element` is an element of this array
TESSARIN_API void* farr_next(farr* arr, void* element);

/// Sorts all elements with the runtime library's qsort; the order of equal elements is unspecified.
/// compare  as for qsort; if it is null, nothing is done
TESSARIN_API void farr_sort(farr* arr, int (*compare)(const void*, const void*));

/// Sorts the elements from `first` up to but not including `last`; does nothing unless first < last <= count.
/// Otherwise as farr_sort.
TESSARIN_API void farr_sort_particular(farr* arr, uint32_t first, uint32_t last,
                                       int (*compare)(const void*, const void*));

// ------------------------------------------------------------------------------------------------- command queues

// A command is a sequence of bytes whose first word, a uint32_t, is its size in bytes, that word included: at least 4.
// The queue reads only that word of it. Commands follow one another without gaps and aren't aligned: sizes that are
// multiples of 8 keep every command at a multiple of 8. Command pointers, here and below, are borrowed: they are valid
// until the queue grows, is adapted or destroyed; pointers to a popped command are valid until the next push.

/// Makes an empty queue.
/// capacity  size of the buffer in bytes
/// returns   a handle that the caller owns and ends with cmd_destroy; null for a `capacity` of 0 or when memory
///           runs out
TESSARIN_API cmd* cmd_create(uint32_t capacity);

/// Ends the queue: frees its buffer and its record.
TESSARIN_API void cmd_destroy(cmd* queue);

/// The number of commands in the queue.
TESSARIN_API uint32_t cmd_count(cmd* queue);

/// The size of the buffer in bytes. It grows with the pushes; only cmd_adapt makes it smaller.
TESSARIN_API uint32_t cmd_capacity(cmd* queue);

/// 1 if the queue has no command, else 0; 0 for a bad handle too, unlike farr_empty.
TESSARIN_API uint32_t cmd_empty(cmd* queue);

/// Reserves room for one command at the tail and counts it; the caller fills it.
/// If no contiguous room is left the buffer is replaced. The new buffer has twice the sum of the old capacity and
/// `size` if that sum is below 65536 bytes, else one and a half times the sum.
/// size     bytes, the size word included
/// returns  the room, its bytes unset; null, the queue unchanged, for a `size` of 0, when memory runs out or if the sum
///          exceeds 4 GiB
/// REQUIRES: the first word equals `size` before cmd_pop reaches the command
TESSARIN_API void* cmd_push(cmd* queue, uint32_t size);

/// Appends a copy of a command, of as many bytes as its first word says; growth as in cmd_push. Does nothing for a null
/// command, one of size 0, or when memory runs out; cmd_count shows it. `command` may be in the queue itself, and even
/// one that has just been popped.
TESSARIN_API void cmd_push_element(cmd* queue, const void* command);

/// The oldest command, in place, or null if there is none.
TESSARIN_API void* cmd_front(cmd* queue);

/// Removes the oldest command, if there is one. If its first word points beyond the bytes in use, the queue becomes
/// empty, since no command after it can be found; any other wrong size shifts the commands after it.
TESSARIN_API void cmd_pop(cmd* queue);

/// Empties the queue; the buffer stays.
TESSARIN_API void cmd_clear(cmd* queue);

/// Replaces the buffer by one of exactly the bytes in use, so that the next push grows it.
/// returns  1, even if the buffer already had that size; 0, the queue unchanged, for an empty queue or when memory runs
///          out
TESSARIN_API uint32_t cmd_adapt(cmd* queue);

// ------------------------------------------------------------------------------------------------------ hash maps

// Each function has two names, one with either prefix, and one address: i32hm_ is for integer keys, ptrhm_ for
// addresses. A key below 2^32 is in the bucket ((key >> 3) * 0x9E3779B1 mod 2^32) mod bucket_count; the upper half of a
// wider key is folded in, so that addresses don't share a bucket just because they are 4 GiB apart. Keys that differ
// only in their low three bits share a bucket and are still separate entries.

/// Makes an empty map.
/// bucket_count  buckets at the start
/// value_size    bytes per value
/// returns       a handle that the caller owns and ends with i32hm_destroy; null for 0 in either argument, or when
///               memory runs out
TESSARIN_API hm* i32hm_create(uint32_t bucket_count, uint32_t value_size);

/// Ends the map: frees it with all its nodes.
TESSARIN_API void i32hm_destroy(hm* map);

/// 1 if the map has no entry or the handle is bad, else 0.
TESSARIN_API uint32_t i32hm_empty(hm* map);

/// Removes all entries; the buckets and the pool of nodes keep the size that they have grown to.
TESSARIN_API void i32hm_clear(hm* map);

/// The value bytes of `key`, in place, or null. Borrowed, as the node is; aligned like a pointer.
TESSARIN_API void* i32hm_get(hm* map, uintptr_t key);

/// The node of `key`, or null.
TESSARIN_API hm_node* i32hm_find(hm* map, uintptr_t key);

/// The value bytes of a node, as i32hm_get returns them; null for a null node.
TESSARIN_API void* i32hm_ptr2value(hm_node* node);

/// Stores a copy of `value_size` bytes under `key`: replaces the value of an entry that is there, or adds an entry.
/// First doubles the number of buckets if the map has more entries than buckets, even if it then only replaces a value.
/// returns  1; 0, the map unchanged, for a null value or when memory runs out for a new entry
TESSARIN_API uint32_t i32hm_set(hm* map, uintptr_t key, const void* value);

/// Removes the entry of `key`, if there is one.
TESSARIN_API void i32hm_erase_key(hm* map, uintptr_t key);

/// Removes the entry, if there is one, that has the key of `node`, which may be a node of another map or a copy.
TESSARIN_API void i32hm_erase_ptr(hm* map, hm_node* node);

/// The first node of a walk, or null. The order of the walk is by ascending bucket, and in a bucket from the newest
/// entry to the oldest (doubling the buckets reverses that). Adding an entry during a walk may double the buckets:
/// nodes keep their addresses, and the walk ends, but it may skip entries or visit them twice.
TESSARIN_API hm_node* i32hm_begin(hm* map);

/// The node after `node`, or null at the end.
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

// ----------------------------------------------------------------------------------------------- fixed-size pools

/// Makes a pool with one chunk of free blocks.
/// block_size        bytes per block, the stride in a chunk, never rounded
/// blocks_per_chunk  blocks in one chunk
/// returns           a handle that the caller owns and ends with omem_destroy; null for 0 in either argument, when
///                   memory runs out or if a chunk exceeds 4 GiB
TESSARIN_API omem* omem_create(uint32_t block_size, uint32_t blocks_per_chunk);

/// Ends the pool: frees all chunks and the record, even if blocks are still in use.
/// returns  the number of blocks that were not freed; 0 for a bad handle
TESSARIN_API int32_t omem_destroy(omem* pool);

/// Allocates a block, its bytes unset: the block that was freed last; in a new chunk, the block with the highest
/// address first. If no block is free, the pool adds a chunk.
/// returns  the block, valid until omem_free, omem_clear or omem_destroy; null when memory runs out
TESSARIN_API void* omem_alloc(omem* pool);

/// Frees a block. A null block is ignored.
/// REQUIRES: the block came from this pool and isn't free
TESSARIN_API void omem_free(omem* pool, void* block);

/// Frees every block of every chunk; the chunks stay.
TESSARIN_API void omem_clear(omem* pool);

// ---------------------------------------------------------------------------------------------- incremental pools

/// Makes a pool with one empty chunk.
/// chunk_size  bytes of a chunk, and of the largest single request
/// returns     a handle that the caller owns and ends with imem_destroy; null for a `chunk_size` of 0 or when memory
///             runs out
TESSARIN_API imem* imem_create(uint32_t chunk_size);

/// Ends the pool: frees all chunks and the record.
TESSARIN_API void imem_destroy(imem* pool);

/// Allocates `size` bytes, unset and unaligned: requests follow one another without gaps.
/// returns  the bytes, valid until imem_destroy; null for a `size` of 0 or above the chunk size, or when memory
///          runs out
TESSARIN_API void* imem_alloc(imem* pool, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
