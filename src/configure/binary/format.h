/// The binary form's words, bits and offsets, for its loader and its writer. All numbers are unsigned, 32 bits, lowest
/// byte first, at any address.
///
///   header         28 bytes, see FileHeader
///   pool           texts with their NULs, back to back, each distinct text once; named by their offset in the pool
///   unit_counts    a number a table, in table order
///   node_counts    likewise
///   body           a record a table and an array, in container order
///
/// Container order is that of one breadth-first walk: the root, then the children of each container in its turn, a
/// table's in the order of its trie's nodes, an array's in the order of its elements. Table order and array order are
/// what is left of it without the others.
///
///   a table        its trie's nodes, breadth-first, siblings by ascending byte: `word`, and where a key ends also the
///                  offset of the key's text, and a value
///   an array       the number of elements, and for each one byte (the value bits of a word, moved down) and a value
///   a value        the offset of a scalar's text, the number of a table's first node over all tables of the file, or
///                  an array's number in array order

#ifndef TESSARIN_CONFIGURE_BINARY_FORMAT_H
#define TESSARIN_CONFIGURE_BINARY_FORMAT_H

#include <cstdint>

namespace Configure {

inline constexpr std::uint32_t kMagic = 0x7842494E; // "NIBx"
inline constexpr std::uint32_t kHeaderSize = 28;
inline constexpr std::uint32_t kWordSize = 4;
inline constexpr std::uint32_t kElementSize = 5;            // of an array: a byte and a word
inline constexpr std::uint32_t kMostFileBytes = 0x7FFFFFFF; // what a file service can tell the size of

inline std::uint32_t LoadWord(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

inline void StoreWord(unsigned char* bytes, std::uint32_t word) {
    bytes[0] = static_cast<unsigned char>(word);
    bytes[1] = static_cast<unsigned char>(word >> 8);
    bytes[2] = static_cast<unsigned char>(word >> 16);
    bytes[3] = static_cast<unsigned char>(word >> 24);
}

/// The numbers at a file's head, in their order there.
struct FileHeader {
    std::uint32_t magic;
    std::uint32_t node_count;
    std::uint32_t strings_size;     // bytes
    std::uint32_t table_count;      // the root included
    std::uint32_t table_unit_count; // may exceed the sum of unit_counts: entries that share a key count once there
    std::uint32_t array_count;
    std::uint32_t array_unit_count;
};
static_assert(sizeof(FileHeader) == kHeaderSize);

// A node's word.
inline constexpr std::uint32_t kChildCountMask = 0xFF;
inline constexpr std::uint32_t kRootBit = 0x200;     // on the root of a trie and on no other node
inline constexpr std::uint32_t kTerminalBit = 0x400; // a key ends here; exactly one of the next three goes with it
inline constexpr std::uint32_t kScalarBit = 0x800;
inline constexpr std::uint32_t kTableBit = 0x1000;
inline constexpr std::uint32_t kArrayBit = 0x2000;
inline constexpr std::uint32_t kValueBits = kScalarBit | kTableBit | kArrayBit;
inline constexpr unsigned kValueShift = 11;   // from a word's value bits to an element's type byte
inline constexpr unsigned kKeyByteShift = 14; // the bits above 21 are copies of it

constexpr std::uint32_t ChildCount(std::uint32_t word) { return word & kChildCountMask; }

/// The byte that leads to a node from its parent; 0 in a root.
constexpr unsigned char KeyByte(std::uint32_t word) { return static_cast<unsigned char>(word >> kKeyByteShift); }

/// The part of a word that says the byte: its sign goes on to the top.
constexpr std::uint32_t WordOfKeyByte(unsigned char byte) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int8_t>(byte))) << kKeyByteShift;
}

} // namespace Configure

#endif
