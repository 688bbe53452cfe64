// The operations that tables, arrays and Units have in common in all three families of trees. The fallback of getters
// to a default table: OwnOrDefault.
//
// A family derives its final classes from these templates, with itself as the argument, and supplies the rest:
//
//   a Unit    Kind; Text, Array and Table, the value, of which only the one that the kind says may be asked for; and,
//   if
//             it belongs to a table, key
//   a table   default_table; Unit, the type of its Units; Search(key), which returns the table's own Unit of a key;
//             KeyOf(text), which turns a text into the argument of Search, null if it can't be interned;
//             kKeepsLastColon, which says how composite keys are spelled; iteration
//   an array  UnitAt(position), null after the last; iteration
//
// Operations that change a tree fail here; the edit trees, the only ones that can be changed, override them.
//
// Invariant: the call of a getter is virtual, but no call inside it is, as the templates know the final class.

#ifndef TESSARIN_CONFIGURE_TREE_ACCESSORS_H
#define TESSARIN_CONFIGURE_TREE_ACCESSORS_H

#include "configure/tree/composite_key.h"
#include "configure/tree/conversions.h"
#include "strings/normal_forms.h"
#include "strings/string_table.h"
#include "tessarin/configure_interface.h"

#include <cstdarg>
#include <cstdint>

namespace Configure {

template <class Self>
class UnitAccessors : public IIterator {
public:
    std::uint32_t GetType() final { return self().Kind(); }
    cstr GetKey() final {
        if constexpr (requires(Self & unit) { unit.key; }) return self().key;
        return nullptr;
    }
    bool IsInteger() final { return Is(KIND_STRING); }
    bool IsFloat() final { return Is(KIND_STRING); }
    bool IsString() final { return Is(KIND_STRING); }
    bool IsBool() final { return Is(KIND_STRING); }
    bool IsArray() final { return Is(KIND_ARRAY); }
    bool IsTable() final { return Is(KIND_TABLE); }
    bool IsInterval() final { return HoldsInterval(GetString()); }
    std::int32_t GetInteger() final { return IntegerOf(GetString()); }
    float GetFloat() final { return FloatOf(GetString()); }
    cstr GetString() final { return Is(KIND_STRING) ? self().Text() : nullptr; }
    bool GetBool() final { return BoolOf(GetString()); }
    IArray* GetArray() final { return Is(KIND_ARRAY) ? self().Array() : nullptr; }
    ITable* GetTable() final { return Is(KIND_TABLE) ? self().Table() : nullptr; }
    Interval GetInterval() final { return IntervalOf(GetString()); }

    bool SetKey(const char*) override { return false; }
    bool SetInteger(std::int32_t) override { return false; }
    bool SetFloat(float) override { return false; }
    bool SetString(const char*) override { return false; }

private:
    [[nodiscard]] bool Is(std::uint32_t kind) { return self().Kind() == kind; }
    Self& self() { return static_cast<Self&>(*this); }
};

// What a getter returns for the Unit that it has found, or for null if it has found none. The Unit has its final type,
// so that the compiler resolves its virtual operations.

template <class Unit>
std::int32_t ReadInteger(Unit* unit, std::int32_t fallback) {
    return unit != nullptr && unit->IsInteger() ? unit->GetInteger() : fallback;
}
template <class Unit>
float ReadFloat(Unit* unit, float fallback) {
    return unit != nullptr && unit->IsFloat() ? unit->GetFloat() : fallback;
}
template <class Unit>
cstr ReadString(Unit* unit) {
    return unit != nullptr ? unit->GetString() : nullptr;
}
template <class Unit>
bool ReadBool(Unit* unit) {
    return unit != nullptr && unit->GetBool();
}
template <class Unit>
IArray* ReadArray(Unit* unit) {
    return unit != nullptr ? unit->GetArray() : nullptr;
}
template <class Unit>
ITable* ReadTable(Unit* unit) {
    return unit != nullptr ? unit->GetTable() : nullptr;
}
template <class Unit>
Interval ReadInterval(Unit* unit) {
    return unit != nullptr ? unit->GetInterval() : Interval();
}

template <class Self>
class TableAccessors : public ITable {
public:
    IIterator* Find(const char* key) final { return Own(TextKey(key)); }
    IIterator* Find(std::uint32_t key) final { return Own(Self::KeyOf(Tessarin::IntegerToText(key).text)); }
    IIterator* FindPath(const char* path) final {
        return Own(Tessarin::IsEmpty(path) ? nullptr : Tessarin::string_table->InternPath(path));
    }

    std::int32_t GetInteger(const char* key, std::int32_t fallback) final { return ReadInteger(Seek(key), fallback); }
    std::int32_t GetInteger(std::uint32_t key, std::int32_t fallback) final { return ReadInteger(Seek(key), fallback); }
    float GetFloat(const char* key, float fallback) final { return ReadFloat(Seek(key), fallback); }
    float GetFloat(std::uint32_t key, float fallback) final { return ReadFloat(Seek(key), fallback); }
    cstr GetString(const char* key) final { return ReadString(Seek(key)); }
    cstr GetString(std::uint32_t key) final { return ReadString(Seek(key)); }
    bool GetBool(const char* key) final { return ReadBool(Seek(key)); }
    bool GetBool(std::uint32_t key) final { return ReadBool(Seek(key)); }
    IArray* GetArray(const char* key) final { return ReadArray(Seek(key)); }
    IArray* GetArray(std::uint32_t key) final { return ReadArray(Seek(key)); }
    ITable* GetTable(const char* key) final { return ReadTable(Seek(key)); }
    ITable* GetTable(std::uint32_t key) final { return ReadTable(Seek(key)); }
    Interval GetInterval(const char* key) final { return ReadInterval(Seek(key)); }
    Interval GetInterval(std::uint32_t key) final { return ReadInterval(Seek(key)); }

    IIterator* FindFormat(const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        const CompositeKey key(format, arguments, Self::kKeepsLastColon);
        va_end(arguments);
        return Own(Self::KeyOf(key.Text()));
    }
    std::int32_t GetIntegerFormat(std::int32_t fallback, const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        auto* unit = Seek(format, arguments);
        va_end(arguments);
        return ReadInteger(unit, fallback);
    }
    float GetFloatFormat(float fallback, const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        auto* unit = Seek(format, arguments);
        va_end(arguments);
        return ReadFloat(unit, fallback);
    }
    cstr GetStringFormat(const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        auto* unit = Seek(format, arguments);
        va_end(arguments);
        return ReadString(unit);
    }
    bool GetBoolFormat(const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        auto* unit = Seek(format, arguments);
        va_end(arguments);
        return ReadBool(unit);
    }
    IArray* GetArrayFormat(const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        auto* unit = Seek(format, arguments);
        va_end(arguments);
        return ReadArray(unit);
    }
    ITable* GetTableFormat(const char* format, ...) final {
        std::va_list arguments;
        va_start(arguments, format);
        auto* unit = Seek(format, arguments);
        va_end(arguments);
        return ReadTable(unit);
    }

    IIterator* Remove(IIterator*) override { return nullptr; }
    IIterator* AddString(const char*, const char*) override { return nullptr; }
    IIterator* AddArray(const char*) override { return nullptr; }
    IIterator* AddTable(const char*) override { return nullptr; }

private:
    static const char* TextKey(const char* text) { return Tessarin::IsEmpty(text) ? nullptr : Self::KeyOf(text); }

    auto* Own(const char* key) { return key == nullptr ? nullptr : self().Search(key); }

    // The Unit that a getter reads: the table's own, else the default table's. As with Find, an empty key finds nothing
    // in the default table, and the search doesn't continue in the default table's own default table.
    auto* OwnOrDefault(const char* key) {
        auto* unit = Own(key);
        if (unit != nullptr || self().default_table == nullptr || Tessarin::IsEmpty(key)) return unit;
        return static_cast<Self*>(self().default_table)->Search(key);
    }
    auto* Seek(const char* key) { return OwnOrDefault(TextKey(key)); }
    auto* Seek(std::uint32_t key) { return OwnOrDefault(Self::KeyOf(Tessarin::IntegerToText(key).text)); }
    auto* Seek(const char* format, std::va_list arguments) {
        return OwnOrDefault(Self::KeyOf(CompositeKey(format, arguments, Self::kKeepsLastColon).Text()));
    }

    Self& self() { return static_cast<Self&>(*this); }
};

template <class Self>
class ArrayAccessors : public IArray {
public:
    std::int32_t GetInteger(std::uint32_t position, std::int32_t fallback) final {
        return ReadInteger(self().UnitAt(position), fallback);
    }
    float GetFloat(std::uint32_t position, float fallback) final {
        return ReadFloat(self().UnitAt(position), fallback);
    }
    cstr GetString(std::uint32_t position) final { return ReadString(self().UnitAt(position)); }
    bool GetBool(std::uint32_t position) final { return ReadBool(self().UnitAt(position)); }
    IArray* GetArray(std::uint32_t position) final { return ReadArray(self().UnitAt(position)); }
    ITable* GetTable(std::uint32_t position) final { return ReadTable(self().UnitAt(position)); }
    IIterator* At(std::uint32_t position) final { return self().UnitAt(position); }

    IIterator* Remove(IIterator*) override { return nullptr; }
    IIterator* AddString(std::uint32_t, const char*) override { return nullptr; }
    IIterator* AddArray(std::uint32_t) override { return nullptr; }
    IIterator* AddTable(std::uint32_t) override { return nullptr; }

private:
    Self& self() { return static_cast<Self&>(*this); }
};

} // namespace Configure

#endif
