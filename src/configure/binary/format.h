// The layout of the binary form: the magic, the header, and the bits of a node's word, for the loader and the writer.
// All numbers are unsigned, 32 bits, lowest byte first, at any address.
//
//   header         28 bytes, see FileHeader
//   pool           texts with their NULs, each distinct text once; the body refers to a text by its offset in the pool
//   unit_counts    one number per table, in table order: how many keys it has
//   node_counts    one number per table, in table order: how many nodes its trie has
//   body           one record per table and array, in container order
//
// Container order is the order of a breadth-first walk over tables and arrays: the root, then the children of each
// container in turn. A table's children are in the order of its trie's nodes, an array's in the order of its elements.
// Table order is container order without the arrays, array order is container order without the tables.
//
//   a table        its trie's nodes, breadth-first, siblings by ascending byte. A node is its `word`; if a key ends at
//                  the node, the offset of the key's text and a value follow
//   an array       the number of elements; for each element a byte (the value bits of a word, shifted down) and a value
//   a value        for a scalar the offset of its text, for a table the number of its first node, counted over all
//                  tables of the file, for an array its number in array order

#ifndef TESSARIN_CONFIGURE_BINARY_FORMAT_H
#define TESSARIN_CONFIGURE_BINARY_FORMAT_H

#include <cstdint>

namespace Configure {

inline constexpr std::uint32_t kMagic = 0x7842494E; // "NIBx"
inline constexpr std::uint32_t kHeaderSize = 28;
inline constexpr std::uint32_t kWordSize = 4;
inline constexpr std::uint32_t kElementSize = 5;            // of an array: a byte and a word
inline constexpr std::uint32_t kMostFileBytes = 0x7FFFFFFF; // the largest size that a file service can report

inline std::uint32_t LoadWord(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

/// Whether a file begins like one of the binary form: it has enough bytes for a header and begins with the magic. Every
/// other file counts as text form.
inline bool HasBinaryHead(const void* bytes, std::uint32_t size) {
    return size >= kHeaderSize && LoadWord(static_cast<const unsigned char*>(bytes)) == kMagic;
}

inline void StoreWord(unsigned char* bytes, std::uint32_t word) {
    bytes[0] = static_cast<unsigned char>(word);
    bytes[1] = static_cast<unsigned char>(word >> 8);
    bytes[2] = static_cast<unsigned char>(word >> 16);
    bytes[3] = static_cast<unsigned char>(word >> 24);
}

/// The numbers of a file's header, in the order of the file.
struct FileHeader {
    std::uint32_t magic;
    std::uint32_t node_count;
    std::uint32_t strings_size;     // bytes
    std::uint32_t table_count;      // the root included
    std::uint32_t table_unit_count; // at least the sum of unit_counts, which count entries that share a key once
    std::uint32_t array_count;
    std::uint32_t array_unit_count;
};
static_assert(sizeof(FileHeader) == kHeaderSize);

// The bits of a node's word.
inline constexpr std::uint32_t kChildCountMask = 0xFF;
inline constexpr std::uint32_t kRootBit = 0x200;     // on the root of a trie and on no other node
inline constexpr std::uint32_t kTerminalBit = 0x400; // a key ends here; exactly one of the next three is set, too
inline constexpr std::uint32_t kScalarBit = 0x800;
inline constexpr std::uint32_t kTableBit = 0x1000;
inline constexpr std::uint32_t kArrayBit = 0x2000;
inline constexpr std::uint32_t kValueBits = kScalarBit | kTableBit | kArrayBit;
inline constexpr unsigned kValueShift = 11;   // from a word's value bits to an element's type byte
inline constexpr unsigned kKeyByteShift = 14; // the bits above 21 are copies of it

constexpr std::uint32_t ChildCount(std::uint32_t word) { return word & kChildCountMask; }

/// The byte that leads to a node from its parent; 0 in a root.
constexpr unsigned char KeyByte(std::uint32_t word) { return static_cast<unsigned char>(word >> kKeyByteShift); }

/// A word that has only the key byte, sign-extended to the top bit.
constexpr std::uint32_t WordOfKeyByte(unsigned char byte) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int8_t>(byte))) << kKeyByteShift;
}

} // namespace Configure

#endif
