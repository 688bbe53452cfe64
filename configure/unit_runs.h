/// What the two families have in common that are only read: Units side by side in a block of the file's.

#ifndef TESSARIN_CONFIGURE_UNIT_RUNS_H
#define TESSARIN_CONFIGURE_UNIT_RUNS_H

#include "configure/getter_contract.h"

#include <cstdint>

namespace Configure {

/// A table's entry.
struct TableUnit final : UnitContract<TableUnit> {
    std::uint32_t kind = KIND_NONE;
    cstr key = nullptr;
    UnitValue value = {nullptr};
};

/// An array's element.
struct ArrayUnit final : UnitContract<ArrayUnit> {
    std::uint32_t kind = KIND_NONE;
    UnitValue value = {nullptr};
};

/// Iteration over the `count` Units from `units` on, for a table or an array that has these fields and a `name`.
template <class Self, class Contract, class ItsUnit>
class UnitRun : public Contract {
public:
    using Unit = ItsUnit;

    std::uint32_t GetCount() final { return self().count; }
    cstr GetName() final { return self().name; }
    IIterator* Begin() final { return self().units; }
    IIterator* End() final { return self().units + self().count; }
    IIterator* Next(IIterator* unit) final { return static_cast<Unit*>(unit) + 1; }

private:
    Self& self() { return static_cast<Self&>(*this); }
};

/// An array that is only read. The stored form that it came from makes no difference.
struct ArrayReader final : UnitRun<ArrayReader, ArrayContract<ArrayReader>, ArrayUnit> {
    std::uint32_t count = 0;
    cstr name = nullptr; // null for an element of an array
    Unit* units = nullptr;

    [[nodiscard]] Unit* UnitAt(std::uint32_t position) const { return position < count ? units + position : nullptr; }
};

} // namespace Configure

#endif
