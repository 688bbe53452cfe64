// Two walks of the same order: one counts, then everything is made at once, then one fills it in. A block gets its
// object when it is found, and is filled when its body is walked; both go in the order of the walk, so each is a
// running index. A body is walked in one go, hence its Units are a run.

#include "configure/text/read_loader.h"

#include "configure/text/parser.h"
#include "configure/tree/default_tables.h"

namespace Configure {
namespace {

struct Counter {
    static constexpr bool kTakesTexts = false;

    std::uint32_t tables = 0, table_units = 0, arrays = 0, array_units = 0;

    bool BeginTable() { return ++tables != 0; }
    bool BeginArray() { return ++arrays != 0; }
    bool BeginEntry() { return ++table_units != 0; }
    bool BeginElement() { return ++array_units != 0; }
    static bool TakeBlock(bool) { return true; }
};

class Builder {
public:
    static constexpr bool kTakesTexts = true;

    /// The root is handed out from the start.
    explicit Builder(TextTree& tree)
        : next_table_(tree.tables.begin() + 1), next_array_(tree.arrays.begin()), filled_table_(tree.tables.begin()),
          filled_array_(tree.arrays.begin()), next_table_unit_(tree.table_units.begin()),
          next_array_unit_(tree.array_units.begin()) {}

    bool BeginTable() {
        table_ = filled_table_++;
        table_->units = next_table_unit_;
        return true;
    }

    bool BeginArray() {
        array_ = filled_array_++;
        array_->units = next_array_unit_;
        return true;
    }

    bool BeginEntry() {
        ++table_->count;
        key_ = &next_table_unit_->key;
        return Begin(*next_table_unit_++);
    }

    bool BeginElement() {
        ++array_->count;
        return Begin(*next_array_unit_++);
    }

    bool TakeBlock(bool is_table) {
        if (is_table) {
            *kind_ = KIND_TABLE;
            value_->table = next_table_++;
        } else {
            *kind_ = KIND_ARRAY;
            value_->array = next_array_++;
        }
        return true;
    }

    [[nodiscard]] cstr* KeyPlace() const { return key_; }
    [[nodiscard]] cstr* TextPlace() const { return &value_->text; }

private:
    template <class Unit>
    bool Begin(Unit& unit) {
        kind_ = &unit.kind;
        value_ = &unit.value;
        unit.kind = KIND_STRING;
        return true;
    }

    // Free objects, and those whose bodies come next.
    TxtTableReader* next_table_;
    TxtArrayReader* next_array_;
    TxtTableReader* filled_table_;
    TxtArrayReader* filled_array_;
    TxtTableReader::Unit* next_table_unit_;
    TxtArrayReader::Unit* next_array_unit_;

    // The body at hand, and its last Unit.
    TxtTableReader* table_ = nullptr;
    TxtArrayReader* array_ = nullptr;
    std::uint32_t* kind_ = nullptr;
    cstr* key_ = nullptr;
    UnitValue* value_ = nullptr;
};

/// Keys are known when the walk is over.
void NameChildren(const TextTree& tree) {
    for (const TxtTableReader::Unit& unit : tree.table_units) {
        if (unit.kind == KIND_TABLE) static_cast<TxtTableReader*>(unit.value.table)->name = unit.key;
        if (unit.kind == KIND_ARRAY) static_cast<TxtArrayReader*>(unit.value.array)->name = unit.key;
    }
}

} // namespace

bool LoadTextForReading(char* bytes, std::uint32_t size, TextTree& tree) {
    TextScanner scanner;
    Counter count;
    if (!scanner.Prepare(bytes, size) || !scanner.Walk(count)) return false;
    if (!tree.tables.Make(count.tables) || !tree.arrays.Make(count.arrays) ||
        !tree.table_units.Make(count.table_units) || !tree.array_units.Make(count.array_units)) {
        return false;
    }
    Builder builder(tree);
    if (!scanner.Walk(builder) || !ReadyToWire()) return false;
    NameChildren(tree);
    for (TxtTableReader& table : tree.tables) table.Sort();
    if (!tree.IndexKeys()) return false;
    DefaultWiring<TxtTableReader> defaults;
    for (TxtTableReader& table : tree.tables) defaults.Wire(table);
    return true;
}

} // namespace Configure
