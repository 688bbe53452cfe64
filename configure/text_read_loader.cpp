// Two walks of the same order: one counts, then everything is made at once, then one fills it in. A block gets its
// object when it is found, and is filled when its body is walked; both go in the order of the walk, so each is a
// running index. A body is walked in one go, hence its Units are a run.

#include "configure/text_read_loader.h"

#include "configure/default_tables.h"
#include "configure/text_scanner.h"

namespace Configure {
namespace {

struct Counter {
    static constexpr bool kTakesTexts = false;

    std::uint32_t tables = 0, table_units = 0, arrays = 0, array_units = 0;

    bool BeginTable() { return ++tables != 0; }
    bool BeginArray() { return ++arrays != 0; }
    bool BeginEntry(cstr) { return ++table_units != 0; }
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
        table_ = nullptr;
        array_ = filled_array_++;
        array_->units = next_array_unit_;
        return true;
    }

    bool BeginEntry(cstr key) {
        ++table_->count;
        next_table_unit_->key = key;
        return Begin(*next_table_unit_++);
    }

    bool BeginElement() {
        ++array_->count;
        return Begin(*next_array_unit_++);
    }

    bool TakeText(cstr text) {
        value_->text = text;
        return text != nullptr;
    }

    bool TakeBlock(bool is_table) {
        const cstr name = table_ == nullptr ? nullptr : next_table_unit_[-1].key;
        if (is_table) {
            *kind_ = KIND_TABLE;
            next_table_->name = name;
            value_->table = next_table_++;
        } else {
            *kind_ = KIND_ARRAY;
            next_array_->name = name;
            value_->array = next_array_++;
        }
        return true;
    }

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

    // The body at hand, the table null in an array's, and its last Unit.
    TxtTableReader* table_ = nullptr;
    TxtArrayReader* array_ = nullptr;
    std::uint32_t* kind_ = nullptr;
    UnitValue* value_ = nullptr;
};

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
    for (TxtTableReader& table : tree.tables) table.Sort();
    for (TxtTableReader& table : tree.tables) WireDefault(table);
    return true;
}

} // namespace Configure
