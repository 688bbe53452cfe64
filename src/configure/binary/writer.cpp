// The writer of the binary form. Each section of the file is a buffer in memory. One breadth-first walk over the
// containers appends to all of them; at the end they are written one after another.
//
//     containers_    root | its children | their children | ...      a queue: read at one end, appended at the other
//     sections       pool_   unit_counts_   node_counts_   body_
//
// Invariants:
//
//  1. The order of containers_ is container order, so records, counts and array numbers are appended in their final
//     order.
//  2. When a parent's record is made, everything that it says about a child is known, except the number of a child
//     table's first node. That number is how many nodes are made before the child's record; it is patched in when the
//     child's record is made.
//  3. The tree is read only through its public interfaces, and only forwards: finding an element of an edited array by
//     its position may be slow.

#include "configure/binary/writer.h"

#include "configure/binary/byte_buffer.h"
#include "configure/binary/format.h"
#include "configure/binary/string_pool.h"
#include "configure/binary/trie.h"
#include "files/open_modes.h"
#include "memory/list.h"

namespace Configure {
namespace {

/// The value bit of a node for a Unit of this kind; 0 for KIND_NONE.
std::uint32_t ValueBit(std::uint32_t kind) {
    switch (kind) {
    case KIND_STRING:
        return kScalarBit;
    case KIND_TABLE:
        return kTableBit;
    case KIND_ARRAY:
        return kArrayBit;
    default:
        return 0;
    }
}

/// Makes one file. The tree must not change until Compile returns, and isn't needed afterwards.
class BinaryWriter {
public:
    [[nodiscard]] bool Compile(ITable& root);
    [[nodiscard]] bool WriteTo(IFileIO& fileio, void* handle);

private:
    static constexpr std::uint32_t kNoPatch = UINT32_MAX;

    // A table or an array; the other pointer is null. `patch`: for every table except the root, the offset in the body
    // at which its parent refers to it.
    struct Container {
        ITable* table;
        IArray* array;
        std::uint32_t patch;
    };

    bool AddTable(ITable& table);
    bool CollectUnits(ITable& table);
    bool AddEntry(std::uint32_t word, IIterator& unit);
    bool AddArray(IArray& array);
    bool AddValue(std::uint32_t value_bit, IIterator& unit);
    bool MakeHeader(ByteBuffer& bytes) const;

    FileHeader header_ = {kMagic, 0, 0, 0, 0, 0, 0};
    PoolBuilder pool_;
    ByteBuffer unit_counts_;
    ByteBuffer node_counts_;
    ByteBuffer body_;
    Tessarin::List<Container> containers_; // the queue of the walk
    TrieBuilder trie_;                     // of the current table's keys
    Tessarin::List<IIterator*> units_;     // the current table's Units, by their entry numbers in the trie
};

/// Walks the containers. The list grows during the walk.
bool BinaryWriter::Compile(ITable& root) {
    if (!containers_.Push({&root, nullptr, kNoPatch})) return false;
    for (std::uint32_t index = 0; index < containers_.Count(); ++index) {
        const Container container = containers_[index]; // a copy, as the list may move when it grows
        if (container.array != nullptr) {
            if (!AddArray(*container.array)) return false;
            continue;
        }
        if (container.patch != kNoPatch) body_.PatchWord(container.patch, header_.node_count);
        if (!AddTable(*container.table)) return false;
    }
    header_.strings_size = pool_.Size();
    return true;
}

/// Appends a table's record and its two counts.
bool BinaryWriter::AddTable(ITable& table) {
    if (!CollectUnits(table) || !trie_.Build()) return false;
    std::uint32_t terminals = 0;
    for (const TrieBuilder::Node node : trie_.Nodes()) {
        if (node.entry == TrieBuilder::kNoEntry) {
            if (!body_.PutWord(node.word)) return false;
        } else {
            ++terminals;
            if (!AddEntry(node.word, *units_[node.entry])) return false;
        }
    }
    ++header_.table_count;
    header_.node_count += trie_.Nodes().Count();
    return unit_counts_.PutWord(terminals) && node_counts_.PutWord(trie_.Nodes().Count());
}

/// Collects a table's Units and adds their keys to the trie. Only texts may share a key. The header counts Units, while
/// unit_counts has the numbers of distinct keys.
bool BinaryWriter::CollectUnits(ITable& table) {
    units_.Clear();
    trie_.Clear();
    for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
        if (!units_.Push(unit) || !trie_.Add(unit->GetKey(), unit->GetType() == KIND_STRING)) return false;
    }
    if (units_.Count() > UINT32_MAX - header_.table_unit_count) return false;
    header_.table_unit_count += units_.Count();
    return true;
}

/// Appends a node at which a key ends. Adds the key to the pool before the value's text: the order of first use is part
/// of the form.
bool BinaryWriter::AddEntry(std::uint32_t word, IIterator& unit) {
    const std::uint32_t value_bit = ValueBit(unit.GetType());
    const std::uint32_t key = pool_.OffsetOf(unit.GetKey());
    return key != PoolBuilder::kNoOffset && body_.PutWord(word | value_bit) && body_.PutWord(key) &&
           AddValue(value_bit, unit);
}

/// Appends an array's record. Elements are counted as they are appended, not by GetCount, so the count can't differ
/// from the elements that follow it.
bool BinaryWriter::AddArray(IArray& array) {
    const std::uint32_t count_offset = body_.Size();
    std::uint32_t count = 0;
    if (!body_.PutWord(count)) return false;
    for (IIterator* unit = array.Begin(); unit != array.End(); unit = array.Next(unit)) {
        const std::uint32_t value_bit = ValueBit(unit->GetType());
        if (!body_.PutByte(static_cast<unsigned char>(value_bit >> kValueShift)) || !AddValue(value_bit, *unit)) {
            return false;
        }
        ++count;
    }
    body_.PatchWord(count_offset, count);
    header_.array_unit_count += count;
    return true;
}

/// Appends the value of a node or an element. A table or an array is appended to the containers, and arrays are
/// numbered in that order, which is array order.
bool BinaryWriter::AddValue(std::uint32_t value_bit, IIterator& unit) {
    switch (value_bit) {
    case kScalarBit: {
        const std::uint32_t offset = pool_.OffsetOf(unit.GetString());
        return offset != PoolBuilder::kNoOffset && body_.PutWord(offset);
    }
    case kTableBit:
        return containers_.Push({unit.GetTable(), nullptr, body_.Size()}) && body_.PutWord(0);
    case kArrayBit:
        return containers_.Push({nullptr, unit.GetArray(), kNoPatch}) && body_.PutWord(header_.array_count++);
    default:
        return false;
    }
}

/// Puts the header word by word, as the bytes of a FileHeader in memory depend on the machine.
bool BinaryWriter::MakeHeader(ByteBuffer& bytes) const {
    for (const std::uint32_t field : {header_.magic, header_.node_count, header_.strings_size, header_.table_count,
                                      header_.table_unit_count, header_.array_count, header_.array_unit_count}) {
        if (!bytes.PutWord(field)) return false;
    }
    return true;
}

/// Writes the sections. Each is within the size limit of a file, but their sum may exceed it.
bool BinaryWriter::WriteTo(IFileIO& fileio, void* handle) {
    ByteBuffer header;
    if (!MakeHeader(header)) return false;
    std::uint64_t size = pool_.Size();
    for (const ByteBuffer* section : {&header, &unit_counts_, &node_counts_, &body_}) size += section->Size();
    if (size > kMostFileBytes) return false;

    const auto write = [&fileio, handle](const unsigned char* bytes, std::uint32_t count) {
        return count == 0 || fileio.Write(handle, bytes, count) == count;
    };
    return write(header.Bytes(), header.Size()) && write(pool_.Bytes(), pool_.Size()) &&
           write(unit_counts_.Bytes(), unit_counts_.Size()) && write(node_counts_.Bytes(), node_counts_.Size()) &&
           write(body_.Bytes(), body_.Size());
}

} // namespace

bool WriteBinary(IFileIO& fileio, const char* path, ITable* root, Closer close) {
    void* handle = fileio.Open(path, Tessarin::kOpenToWrite);
    if (handle == nullptr) return false;
    BinaryWriter writer;
    const bool written = root != nullptr && writer.Compile(*root) && writer.WriteTo(fileio, handle);
    return close(fileio, handle) && written;
}

} // namespace Configure
