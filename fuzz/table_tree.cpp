// How a table is read into a plain tree. A table that an entry doesn't have (null) has the kind VALUE_EXTERNAL_TABLE
// there, and vectors are distinguished by their number of components.

#include "fuzz/table_tree.h"

#include "fuzz/check.h"
#include "tables/table.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace Fuzz {
namespace {

using namespace Tessarin;

bool SameReal(float one, float other) {
    if (std::isnan(one)) return std::isnan(other);
    return std::bit_cast<std::uint32_t>(one) == std::bit_cast<std::uint32_t>(other);
}

/// The components of a vector or a matrix.
std::vector<float> RealsOf(IIterator& entry) {
    std::vector<float> reals(16);
    if (entry.GetType() == VALUE_FLOAT4X4) {
        Require(entry.GetFloat4x4(reinterpret_cast<Float4x4*>(reals.data())) == 1, "a getter returns no matrix");
        return reals;
    }
    Require(entry.GetFloat4(reinterpret_cast<Float4*>(reals.data())) == 1, "a getter returns no vector");
    reals.resize(entry.GetType() - VALUE_FLOAT2 + 2);
    return reals;
}

Value TableOf(ITable* table) { return table == nullptr ? Value{VALUE_EXTERNAL_TABLE, 0, {}, {}, {}} : TreeOf(*table); }

} // namespace

Value* Value::Find(const std::string& key) {
    for (Entry& entry : entries) {
        if (entry.key == key) return &entry.value;
    }
    return nullptr;
}

bool operator==(const Value& one, const Value& other) {
    if (one.kind == VALUE_REAL && other.kind == VALUE_REAL) {
        return SameReal(std::bit_cast<float>(one.integer), std::bit_cast<float>(other.integer));
    }
    return one.kind == other.kind && one.integer == other.integer && one.text == other.text &&
           std::equal(one.reals.begin(), one.reals.end(), other.reals.begin(), other.reals.end(), SameReal) &&
           std::equal(one.entries.begin(), one.entries.end(), other.entries.begin(), other.entries.end(),
                      [](const Entry& a, const Entry& b) { return a.key == b.key && a.value == b.value; });
}

Value IntegerValue(std::int32_t integer) { return {VALUE_INTEGER, integer, {}, {}, {}}; }
Value RealValue(float real) { return {VALUE_REAL, std::bit_cast<std::int32_t>(real), {}, {}, {}}; }
Value StringValue(std::string text) { return {VALUE_STRING, 0, std::move(text), {}, {}}; }

Value VectorValue(std::vector<float> reals) {
    const auto count = static_cast<std::uint32_t>(reals.size());
    return {count == 16 ? VALUE_FLOAT4X4 : VALUE_FLOAT2 + count - 2, 0, {}, std::move(reals), {}};
}

Value ValueOf(IIterator& entry) {
    const std::uint32_t kind = entry.GetType();
    if (kind == VALUE_STRING) return StringValue(entry.GetString() == nullptr ? "" : entry.GetString());
    if (kind == VALUE_REAL) return RealValue(entry.GetReal());
    if (kind >= VALUE_TABLE && kind <= VALUE_REFERENCE_TABLE) return TableOf(entry.GetTable());
    if (kind >= VALUE_FLOAT2 && kind <= VALUE_FLOAT4X4) return VectorValue(RealsOf(entry));
    return {kind, entry.GetInteger(), {}, {}, {}};
}

Value TreeOf(ITable& table) {
    Value tree;
    for (IIterator* entry = table.First(); entry != nullptr; entry = table.Next(&entry)) {
        const cstr key = entry->GetKey();
        Require(key == cstr_find(key), "a key isn't interned");
        Require(table.Find(key) == entry, "an entry isn't found by its key");
        tree.entries.push_back({key, ValueOf(*entry)});
    }
    Require(static_cast<Table&>(table).Entries().IsValid(), "the order or the index is another");
    Require(tree.entries.size() == table.GetElementCount(), "the walk has another number of entries than the table");
    std::sort(tree.entries.begin(), tree.entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    return tree;
}

} // namespace Fuzz
