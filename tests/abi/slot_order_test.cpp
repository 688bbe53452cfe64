// Hosts in other languages reach the operations of an interface by their numbers. So each interface is walked from its
// first slot to its last, in the order that hosts have been promised; then objects of the library are used by numbers
// alone, and the library uses a file service whose table of operations is an array of plain functions.
//
// What is assumed of the compiler: a pointer to a virtual operation holds the offset of its slot plus one, and an
// operation is called as a function that takes the object first. Destructors have two slots.

#include <tessarin/tessarin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

template <class Method>
std::size_t SlotOf(Method method) {
    struct {
        std::uintptr_t place;
        std::ptrdiff_t adjustment;
    } parts;
    static_assert(sizeof parts == sizeof method);
    std::memcpy(&parts, &method, sizeof parts);
    return (parts.place - 1) / sizeof(void*);
}

/// Which one of the operations that share a name.
template <class Signature, class Interface>
constexpr auto One(Signature Interface::*method) {
    return method;
}

/// Its first operation takes the slot after the interface's last one.
template <class Interface>
struct Longer : Interface {
    virtual void Behind() = 0;
};

/// Operations are in this order from slot `first` on, and `rest` slots after them end the table.
template <class Interface, class... Methods>
void ExpectOrder(std::size_t first, std::size_t rest, Methods... methods) {
    const std::vector<std::size_t> slots = {SlotOf(methods)...};
    for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], first + i);
    EXPECT_EQ(SlotOf(&Longer<Interface>::Behind), first + slots.size() + rest);
}

using Text = const char*;
using U32 = std::uint32_t;
using I32 = std::int32_t;

TEST(SlotOrder, Table) {
    using T = Tessarin::ITable;
    ExpectOrder<T>(0, 2, &T::GetArrayItem, One<I32(Text, I32)>(&T::GetInteger), One<float(Text, float)>(&T::GetReal),
                   One<cstr(Text, cstr)>(&T::GetString), &T::GetTable, &T::FindTable, One<I32(Text)>(&T::GetInteger),
                   One<float(Text)>(&T::GetReal), One<cstr(Text)>(&T::GetString), &T::GetPtr, &T::GetFloat2,
                   &T::GetFloat3, &T::GetFloat4, &T::GetFloat4x4, &T::GetHandle, &T::SetArrayItem, &T::SetHandle,
                   &T::SetFloat4x4, &T::SetFloat4, &T::SetFloat3, &T::SetFloat2, &T::SetTable, &T::SetString,
                   &T::SetReal, &T::SetInteger, &T::Set, &T::SetPath, &T::SetPtr, &T::Rename, &T::CreateArray,
                   &T::DestroyArray, &T::GetCount, &T::GetElementCount, &T::GetArrayCount, &T::SetExternalTable,
                   &T::SetReferenceTable, &T::Remove, &T::Clear, &T::ReservedFirst, &T::ReservedSecond, &T::SaveFile,
                   &T::SaveBuffer, &T::First, &T::Next, &T::Find, One<Delegate*()>(&T::AddRecordListener),
                   One<Delegate*(Text)>(&T::AddRecordListener), One<Delegate*()>(&T::AddArgumentListener),
                   One<Delegate*(Text)>(&T::AddArgumentListener), &T::AddArrayListener, &T::RemoveArrayListener,
                   One<void(Text, const Delegate*)>(&T::RemoveArgumentListener),
                   One<void(const Delegate*)>(&T::RemoveArgumentListener),
                   One<void(Text, const Delegate*)>(&T::RemoveRecordListener),
                   One<void(const Delegate*)>(&T::RemoveRecordListener));
}

TEST(SlotOrder, Entry) {
    using T = Tessarin::IIterator;
    // Its destructor is before the last operation.
    ExpectOrder<T>(0, 3, &T::GetKey, &T::GetType, &T::GetInteger, &T::GetReal, &T::GetString, &T::GetTable, &T::GetPtr,
                   &T::GetFloat2, &T::GetFloat3, &T::GetFloat4, &T::GetFloat4x4, &T::GetHandle, &T::SetHandle,
                   &T::SetFloat4x4, &T::SetFloat4, &T::SetFloat3, &T::SetFloat2, &T::Unassigned, &T::SetTable,
                   &T::SetString, &T::SetReal, &T::SetInteger, &T::SetPath, &T::SetPtr, &T::SetExternalTable,
                   &T::SetReferenceTable);
    ExpectOrder<T>(28, 0, &T::Set);
}

TEST(SlotOrder, Files) {
    using R = Tessarin::IRead;
    ExpectOrder<R>(0, 2, &R::Release, &R::GetSize, &R::Read);
    using W = Tessarin::IWrite;
    ExpectOrder<W>(0, 2, &W::Release, &W::Write);
    ExpectOrder<IFileIO>(0, 2, &IFileIO::Open, &IFileIO::Close, &IFileIO::GetSize, &IFileIO::Read, &IFileIO::Write,
                         &IFileIO::Exists);
}

TEST(SlotOrder, Configuration) {
    using F = Configure::IFile;
    ExpectOrder<F>(0, 2, &F::Release, &F::Load, &F::Reset, &F::GetRoot, &F::Save, &F::SaveAs, &F::Exists);

    using U = Configure::IIterator;
    ExpectOrder<U>(0, 0, &U::GetType, &U::GetKey, &U::IsInteger, &U::IsFloat, &U::IsString, &U::IsBool, &U::IsArray,
                   &U::IsTable, &U::IsInterval, &U::GetInteger, &U::GetFloat, &U::GetString, &U::GetBool, &U::GetArray,
                   &U::GetTable, &U::GetInterval, &U::SetKey, &U::SetInteger, &U::SetFloat, &U::SetString);

    using T = Configure::ITable;
    using A = Configure::IArray;
    using Configure::Interval;
    ExpectOrder<T>(0, 2, &T::GetCount, &T::GetName, &T::Begin, &T::End, &T::Next, One<U*(Text)>(&T::Find),
                   One<U*(U32)>(&T::Find), &T::FindPath, One<I32(Text, I32)>(&T::GetInteger),
                   One<I32(U32, I32)>(&T::GetInteger), One<float(Text, float)>(&T::GetFloat),
                   One<float(U32, float)>(&T::GetFloat), One<cstr(Text)>(&T::GetString), One<cstr(U32)>(&T::GetString),
                   One<bool(Text)>(&T::GetBool), One<bool(U32)>(&T::GetBool), One<A*(Text)>(&T::GetArray),
                   One<A*(U32)>(&T::GetArray), One<T*(Text)>(&T::GetTable), One<T*(U32)>(&T::GetTable),
                   One<Interval(Text)>(&T::GetInterval), One<Interval(U32)>(&T::GetInterval), &T::FindFormat,
                   &T::GetIntegerFormat, &T::GetFloatFormat, &T::GetStringFormat, &T::GetBoolFormat, &T::GetArrayFormat,
                   &T::GetTableFormat, &T::Remove, &T::AddString, &T::AddArray, &T::AddTable);
    ExpectOrder<A>(0, 0, &A::GetCount, &A::GetName, &A::At, &A::Begin, &A::End, &A::Next, &A::GetInteger, &A::GetFloat,
                   &A::GetString, &A::GetBool, &A::GetArray, &A::GetTable, &A::Remove, &A::AddString, &A::AddArray,
                   &A::AddTable);
}

TEST(SlotOrder, Services) {
    using T = ITabFile;
    ExpectOrder<T>(0, 2, &T::Release, &T::Open, &T::Reserved, &T::GetRowCount, &T::GetColumnCount, &T::GetCell,
                   &T::GetInteger, &T::GetIntegerAlso, &T::GetReal);
    using E = Tessarin::EventList;
    ExpectOrder<E>(0, 2, &E::GetCount, &E::GetCapacity, &E::IsEmpty, &E::Push, &E::Reserve, &E::Front, &E::Pop,
                   &E::Clear);
    using X = Tessarin::IExchangeEvent;
    ExpectOrder<X>(0, 2, &X::Release, &X::Post, &X::Exchange);
}

/// Calls an object's operation by its number.
template <class Result, class... Arguments>
Result Call(void* object, std::size_t slot, Arguments... arguments) {
    using Function = Result (*)(void*, Arguments...);
    Function* slots = nullptr;
    std::memcpy(&slots, object, sizeof slots);
    return slots[slot](object, arguments...);
}

TEST(SlotOrder, TablesServeByNumber) {
    void* table = CreateTable();
    EXPECT_EQ(Call<U32>(table, 24, Text("crew"), I32{7}, U32{1}), 1U);
    EXPECT_EQ(Call<U32>(table, 23, Text("draught"), 2.5F, U32{1}), 1U);
    EXPECT_EQ(Call<I32>(table, 6, Text("crew")), 7);
    EXPECT_EQ(Call<float>(table, 2, Text("none"), 0.5F), 0.5F);
    EXPECT_EQ(Call<U32>(table, 32), 2U);
    void* entry = Call<void*>(table, 44, Text("draught"));
    EXPECT_STREQ(Call<cstr>(entry, 0), "draught");
    EXPECT_EQ(Call<float>(entry, 3), 2.5F);
    void* child = Call<void*>(table, 25, Text("hold"), U32{0});
    EXPECT_EQ(Call<void*>(table, 4, Text("hold")), child);
    EXPECT_EQ(Call<U32>(Call<void*>(table, 44, Text("crew")), 28, static_cast<Tessarin::ITable*>(nullptr)), 1U);
    EXPECT_EQ(Call<I32>(table, 6, Text("crew")), 0); // Set has made a table of it
    EXPECT_EQ(Call<U32>(table, 37, U32{0}), 1U);
    EXPECT_EQ(Call<U32>(table, 32), 0U);
    CloseTable(static_cast<Tessarin::ITable*>(table));
}

// A file service as C would make it: one file, which is its own handle.
struct PlainFiles {
    const void* const* operations;
    std::string bytes;
    std::string calls = {}; // which slots were called, a digit each
};

PlainFiles* Called(void* self, char slot) {
    auto* files = static_cast<PlainFiles*>(self);
    if (files->calls.empty() || files->calls.back() != slot) files->calls += slot;
    return files;
}

void* Open(void* self, Text, I32 mode) {
    PlainFiles* files = Called(self, '0');
    if (mode == 1) files->bytes.clear();
    return self;
}
void Close(void* self, void*) { Called(self, '1'); }
I32 GetSize(void* self, void*) { return static_cast<I32>(Called(self, '2')->bytes.size()); }
U32 Read(void* self, void*, void* buffer, U32, U32 count) {
    std::memcpy(buffer, Called(self, '3')->bytes.data(), count);
    return count;
}
U32 Write(void* self, void*, const void* buffer, U32 size) {
    Called(self, '4')->bytes.append(static_cast<Text>(buffer), size);
    return size;
}
bool Exists(void* self, Text) { return Called(self, '5') != nullptr; }

const void* const kOperations[] = {reinterpret_cast<const void*>(Open),    reinterpret_cast<const void*>(Close),
                                   reinterpret_cast<const void*>(GetSize), reinterpret_cast<const void*>(Read),
                                   reinterpret_cast<const void*>(Write),   reinterpret_cast<const void*>(Exists)};

TEST(SlotOrder, FileServicesAreCalledByNumber) {
    PlainFiles tree{kOperations, "lamp = { oil = 12 }"};
    void* file = CreateRLFile(reinterpret_cast<IFileIO*>(&tree));
    void* root = Call<void*>(file, 1, Text("items"), U32{Configure::ACCESS_EDIT}, U32{Configure::FORMAT_TEXT});
    void* lamp = Call<void*>(root, 18, Text("lamp"));
    EXPECT_EQ(tree.calls, "0231");
    tree.calls.clear();
    EXPECT_EQ(Call<I32>(lamp, 8, Text("oil"), I32{0}), 12);
    EXPECT_TRUE(Call<bool>(Call<void*>(lamp, 5, Text("oil")), 17, I32{11}));
    EXPECT_TRUE(Call<bool>(file, 4));
    EXPECT_EQ(tree.calls, "041");
    EXPECT_NE(tree.bytes.find("\"11\""), std::string::npos) << tree.bytes;
    EXPECT_TRUE(Call<bool>(file, 6, Text("items")));
    EXPECT_EQ(tree.calls.back(), '5');
    Call<void>(file, 0);
}

} // namespace
