// A random program for a tree of tables, compared with a plain model of it at each step: entries with their kinds,
// values, addresses and order, array parts, and the notifications of each listener. Listeners only record their
// notifications here; fuzz/listeners.cpp is about those that change the table.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/json_oracle.h"
#include "fuzz/table_tree.h"
#include "tables/table.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Fuzz;
using namespace Tessarin;

/// Logs its notifications as records (R), arguments (A) or of the array part (I).
struct Recorder {
    std::uint32_t number;
    std::string* log;
    ITable* const* table; // the only one whose events are expected

    void OnRecord(TableEvent* event) { Note('R', event->code, event->table, event->key ? event->key : "-"); }
    void OnArgument(std::uint32_t code, ITable* sender, cstr key) { Note('A', code, sender, key ? key : "-"); }
    void OnArray(std::uint32_t code, ITable* sender, std::uint32_t index) {
        Note('I', code, sender, std::to_string(index));
    }

    void Note(char kind, std::uint32_t code, const ITable* sender, const std::string& about) const {
        Require(sender == *table, "an event comes from another table");
        Log(*log, kind, number, code, about);
    }

    static void Log(std::string& log, char kind, std::uint32_t number, std::uint32_t code, const std::string& about) {
        log += kind + std::to_string(number) + ':' + std::to_string(code) + ':' + about + ' ';
    }
};

constexpr std::uint32_t kRecorders = 3; // a listener with this number is left empty

/// The numbers of the listeners of each kind, in their order.
using Listeners = std::array<std::vector<std::uint32_t>, kListenerKinds>;

/// What a value is made of: the components of a vector, the only word of a number or a handle, the words of a pointer.
using Words = std::vector<std::uint32_t>;

Words WordsOf(const void* pointer) {
    Words words(sizeof pointer / sizeof(std::uint32_t));
    std::memcpy(words.data(), &pointer, sizeof pointer);
    return words;
}

template <class T>
T From(const std::uint32_t* words) {
    T value;
    std::memcpy(&value, words, sizeof value);
    return value;
}

bool Same(std::uint32_t kind, const Words& one, const Words& other) {
    if (kind == VALUE_FLOAT4X4) return false;
    if (kind == VALUE_REAL) return From<float>(one.data()) == From<float>(other.data());
    if (kind < VALUE_FLOAT2 || kind > VALUE_FLOAT4) return one == other;
    return std::equal(one.begin(), one.end(), other.begin(), [](const std::uint32_t& a, const std::uint32_t& b) {
        return std::fabs(From<float>(&a) - From<float>(&b)) < 1.1920929e-7F;
    });
}

struct Model;

/// An entry as it should be.
struct ExpectedEntry {
    cstr key;
    std::uint32_t kind = VALUE_EMPTY;
    Words words{};
    std::unique_ptr<Model> child{};
    IIterator* address = nullptr;
    Listeners listeners{};
};

struct Model {
    ITable* table = nullptr;
    Model* parent = nullptr;
    std::uint32_t validity = 1; // what ValidateTable returns for it
    std::vector<ExpectedEntry> entries{};
    std::uint32_t capacity = 4;
    bool has_array = false;
    std::uint32_t item_size = 0, array_capacity = 0;
    std::vector<std::string> items{}; // empty where nothing was stored
    Listeners listeners{};

    ExpectedEntry* Find(cstr key) {
        auto found = std::find_if(entries.begin(), entries.end(),
                                  [key](const ExpectedEntry& entry) { return entry.key == key; });
        return found == entries.end() ? nullptr : &*found;
    }

    ExpectedEntry* Add(cstr key) {
        if (entries.size() == capacity) capacity = capacity <= 128 ? capacity * 2 : capacity + 128;
        return &entries.emplace_back(ExpectedEntry{key});
    }

    /// Called after each change: new entries get their address, which stays, and more than eight entries are ordered by
    /// the addresses of their keys.
    void Settle() {
        for (ExpectedEntry& entry : entries) {
            if (entry.address == nullptr) entry.address = table->Find(entry.key);
        }
        const auto below = [](const ExpectedEntry& a, const ExpectedEntry& b) { return std::less<>()(a.key, b.key); };
        if (entries.size() > 8 && !std::is_sorted(entries.begin(), entries.end(), below)) {
            std::sort(entries.begin(), entries.end(), below);
        }
    }
};

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
            notify_ = source_.Byte() % 4 != 0 ? 1 : 0;
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
    void SetWords(std::uint32_t kind);
    void SetText();
    void SetChild();
    void AddEmpty();
    void AddMany();
    void Rename();
    void Remove();
    void Clear();
    void ArrayPart();
    void ArrayItem();
    void Listen();
    void Unlisten();
    void Walk();

    cstr Key() {
        static const char* const kKeys[] = {"a", "A", "b", "c", "d", "e", "f", "g", "h", "i", "j", "", "key", "Key"};
        const std::uint32_t which = source_.Byte();
        return cstr_string(which < 224 ? kKeys[which % std::size(kKeys)] : Numbered(which).c_str());
    }

    static std::string Numbered(std::uint32_t number) { return "key" + std::to_string(number); }

    /// Words that are neighbours as floats, or any.
    std::uint32_t Word() {
        // Zeros, both sides of the bound within which vectors are the same, a nan.
        static constexpr std::uint32_t kSharp[] = {0,          1,          0x80000000, 0x34000000,
                                                   0x33FFFFFF, 0xB4000000, 0xB3FFFFFF, 0x7FC00000};
        const std::uint32_t which = source_.Below(12);
        if (which < std::size(kSharp)) return kSharp[which];
        const auto word = source_.Plain<std::uint32_t>();
        return std::isnan(std::bit_cast<float>(word)) ? 0 : word; // some hosts make another nan of a signalling one
    }

    /// The notifications of the table's listeners and then of the entry's, if it is about one.
    void Expect(std::uint32_t code, const std::string& about, const ExpectedEntry* entry = nullptr) {
        if (notify_ == 0) return;
        const Listeners none{};
        for (const Listeners& owner : {at_->listeners, entry == nullptr ? none : entry->listeners}) {
            ExpectOf(owner[kRecordListener], 'R', code, about);
            ExpectOf(owner[kArgumentListener], 'A', code, about);
        }
    }

    void ExpectOfArray(std::uint32_t before, std::uint32_t after, std::uint32_t index) {
        for (const std::uint32_t code : {before, after}) {
            ExpectOf(at_->listeners[kArrayListener], 'I', code, std::to_string(index));
        }
    }

    void ExpectOf(const std::vector<std::uint32_t>& numbers, char kind, std::uint32_t code, const std::string& about) {
        for (const std::uint32_t number : numbers) {
            if (number != kRecorders) Recorder::Log(expected_, kind, number, code, about);
        }
    }

    /// Applies a setter to the model. Returns what the setter must return: whether the entry takes that kind.
    /// kind  VALUE_EMPTY for a setter that takes an empty entry only; its caller gives the entry its kind
    bool Take(cstr key, std::uint32_t kind, const Words& words) {
        ExpectedEntry* entry = at_->Find(key);
        const bool existed = entry != nullptr;
        if (existed && entry->kind != VALUE_EMPTY && entry->kind != kind) return false;
        if (existed && entry->kind == kind && kind != VALUE_EMPTY && Same(kind, entry->words, words)) return true;
        if (!existed) entry = at_->Add(key);
        Expect(existed ? EVENT_CHANGING : EVENT_ADDING, key, entry);
        Expect(existed ? EVENT_CHANGED : EVENT_ADDED, key, entry);
        entry->kind = kind;
        entry->words = words;
        return true;
    }

    Delegate DelegateOf(ListenerKind kind, std::uint32_t number) {
        if (number == kRecorders) return {};
        Recorder* recorder = &recorders_[number];
        return kind == kRecordListener     ? RecordDelegate<&Recorder::OnRecord>(recorder)
               : kind == kArgumentListener ? ArgumentDelegate<&Recorder::OnArgument>(recorder)
                                           : ArrayDelegate<&Recorder::OnArray>(recorder);
    }

    void CheckTable();
    void CheckEntry(const ExpectedEntry& entry) const;

    ByteSource& source_;
    std::string log_, expected_;
    Model root_;
    Model* at_ = &root_;
    ITable* at_table_ = root_.table;
    std::array<ITable*, 2> others_{};
    std::uint32_t notify_ = 1;
    std::array<Recorder, kRecorders> recorders_{
        {{0, &log_, &at_table_}, {1, &log_, &at_table_}, {2, &log_, &at_table_}}};
};

void Program::Step() {
    static constexpr std::uint32_t kKinds[] = {VALUE_INTEGER,        VALUE_REAL,           VALUE_HANDLE,   VALUE_FLOAT2,
                                               VALUE_FLOAT3,         VALUE_FLOAT4,         VALUE_FLOAT4X4, VALUE_PTR,
                                               VALUE_EXTERNAL_TABLE, VALUE_REFERENCE_TABLE};
    static constexpr void (Program::*kOthers[])() = {
        &Program::SetText,   &Program::SetText,   &Program::SetChild, &Program::SetChild, &Program::AddEmpty,
        &Program::Rename,    &Program::Remove,    &Program::Remove,   &Program::Clear,    &Program::ArrayPart,
        &Program::ArrayItem, &Program::ArrayItem, &Program::Listen,   &Program::Listen,   &Program::Unlisten,
        &Program::Walk,      &Program::AddMany};
    const std::uint32_t operation = source_.Below(std::size(kKinds) + std::size(kOthers));
    if (operation < std::size(kKinds)) return SetWords(kKinds[operation]);
    (this->*kOthers[operation - std::size(kKinds)])();
}

/// A number, a vector, or a pointer that the entry doesn't own.
void Program::SetWords(std::uint32_t kind) {
    const cstr key = Key();
    Words words(kind == VALUE_FLOAT4X4 ? 16 : kind >= VALUE_FLOAT2 && kind <= VALUE_FLOAT4 ? kind - 6 : 1);
    for (std::uint32_t& word : words) word = Word();
    const std::uint32_t which = words[0] % 3;
    ITable* pointer = which == 2 ? nullptr : others_[which];
    const bool is_pointer = kind == VALUE_PTR || kind == VALUE_EXTERNAL_TABLE || kind == VALUE_REFERENCE_TABLE;
    if (is_pointer) words = WordsOf(pointer);
    const bool expected = Take(key, kind, words);
    ITable& table = *at_->table;
    const auto set = [&](auto value, auto setter) { return (table.*setter)(key, &value, notify_); };
    const std::uint32_t* at = words.data();
    const std::uint32_t taken = kind == VALUE_INTEGER          ? table.SetInteger(key, From<std::int32_t>(at), notify_)
                                : kind == VALUE_REAL           ? table.SetReal(key, From<float>(at), notify_)
                                : kind == VALUE_HANDLE         ? table.SetHandle(key, at, notify_)
                                : kind == VALUE_FLOAT2         ? set(From<Float2>(at), &ITable::SetFloat2)
                                : kind == VALUE_FLOAT3         ? set(From<Float3>(at), &ITable::SetFloat3)
                                : kind == VALUE_FLOAT4         ? set(From<Float4>(at), &ITable::SetFloat4)
                                : kind == VALUE_FLOAT4X4       ? set(From<Float4x4>(at), &ITable::SetFloat4x4)
                                : kind == VALUE_PTR            ? table.SetPtr(key, pointer, notify_)
                                : kind == VALUE_EXTERNAL_TABLE ? table.SetExternalTable(key, pointer, notify_)
                                                               : table.SetReferenceTable(key, pointer, notify_);
    Require((taken != 0) == expected, "a setter returns something else");
    at_->Settle();
}

void Program::SetText() {
    static const char* const kTexts[] = {"A/B", "a\\b", "A//B", "", nullptr};
    const cstr key = Key();
    const std::uint32_t which = source_.Byte();
    const std::string own = source_.Text();
    const char* text = which % 8 < std::size(kTexts) ? kTexts[which % 8] : own.c_str();
    const bool as_path = which >= 128;
    const cstr stored = text == nullptr ? nullptr : as_path ? cstr_path(text) : cstr_string(text);
    const bool expected = Take(key, VALUE_STRING, WordsOf(stored));
    const std::uint32_t taken =
        as_path ? at_->table->SetPath(key, text, notify_) : at_->table->SetString(key, text, notify_);
    Require((taken != 0) == expected, "a setter of text returns something else");
    at_->Settle();
}

/// A child that Set creates, or one that a factory made and that is handed over.
void Program::SetChild() {
    const cstr key = Key();
    const bool hands_over = source_.Below(2) != 0;
    const bool expected = Take(key, VALUE_EMPTY, {});
    ITable* child = hands_over ? CreateTable() : at_->table->Set(key, notify_);
    const bool taken = hands_over ? at_->table->SetTable(key, child, notify_) != 0 : child != nullptr;
    Require(taken == expected, "a child is taken, or isn't");
    if (hands_over && !taken) CloseTable(child);
    if (taken) {
        ExpectedEntry& entry = *at_->Find(key);
        entry.kind = VALUE_TABLE;
        entry.words = WordsOf(child);
        entry.child = std::make_unique<Model>();
        entry.child->table = child;
        entry.child->parent = at_;
        entry.child->validity = hands_over ? 1 : 2;
    }
    at_->Settle();
}

/// What a setter leaves that has no memory for the value.
void Program::AddEmpty() {
    const cstr key = Key();
    bool existed = false;
    static_cast<Table*>(at_->table)->Entries().FindOrAdd(key, existed);
    Require(existed == (at_->Find(key) != nullptr), "an entry existed, or didn't");
    if (!existed) at_->Add(key);
    at_->Settle();
}

void Program::AddMany() {
    const std::uint32_t first = source_.Byte();
    notify_ = 0;
    for (std::uint32_t i = source_.Byte(); i != 0; --i) {
        const cstr key = cstr_string(Numbered(first + i).c_str());
        Take(key, VALUE_INTEGER, {i});
        at_->table->SetInteger(key, static_cast<std::int32_t>(i), 0);
    }
    at_->Settle();
}

void Program::Rename() {
    const cstr old_key = Key();
    const cstr new_key = Key();
    ExpectedEntry* entry = at_->Find(old_key);
    const bool expected = entry != nullptr && at_->Find(new_key) == nullptr;
    if (entry != nullptr) Expect(EVENT_RENAMING, old_key, entry);
    if (expected) Expect(EVENT_RENAMED, new_key);
    Require((at_->table->Rename(old_key, new_key, notify_) != 0) == expected, "a renaming returns something else");
    if (!expected) return;
    entry->key = new_key;
    const auto place = at_->entries.begin() + (entry - at_->entries.data());
    std::rotate(place, place + 1, at_->entries.end());
    at_->Settle();
}

void Program::Remove() {
    const cstr key = Key();
    ExpectedEntry* entry = at_->Find(key);
    if (entry != nullptr) {
        Expect(EVENT_REMOVING, key, entry);
        Expect(EVENT_REMOVED, key);
    }
    Require((at_->table->Remove(key, notify_) != 0) == (entry != nullptr), "a removal returns something else");
    if (entry == nullptr) return;
    if (entry->child != nullptr) Require(ValidateTable(entry->child->table) == 0, "a child outlives its entry");
    at_->entries.erase(at_->entries.begin() + (entry - at_->entries.data()));
}

void Program::Clear() {
    if (source_.Below(4) != 0) return Remove();
    Expect(EVENT_CLEARING, "-");
    Expect(EVENT_CLEARED, "-");
    Require(at_->table->Clear(notify_) == 1, "not cleared");
    at_->entries.clear();
}

void Program::ArrayPart() {
    at_->has_array = source_.Below(4) != 0;
    at_->items.clear();
    at_->array_capacity = 8;
    at_->item_size = 1 + source_.Below(20);
    if (at_->has_array) {
        ExpectOfArray(EVENT_ARRAY_CREATING, EVENT_ARRAY_CREATED, 0);
        Require(at_->table->CreateArray(at_->item_size) == 1, "no array part");
    } else {
        ExpectOfArray(EVENT_ARRAY_DESTROYING, EVENT_ARRAY_DESTROYED, 0);
        Require(at_->table->DestroyArray() == 1, "the array part stays");
    }
}

/// Sets an item, also one behind the last, to bytes of the host or to another item, which may move.
void Program::ArrayItem() {
    ITable& table = *at_->table;
    auto& items = at_->items;
    const std::uint32_t which = source_.Byte();
    const auto index = static_cast<std::uint32_t>(which % 2 == 0 ? items.size() : which);
    std::string item(20, static_cast<char>(source_.Byte()));
    const void* data = item.data();
    const void* first = table.GetArrayItem(0);
    if (const std::uint32_t other = source_.Byte(); other < items.size()) {
        item = items[other];
        data = table.GetArrayItem(other);
    }
    if (at_->has_array && notify_ != 0) ExpectOfArray(EVENT_ITEM_SETTING, EVENT_ITEM_SET, index);
    const void* stored = table.SetArrayItem(index, data, notify_);
    Require(stored == table.GetArrayItem(index) && (stored != nullptr) == at_->has_array,
            "an item is stored, or isn't");
    if (!at_->has_array) return;
    const bool grows = index >= at_->array_capacity;
    if (grows) at_->array_capacity = 2 * (index + 1);
    Require(first == nullptr || (table.GetArrayItem(0) != first) == grows, "the items move, or don't");
    if (index >= items.size()) items.resize(index + 1);
    items[index] = item.substr(0, at_->item_size);
}

void Program::Listen() {
    ITable& table = *at_->table;
    const auto kind = static_cast<ListenerKind>(source_.Below(kListenerKinds));
    const std::uint32_t number = source_.Below(kRecorders + 1);
    const cstr key = Key();
    const bool of_table = kind == kArrayListener || source_.Below(2) == 0;
    ExpectedEntry* entry = at_->Find(key);
    Delegate* slot = kind == kArrayListener ? table.AddArrayListener()
                     : kind == kRecordListener
                         ? (of_table ? table.AddRecordListener() : table.AddRecordListener(key))
                         : (of_table ? table.AddArgumentListener() : table.AddArgumentListener(key));
    Require((slot != nullptr) == (of_table || entry != nullptr), "a key without an entry takes a listener");
    if (slot == nullptr) return;
    *slot = DelegateOf(kind, number);
    (of_table ? at_->listeners : entry->listeners)[kind].push_back(number);
}

/// Removes all listeners that are equal to one; the last one takes the place of each.
void Program::Unlisten() {
    ITable& table = *at_->table;
    const auto kind = static_cast<ListenerKind>(source_.Below(kListenerKinds));
    const std::uint32_t number = source_.Below(kRecorders + 1);
    const cstr key = Key();
    const bool of_table = kind == kArrayListener || source_.Below(2) == 0;
    const Delegate delegate = DelegateOf(kind, number);
    if (kind == kArrayListener) table.RemoveArrayListener(&delegate);
    if (kind == kRecordListener) {
        of_table ? table.RemoveRecordListener(&delegate) : table.RemoveRecordListener(key, &delegate);
    }
    if (kind == kArgumentListener) {
        of_table ? table.RemoveArgumentListener(&delegate) : table.RemoveArgumentListener(key, &delegate);
    }
    ExpectedEntry* entry = at_->Find(key);
    if (!of_table && entry == nullptr) return;
    auto& numbers = (of_table ? at_->listeners : entry->listeners)[kind];
    for (std::size_t i = 0; i < numbers.size();) {
        if (numbers[i] != number) {
            ++i;
        } else {
            numbers[i] = numbers.back();
            numbers.pop_back();
        }
    }
}

/// Moves to a child, or back to the parent.
void Program::Walk() {
    const ExpectedEntry* entry = at_->Find(Key());
    if (entry != nullptr && entry->child != nullptr) {
        at_ = entry->child.get();
    } else if (at_->parent != nullptr) {
        at_ = at_->parent;
    }
}

void Program::CheckTable() {
    ITable& table = *at_->table;
    const EntryStore& store = static_cast<Table&>(table).Entries();
    Require(ValidateTable(&table) == at_->validity, "a live table isn't known as one");
    Require(table.GetElementCount() == at_->entries.size() && table.GetArrayCount() == at_->items.size(),
            "another count");
    Require(table.GetCount() == (at_->has_array ? at_->items.size() : at_->entries.size()), "another count of both");
    Require(store.IsValid() && store.Capacity() == at_->capacity, "another index, or another capacity");
    IIterator* walked = table.First();
    for (const ExpectedEntry& entry : at_->entries) {
        Require(walked != nullptr && walked == entry.address && entry.key == walked->GetKey(), "another order");
        if (at_->entries.size() <= 40) CheckEntry(entry); // of more, their order is what matters
        walked = table.Next(&walked);
    }
    Require(walked == nullptr, "an entry too many");
    for (std::uint32_t i = 0; i < at_->items.size(); ++i) {
        const void* item = table.GetArrayItem(i);
        Require(item != nullptr, "an item isn't there");
        Require(std::memcmp(item, at_->items[i].data(), at_->items[i].size()) == 0, "an item is another");
    }
    Require(table.GetArrayItem(static_cast<std::uint32_t>(at_->items.size())) == nullptr, "an item too many");
}

template <class Vector>
void CheckVector(const Model& at, const ExpectedEntry& entry, const Words& words,
                 std::uint32_t (ITable::*get)(const char*, Vector*),
                 std::uint32_t (IIterator::*get_of_entry)(Vector*)) {
    Vector one{}, other{};
    Require((at.table->*get)(entry.key, &one) == 1 && (entry.address->*get_of_entry)(&other) == 1, "no vector");
    Require(std::memcmp(&one, words.data(), sizeof one) == 0 && std::memcmp(&other, words.data(), sizeof other) == 0,
            "another vector");
}

/// Compares what each getter reads with the value, or with its first words, whatever the kind.
void Program::CheckEntry(const ExpectedEntry& entry) const {
    ITable& table = *at_->table;
    IIterator& pair = *entry.address;
    const cstr key = entry.key;
    Require(pair.GetType() == entry.kind, "another kind");
    Words words = entry.words;
    if (entry.kind == VALUE_FLOAT4X4) {
        CheckVector(*at_, entry, words, &ITable::GetFloat4x4, &IIterator::GetFloat4x4);
        pair.GetFloat4(reinterpret_cast<Float4*>(words.data())); // where it is, which is the library's own matter
    } else {
        Float4x4 none;
        Require(table.GetFloat4x4(key, &none) + pair.GetFloat4x4(&none) == 0, "another kind reads as a matrix");
    }
    words.resize(4);
    CheckVector(*at_, entry, words, &ITable::GetFloat2, &IIterator::GetFloat2);
    CheckVector(*at_, entry, words, &ITable::GetFloat3, &IIterator::GetFloat3);
    CheckVector(*at_, entry, words, &ITable::GetFloat4, &IIterator::GetFloat4);

    const auto integer = static_cast<std::int32_t>(words[0]);
    Require(table.GetInteger(key) == integer && table.GetInteger(key, 7) == integer && pair.GetInteger() == integer,
            "another integer");
    Require(table.GetHandle(key) == words[0] && pair.GetHandle() == words[0], "another handle");
    const auto same = [](float one, float other) { return one == other || (std::isnan(one) && std::isnan(other)); };
    const auto real = From<float>(words.data());
    Require(same(table.GetReal(key, 7), real) && same(pair.GetReal(), real), "another real");
    Require(same(table.GetReal(key), entry.kind == VALUE_INTEGER ? static_cast<float>(integer) : real),
            "an integer isn't converted, or something else is");

    void* pointer = From<void*>(words.data());
    const auto if_kind = [&](std::uint32_t first, std::uint32_t last) {
        return entry.kind >= first && entry.kind <= last ? pointer : nullptr;
    };
    void* child = if_kind(VALUE_TABLE, VALUE_REFERENCE_TABLE);
    Require(table.GetTable(key) == child && table.FindTable(key) == child && pair.GetTable() == child, "another table");
    void* stored = if_kind(VALUE_PTR, VALUE_PTR);
    Require(table.GetPtr(key) == stored && pair.GetPtr() == stored, "another pointer");
    Require(pair.GetString() == if_kind(VALUE_STRING, VALUE_STRING), "another string");
    if (entry.kind == VALUE_STRING) {
        Require(table.GetString(key) == pointer && table.GetString(key, "fallback") == pointer, "another string");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    Program(source).Run();
    return 0;
}
