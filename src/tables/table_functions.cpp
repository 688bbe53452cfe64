// Tables for callers without virtual calls. Each function tests for a null table and forwards to the operation of its
// name; those that change the table notify the listeners. CreateTable, CloseTable and ValidateTable: table_factory.cpp.

#include "tables/table.h"
#include "tessarin/tables.h"

namespace {

using Tessarin::ITable;

constexpr std::uint32_t kNotify = 1;

/// Returns a vector or matrix by value: zeros unless the operation fills it.
template <class T>
T ZeroOr(ITable* table, const char* key, std::uint32_t (ITable::*get)(const char*, T*)) {
    T value{};
    if (table != nullptr) (table->*get)(key, &value);
    return value;
}

} // namespace

std::uint32_t Empty(ITable* table) { return table == nullptr ? 1 : 0; }

std::int32_t GetInteger(ITable* table, const char* key) { return table == nullptr ? 0 : table->GetInteger(key); }
float GetReal(ITable* table, const char* key) { return table == nullptr ? 0.0F : table->GetReal(key); }
cstr GetString(ITable* table, const char* key) { return table == nullptr ? nullptr : table->GetString(key); }
ITable* GetTable(ITable* table, const char* key) { return table == nullptr ? nullptr : table->GetTable(key); }
void* GetPtr(ITable* table, const char* key) { return table == nullptr ? nullptr : table->GetPtr(key); }
Float2 GetFloat2(ITable* table, const char* key) { return ZeroOr(table, key, &ITable::GetFloat2); }
Float3 GetFloat3(ITable* table, const char* key) { return ZeroOr(table, key, &ITable::GetFloat3); }
Float4 GetFloat4(ITable* table, const char* key) { return ZeroOr(table, key, &ITable::GetFloat4); }
Float4x4 GetFloat4x4(ITable* table, const char* key) { return ZeroOr(table, key, &ITable::GetFloat4x4); }
Handle GetHandle(ITable* table, const char* key) { return table == nullptr ? 0 : table->GetHandle(key); }
std::uint32_t GetCount(ITable* table) { return table == nullptr ? 0 : table->GetCount(); }
std::uint32_t GetElementCount(ITable* table) { return table == nullptr ? 0 : table->GetElementCount(); }

ITable* Set(ITable* table, const char* key) {
    if (table != nullptr) table->Set(key, kNotify);
    return table;
}

std::uint32_t SetInteger(ITable* table, const char* key, std::int32_t value) {
    return table == nullptr ? 0 : table->SetInteger(key, value, kNotify);
}

std::uint32_t SetReal(ITable* table, const char* key, float value) {
    return table == nullptr ? 0 : table->SetReal(key, value, kNotify);
}

std::uint32_t SetString(ITable* table, const char* key, const char* text) {
    return table == nullptr ? 0 : table->SetString(key, text, kNotify);
}

std::uint32_t SetTable(ITable* table, const char* key, ITable* child) {
    return table == nullptr ? 0 : table->SetTable(key, child, kNotify);
}

std::uint32_t SetPath(ITable* table, const char* key, const char* path) {
    return table == nullptr ? 0 : table->SetPath(key, path, kNotify);
}

std::uint32_t SetPtr(ITable* table, const char* key, void* value) {
    return table == nullptr ? 0 : table->SetPtr(key, value, kNotify);
}

std::uint32_t SetExternalTable(ITable* table, const char* key, ITable* child) {
    return table == nullptr ? 0 : table->SetExternalTable(key, child, kNotify);
}

std::uint32_t SetReferenceTable(ITable* table, const char* key, ITable* child) {
    return table == nullptr ? 0 : table->SetReferenceTable(key, child, kNotify);
}

std::uint32_t SetFloat2(ITable* table, const char* key, const Float2* value) {
    return table == nullptr ? 0 : table->SetFloat2(key, value, kNotify);
}

std::uint32_t SetFloat3(ITable* table, const char* key, float x, float y, float z) {
    const Float3 value{x, y, z};
    return table == nullptr ? 0 : table->SetFloat3(key, &value, kNotify);
}

std::uint32_t SetFloat4(ITable* table, const char* key, const Float4* value) {
    return table == nullptr ? 0 : table->SetFloat4(key, value, kNotify);
}

std::uint32_t SetFloat4x4(ITable* table, const char* key, const Float4x4* value) {
    return table == nullptr ? 0 : table->SetFloat4x4(key, value, kNotify);
}

std::uint32_t SetHandle(ITable* table, const char* key, const Handle* value) {
    return table == nullptr ? 0 : table->SetHandle(key, value, kNotify);
}

std::uint32_t Clear(ITable* table) { return table == nullptr ? 0 : table->Clear(kNotify); }

std::uint32_t Remove(ITable* table, const char* key) { return table == nullptr ? 0 : table->Remove(key, kNotify); }

std::uint32_t Rename(ITable* table, const char* old_key, const char* new_key) {
    return table == nullptr ? 0 : table->Rename(old_key, new_key, kNotify);
}
