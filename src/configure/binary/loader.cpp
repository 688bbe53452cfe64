// The loader of the binary form. The header and the two lists of counts say how many objects of each kind there are, so
// all of them are allocated at once and then filled in one pass over the body.
//
//     header | pool | unit_counts | node_counts | body: one record per container, in container order
//
// The bytes may be hostile: nothing that they say is used before it is checked. Invariants:
//
//  1. Allocations take at most a fixed multiple of the file's size: the counts are first compared with the bytes that
//     the body would need for them.
//  2. Every byte is read through a Cursor, which can't leave the file.
//  3. A table's record has exactly as many nodes and keys as the counts say, and a node's children are in the same
//     table. So each node except the root has one parent, which is read before it, and each key has a Unit.
//  4. The path to a node spells the key that ends there, so keys can be found by their texts and the trie isn't kept.
//  5. Tables are assigned to Units in table order. An array's number must be the next one in array order. So each table
//     except the root, and each array, has one parent, which is read before it: the result is a tree of any depth.
//  6. At the end of the body all tables, arrays, keys and elements that the counts announce have been read.

#include "configure/binary/loader.h"

#include "configure/binary/string_pool.h"
#include "configure/tree/default_tables.h"
#include "strings/string_table.h"

#include <algorithm>

namespace Configure {
namespace {

/// A forward reader that fails instead of leaving its bytes.
class Cursor {
public:
    Cursor(const unsigned char* bytes, std::uint32_t size) : next_(bytes), end_(bytes + size) {}

    [[nodiscard]] bool ReadByte(std::uint32_t& byte) {
        if (next_ == end_) return false;
        byte = *next_++;
        return true;
    }
    [[nodiscard]] bool ReadWord(std::uint32_t& word) {
        if (Remaining() < kWordSize) return false;
        word = LoadWord(next_);
        next_ += kWordSize;
        return true;
    }

    /// Skips `size` bytes and sets `section` to the first of them.
    [[nodiscard]] bool ReadSection(std::uint64_t size, const unsigned char*& section) {
        if (Remaining() < size) return false;
        section = next_;
        next_ += size;
        return true;
    }

    [[nodiscard]] std::uint64_t Remaining() const { return static_cast<std::uint64_t>(end_ - next_); }

private:
    const unsigned char* next_;
    const unsigned char* end_;
};

/// A number from a list of numbers, which may be unaligned.
std::uint32_t WordAt(const unsigned char* words, std::uint32_t index) {
    return LoadWord(words + std::size_t{index} * kWordSize);
}

/// One load: the header, the pool and the counts, then the body record by record. The counts are read from the file's
/// bytes whenever they are needed.
class BinaryLoader {
public:
    BinaryLoader(const unsigned char* bytes, std::uint32_t size, BinTree& tree) : cursor_(bytes, size), tree_(tree) {}

    [[nodiscard]] bool Load() {
        if (!ReadHeader() || !LocateSections() || !AllocateObjects()) return false;
        AssignUnits();
        if (!ReadBody() || !tree_.IndexKeys()) return false;
        DefaultWiring<BinTable> defaults;
        return std::ranges::all_of(tree_.tables, [&defaults](BinTable& table) { return defaults.Wire(table); });
    }

private:
    // What a container is. It determines the kind of its record in the body.
    enum Kind : unsigned char { kArray, kTable };

    // A node of a trie, with what is needed to follow the path from a key's end back to the root.
    struct TrieNode {
        std::uint32_t parent;
        unsigned char byte;
    };
    static constexpr std::uint32_t kNoParent = UINT32_MAX;

    bool ReadHeader();
    bool LocateSections();
    bool AllocateObjects();
    void AssignUnits();
    bool ReadBody();
    bool ReadTable(BinTable& table, std::uint32_t node_count);
    bool ReadEntry(std::uint32_t word, BinTable::Unit& unit);
    bool ReadArray(BinArray& array);
    [[nodiscard]] bool PathSpells(std::uint32_t node, cstr key) const;
    template <class Objects>
    auto* AssignNext(Objects& objects, std::uint32_t& assigned, Kind kind, cstr name);
    template <class Unit>
    bool SetValue(std::uint32_t type, std::uint32_t value, cstr name, Unit& unit);

    [[nodiscard]] std::uint32_t UnitCount(std::uint32_t table) const { return WordAt(unit_counts_, table); }
    [[nodiscard]] std::uint32_t NodeCount(std::uint32_t table) const { return WordAt(node_counts_, table); }

    Cursor cursor_;
    BinTree& tree_;
    FileHeader header_ = {};
    const unsigned char* pool_ = nullptr;
    const unsigned char* unit_counts_ = nullptr;
    const unsigned char* node_counts_ = nullptr;
    std::uint32_t max_nodes_ = 0;  // of one table
    std::uint32_t unit_count_ = 0; // of all tables; the header's number may be larger
    StringPool strings_;
    Tessarin::List<TrieNode> nodes_;    // the nodes of the current table
    Tessarin::List<Kind> kinds_;        // the containers in container order; each is appended when its parent is read
    std::uint32_t tables_assigned_ = 1; // the root is assigned from the start
    std::uint32_t arrays_assigned_ = 0;
    std::uint32_t elements_used_ = 0;
};

/// Fails also for a file without a root table.
bool BinaryLoader::ReadHeader() {
    for (std::uint32_t* field : {&header_.magic, &header_.node_count, &header_.strings_size, &header_.table_count,
                                 &header_.table_unit_count, &header_.array_count, &header_.array_unit_count}) {
        if (!cursor_.ReadWord(*field)) return false;
    }
    return header_.magic == kMagic && header_.table_count != 0;
}

/// Finds the sections before the body, sums the counts, and checks that the rest of the file is long enough for all
/// counts.
bool BinaryLoader::LocateSections() {
    const std::uint64_t counts_size = std::uint64_t{header_.table_count} * kWordSize;
    if (!cursor_.ReadSection(header_.strings_size, pool_) || !cursor_.ReadSection(counts_size, unit_counts_) ||
        !cursor_.ReadSection(counts_size, node_counts_)) {
        return false;
    }
    std::uint64_t units = 0, nodes = 0;
    for (std::uint32_t table = 0; table < header_.table_count; ++table) {
        if (NodeCount(table) == 0) return false; // every trie has a root
        units += UnitCount(table);
        nodes += NodeCount(table);
        max_nodes_ = std::max(max_nodes_, NodeCount(table));
    }
    if (nodes != header_.node_count || units > nodes || units > header_.table_unit_count) return false;
    unit_count_ = static_cast<std::uint32_t>(units);
    const std::uint64_t body_size = nodes * kWordSize + units * 2 * kWordSize +
                                    std::uint64_t{header_.array_count} * kWordSize +
                                    std::uint64_t{header_.array_unit_count} * kElementSize;
    return body_size <= cursor_.Remaining();
}

/// REQUIRES: the counts fit the body, so that the number of all containers can't overflow
bool BinaryLoader::AllocateObjects() {
    return nodes_.Make(max_nodes_) && tree_.tables.Make(header_.table_count) && tree_.MakeArrays(header_.array_count) &&
           tree_.table_units.Make(unit_count_) && tree_.array_units.Make(header_.array_unit_count) &&
           kinds_.Make(header_.table_count + header_.array_count) && strings_.Read(pool_, header_.strings_size);
}

/// Gives each table its part of the Units of all tables.
void BinaryLoader::AssignUnits() {
    BinTable::Unit* units = tree_.table_units.begin();
    for (std::uint32_t index = 0; index < header_.table_count; ++index) {
        BinTable& table = tree_.tables[index];
        table.Fill(units, UnitCount(index));
        units += table.count;
    }
}

/// Reads the containers in container order; each record appends the children that it names. So a container without a
/// parent is never read. The comparison of the counts at the end finds that, and anything else that is missing.
bool BinaryLoader::ReadBody() {
    kinds_[0] = kTable;
    std::uint32_t tables_read = 0, arrays_read = 0;
    while (tables_read + arrays_read < tables_assigned_ + arrays_assigned_) {
        if (kinds_[tables_read + arrays_read] == kTable) {
            if (!ReadTable(tree_.tables[tables_read], NodeCount(tables_read))) return false;
            ++tables_read;
        } else if (!ReadArray(tree_.arrays[arrays_read++])) {
            return false;
        }
    }
    return tables_read == header_.table_count && arrays_read == header_.array_count &&
           elements_used_ == header_.array_unit_count;
}

/// Children are in the order of their parents. So the children of the next node begin at `placed`, the first node
/// without a parent, and a node must have a parent before it is read.
bool BinaryLoader::ReadTable(BinTable& table, std::uint32_t node_count) {
    std::uint32_t placed = 1;
    std::uint32_t unit = 0;
    nodes_[0].parent = kNoParent;
    for (std::uint32_t index = 0; index < placed; ++index) {
        std::uint32_t word;
        if (!cursor_.ReadWord(word) || ChildCount(word) > node_count - placed) return false;
        nodes_[index].byte = KeyByte(word);
        const bool has_sibling = index != 0 && nodes_[index - 1].parent == nodes_[index].parent;
        if (has_sibling && nodes_[index - 1].byte >= nodes_[index].byte) return false;
        for (std::uint32_t left = ChildCount(word); left != 0; --left) nodes_[placed++].parent = index;
        if ((word & (kTerminalBit | kValueBits)) == 0) continue;
        if (unit == table.count || !ReadEntry(word, table.units[unit])) return false;
        if (!PathSpells(index, table.units[unit++].key)) return false;
    }
    return placed == node_count && unit == table.count;
}

/// Whether the path from the root to a node spells `key`, the text of the key that ends there. This must hold because
/// tables find their keys by these texts.
bool BinaryLoader::PathSpells(std::uint32_t node, cstr key) const {
    std::uint32_t unspelled = Tessarin::CstrLength(key);
    for (; nodes_[node].parent != kNoParent; node = nodes_[node].parent) {
        if (unspelled == 0 || static_cast<unsigned char>(key[--unspelled]) != nodes_[node].byte) return false;
    }
    return unspelled == 0;
}

/// Reads the key and the value of a node. Fails for a node that has value bits but isn't terminal.
bool BinaryLoader::ReadEntry(std::uint32_t word, BinTable::Unit& unit) {
    std::uint32_t key, value;
    if ((word & kTerminalBit) == 0 || !cursor_.ReadWord(key) || !cursor_.ReadWord(value)) return false;
    unit.key = strings_.At(key);
    return unit.key != nullptr && SetValue((word & kValueBits) >> kValueShift, value, unit.key, unit);
}

/// The elements of all arrays are in one block. Each array takes the next ones, and fails if fewer are left than it
/// has.
bool BinaryLoader::ReadArray(BinArray& array) {
    std::uint32_t count;
    if (!cursor_.ReadWord(count) || count > header_.array_unit_count - elements_used_) return false;
    array.Fill(tree_.array_units.begin() + elements_used_, count);
    elements_used_ += count;
    for (BinArray::Unit *unit = array.units, *end = unit + count; unit != end; ++unit) {
        std::uint32_t type, value;
        if (!cursor_.ReadByte(type) || !cursor_.ReadWord(value) || !SetValue(type, value, nullptr, *unit)) return false;
    }
    return true;
}

/// Takes the next free table or array, gives it its name, and appends it to the containers.
/// REQUIRES: `assigned`, the number of those assigned so far, is below their count
template <class Objects>
auto* BinaryLoader::AssignNext(Objects& objects, std::uint32_t& assigned, Kind kind, cstr name) {
    kinds_[tables_assigned_ + arrays_assigned_] = kind;
    auto& object = objects[assigned++];
    object.name = name;
    return &object;
}

/// Fails if there is no such text, table or array, or if `type` isn't exactly one of the three. A table's number in the
/// file isn't used: the order determines which table is next.
template <class Unit>
bool BinaryLoader::SetValue(std::uint32_t type, std::uint32_t value, cstr name, Unit& unit) {
    switch (type) {
    case kScalarBit >> kValueShift:
        unit.HoldText() = strings_.At(value);
        return unit.Text() != nullptr;
    case kTableBit >> kValueShift:
        if (tables_assigned_ == header_.table_count) return false;
        unit.Hold(AssignNext(tree_.tables, tables_assigned_, kTable, name));
        return true;
    case kArrayBit >> kValueShift:
        if (arrays_assigned_ == header_.array_count || value != arrays_assigned_) return false;
        unit.Hold(AssignNext(tree_.arrays, arrays_assigned_, kArray, name));
        return true;
    default:
        return false;
    }
}

} // namespace

bool LoadBinary(const unsigned char* bytes, std::uint32_t size, BinTree& tree) {
    return BinaryLoader(bytes, size, tree).Load();
}

} // namespace Configure
