// A file says in its header and its two lists of counts how much there is of everything, so all is made at once and
// then filled in one pass over the body. The bytes are hostile: nothing that they say is believed before it is checked.
//
//  1. What is made takes no more than a fixed multiple of the file's size: the counts are first held against the bytes
//     that the body would need for them.
//  2. Every byte is read through a Cursor, which can't leave the file.
//  3. A table's record has exactly its number of nodes and of keys, and a node's children lie within its table. So each
//     node but the roots has one parent in front of it, and each key has a Unit.
//  4. The way to a node spells the key that ends there, so keys can be found by their texts and the trie isn't kept.
//  5. Tables are handed out in table order. An array's number must be the next in array order. So each table and each
//     array but the root has one parent that comes before it: the result is a tree, however deep.
//  6. All that was announced must have turned up at the end.

#include "configure/binary/loader.h"

#include "configure/binary/string_pool.h"
#include "configure/tree/default_tables.h"
#include "strings/string_table.h"

#include <algorithm>

namespace Configure {
namespace {

/// Reads forward, and fails rather than leave its bytes.
class Cursor {
public:
    Cursor(const unsigned char* bytes, std::uint32_t size) : at_(bytes), end_(bytes + size) {}

    [[nodiscard]] bool ReadByte(std::uint32_t& byte) {
        if (at_ == end_) return false;
        byte = *at_++;
        return true;
    }
    [[nodiscard]] bool ReadWord(std::uint32_t& word) {
        if (Left() < kWordSize) return false;
        word = LoadWord(at_);
        at_ += kWordSize;
        return true;
    }

    /// A part of the bytes, which are then behind the cursor.
    [[nodiscard]] bool Cut(std::uint64_t size, const unsigned char*& part) {
        if (Left() < size) return false;
        part = at_;
        at_ += size;
        return true;
    }

    [[nodiscard]] std::uint64_t Left() const { return static_cast<std::uint64_t>(end_ - at_); }

private:
    const unsigned char* at_;
    const unsigned char* end_;
};

/// One number of a list of them, which lie at any address.
std::uint32_t WordAt(const unsigned char* words, std::uint32_t index) {
    return LoadWord(words + std::size_t{index} * kWordSize);
}

/// One load. The header and the counts are read first, and stay in the file's bytes; the body follows, record by
/// record.
class BinaryLoader {
public:
    BinaryLoader(const unsigned char* bytes, std::uint32_t size, BinTree& tree) : cursor_(bytes, size), tree_(tree) {}

    [[nodiscard]] bool Load() {
        if (!ReadHeader() || !CutSections() || !MakeObjects()) return false;
        PlaceTables();
        if (!ReadBody() || !tree_.IndexKeys()) return false;
        DefaultWiring<BinTable> defaults;
        for (BinTable& table : tree_.tables) defaults.Wire(table); // their lookups intern nothing, so they can't fail
        return true;
    }

private:
    // What a container is, for the record that comes when its turn comes.
    enum Kind : unsigned char { kArray, kTable };

    // A node of a trie, as a step on the way to a key.
    struct Step {
        std::uint32_t parent;
        unsigned char byte;
    };
    static constexpr std::uint32_t kNoParent = UINT32_MAX;

    bool ReadHeader();
    bool CutSections();
    bool MakeObjects();
    void PlaceTables();
    bool ReadBody();
    bool ReadTable(BinTable& table, std::uint32_t node_count);
    bool ReadEntry(std::uint32_t word, BinTable::Unit& unit);
    bool ReadArray(BinArray& array);
    [[nodiscard]] bool LeadsTo(std::uint32_t node, cstr key) const;
    template <class Unit>
    bool TakeValue(std::uint32_t type, std::uint32_t value, cstr name, Unit& unit);

    [[nodiscard]] std::uint32_t UnitCount(std::uint32_t table) const { return WordAt(unit_counts_, table); }
    [[nodiscard]] std::uint32_t NodeCount(std::uint32_t table) const { return WordAt(node_counts_, table); }

    Cursor cursor_;
    BinTree& tree_;
    FileHeader header_ = {};
    const unsigned char* pool_ = nullptr;
    const unsigned char* unit_counts_ = nullptr;
    const unsigned char* node_counts_ = nullptr;
    std::uint32_t most_nodes_ = 0; // of one table
    std::uint32_t unit_count_ = 0; // of all tables: what the header says may be more
    StringPool strings_;
    Tessarin::List<Step> path_;       // of the table at hand
    Tessarin::List<Kind> kinds_;      // the containers in their order, as they are handed out
    std::uint32_t tables_handed_ = 1; // the root is
    std::uint32_t arrays_handed_ = 0;
    std::uint32_t elements_used_ = 0;
};

/// A file without even a root is none.
bool BinaryLoader::ReadHeader() {
    for (std::uint32_t* field : {&header_.magic, &header_.node_count, &header_.strings_size, &header_.table_count,
                                 &header_.table_unit_count, &header_.array_count, &header_.array_unit_count}) {
        if (!cursor_.ReadWord(*field)) return false;
    }
    return header_.magic == kMagic && header_.table_count != 0;
}

/// Finds the parts in front of the body, sums up the counts, and holds all numbers against what is left for the body.
bool BinaryLoader::CutSections() {
    const std::uint64_t counts_size = std::uint64_t{header_.table_count} * kWordSize;
    if (!cursor_.Cut(header_.strings_size, pool_) || !cursor_.Cut(counts_size, unit_counts_) ||
        !cursor_.Cut(counts_size, node_counts_)) {
        return false;
    }
    std::uint64_t units = 0, nodes = 0;
    for (std::uint32_t table = 0; table < header_.table_count; ++table) {
        if (NodeCount(table) == 0) return false; // not even a root
        units += UnitCount(table);
        nodes += NodeCount(table);
        most_nodes_ = std::max(most_nodes_, NodeCount(table));
    }
    if (nodes != header_.node_count || units > nodes || units > header_.table_unit_count) return false;
    unit_count_ = static_cast<std::uint32_t>(units);
    const std::uint64_t body_size = nodes * kWordSize + units * 2 * kWordSize +
                                    std::uint64_t{header_.array_count} * kWordSize +
                                    std::uint64_t{header_.array_unit_count} * kElementSize;
    return body_size <= cursor_.Left();
}

/// REQUIRES: the counts fit the body, which also keeps the sum of the containers from running over
bool BinaryLoader::MakeObjects() {
    return path_.Make(most_nodes_) && tree_.tables.Make(header_.table_count) &&
           tree_.arrays.Make(header_.array_count) && tree_.table_units.Make(unit_count_) &&
           tree_.array_units.Make(header_.array_unit_count) && kinds_.Make(header_.table_count + header_.array_count) &&
           strings_.Read(pool_, header_.strings_size);
}

/// Gives each table its run of Units.
void BinaryLoader::PlaceTables() {
    BinTable::Unit* units = tree_.table_units.begin();
    for (std::uint32_t index = 0; index < header_.table_count; ++index) {
        BinTable& table = tree_.tables[index];
        table.count = UnitCount(index);
        table.units = units;
        units += table.count;
    }
}

/// Takes the containers in their order, which each record that is read makes longer. One that nobody holds never gets a
/// turn; that and whatever else wasn't used up shows at the end.
bool BinaryLoader::ReadBody() {
    kinds_[0] = kTable;
    std::uint32_t tables_read = 0, arrays_read = 0;
    while (tables_read + arrays_read < tables_handed_ + arrays_handed_) {
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

/// Children follow in the order of their parents. So `placed`, the first node without a parent, is where those of the
/// next node begin, and a node must have got its parent before its turn comes.
bool BinaryLoader::ReadTable(BinTable& table, std::uint32_t node_count) {
    std::uint32_t placed = 1;
    std::uint32_t unit = 0;
    path_[0].parent = kNoParent;
    for (std::uint32_t index = 0; index < placed; ++index) {
        std::uint32_t word;
        if (!cursor_.ReadWord(word) || ChildCount(word) > node_count - placed) return false;
        path_[index].byte = KeyByte(word);
        const bool has_elder = index != 0 && path_[index - 1].parent == path_[index].parent;
        if (has_elder && path_[index - 1].byte >= path_[index].byte) return false;
        for (std::uint32_t left = ChildCount(word); left != 0; --left) path_[placed++].parent = index;
        if ((word & (kTerminalBit | kValueBits)) == 0) continue;
        if (unit == table.count || !ReadEntry(word, table.units[unit])) return false;
        if (!LeadsTo(index, table.units[unit++].key)) return false;
    }
    return placed == node_count && unit == table.count;
}

/// Whether the way from the root to a node spells the key that ends there. The table finds its keys by their texts.
bool BinaryLoader::LeadsTo(std::uint32_t node, cstr key) const {
    std::uint32_t left = Tessarin::CstrLength(key);
    for (; path_[node].parent != kNoParent; node = path_[node].parent) {
        if (left == 0 || static_cast<unsigned char>(key[--left]) != path_[node].byte) return false;
    }
    return left == 0;
}

/// A node with value bits that isn't terminal is refused here.
bool BinaryLoader::ReadEntry(std::uint32_t word, BinTable::Unit& unit) {
    std::uint32_t key, value;
    if ((word & kTerminalBit) == 0 || !cursor_.ReadWord(key) || !cursor_.ReadWord(value)) return false;
    unit.key = strings_.At(key);
    return unit.key != nullptr && TakeValue((word & kValueBits) >> kValueShift, value, unit.key, unit);
}

/// The elements of all arrays lie side by side, so an array can only take what those before it have left.
bool BinaryLoader::ReadArray(BinArray& array) {
    std::uint32_t count;
    if (!cursor_.ReadWord(count) || count > header_.array_unit_count - elements_used_) return false;
    array.count = count;
    array.units = tree_.array_units.begin() + elements_used_;
    elements_used_ += count;
    for (BinArray::Unit *unit = array.units, *end = unit + count; unit != end; ++unit) {
        std::uint32_t type, value;
        if (!cursor_.ReadByte(type) || !cursor_.ReadWord(value) || !TakeValue(type, value, nullptr, *unit))
            return false;
    }
    return true;
}

/// A table's number in the file isn't used: which table comes next is plain from the order.
template <class Unit>
bool BinaryLoader::TakeValue(std::uint32_t type, std::uint32_t value, cstr name, Unit& unit) {
    const std::uint32_t handed = tables_handed_ + arrays_handed_;
    switch (type) {
    case kScalarBit >> kValueShift:
        unit.kind = KIND_STRING;
        unit.value.text = strings_.At(value);
        return unit.value.text != nullptr;
    case kTableBit >> kValueShift: {
        if (tables_handed_ == header_.table_count) return false;
        BinTable& table = tree_.tables[tables_handed_++];
        table.name = name;
        unit.kind = KIND_TABLE;
        unit.value.table = &table;
        kinds_[handed] = kTable;
        return true;
    }
    case kArrayBit >> kValueShift: {
        if (arrays_handed_ == header_.array_count || value != arrays_handed_) return false;
        BinArray& array = tree_.arrays[arrays_handed_++];
        array.name = name;
        unit.kind = KIND_ARRAY;
        unit.value.array = &array;
        kinds_[handed] = kArray;
        return true;
    }
    default:
        return false;
    }
}

} // namespace

bool LoadBinary(const unsigned char* bytes, std::uint32_t size, BinTree& tree) {
    return BinaryLoader(bytes, size, tree).Load();
}

} // namespace Configure
