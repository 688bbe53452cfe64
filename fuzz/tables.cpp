// A random program for a tree of tables, step by step against a plain model of it: entries with their kinds, values,
// addresses and order, array parts, and what each listener is told. Listeners only note what they hear; what they may
// do to the table besides is the subject of listeners.cpp.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/json_oracle.h"
#include "fuzz/table_tree.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Fuzz;
using namespace Tessarin;

/// Writes down who is told of what: T and A are a table's record and argument listeners, R and E an entry's, I the
/// array part's.
struct Recorder {
    char name;
    std::string* log;
    ITable* const* table; // which all must come from

    void OnRecord(TableEvent* event) { OnArgument(event->code, event->table, event->key); }
    void OnArgument(std::uint32_t code, ITable* its_table, cstr key) { Note(code, its_table, key ? key : "-"); }
    void OnArray(std::uint32_t code, ITable* its_table, std::uint32_t index) {
        Note(code, its_table, std::to_string(index));
    }

    void Note(std::uint32_t code, const ITable* its_table, const std::string& about) const {
        Require(its_table == *table, "an event comes from another table");
        *log += name + std::to_string(code) + ':' + about + ' ';
    }
};

struct Model;

/// An entry as it should be. A value is its words: of a vector its components, of an integer, a real or a handle the
/// one that they have.
struct Held {
    std::string key;
    std::uint32_t kind = VALUE_EMPTY;
    std::vector<std::uint32_t> words{};
    std::optional<std::string> text{};
    void* pointer = nullptr;
    std::unique_ptr<Model> child{};
    IIterator* address = nullptr;
    std::size_t records = 0, arguments = 0; // listeners
};

struct Model {
    ITable* table = nullptr;
    Model* parent = nullptr;
    std::uint32_t validity = 1; // what ValidateTable says of it
    std::vector<Held> entries{};
    bool has_array = false;
    std::uint32_t item_size = 0;
    std::vector<std::optional<std::string>> items{};
    std::size_t records = 0, arguments = 0, arrays = 0;

    Held* Find(const std::string& key) {
        auto found = std::find_if(entries.begin(), entries.end(), [&key](const Held& held) { return held.key == key; });
        return found == entries.end() ? nullptr : &*found;
    }

    /// Beyond eight entries the order is that of the keys' addresses.
    void FinishBulkLoad() {
        if (entries.size() <= 8) return;
        std::sort(entries.begin(), entries.end(), [](const Held& a, const Held& b) {
            return std::less<>()(cstr_find(a.key.c_str()), cstr_find(b.key.c_str()));
        });
    }
};

float RealOf(std::uint32_t word) { return std::bit_cast<float>(word); }

bool SameWords(std::uint32_t kind, const std::vector<std::uint32_t>& one, const std::vector<std::uint32_t>& other) {
    if (kind == VALUE_FLOAT4X4) return false;
    if (kind == VALUE_REAL) return RealOf(one[0]) == RealOf(other[0]);
    if (kind == VALUE_INTEGER || kind == VALUE_HANDLE) return one == other;
    return std::equal(one.begin(), one.end(), other.begin(), [](std::uint32_t a, std::uint32_t b) {
        const float difference = RealOf(a) - RealOf(b);
        return std::fabs(difference) < 1.1920929e-7F;
    });
}

class Program {
public:
    explicit Program(ByteSource& source) : source_(source) {
        root_.table = CreateTable();
        for (ITable*& table : others_) {
            table = CreateTable();
            table->SetInteger("number", 1, 0);
        }
    }
    ~Program() {
        CloseTable(root_.table);
        for (ITable* table : others_) CloseTable(table);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Run() {
        while (!source_.AtEnd()) {
            at_table_ = at_->table;
            Step();
            Require(log_ == expected_, "the listeners are told something else");
            log_.clear();
            expected_.clear();
            CheckTable();
        }
        CheckSave(*root_.table);
    }

private:
    void Step();
    void SetScalar(std::uint32_t kind);
    void SetChild(bool hands_over);
    void SetBorrowed(std::uint32_t kind);
    void SetText(bool as_path);
    void Rename();
    void Remove();
    void Clear();
    void Array();
    void Listen();
    void Unlisten();
    void Walk();

    std::string Key() {
        static const char* const kKeys[] = {"a", "A", "b", "c", "d", "e", "f", "g", "h", "i", "j", "", "key", "Key"};
        const std::uint32_t which = source_.Below(24);
        return which < std::size(kKeys) ? kKeys[which] : "key" + std::to_string(which);
    }

    std::uint32_t Notify() { return notify_ = source_.Byte() % 4 != 0 ? 1 : 0; }

    void Expect(char name, std::size_t times, std::uint32_t code, const std::string& about) {
        while (times-- != 0) expected_ += name + std::to_string(code) + ':' + about + ' ';
    }

    void ExpectOfTable(std::uint32_t code, const std::string& about) {
        if (notify_ == 0) return;
        Expect('T', at_->records, code, about);
        Expect('A', at_->arguments, code, about);
    }

    void ExpectOfEntry(const Held& held, std::uint32_t code) {
        ExpectOfTable(code, held.key);
        if (notify_ == 0) return;
        Expect('R', held.records, code, held.key);
        Expect('E', held.arguments, code, held.key);
    }

    /// What the model makes of a setter: the entry to store in, or null for one that is refused or changes nothing,
    /// with the setter's answer.
    template <class Same>
    std::pair<Held*, bool> Take(const std::string& key, std::uint32_t kind, Same same) {
        Held* held = at_->Find(key);
        const bool existed = held != nullptr;
        if (existed && held->kind != kind) return {nullptr, false};
        if (existed && same(*held)) return {nullptr, true};
        if (!existed) held = &at_->entries.emplace_back(Held{key});
        ExpectOfEntry(*held, existed ? EVENT_CHANGING : EVENT_ADDING);
        ExpectOfEntry(*held, existed ? EVENT_CHANGED : EVENT_ADDED);
        held->kind = kind;
        return {held, true};
    }

    /// After the table has done what the model has: a new entry has its address, and its place.
    void FinishBulkLoad() {
        for (Held& held : at_->entries) {
            IIterator* found = at_->table->Find(held.key.c_str());
            Require(found != nullptr && (held.address == nullptr || held.address == found), "an entry has moved");
            held.address = found;
        }
        at_->FinishBulkLoad();
    }

    void CheckTable();
    void CheckEntry(const Held& held) const;
    void CheckWords(const Held& held) const;

    ByteSource& source_;
    std::string log_, expected_;
    Model root_;
    Model* at_ = &root_;
    ITable* at_table_ = root_.table;
    std::array<ITable*, 2> others_{};
    std::uint32_t notify_ = 1;
    Recorder t_{'T', &log_, &at_table_}, a_{'A', &log_, &at_table_}, r_{'R', &log_, &at_table_},
        e_{'E', &log_, &at_table_}, i_{'I', &log_, &at_table_};
};

void Program::Step() {
    switch (const std::uint32_t operation = source_.Below(22)) {
    case 0:
    case 1:
        return SetScalar(VALUE_INTEGER);
    case 2:
        return SetScalar(VALUE_REAL);
    case 3:
        return SetScalar(VALUE_HANDLE);
    case 4:
    case 5:
    case 6:
    case 7:
        return SetScalar(VALUE_FLOAT2 + operation - 4);
    case 8:
    case 9:
        return SetText(operation == 9);
    case 10:
    case 11:
        return SetChild(operation == 11);
    case 12:
        return SetBorrowed(VALUE_PTR);
    case 13:
        return SetBorrowed(source_.Below(2) == 0 ? VALUE_EXTERNAL_TABLE : VALUE_REFERENCE_TABLE);
    case 14:
        return Rename();
    case 15:
        return Remove();
    case 16:
        return source_.Below(4) == 0 ? Clear() : Remove();
    case 17:
        return Array();
    case 18:
        return Listen();
    case 19:
        return Unlisten();
    case 20:
        return Walk();
    default:
        return SetScalar(VALUE_INTEGER);
    }
}

template <class Vector>
std::uint32_t SetVector(ITable& table, const std::string& key, const std::vector<std::uint32_t>& words,
                        std::uint32_t notify, std::uint32_t (ITable::*set)(const char*, const Vector*, std::uint32_t)) {
    Vector vector;
    std::memcpy(&vector, words.data(), sizeof vector);
    return (table.*set)(key.c_str(), &vector, notify);
}

void Program::SetScalar(std::uint32_t kind) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const std::size_t count = kind == VALUE_FLOAT4X4 ? 16 : kind >= VALUE_FLOAT2 && kind <= VALUE_FLOAT4 ? kind - 6 : 1;
    std::vector<std::uint32_t> words(count);
    // Values are met again, and neighbours that count as the same.
    for (std::uint32_t& word : words)
        word = source_.Below(3) == 0 ? source_.Plain<std::uint32_t>() : source_.Byte() / 64U;
    auto [held, answer] = Take(key, kind, [&](const Held& old) { return SameWords(kind, old.words, words); });
    ITable& table = *at_->table;
    const char* name = key.c_str();
    const std::uint32_t taken =
        kind == VALUE_INTEGER  ? table.SetInteger(name, static_cast<std::int32_t>(words[0]), notify)
        : kind == VALUE_REAL   ? table.SetReal(name, RealOf(words[0]), notify)
        : kind == VALUE_HANDLE ? table.SetHandle(name, words.data(), notify)
        : kind == VALUE_FLOAT2 ? SetVector<Float2>(table, key, words, notify, &ITable::SetFloat2)
        : kind == VALUE_FLOAT3 ? SetVector<Float3>(table, key, words, notify, &ITable::SetFloat3)
        : kind == VALUE_FLOAT4 ? SetVector<Float4>(table, key, words, notify, &ITable::SetFloat4)
                               : SetVector<Float4x4>(table, key, words, notify, &ITable::SetFloat4x4);
    Require((taken != 0) == answer, "a setter answers otherwise");
    if (held != nullptr) held->words = std::move(words);
    FinishBulkLoad();
}

void Program::SetText(bool as_path) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const std::string text = source_.Text();
    const char* its_text = text.size() > 40 ? nullptr : text.c_str();
    std::optional<std::string> stored;
    if (its_text != nullptr) stored = as_path ? cstr_path(its_text) : its_text;
    auto [held, answer] = Take(key, VALUE_STRING, [&](const Held& old) { return old.text == stored; });
    const std::uint32_t taken = as_path ? at_->table->SetPath(key.c_str(), its_text, notify)
                                        : at_->table->SetString(key.c_str(), its_text, notify);
    Require((taken != 0) == answer, "a setter of text answers otherwise");
    if (held != nullptr) held->text = stored;
    FinishBulkLoad();
}

/// A child that Set makes, or one of a factory that is handed over.
void Program::SetChild(bool hands_over) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const bool is_taken = at_->Find(key) == nullptr;
    Held* held = is_taken ? Take(key, VALUE_TABLE, [](const Held&) { return false; }).first : nullptr;
    ITable* child = hands_over ? CreateTable() : at_->table->Set(key.c_str(), notify);
    if (hands_over) {
        Require((at_->table->SetTable(key.c_str(), child, notify) != 0) == is_taken, "a table is taken, or isn't");
        if (!is_taken) CloseTable(child);
    } else {
        Require((child != nullptr) == is_taken, "a child is made, or isn't");
    }
    if (held != nullptr) {
        held->child = std::make_unique<Model>();
        held->child->table = child;
        held->child->parent = at_;
        held->child->validity = hands_over ? 1 : 2;
    }
    FinishBulkLoad();
}

/// A pointer or a table of somebody else's, or null.
void Program::SetBorrowed(std::uint32_t kind) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const std::uint32_t which = source_.Below(3);
    ITable* pointer = which == 2 ? nullptr : others_[which];
    auto [held, answer] = Take(key, kind, [&](const Held& old) { return old.pointer == pointer; });
    const std::uint32_t taken = kind == VALUE_PTR ? at_->table->SetPtr(key.c_str(), pointer, notify)
                                : kind == VALUE_EXTERNAL_TABLE
                                    ? at_->table->SetExternalTable(key.c_str(), pointer, notify)
                                    : at_->table->SetReferenceTable(key.c_str(), pointer, notify);
    Require((taken != 0) == answer, "a setter of a pointer answers otherwise");
    if (held != nullptr) held->pointer = pointer;
    FinishBulkLoad();
}

void Program::Rename() {
    const std::string old_key = Key();
    const std::string new_key = Key();
    const std::uint32_t notify = Notify();
    Held* held = at_->Find(old_key);
    const bool is_free = at_->Find(new_key) == nullptr;
    if (held != nullptr) ExpectOfEntry(*held, EVENT_RENAMING);
    if (held != nullptr && is_free) ExpectOfTable(EVENT_RENAMED, new_key);
    const std::uint32_t renamed = at_->table->Rename(old_key.c_str(), new_key.c_str(), notify);
    Require((renamed != 0) == (held != nullptr && is_free), "a renaming answers otherwise");
    if (renamed == 0) return;
    held->key = new_key;
    std::rotate(at_->entries.begin() + (held - at_->entries.data()),
                at_->entries.begin() + (held - at_->entries.data()) + 1, at_->entries.end());
    FinishBulkLoad();
}

void Program::Remove() {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    Held* held = at_->Find(key);
    if (held != nullptr) {
        ExpectOfEntry(*held, EVENT_REMOVING);
        ExpectOfTable(EVENT_REMOVED, key);
    }
    Require((at_->table->Remove(key.c_str(), notify) != 0) == (held != nullptr), "a removal answers otherwise");
    if (held == nullptr) return;
    if (held->child != nullptr) Require(ValidateTable(held->child->table) == 0, "a child outlives its entry");
    at_->entries.erase(at_->entries.begin() + (held - at_->entries.data()));
}

void Program::Clear() {
    const std::uint32_t notify = Notify();
    ExpectOfTable(EVENT_CLEARING, "-");
    ExpectOfTable(EVENT_CLEARED, "-");
    Require(at_->table->Clear(notify) == 1, "not cleared");
    at_->entries.clear();
}

void Program::Array() {
    notify_ = 1;
    const std::uint32_t operation = source_.Below(6);
    if (operation == 0) {
        at_->item_size = 1 + source_.Below(20);
        at_->has_array = true;
        at_->items.clear();
        Expect('I', at_->arrays, EVENT_ARRAY_CREATING, "0");
        Expect('I', at_->arrays, EVENT_ARRAY_CREATED, "0");
        Require(at_->table->CreateArray(at_->item_size) == 1, "no array part");
        return;
    }
    if (operation == 1) {
        at_->has_array = false;
        at_->items.clear();
        Expect('I', at_->arrays, EVENT_ARRAY_DESTROYING, "0");
        Expect('I', at_->arrays, EVENT_ARRAY_DESTROYED, "0");
        Require(at_->table->DestroyArray() == 1, "the array part stays");
        return;
    }
    const std::uint32_t index = source_.Byte();
    const std::uint32_t notify = Notify();
    const std::string item(20, static_cast<char>(source_.Byte()));
    if (at_->has_array && notify != 0) {
        Expect('I', at_->arrays, EVENT_ITEM_SETTING, std::to_string(index));
        Expect('I', at_->arrays, EVENT_ITEM_SET, std::to_string(index));
    }
    const void* stored = at_->table->SetArrayItem(index, item.data(), notify);
    Require((stored != nullptr) == at_->has_array, "an item is stored, or isn't");
    if (!at_->has_array) return;
    if (index >= at_->items.size()) at_->items.resize(index + 1);
    at_->items[index] = item.substr(0, at_->item_size);
}

void Program::Listen() {
    ITable& table = *at_->table;
    const std::string key = Key();
    Held* held = at_->Find(key);
    switch (source_.Below(5)) {
    case 0:
        *table.AddRecordListener() = RecordDelegate<&Recorder::OnRecord>(&t_);
        ++at_->records;
        return;
    case 1:
        *table.AddArgumentListener() = ArgumentDelegate<&Recorder::OnArgument>(&a_);
        ++at_->arguments;
        return;
    case 2:
        *table.AddArrayListener() = ArrayDelegate<&Recorder::OnArray>(&i_);
        ++at_->arrays;
        return;
    default:
        break;
    }
    Delegate* record = table.AddRecordListener(key.c_str());
    Delegate* argument = source_.Below(2) == 0 ? nullptr : table.AddArgumentListener(key.c_str());
    Require((record != nullptr) == (held != nullptr), "a key without an entry takes a listener");
    if (record != nullptr) *record = RecordDelegate<&Recorder::OnRecord>(&r_);
    if (argument != nullptr) *argument = ArgumentDelegate<&Recorder::OnArgument>(&e_);
    if (held == nullptr) return;
    ++held->records;
    held->arguments += argument != nullptr ? 1 : 0;
}

void Program::Unlisten() {
    ITable& table = *at_->table;
    const std::string key = Key();
    Held* held = at_->Find(key);
    switch (source_.Below(5)) {
    case 0: {
        const Delegate delegate = RecordDelegate<&Recorder::OnRecord>(&t_);
        table.RemoveRecordListener(&delegate);
        at_->records = 0;
        return;
    }
    case 1: {
        const Delegate delegate = ArgumentDelegate<&Recorder::OnArgument>(&a_);
        table.RemoveArgumentListener(&delegate);
        at_->arguments = 0;
        return;
    }
    case 2: {
        const Delegate delegate = ArrayDelegate<&Recorder::OnArray>(&i_);
        table.RemoveArrayListener(&delegate);
        at_->arrays = 0;
        return;
    }
    default:
        break;
    }
    const Delegate record = RecordDelegate<&Recorder::OnRecord>(&r_);
    const Delegate argument = ArgumentDelegate<&Recorder::OnArgument>(&e_);
    table.RemoveRecordListener(key.c_str(), &record);
    table.RemoveArgumentListener(key.c_str(), &argument);
    if (held != nullptr) held->records = held->arguments = 0;
}

/// On to a child, or back.
void Program::Walk() {
    Held* held = at_->Find(Key());
    if (held != nullptr && held->child != nullptr) {
        at_ = held->child.get();
    } else if (at_->parent != nullptr) {
        at_ = at_->parent;
    }
}

void Program::CheckTable() {
    ITable& table = *at_->table;
    Require(ValidateTable(&table) == at_->validity, "a live table isn't known as one");
    Require(table.GetElementCount() == at_->entries.size() && table.GetArrayCount() == at_->items.size(),
            "another count");
    Require(table.GetCount() == (at_->has_array ? at_->items.size() : at_->entries.size()), "another count of both");
    IIterator* entry = table.First();
    for (const Held& held : at_->entries) {
        Require(entry != nullptr && entry == held.address && held.key == entry->GetKey(), "another order");
        CheckEntry(held);
        entry = table.Next(&entry);
    }
    Require(entry == nullptr, "an entry too many");
    for (std::uint32_t i = 0; i < at_->items.size(); ++i) {
        const void* item = table.GetArrayItem(i);
        Require(item != nullptr, "an item isn't there");
        const auto& expected = at_->items[i];
        if (expected) Require(std::memcmp(item, expected->data(), expected->size()) == 0, "an item is another");
    }
    Require(table.GetArrayItem(static_cast<std::uint32_t>(at_->items.size())) == nullptr, "an item too many");
}

void Program::CheckEntry(const Held& held) const {
    ITable& table = *at_->table;
    const char* key = held.key.c_str();
    Require(held.address->GetType() == held.kind, "another kind");
    if (held.kind == VALUE_STRING) {
        const cstr text = table.GetString(key);
        Require((text != nullptr) == held.text.has_value(), "a null string, or none");
        Require(text == nullptr || (*held.text == text && held.address->GetString() == text), "another string");
    }
    Require(table.GetPtr(key) == (held.kind == VALUE_PTR ? held.pointer : nullptr), "another pointer");
    const bool borrows = held.kind == VALUE_EXTERNAL_TABLE || held.kind == VALUE_REFERENCE_TABLE;
    void* its_table = held.child != nullptr ? held.child->table : borrows ? held.pointer : nullptr;
    Require(table.GetTable(key) == its_table && table.FindTable(key) == its_table, "another table");
    if (!held.words.empty()) CheckWords(held);
}

void Program::CheckWords(const Held& held) const {
    ITable& table = *at_->table;
    const char* key = held.key.c_str();
    std::vector<std::uint32_t> words(held.words.size());
    auto read = [&](auto vector, auto get) {
        Require((table.*get)(key, &vector) == 1, "no vector");
        std::memcpy(words.data(), &vector, sizeof vector);
    };
    switch (held.kind) {
    case VALUE_FLOAT2:
        read(Float2{}, static_cast<std::uint32_t (ITable::*)(const char*, Float2*)>(&ITable::GetFloat2));
        break;
    case VALUE_FLOAT3:
        read(Float3{}, static_cast<std::uint32_t (ITable::*)(const char*, Float3*)>(&ITable::GetFloat3));
        break;
    case VALUE_FLOAT4:
        read(Float4{}, static_cast<std::uint32_t (ITable::*)(const char*, Float4*)>(&ITable::GetFloat4));
        break;
    case VALUE_FLOAT4X4:
        read(Float4x4{}, static_cast<std::uint32_t (ITable::*)(const char*, Float4x4*)>(&ITable::GetFloat4x4));
        break;
    default:
        words[0] = static_cast<std::uint32_t>(table.GetInteger(key, 7));
        Require(table.GetHandle(key) == words[0], "another handle");
        if (held.kind == VALUE_INTEGER) {
            Require(table.GetReal(key) == static_cast<float>(table.GetInteger(key)), "an integer isn't converted");
        }
    }
    Require(words == held.words, "another value");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    Program(source).Run();
    return 0;
}
