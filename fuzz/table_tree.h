// A table as a plain tree, to be compared with the tree that its text describes.

#ifndef TESSARIN_FUZZ_TABLE_TREE_H
#define TESSARIN_FUZZ_TABLE_TREE_H

#include "tessarin/tables.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Fuzz {

struct Entry;

/// The value of an entry, or a whole table. Only the fields of the kind are set. A null string reads as an empty one;
/// VALUE_TABLE is the kind of all entries that hold a table, and VALUE_EXTERNAL_TABLE of those that could and hold
/// none.
struct Value {
    std::uint32_t kind = Tessarin::VALUE_TABLE;
    std::int32_t integer = 0;   // of an integer, of a handle, or the bits of a real
    std::string text;           // of a string
    std::vector<float> reals;   // of a vector or a matrix
    std::vector<Entry> entries; // of a table, by their keys

    [[nodiscard]] Value* Find(const std::string& key);
};

struct Entry {
    std::string key;
    Value value;
};

/// Bit for bit, except that all nans are equal.
bool operator==(const Value& one, const Value& other);

Value IntegerValue(std::int32_t integer);
Value RealValue(float real);
Value StringValue(std::string text);
Value VectorValue(std::vector<float> reals);

/// The value of an entry with everything below it.
Value ValueOf(Tessarin::IIterator& entry);

/// The tree of a table, from a complete walk. Requires on the way that the walk, the count and the search agree.
Value TreeOf(Tessarin::ITable& table);

struct TableCloser {
    void operator()(Tessarin::ITable* table) const { CloseTable(table); }
};
using TableHolder = std::unique_ptr<Tessarin::ITable, TableCloser>;

} // namespace Fuzz

#endif
