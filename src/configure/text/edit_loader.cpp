// One walk. Containers are made when their block is found, and the chains keep them in that order, which is the order
// in which their bodies are walked: the next table to fill is the one behind the last that was filled.

#include "configure/text/edit_loader.h"

#include "configure/text/parser.h"
#include "configure/tree/default_tables.h"

namespace Configure {
namespace {

class Builder {
public:
    static constexpr bool kTakesTexts = true;

    explicit Builder(EditTree& tree) : tree_(tree) {}

    bool BeginTable() {
        table_ = last_table_ = last_table_ == nullptr ? tree_.tables.first : last_table_->next;
        return true;
    }

    bool BeginArray() {
        array_ = last_array_ = last_array_ == nullptr ? tree_.arrays.first : last_array_->next;
        return true;
    }

    bool BeginEntry() {
        TxtTableWriter::Unit* unit = table_->NewUnit(KIND_STRING, {nullptr});
        if (unit != nullptr) key_ = &unit->key;
        return Began(unit);
    }

    bool BeginElement() { return Began(array_->NewUnit(KIND_STRING, {nullptr})); }

    bool TakeBlock(bool is_table) { return is_table ? Take(tree_.tables) : Take(tree_.arrays); }

    [[nodiscard]] cstr* KeyPlace() const { return key_; }
    [[nodiscard]] cstr* TextPlace() const { return &value_->text; }

private:
    template <class Unit>
    bool Began(Unit* unit) {
        if (unit == nullptr) return false;
        kind_ = &unit->kind;
        value_ = &unit->value;
        return true;
    }

    template <class Container>
    bool Take(Chain<Container>& chain) {
        Container* child = Chain<Container>::Make(tree_, nullptr);
        if (child == nullptr) return false;
        chain.Append(child);
        *kind_ = Container::kKind;
        *value_ = child->AsValue();
        return true;
    }

    EditTree& tree_;
    TxtTableWriter* last_table_ = nullptr; // whose body was begun last
    TxtArrayWriter* last_array_ = nullptr;

    // The body at hand, and its last Unit.
    TxtTableWriter* table_ = nullptr;
    TxtArrayWriter* array_ = nullptr;
    std::uint32_t* kind_ = nullptr;
    cstr* key_ = nullptr;
    UnitValue* value_ = nullptr;
};

/// Keys are known when the walk is over.
void NameChildren(TxtTableWriter& table) {
    for (std::uint32_t i = 0; i < table.GetCount(); ++i) {
        const TxtTableWriter::Unit& unit = *table.UnitAt(i);
        if (unit.kind == KIND_TABLE) static_cast<TxtTableWriter*>(unit.value.table)->name = unit.key;
        if (unit.kind == KIND_ARRAY) static_cast<TxtArrayWriter*>(unit.value.array)->name = unit.key;
    }
}

} // namespace

bool LoadTextForEditing(char* bytes, std::uint32_t size, EditTree& tree) {
    TextScanner scanner;
    if (!scanner.Prepare(bytes, size)) return false;
    TxtTableWriter* root = Chain<TxtTableWriter>::Make(tree, nullptr);
    if (root == nullptr) return false;
    tree.tables.Append(root);
    Builder builder(tree);
    if (!scanner.Walk(builder) || !ReadyToWire()) return false;
    for (TxtTableWriter* table = root; table != nullptr; table = table->next) NameChildren(*table);
    DefaultWiring<TxtTableWriter> defaults;
    for (TxtTableWriter* table = root; table != nullptr; table = table->next) defaults.Wire(*table);
    return true;
}

} // namespace Configure
