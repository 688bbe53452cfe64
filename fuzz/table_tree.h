/// A table as a plain tree, to be compared with what a form should have made of it.

#ifndef TESSARIN_FUZZ_TABLE_TREE_H
#define TESSARIN_FUZZ_TABLE_TREE_H

#include "tessarin/tables.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Fuzz {

struct Entry;

/// What an entry holds, and what a whole table is. Only the fields of the kind are set. A null string reads as an empty
/// one; VALUE_TABLE stands for all that hold a table, and VALUE_EXTERNAL_TABLE for those that hold none.
struct Value {
    std::uint32_t kind = Tessarin::VALUE_TABLE;
    std::int32_t integer = 0;   ///< of an integer, of a handle, or the bits of a real
    std::string text;           ///< of a string
    std::vector<float> reals;   ///< of a vector or a matrix
    std::vector<Entry> entries; ///< of a table, by their keys

    [[nodiscard]] Value* Find(const std::string& key);
};

struct Entry {
    std::string key;
    Value value;
};

/// Bit for bit, but one nan is as good as another.
bool operator==(const Value& one, const Value& other);

Value IntegerValue(std::int32_t integer);
Value RealValue(float real);
Value StringValue(std::string text);
Value VectorValue(std::vector<float> reals);

/// The value of an entry, down to the last of its tables.
Value ValueOf(Tessarin::IIterator& entry);

/// The tree of a table, which is walked whole: that the walk, the count and the search agree is required on the way.
Value TreeOf(Tessarin::ITable& table);

struct TableCloser {
    void operator()(Tessarin::ITable* table) const { CloseTable(table); }
};
using TableHolder = std::unique_ptr<Tessarin::ITable, TableCloser>;

} // namespace Fuzz

#endif
