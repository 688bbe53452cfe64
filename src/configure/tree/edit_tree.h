// The edit tree: the tree of a text file that can be changed. Tables, arrays and Units are objects in chunks that the
// tree owns; a table or an array has a list of the addresses of its Units.
//
// The storage of a removed Unit is used again for the next one that is added. A table or an array stays until the file
// drops its content, even if its Unit was removed: a host may still use it, and it may be a default table.

#ifndef TESSARIN_CONFIGURE_TREE_EDIT_TREE_H
#define TESSARIN_CONFIGURE_TREE_EDIT_TREE_H

#include "configure/tree/accessors.h"
#include "configure/tree/object_chunks.h"
#include "configure/tree/unit_list.h"

#include <cstdint>
#include <new>
#include <type_traits>

namespace Configure {

struct EditTree;

/// All tables, or all arrays, of a tree, in the order in which they were added. Owns them.
template <class Container>
struct Chain {
    Container* first = nullptr;
    Container** end = &first;

    /// Appends a new empty container; null if memory runs out.
    Container* Add(EditTree& tree, cstr name);
    void Clear();

    ObjectChunks<Container> storage = {};
};

/// The value of a Unit; the Unit's kind says which field is set. Null for KIND_NONE.
union UnitValue {
    cstr text; // interned; null for a key without a value at the end of its block
    IArray* array;
    ITable* table;
};

/// A Unit that can be changed. Its kind never changes once it is loaded or added.
template <class Self>
struct EditedUnit : UnitAccessors<Self> {
    std::uint32_t index = 0; // its slot in its owner's list
    std::uint32_t kind = KIND_NONE;

    [[nodiscard]] std::uint32_t Kind() const { return kind; }
    [[nodiscard]] cstr Text() const { return value().text; }
    [[nodiscard]] IArray* Array() const { return value().array; }
    [[nodiscard]] ITable* Table() const { return value().table; }

    bool SetInteger(std::int32_t number) final { return SetText(Tessarin::IntegerToText(number)); }
    bool SetFloat(float number) final { return SetText(Tessarin::RealToText(number)); }
    bool SetString(const char* text) final { return kind == KIND_STRING && Take(Tessarin::string_table->Intern(text)); }

private:
    template <class NumberText>
    bool SetText(const NumberText& number) {
        return kind == KIND_STRING && Take(Tessarin::string_table->Intern(number.text, number.length));
    }
    [[nodiscard]] const UnitValue& value() const { return static_cast<const Self&>(*this).value; }
    bool Take(cstr text) {
        if (text != nullptr) static_cast<Self&>(*this).value.text = text;
        return text != nullptr;
    }
};

/// The Units of a table or array. `Self` has the fields `name` and `units`.
template <class Self, class Accessors>
class EditedUnits : public Accessors {
public:
    std::uint32_t GetCount() final { return self().units.Count(); }
    cstr GetName() final { return self().name; }
    IIterator* Begin() final { return UnitAt(0); }
    IIterator* End() final { return nullptr; }
    IIterator* Next(IIterator* unit) final { return self().units.After(*static_cast<typename Self::Unit*>(unit)); }
    IIterator* Remove(IIterator* unit) final;

    /// The Unit at a position; null after the last.
    auto* UnitAt(std::uint32_t position) { return self().units.At(position); }

    /// A new Unit at the end; null if memory runs out.
    auto* NewUnit(std::uint32_t kind, UnitValue value) {
        using Unit = typename Self::Unit;
        static_assert(std::is_trivially_destructible_v<Unit>);
        auto& storage = self().tree.template UnitsOf<Self>();
        void* const place = storage.Take();
        Unit* unit = place == nullptr ? nullptr : new (place) Unit;
        if (unit == nullptr) return unit;
        unit->kind = kind;
        unit->value = value;
        if (!self().units.Push(unit)) {
            storage.Return(unit);
            unit = nullptr;
        }
        return unit;
    }

protected:
    /// A new Unit that holds a new empty container of the chain's type. If memory runs out, returns null and changes
    /// nothing.
    template <class Child>
    auto* NewChild(Chain<Child>& chain, cstr name);

private:
    template <class Unit>
    Unit* EndUnit(Unit& unit);
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

    TxtTableWriter(EditTree& owner, cstr key) : name(key), tree(owner) {}

    static cstr KeyOf(const char* text) { return Tessarin::string_table->InternLowerCase(text); }
    /// Looks at every Unit, as several may have the key.
    [[nodiscard]] Unit* Search(cstr key) const;

    IIterator* AddString(const char* key, const char* value) final;
    IIterator* AddArray(const char* key) final;
    IIterator* AddTable(const char* key) final;

    UnitValue AsValue() { return {.table = this}; }

    cstr name;
    UnitList<Unit> units;
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

    TxtArrayWriter(EditTree& owner, cstr key) : name(key), tree(owner) {}

    IIterator* AddString(std::uint32_t reserved, const char* value) final;
    IIterator* AddArray(std::uint32_t reserved) final;
    IIterator* AddTable(std::uint32_t reserved) final;

    UnitValue AsValue() { return {.array = this}; }

    cstr name;
    UnitList<Unit> units;
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

    /// The storage of the Units of tables, or of arrays.
    template <class Container>
    auto& UnitsOf() {
        if constexpr (std::is_same_v<Container, TxtTableWriter>) {
            return table_units;
        } else {
            return array_units;
        }
    }

    void Clear() {
        tables.Clear();
        arrays.Clear();
        table_units.Release();
        array_units.Release();
    }

    ObjectChunks<TxtTableWriter::Unit> table_units;
    ObjectChunks<TxtArrayWriter::Unit> array_units;
};

} // namespace Configure

#endif
