// The implementation of a table: the interface on top of the entries, the listeners and the array part.

#ifndef TESSARIN_TABLES_TABLE_H
#define TESSARIN_TABLES_TABLE_H

#include "tables/array_part.h"
#include "tables/entry_store.h"
#include "tables/listener_dispatch.h"
#include "tessarin/table_interface.h"

namespace Tessarin {

/// Lives in a block of the table pool. How a table is made and destroyed: table_factory.h.
class Table final : public ITable {
public:
    void* GetArrayItem(std::uint32_t index) override;
    std::int32_t GetInteger(const char* key, std::int32_t fallback) override;
    float GetReal(const char* key, float fallback) override;
    cstr GetString(const char* key, cstr fallback) override;
    ITable* GetTable(const char* key) override;
    ITable* FindTable(const char* key) override;
    std::int32_t GetInteger(const char* key) override;
    float GetReal(const char* key) override;
    cstr GetString(const char* key) override;
    void* GetPtr(const char* key) override;
    std::uint32_t GetFloat2(const char* key, Float2* out) override;
    std::uint32_t GetFloat3(const char* key, Float3* out) override;
    std::uint32_t GetFloat4(const char* key, Float4* out) override;
    std::uint32_t GetFloat4x4(const char* key, Float4x4* out) override;
    Handle GetHandle(const char* key) override;
    void* SetArrayItem(std::uint32_t index, const void* data, std::uint32_t notify) override;
    std::uint32_t SetHandle(const char* key, const Handle* value, std::uint32_t notify) override;
    std::uint32_t SetFloat4x4(const char* key, const Float4x4* value, std::uint32_t notify) override;
    std::uint32_t SetFloat4(const char* key, const Float4* value, std::uint32_t notify) override;
    std::uint32_t SetFloat3(const char* key, const Float3* value, std::uint32_t notify) override;
    std::uint32_t SetFloat2(const char* key, const Float2* value, std::uint32_t notify) override;
    std::uint32_t SetTable(const char* key, ITable* table, std::uint32_t notify) override;
    std::uint32_t SetString(const char* key, const char* text, std::uint32_t notify) override;
    std::uint32_t SetReal(const char* key, float value, std::uint32_t notify) override;
    std::uint32_t SetInteger(const char* key, std::int32_t value, std::uint32_t notify) override;
    ITable* Set(const char* key, std::uint32_t notify) override;
    std::uint32_t SetPath(const char* key, const char* path, std::uint32_t notify) override;
    std::uint32_t SetPtr(const char* key, void* value, std::uint32_t notify) override;
    std::uint32_t Rename(const char* old_key, const char* new_key, std::uint32_t notify) override;
    std::uint32_t CreateArray(std::uint32_t item_size) override;
    std::uint32_t DestroyArray() override;
    std::uint32_t GetCount() override;
    std::uint32_t GetElementCount() override;
    std::uint32_t GetArrayCount() override;
    std::uint32_t SetExternalTable(const char* key, ITable* table, std::uint32_t notify) override;
    std::uint32_t SetReferenceTable(const char* key, ITable* table, std::uint32_t notify) override;
    std::uint32_t Remove(const char* key, std::uint32_t notify) override;
    std::uint32_t Clear(std::uint32_t notify) override;
    std::uint32_t ReservedFirst(void* unused) override;
    std::uint32_t ReservedSecond(void* unused) override;
    std::uint32_t SaveFile(const char* path) override;
    std::uint32_t SaveBuffer(void** data, std::uint32_t* size) override;
    IIterator* First() override;
    IIterator* Next(IIterator** cursor) override;
    IIterator* Find(const char* key) override;
    Delegate* AddRecordListener() override;
    Delegate* AddRecordListener(const char* key) override;
    Delegate* AddArgumentListener() override;
    Delegate* AddArgumentListener(const char* key) override;
    Delegate* AddArrayListener() override;
    void RemoveArrayListener(const Delegate* delegate) override;
    void RemoveArgumentListener(const char* key, const Delegate* delegate) override;
    void RemoveArgumentListener(const Delegate* delegate) override;
    void RemoveRecordListener(const char* key, const Delegate* delegate) override;
    void RemoveRecordListener(const Delegate* delegate) override;

    EntryStore& Entries() { return entries_; }

    /// Frees everything that the table owns except its entries. Returns the entries, chained by `next`, with `behind`
    /// after the last. The caller frees the table's own block.
    Pair* Dismantle(Pair* behind);

private:
    /// An entry to store a value in; null if none can be made or it has another kind.
    struct Target {
        Pair* pair = nullptr;
        bool existed = false;

        /// Whether the entry is still empty or already has that kind.
        [[nodiscard]] bool Takes(ValueKind kind) const { return pair->kind == VALUE_EMPTY || pair->kind == kind; }
    };

    enum class Outcome { kRefused, kStored, kStoredAndEnded };

    Target TargetFor(const char* key, ValueKind kind);
    template <class Store>
    Outcome Commit(Target target, ValueKind kind, std::uint32_t notify, Store store);
    template <class Same, class Store>
    std::uint32_t Assign(const char* key, ValueKind kind, std::uint32_t notify, Same same, Store store);
    template <class Vector>
    std::uint32_t AssignVector(const char* key, ValueKind kind, const Vector* value, std::uint32_t notify,
                               std::uint32_t (Pair::*store)(const Vector*));
    std::uint32_t AssignText(const char* key, const char* text, cstr (*intern)(const char*), std::uint32_t notify);
    [[nodiscard]] Pair* FindEntry(const char* key) const;
    Delegate* AddListener(ListenerKind kind, const char* key);
    void RemoveListener(ListenerKind kind, const char* key, const Delegate* delegate);
    void RemoveListener(ListenerKind kind, const Delegate* delegate);

    EntryStore entries_;
    ListenerHub listeners_;
    TableArray* array_ = nullptr;
};

} // namespace Tessarin

#endif
