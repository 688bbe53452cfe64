// A random program for a tree of tables, compared with a plain model of it at each step: entries with their kinds,
// values, addresses and order, array parts, and the notifications of each listener. Listeners only record their
// notifications here; fuzz/listeners.cpp is about those that change the table.

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

/// Logs which listener is notified of what: T and A are a table's record and argument listeners, R and E those of an
/// entry, I those of the array part.
struct Recorder {
    char name;
    std::string* log;
    ITable* const* table; // the only one whose events are expected

    void OnRecord(TableEvent* event) { OnArgument(event->code, event->table, event->key); }
    void OnArgument(std::uint32_t code, ITable* sender, cstr key) { Note(code, sender, key ? key : "-"); }
    void OnArray(std::uint32_t code, ITable* sender, std::uint32_t index) { Note(code, sender, std::to_string(index)); }

    void Note(std::uint32_t code, const ITable* sender, const std::string& about) const {
        Require(sender == *table, "an event comes from another table");
        *log += name + std::to_string(code) + ':' + about + ' ';
    }
};

struct Model;

/// An entry as it should be. Its value is kept as words: the components of a vector, the only word of an integer, a
/// real or a handle.
struct ExpectedEntry {
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
    std::uint32_t validity = 1; // what ValidateTable returns for it
    std::vector<ExpectedEntry> entries{};
    bool has_array = false;
    std::uint32_t item_size = 0;
    std::vector<std::optional<std::string>> items{};
    std::size_t records = 0, arguments = 0, arrays = 0;

    ExpectedEntry* Find(const std::string& key) {
        auto found = std::find_if(entries.begin(), entries.end(),
                                  [&key](const ExpectedEntry& entry) { return entry.key == key; });
        return found == entries.end() ? nullptr : &*found;
    }

    /// With more than eight entries, they are ordered by the addresses of their keys.
    void FinishBulkLoad() {
        if (entries.size() <= 8) return;
        std::sort(entries.begin(), entries.end(), [](const ExpectedEntry& a, const ExpectedEntry& b) {
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
            Require(log_ == expected_, "the listeners are notified of something else");
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

    void ExpectOfEntry(const ExpectedEntry& entry, std::uint32_t code) {
        ExpectOfTable(code, entry.key);
        if (notify_ == 0) return;
        Expect('R', entry.records, code, entry.key);
        Expect('E', entry.arguments, code, entry.key);
    }

    /// Applies a setter to the model. Returns the entry to store in, or null if the setter is refused or changes
    /// nothing, and what the setter must return.
    template <class Same>
    std::pair<ExpectedEntry*, bool> Take(const std::string& key, std::uint32_t kind, Same same) {
        ExpectedEntry* entry = at_->Find(key);
        const bool existed = entry != nullptr;
        if (existed && entry->kind != kind) return {nullptr, false};
        if (existed && same(*entry)) return {nullptr, true};
        if (!existed) entry = &at_->entries.emplace_back(ExpectedEntry{key});
        ExpectOfEntry(*entry, existed ? EVENT_CHANGING : EVENT_ADDING);
        ExpectOfEntry(*entry, existed ? EVENT_CHANGED : EVENT_ADDED);
        entry->kind = kind;
        return {entry, true};
    }

    /// Called when the table and the model have changed: new entries get their address, and all entries their order.
    void FinishBulkLoad() {
        for (ExpectedEntry& entry : at_->entries) {
            IIterator* found = at_->table->Find(entry.key.c_str());
            Require(found != nullptr && (entry.address == nullptr || entry.address == found), "an entry has moved");
            entry.address = found;
        }
        at_->FinishBulkLoad();
    }

    void CheckTable();
    void CheckEntry(const ExpectedEntry& entry) const;
    void CheckWords(const ExpectedEntry& entry) const;

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
    // Values repeat, and so do neighbours that count as equal.
    for (std::uint32_t& word : words)
        word = source_.Below(3) == 0 ? source_.Plain<std::uint32_t>() : source_.Byte() / 64U;
    auto [entry, expected] =
        Take(key, kind, [&](const ExpectedEntry& old) { return SameWords(kind, old.words, words); });
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
    Require((taken != 0) == expected, "a setter returns something else");
    if (entry != nullptr) entry->words = std::move(words);
    FinishBulkLoad();
}

void Program::SetText(bool as_path) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const std::string text = source_.Text();
    const char* given_text = text.size() > 40 ? nullptr : text.c_str();
    std::optional<std::string> stored;
    if (given_text != nullptr) stored = as_path ? cstr_path(given_text) : given_text;
    auto [entry, expected] = Take(key, VALUE_STRING, [&](const ExpectedEntry& old) { return old.text == stored; });
    const std::uint32_t taken = as_path ? at_->table->SetPath(key.c_str(), given_text, notify)
                                        : at_->table->SetString(key.c_str(), given_text, notify);
    Require((taken != 0) == expected, "a setter of text returns something else");
    if (entry != nullptr) entry->text = stored;
    FinishBulkLoad();
}

/// A child that Set creates, or one that a factory made and that is handed over.
void Program::SetChild(bool hands_over) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const bool is_taken = at_->Find(key) == nullptr;
    ExpectedEntry* entry =
        is_taken ? Take(key, VALUE_TABLE, [](const ExpectedEntry&) { return false; }).first : nullptr;
    ITable* child = hands_over ? CreateTable() : at_->table->Set(key.c_str(), notify);
    if (hands_over) {
        Require((at_->table->SetTable(key.c_str(), child, notify) != 0) == is_taken, "a table is taken, or isn't");
        if (!is_taken) CloseTable(child);
    } else {
        Require((child != nullptr) == is_taken, "a child is made, or isn't");
    }
    if (entry != nullptr) {
        entry->child = std::make_unique<Model>();
        entry->child->table = child;
        entry->child->parent = at_;
        entry->child->validity = hands_over ? 1 : 2;
    }
    FinishBulkLoad();
}

/// A pointer or a table that the entry doesn't own, or null.
void Program::SetBorrowed(std::uint32_t kind) {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    const std::uint32_t which = source_.Below(3);
    ITable* pointer = which == 2 ? nullptr : others_[which];
    auto [entry, expected] = Take(key, kind, [&](const ExpectedEntry& old) { return old.pointer == pointer; });
    const std::uint32_t taken = kind == VALUE_PTR ? at_->table->SetPtr(key.c_str(), pointer, notify)
                                : kind == VALUE_EXTERNAL_TABLE
                                    ? at_->table->SetExternalTable(key.c_str(), pointer, notify)
                                    : at_->table->SetReferenceTable(key.c_str(), pointer, notify);
    Require((taken != 0) == expected, "a setter of a pointer returns something else");
    if (entry != nullptr) entry->pointer = pointer;
    FinishBulkLoad();
}

void Program::Rename() {
    const std::string old_key = Key();
    const std::string new_key = Key();
    const std::uint32_t notify = Notify();
    ExpectedEntry* entry = at_->Find(old_key);
    const bool is_free = at_->Find(new_key) == nullptr;
    if (entry != nullptr) ExpectOfEntry(*entry, EVENT_RENAMING);
    if (entry != nullptr && is_free) ExpectOfTable(EVENT_RENAMED, new_key);
    const std::uint32_t renamed = at_->table->Rename(old_key.c_str(), new_key.c_str(), notify);
    Require((renamed != 0) == (entry != nullptr && is_free), "a renaming returns something else");
    if (renamed == 0) return;
    entry->key = new_key;
    std::rotate(at_->entries.begin() + (entry - at_->entries.data()),
                at_->entries.begin() + (entry - at_->entries.data()) + 1, at_->entries.end());
    FinishBulkLoad();
}

void Program::Remove() {
    const std::string key = Key();
    const std::uint32_t notify = Notify();
    ExpectedEntry* entry = at_->Find(key);
    if (entry != nullptr) {
        ExpectOfEntry(*entry, EVENT_REMOVING);
        ExpectOfTable(EVENT_REMOVED, key);
    }
    Require((at_->table->Remove(key.c_str(), notify) != 0) == (entry != nullptr), "a removal returns something else");
    if (entry == nullptr) return;
    if (entry->child != nullptr) Require(ValidateTable(entry->child->table) == 0, "a child outlives its entry");
    at_->entries.erase(at_->entries.begin() + (entry - at_->entries.data()));
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
    ExpectedEntry* entry = at_->Find(key);
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
    Require((record != nullptr) == (entry != nullptr), "a key without an entry takes a listener");
    if (record != nullptr) *record = RecordDelegate<&Recorder::OnRecord>(&r_);
    if (argument != nullptr) *argument = ArgumentDelegate<&Recorder::OnArgument>(&e_);
    if (entry == nullptr) return;
    ++entry->records;
    entry->arguments += argument != nullptr ? 1 : 0;
}

void Program::Unlisten() {
    ITable& table = *at_->table;
    const std::string key = Key();
    ExpectedEntry* entry = at_->Find(key);
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
    if (entry != nullptr) entry->records = entry->arguments = 0;
}

/// Moves to a child, or back to the parent.
void Program::Walk() {
    ExpectedEntry* entry = at_->Find(Key());
    if (entry != nullptr && entry->child != nullptr) {
        at_ = entry->child.get();
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
    IIterator* walked = table.First();
    for (const ExpectedEntry& entry : at_->entries) {
        Require(walked != nullptr && walked == entry.address && entry.key == walked->GetKey(), "another order");
        CheckEntry(entry);
        walked = table.Next(&walked);
    }
    Require(walked == nullptr, "an entry too many");
    for (std::uint32_t i = 0; i < at_->items.size(); ++i) {
        const void* item = table.GetArrayItem(i);
        Require(item != nullptr, "an item isn't there");
        const auto& expected = at_->items[i];
        if (expected) Require(std::memcmp(item, expected->data(), expected->size()) == 0, "an item is another");
    }
    Require(table.GetArrayItem(static_cast<std::uint32_t>(at_->items.size())) == nullptr, "an item too many");
}

void Program::CheckEntry(const ExpectedEntry& entry) const {
    ITable& table = *at_->table;
    const char* key = entry.key.c_str();
    Require(entry.address->GetType() == entry.kind, "another kind");
    if (entry.kind == VALUE_STRING) {
        const cstr text = table.GetString(key);
        Require((text != nullptr) == entry.text.has_value(), "a null string, or none");
        Require(text == nullptr || (*entry.text == text && entry.address->GetString() == text), "another string");
    }
    Require(table.GetPtr(key) == (entry.kind == VALUE_PTR ? entry.pointer : nullptr), "another pointer");
    const bool borrows = entry.kind == VALUE_EXTERNAL_TABLE || entry.kind == VALUE_REFERENCE_TABLE;
    void* child = entry.child != nullptr ? entry.child->table : borrows ? entry.pointer : nullptr;
    Require(table.GetTable(key) == child && table.FindTable(key) == child, "another table");
    if (!entry.words.empty()) CheckWords(entry);
}

void Program::CheckWords(const ExpectedEntry& entry) const {
    ITable& table = *at_->table;
    const char* key = entry.key.c_str();
    std::vector<std::uint32_t> words(entry.words.size());
    auto read = [&](auto vector, auto get) {
        Require((table.*get)(key, &vector) == 1, "no vector");
        std::memcpy(words.data(), &vector, sizeof vector);
    };
    switch (entry.kind) {
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
        if (entry.kind == VALUE_INTEGER) {
            Require(table.GetReal(key) == static_cast<float>(table.GetInteger(key)), "an integer isn't converted");
        }
    }
    Require(words == entry.words, "another value");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    Program(source).Run();
    return 0;
}
