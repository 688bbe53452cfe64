// One walk over the containers in container order makes pool, counts and body side by side in memory. What a parent
// says of a child is known when the parent's turn comes, but for the number of a table's first node: that is the number
// of nodes made when the table's own turn comes, and is put in then.
//
// The tree is seen through its interfaces alone, and only forwards: an edited array may be slow to find a position in.

#include "configure/binary/writer.h"

#include "configure/binary/byte_buffer.h"
#include "configure/binary/format.h"
#include "configure/binary/string_pool.h"
#include "configure/binary/trie.h"
#include "memory/list.h"

namespace Configure {
namespace {

constexpr std::int32_t kModeWrite = 1;

/// The value bit of a Unit; 0 if it is of no kind.
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

/// One file in the making. The tree must stay as it is until Compile returns, and isn't needed after it.
class BinaryWriter {
public:
    [[nodiscard]] bool Compile(ITable& root);
    [[nodiscard]] bool WriteTo(IFileIO& fileio, void* handle);

private:
    static constexpr std::uint32_t kNoPlace = UINT32_MAX;

    // One of the two, and for a table where in the body the number of its first node goes.
    struct Container {
        ITable* table;
        IArray* array;
        std::uint32_t place;
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
    Tessarin::List<Container> containers_; // in container order
    TrieBuilder trie_;                     // of the table at hand
    Tessarin::List<IIterator*> units_;     // its Units, by their numbers in the trie
};

/// The list of containers is the queue of the walk, and grows while it is gone through.
bool BinaryWriter::Compile(ITable& root) {
    if (!containers_.Push({&root, nullptr, kNoPlace})) return false;
    for (std::uint32_t index = 0; index < containers_.Count(); ++index) {
        const Container container = containers_[index]; // a copy: the list moves as it grows
        if (container.array != nullptr) {
            if (!AddArray(*container.array)) return false;
            continue;
        }
        if (container.place != kNoPlace) body_.PatchWord(container.place, header_.node_count);
        if (!AddTable(*container.table)) return false;
    }
    header_.strings_size = pool_.Size();
    return true;
}

/// A table's record and its two counts.
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

/// Only texts may share a key. The header counts the entries, the list of counts the keys.
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

/// A node at which a key ends. The key comes into the pool before the text: the order of first use is part of the form.
bool BinaryWriter::AddEntry(std::uint32_t word, IIterator& unit) {
    const std::uint32_t value_bit = ValueBit(unit.GetType());
    const std::uint32_t key = pool_.OffsetOf(unit.GetKey());
    return key != PoolBuilder::kNoOffset && body_.PutWord(word | value_bit) && body_.PutWord(key) &&
           AddValue(value_bit, unit);
}

/// Counted on the way and not asked for, so that the count can't differ from what follows it.
bool BinaryWriter::AddArray(IArray& array) {
    const std::uint32_t place = body_.Size();
    std::uint32_t count = 0;
    if (!body_.PutWord(count)) return false;
    for (IIterator* unit = array.Begin(); unit != array.End(); unit = array.Next(unit)) {
        const std::uint32_t value_bit = ValueBit(unit->GetType());
        if (!body_.PutByte(static_cast<unsigned char>(value_bit >> kValueShift)) || !AddValue(value_bit, *unit)) {
            return false;
        }
        ++count;
    }
    body_.PatchWord(place, count);
    header_.array_unit_count += count;
    return true;
}

/// Arrays get their numbers as they are appended, which is array order.
bool BinaryWriter::AddValue(std::uint32_t value_bit, IIterator& unit) {
    switch (value_bit) {
    case kScalarBit: {
        const std::uint32_t offset = pool_.OffsetOf(unit.GetString());
        return offset != PoolBuilder::kNoOffset && body_.PutWord(offset);
    }
    case kTableBit:
        return containers_.Push({unit.GetTable(), nullptr, body_.Size()}) && body_.PutWord(0);
    case kArrayBit:
        return containers_.Push({nullptr, unit.GetArray(), kNoPlace}) && body_.PutWord(header_.array_count++);
    default:
        return false;
    }
}

/// Word by word: a record's bytes would be those of this machine.
bool BinaryWriter::MakeHeader(ByteBuffer& bytes) const {
    for (const std::uint32_t field : {header_.magic, header_.node_count, header_.strings_size, header_.table_count,
                                      header_.table_unit_count, header_.array_count, header_.array_unit_count}) {
        if (!bytes.PutWord(field)) return false;
    }
    return true;
}

/// All parts are within the limit of a file by themselves; only together they may not be.
bool BinaryWriter::WriteTo(IFileIO& fileio, void* handle) {
    ByteBuffer header;
    if (!MakeHeader(header)) return false;
    std::uint64_t size = pool_.Size();
    for (const ByteBuffer* part : {&header, &unit_counts_, &node_counts_, &body_}) size += part->Size();
    if (size > kMostFileBytes) return false;

    auto write = [&fileio, handle](const unsigned char* bytes, std::uint32_t count) {
        return count == 0 || fileio.Write(handle, bytes, count) == count;
    };
    return write(header.Bytes(), header.Size()) && write(pool_.Bytes(), pool_.Size()) &&
           write(unit_counts_.Bytes(), unit_counts_.Size()) && write(node_counts_.Bytes(), node_counts_.Size()) &&
           write(body_.Bytes(), body_.Size());
}

} // namespace

bool WriteBinary(IFileIO& fileio, const char* path, ITable* root) {
    void* handle = fileio.Open(path, kModeWrite);
    if (handle == nullptr) return false;
    BinaryWriter writer;
    const bool written = root != nullptr && writer.Compile(*root) && writer.WriteTo(fileio, handle);
    fileio.Close(handle);
    return written;
}

} // namespace Configure
