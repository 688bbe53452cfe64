// The edit tree: the tree of a text file that can be changed. Each table, array and Unit is an object of its own on the
// heap; a table or an array has a flat array of pointers to its Units.

#ifndef TESSARIN_CONFIGURE_TREE_EDIT_TREE_H
#define TESSARIN_CONFIGURE_TREE_EDIT_TREE_H

#include "configure/tree/accessors.h"
#include "containers/flat_array.h"

#include <cstdint>
#include <new>

namespace Configure {

struct EditTree;

/// All tables, or all arrays, of a tree, in the order in which they were added. Owns them.
template <class Container>
struct Chain {
    Container* first = nullptr;
    Container** end = &first;

    /// A new empty container, not yet in the chain; null if memory runs out.
    static Container* Make(EditTree& tree, cstr name);
    void Append(Container* container) {
        *end = container;
        end = &container->next;
    }
    void Clear();
};

/// A Unit that can be changed. Its kind never changes once it is loaded or added.
template <class Self>
struct EditedUnit : UnitAccessors<Self> {
    std::uint32_t index = 0; // among its owner's Units
    std::uint32_t kind = KIND_NONE;

    bool SetInteger(std::int32_t number) final { return SetText(Tessarin::IntegerToText(number)); }
    bool SetFloat(float number) final { return SetText(Tessarin::RealToText(number)); }
    bool SetString(const char* text) final { return kind == KIND_STRING && Take(Tessarin::string_table->Intern(text)); }

private:
    template <class NumberText>
    bool SetText(const NumberText& number) {
        return kind == KIND_STRING && Take(Tessarin::string_table->Intern(number.text, number.length));
    }
    bool Take(cstr text) {
        if (text != nullptr) static_cast<Self&>(*this).value.text = text;
        return text != nullptr;
    }
};

/// The Units of a table or array. `Self` has the fields `name` and `units`.
template <class Self, class Accessors>
class EditedUnits : public Accessors {
public:
    std::uint32_t GetCount() final { return self().units->count; }
    cstr GetName() final { return self().name; }
    IIterator* Begin() final { return UnitAt(0); }
    IIterator* End() final { return nullptr; }
    IIterator* Next(IIterator* unit) final { return UnitAt(static_cast<typename Self::Unit*>(unit)->index + 1); }
    IIterator* Remove(IIterator* unit) final;

    /// The Unit at a position; null after the last.
    auto* UnitAt(std::uint32_t position) {
        using Unit = typename Self::Unit;
        return position < self().units->count ? self().units->template Items<Unit*>()[position] : nullptr;
    }

    /// A new Unit at the end; null if memory runs out.
    auto* NewUnit(std::uint32_t kind, UnitValue value) {
        using Unit = typename Self::Unit;
        Unit* unit = new (std::nothrow) Unit;
        if (unit == nullptr) return unit;
        unit->index = self().units->count;
        unit->kind = kind;
        unit->value = value;
        if (!self().units->PushItem(unit)) {
            delete unit;
            unit = nullptr;
        }
        return unit;
    }

protected:
    /// A new Unit that holds a new empty container of the chain's type. If memory runs out, returns null and changes
    /// nothing.
    template <class Child>
    auto* NewChild(Chain<Child>& chain, cstr name);
    void EndUnits();

private:
    Self& self() { return static_cast<Self&>(*this); }
};

/// Units are in the order of the file, and several may share a key: a search finds the first of them.
class TxtTableWriter final : public EditedUnits<TxtTableWriter, TableAccessors<TxtTableWriter>> {
public:
    static constexpr bool kKeepsLastColon = true;
    static constexpr std::uint32_t kKind = KIND_TABLE;

    struct Unit final : EditedUnit<Unit> {
        cstr key = nullptr;
        UnitValue value = {nullptr};

        bool SetKey(const char* text) final;
    };

    TxtTableWriter(EditTree& owner, cstr key);
    ~TxtTableWriter() override;

    static cstr KeyOf(const char* text) { return Tessarin::string_table->InternLowerCase(text); }
    [[nodiscard]] Unit* Search(cstr key) const;

    IIterator* AddString(const char* key, const char* value) final;
    IIterator* AddArray(const char* key) final;
    IIterator* AddTable(const char* key) final;

    UnitValue AsValue() { return {.table = this}; }

    cstr name;
    ::farr* units; // Unit*, owned; null only if memory ran out when the table was made
    ITable* default_table = nullptr;
    EditTree& tree;
    TxtTableWriter* next = nullptr; // in the tree's chain

private:
    /// The interned key of an entry to be added; null if it can't be interned or the table already has it.
    [[nodiscard]] cstr NewKey(const char* key) const;
    /// Gives a Unit its key; a null Unit is ignored.
    static IIterator* Named(Unit* unit, cstr key);
};

class TxtArrayWriter final : public EditedUnits<TxtArrayWriter, ArrayAccessors<TxtArrayWriter>> {
public:
    static constexpr std::uint32_t kKind = KIND_ARRAY;

    struct Unit final : EditedUnit<Unit> {
        UnitValue value = {nullptr};
    };

    TxtArrayWriter(EditTree& owner, cstr key);
    ~TxtArrayWriter();

    IIterator* AddString(std::uint32_t reserved, const char* value) final;
    IIterator* AddArray(std::uint32_t reserved) final;
    IIterator* AddTable(std::uint32_t reserved) final;

    UnitValue AsValue() { return {.array = this}; }

    cstr name;
    ::farr* units; // as in TxtTableWriter
    EditTree& tree;
    TxtArrayWriter* next = nullptr;
};

/// Owns all tables and arrays of a file, loaded or added later, even if they can't be reached from the root: a removed
/// table may still be another table's default table. So no pointer ever dangles, and a tree of any depth is freed
/// without a walk.
struct EditTree {
    Chain<TxtTableWriter> tables; // the root first
    Chain<TxtArrayWriter> arrays;

    EditTree() = default;
    ~EditTree() { Clear(); }
    EditTree(const EditTree&) = delete;
    EditTree& operator=(const EditTree&) = delete;

    void Clear() {
        tables.Clear();
        arrays.Clear();
    }
};

} // namespace Configure

#endif
