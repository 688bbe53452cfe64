// The operations of edit trees. Invariants:
//
//  1. A container's `units` are never null once it is made, and a Unit's `index` is its position among them.
//  2. Every table and array is in its tree's chain from the moment that a Unit refers to it.
//  3. An operation that fails changes nothing.

#include "configure/tree/edit_tree.h"

#include "strings/normal_forms.h"

namespace Configure {
namespace {

using Tessarin::IsEmpty;

cstr InternAsItIs(const char* text) { return Tessarin::string_table->Intern(text); }

} // namespace

template <class Container>
Container* Chain<Container>::Make(EditTree& tree, cstr name) {
    auto* container = new (std::nothrow) Container(tree, name);
    if (container == nullptr || container->units != nullptr) return container;
    delete container;
    return nullptr;
}

template <class Container>
void Chain<Container>::Clear() {
    while (Container* container = first) {
        first = container->next;
        delete container;
    }
    end = &first;
}

template struct Chain<TxtTableWriter>;
template struct Chain<TxtArrayWriter>;

template <class Self, class Accessors>
template <class Child>
auto* EditedUnits<Self, Accessors>::NewChild(Chain<Child>& chain, cstr name) {
    Child* child = Chain<Child>::Make(self().tree, name);
    typename Self::Unit* unit = child == nullptr ? nullptr : NewUnit(Child::kKind, child->AsValue());
    if (unit != nullptr) {
        chain.Append(child);
    } else {
        delete child;
    }
    return unit;
}

template <class Self, class Accessors>
IIterator* EditedUnits<Self, Accessors>::Remove(IIterator* unit) {
    using Unit = typename Self::Unit;
    ::farr& units = *self().units;
    std::uint32_t position = 0;
    while (position < units.count && units.Items<Unit*>()[position] != unit) ++position;
    if (position == units.count) return nullptr;
    delete units.Items<Unit*>()[position];
    units.Erase(position);
    for (std::uint32_t later = position; later < units.count; ++later) units.Items<Unit*>()[later]->index = later;
    return UnitAt(position);
}

template <class Self, class Accessors>
void EditedUnits<Self, Accessors>::EndUnits() {
    if (self().units == nullptr) return;
    for (std::uint32_t i = 0; i < self().units->count; ++i) delete UnitAt(i);
    ::farr::Destroy(self().units);
}

bool TxtTableWriter::Unit::SetKey(const char* text) {
    const cstr interned = KeyOf(text);
    if (interned != nullptr) key = interned;
    return interned != nullptr;
}

TxtTableWriter::TxtTableWriter(EditTree& owner, cstr key)
    : name(key), units(::farr::Create(sizeof(Unit*))), tree(owner) {}

TxtTableWriter::~TxtTableWriter() { EndUnits(); }

TxtTableWriter::Unit* TxtTableWriter::Search(cstr key) const {
    Unit* const* const first = units->Items<Unit*>();
    for (std::uint32_t i = 0; i < units->count; ++i) {
        if (first[i]->key == key) return first[i];
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

TxtArrayWriter::TxtArrayWriter(EditTree& owner, cstr key)
    : name(key), units(::farr::Create(sizeof(Unit*))), tree(owner) {}

TxtArrayWriter::~TxtArrayWriter() { EndUnits(); }

IIterator* TxtArrayWriter::AddString(std::uint32_t /*reserved*/, const char* value) {
    const cstr text = InternAsItIs(value);
    return text == nullptr ? nullptr : NewUnit(KIND_STRING, {text});
}

IIterator* TxtArrayWriter::AddArray(std::uint32_t /*reserved*/) { return NewChild(tree.arrays, nullptr); }

IIterator* TxtArrayWriter::AddTable(std::uint32_t /*reserved*/) { return NewChild(tree.tables, nullptr); }

} // namespace Configure
