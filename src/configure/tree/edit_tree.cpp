// The operations of edit trees. Invariants:
//
//  1. Every table and array is in its tree's chain before a Unit refers to it.
//  2. An operation that fails changes nothing that can be seen.

#include "configure/tree/edit_tree.h"

#include "strings/normal_forms.h"

#include <typeinfo>

namespace Configure {
namespace {

using Tessarin::IsEmpty;

cstr InternAsItIs(const char* text) { return Tessarin::string_table->Intern(text); }

} // namespace

template <class Container>
Container* Chain<Container>::Add(EditTree& tree, cstr name) {
    void* const place = storage.Take();
    if (place == nullptr) return nullptr;
    auto* const container = new (place) Container(tree, name);
    *end = container;
    end = &container->next;
    return container;
}

template <class Container>
void Chain<Container>::Clear() {
    while (Container* container = first) {
        first = container->next;
        container->~Container();
    }
    end = &first;
    storage.Release();
}

template struct Chain<TxtTableWriter>;
template struct Chain<TxtArrayWriter>;

/// The Unit gets its child last. A child that there is no memory for leaves no Unit.
template <class Self, class Accessors>
template <class Child>
auto* EditedUnits<Self, Accessors>::NewChild(Chain<Child>& chain, cstr name) {
    auto* unit = NewUnit(Child::kKind, {nullptr});
    Child* const child = unit == nullptr ? nullptr : chain.Add(self().tree, name);
    if (child != nullptr) {
        unit->value = child->AsValue();
    } else if (unit != nullptr) {
        EndUnit(*unit);
        unit = nullptr;
    }
    return unit;
}

/// Any Unit may be passed, also one of another file or one that has been removed.
template <class Self, class Accessors>
IIterator* EditedUnits<Self, Accessors>::Remove(IIterator* unit) {
    using Unit = typename Self::Unit;
    if (unit == nullptr || typeid(*unit) != typeid(Unit)) return nullptr;
    auto& own = static_cast<Unit&>(*unit);
    return self().units.Has(own) ? EndUnit(own) : nullptr;
}

/// Returns the Unit that has taken its place. A removed Unit has no kind, and so no value.
template <class Self, class Accessors>
template <class Unit>
Unit* EditedUnits<Self, Accessors>::EndUnit(Unit& unit) {
    Unit* const after = self().units.Remove(unit);
    unit.kind = KIND_NONE;
    self().tree.template UnitsOf<Self>().Return(&unit);
    return after;
}

bool TxtTableWriter::Unit::SetKey(const char* text) {
    const cstr interned = KeyOf(text);
    if (interned != nullptr) key = interned;
    return interned != nullptr;
}

TxtTableWriter::Unit* TxtTableWriter::Search(cstr key) const {
    for (Unit* const unit : units) {
        if (unit != nullptr && unit->key == key) return unit;
    }
    return nullptr;
}

cstr TxtTableWriter::NewKey(const char* key) const {
    const cstr interned = KeyOf(key);
    return interned != nullptr && Search(interned) == nullptr ? interned : nullptr;
}

IIterator* TxtTableWriter::Named(Unit* unit, cstr key) {
    if (unit != nullptr) unit->key = key;
    return unit;
}

IIterator* TxtTableWriter::AddString(const char* key, const char* value) {
    const cstr new_key = IsEmpty(key) || value == nullptr ? nullptr : NewKey(key);
    const cstr text = new_key == nullptr ? nullptr : InternAsItIs(value);
    return text == nullptr ? nullptr : Named(NewUnit(KIND_STRING, {text}), new_key);
}

IIterator* TxtTableWriter::AddArray(const char* key) {
    const cstr new_key = IsEmpty(key) ? nullptr : NewKey(key);
    return new_key == nullptr ? nullptr : Named(NewChild(tree.arrays, new_key), new_key);
}

IIterator* TxtTableWriter::AddTable(const char* key) {
    const cstr new_key = NewKey(key);
    return new_key == nullptr ? nullptr : Named(NewChild(tree.tables, new_key), new_key);
}

IIterator* TxtArrayWriter::AddString(std::uint32_t /*reserved*/, const char* value) {
    const cstr text = InternAsItIs(value);
    return text == nullptr ? nullptr : NewUnit(KIND_STRING, {text});
}

IIterator* TxtArrayWriter::AddArray(std::uint32_t /*reserved*/) { return NewChild(tree.arrays, nullptr); }

IIterator* TxtArrayWriter::AddTable(std::uint32_t /*reserved*/) { return NewChild(tree.tables, nullptr); }

} // namespace Configure
