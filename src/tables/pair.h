// An entry of a table. It is also the iterator with which a host walks the entries.

#ifndef TESSARIN_TABLES_PAIR_H
#define TESSARIN_TABLES_PAIR_H

#include "platform/float_comparison.h"
#include "platform/float_environment.h"
#include "tables/value.h"
#include "tessarin/table_interface.h"

namespace Tessarin {

struct ListenerSet;
class Table;

/// Lives in a block of the pair pool and belongs to the table whose entry it is. `next` mirrors the order of that
/// table's entries.
class Pair final : public IIterator {
public:
    explicit Pair(cstr entry_key) : key(entry_key) {}

    cstr GetKey() override { return key; }
    std::uint32_t GetType() override { return kind; }
    std::int32_t GetInteger() override { return value.As<std::int32_t>(); }
    float GetReal() override { return value.As<float>(); }
    cstr GetString() override { return kind == VALUE_STRING ? value.As<cstr>() : nullptr; }
    ITable* GetTable() override { return HoldsTable() ? value.As<ITable*>() : nullptr; }
    void* GetPtr() override { return kind == VALUE_PTR ? value.As<void*>() : nullptr; }
    std::uint32_t GetFloat2(Float2* out) override { return CopyOut(out); }
    std::uint32_t GetFloat3(Float3* out) override { return CopyOut(out); }
    std::uint32_t GetFloat4(Float4* out) override { return CopyOut(out); }
    std::uint32_t GetFloat4x4(Float4x4* out) override;
    Handle GetHandle() override { return value.As<Handle>(); }

    std::uint32_t SetHandle(const Handle* handle) override { return StoreFrom(VALUE_HANDLE, handle); }
    std::uint32_t SetFloat4x4(const Float4x4* matrix) override;
    std::uint32_t SetFloat4(const Float4* vector) override { return StoreFrom(VALUE_FLOAT4, vector); }
    std::uint32_t SetFloat3(const Float3* vector) override { return StoreFrom(VALUE_FLOAT3, vector); }
    std::uint32_t SetFloat2(const Float2* vector) override { return StoreFrom(VALUE_FLOAT2, vector); }
    void Unassigned() override {}
    std::uint32_t SetTable(ITable* table) override { return StoreTable(VALUE_TABLE, table); }
    std::uint32_t SetString(cstr text) override { return Store(VALUE_STRING, text); }
    std::uint32_t SetReal(float real) override { return Store(VALUE_REAL, real); }
    std::uint32_t SetInteger(std::int32_t integer) override { return Store(VALUE_INTEGER, integer); }
    std::uint32_t SetPath(cstr text) override { return SetString(text); }
    std::uint32_t SetPtr(void* pointer) override { return Store(VALUE_PTR, pointer); }
    std::uint32_t SetExternalTable(ITable* table) override { return StoreTable(VALUE_EXTERNAL_TABLE, table); }
    std::uint32_t SetReferenceTable(ITable* table) override { return StoreTable(VALUE_REFERENCE_TABLE, table); }
    std::uint32_t Set(ITable* table) override { return SetTable(table); }

    /// The child table that is destroyed with this entry, or null.
    [[nodiscard]] Table* OwnedTable() const;

    /// Frees what the entry owns except a child table: its matrix and its listeners.
    void ReleaseBlocks();

    /// Whether a vector of this entry's kind counts as equal to the stored one.
    template <class Vector>
    [[nodiscard]] bool SameVector(const Vector& vector) const;

    cstr key;
    std::uint32_t kind = VALUE_EMPTY;
    Value value;
    Pair* next = nullptr;
    ListenerSet* listeners = nullptr; // of this entry alone; null until the first is added

private:
    [[nodiscard]] bool HoldsTable() const { return kind >= VALUE_TABLE && kind <= VALUE_REFERENCE_TABLE; }

    template <class T>
    std::uint32_t CopyOut(T* out) const {
        if (out != nullptr) *out = value.As<T>();
        return 1;
    }

    template <class T>
    std::uint32_t Store(ValueKind new_kind, const T& content) {
        if (kind == VALUE_TABLE || kind == VALUE_FLOAT4X4) ReleaseOwned();
        value.Put(content);
        kind = new_kind;
        return 1;
    }

    template <class T>
    std::uint32_t StoreFrom(ValueKind new_kind, const T* content) {
        return content == nullptr ? 0 : Store(new_kind, *content);
    }

    std::uint32_t StoreTable(ValueKind new_kind, ITable* table);
    void ReleaseOwned();
};

template <class Vector>
bool Pair::SameVector(const Vector& vector) const {
    constexpr std::size_t kCount = sizeof(Vector) / sizeof(float);
    constexpr float kTolerance = 1.1920929e-7F; // the machine epsilon, used as an absolute bound
    float stored[kCount];
    float wanted[kCount];
    std::memcpy(stored, &value, sizeof stored);
    std::memcpy(wanted, &vector, sizeof wanted);
    const DefaultFloatEnvironment environment;
    for (std::size_t i = 0; i < kCount; ++i) {
        const volatile float from = stored[i], to = wanted[i];
        const volatile float volatile_difference = from - to;
        const float difference = volatile_difference;
        // A NaN counts as a change.
        if (!IsGreater(difference, -kTolerance) || !IsGreater(kTolerance, difference)) return false;
    }
    return true;
}

} // namespace Tessarin

#endif
