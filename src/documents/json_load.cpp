// Loads a JSON text into a table: everything that the parser finds is stored at once, without a document in between.
// Open objects are on a stack that is allocated on the heap; when an object ends, FinishBulkLoad puts its table in
// order. If the text is wrong, the table is emptied again; only the keys and strings that were interned until then
// stay. The marker that a save writes first (json_save.cpp) isn't checked: it is loaded as a string like any other.
//
// Members that share a key: strings and the words (`null`, `false` and `true`) store their own value. A number stores
// the value of its key's first member. Arrays and objects count only if they are the first member of their key. To
// search for the first member each time would take time proportional to the square of the object's size. It isn't
// necessary, because the entry itself holds the value of the first member, with two exceptions: a word has since
// overwritten a number, or the first member was an array that stored nothing. These two are remembered in a map, which
// an object gets when it first needs one.

#include "documents/json_parser.h"
#include "files/whole_file.h"
#include "memory/list.h"
#include "memory/pointer_map.h"
#include "strings/string_table.h"
#include "tables/table.h"
#include "tables/table_factory.h"
#include "tessarin/documents.h"

#include <cstring>
#include <new>

namespace Tessarin {
namespace {

/// What an object must remember of a key's first member, because the entry doesn't hold it.
struct FirstMember {
    std::uint32_t stored_nothing;
    std::int32_t integer; // if it stored something: its number, which a word has overwritten since
};

/// By key. Most objects need none, and in a nest each may need a small one.
using FirstMembers = PointerMap<FirstMember, OrSmall(8U, 2U)>;

/// An object that is being read into a table.
struct OpenObject {
    Table* table;
    FirstMembers* firsts; // owned; null until needed
};

/// The parser's handler. It stops the parser only if memory runs out.
class JsonLoader {
public:
    explicit JsonLoader(Table& root) : root_(root) {}
    ~JsonLoader() {
        for (; !open_.IsEmpty(); open_.Pop()) DropFirsts();
    }
    JsonLoader(const JsonLoader&) = delete;
    JsonLoader& operator=(const JsonLoader&) = delete;

    bool Null(const char*) { return Word(0); }
    bool Bool(bool value, const char*) { return Word(value ? 1 : 0); }
    bool Integer(std::int64_t value, double as_real, const char*);
    bool Real(double value, const char*);
    bool String(std::string_view text);
    bool Key(std::string_view text);
    bool BeginObject(const char*);
    bool EndObject(const char*);
    bool BeginArray(const char*);
    bool EndArray(const char*);

private:
    static constexpr std::uint32_t kMostElements = 16;

    /// Whether a value is to be stored under the key. If it is an element of an array, `as_element` is added to that
    /// array instead.
    bool IsMember(float as_element) {
        if (ignored_ != 0) return false;
        if (in_array_) AddElement(as_element);
        return !in_array_;
    }

    void AddElement(float element) {
        if (elements_ < kMostElements) element_[elements_] = element;
        ++elements_;
    }

    bool Word(std::int32_t word);
    Pair* EntryOfNumber();
    void StoreArray();
    template <class Vector>
    void StoreElements(Pair& pair, std::uint32_t (Pair::*store)(const Vector*));
    Table* ChildUnderKey();

    Pair* Entry() {
        bool existed = false;
        return open_.Top().table->Entries().FindOrAppend(key_, existed); // null if the key is null
    }

    bool Open(Table& table) { return open_.Push({&table, nullptr}); }

    const FirstMember* Remembered() {
        FirstMembers* firsts = open_.Top().firsts;
        return firsts == nullptr || key_ == nullptr ? nullptr : firsts->Find(key_);
    }

    bool FirstStoredNothing() {
        const FirstMember* first = Remembered();
        return first != nullptr && first->stored_nothing != 0;
    }

    /// Only the first call for a key has an effect.
    bool Remember(FirstMember first) {
        FirstMembers*& firsts = open_.Top().firsts;
        if (firsts == nullptr) firsts = new (std::nothrow) FirstMembers;
        FirstMembers::Slot* slot = firsts == nullptr ? nullptr : firsts->At(key_);
        if (slot == nullptr) return false;
        if (slot->key == nullptr) firsts->Take(*slot, key_, first);
        return true;
    }

    void DropFirsts() { delete open_.Top().firsts; }

    Table& root_;
    List<OpenObject> open_;
    cstr key_ = nullptr;        // the current member's; null if the member is to be dropped
    std::uint32_t ignored_ = 0; // how many open arrays and objects aren't stored
    bool in_array_ = false;     // true while the elements of a member's array are read
    std::uint32_t elements_ = 0;
    float element_[kMostElements];
};

/// `null`, `false` or `true`.
bool JsonLoader::Word(std::int32_t word) {
    if (!IsMember(static_cast<float>(word))) return true;
    Pair* pair = Entry();
    if (pair == nullptr || (pair->kind != VALUE_EMPTY && pair->kind != VALUE_INTEGER)) return true;
    if (pair->kind == VALUE_INTEGER && !Remember({0, pair->GetInteger()})) return false;
    pair->SetInteger(word);
    return true;
}

bool JsonLoader::Integer(std::int64_t value, double as_real, const char*) {
    if (!IsMember(static_cast<float>(as_real))) return true;
    if (Pair* pair = EntryOfNumber()) pair->SetInteger(static_cast<std::int32_t>(value));
    return true;
}

bool JsonLoader::Real(double value, const char*) {
    if (!IsMember(static_cast<float>(value))) return true;
    if (Pair* pair = EntryOfNumber()) pair->SetReal(static_cast<float>(value));
    return true;
}

/// The entry in which to store a number; null if the number doesn't count. In that case the value of its key's first
/// member is already in the entry, or is put back into it if a word has overwritten it.
Pair* JsonLoader::EntryOfNumber() {
    const FirstMember* first = Remembered();
    if (first != nullptr && first->stored_nothing != 0) return nullptr;
    Pair* pair = Entry();
    if (pair == nullptr || pair->kind == VALUE_EMPTY) return pair;
    if (first != nullptr) pair->SetInteger(first->integer);
    return nullptr;
}

bool JsonLoader::String(std::string_view text) {
    if (!IsMember(0.0F)) return true;
    Pair* pair = Entry();
    if (pair == nullptr || (pair->kind != VALUE_EMPTY && pair->kind != VALUE_STRING)) return true;
    const cstr interned = string_table->Intern(text.data(), text.size());
    if (interned != nullptr) pair->SetString(interned);
    return true;
}

bool JsonLoader::Key(std::string_view text) {
    if (ignored_ == 0) key_ = text.empty() ? nullptr : string_table->Intern(text.data(), text.size());
    return true;
}

bool JsonLoader::BeginObject(const char*) {
    if (open_.IsEmpty()) return Open(root_);
    if (!IsMember(0.0F)) {
        ++ignored_;
        return true;
    }
    Table* child = ChildUnderKey();
    if (child != nullptr) return Open(*child);
    ignored_ = 1;
    return true;
}

/// A new table, attached to the current entry; null if the member is dropped.
Table* JsonLoader::ChildUnderKey() {
    if (FirstStoredNothing()) return nullptr;
    Pair* pair = Entry();
    if (pair == nullptr || pair->kind != VALUE_EMPTY) return nullptr;
    Table* child = MakeChild();
    if (child != nullptr) pair->Set(child);
    return child;
}

bool JsonLoader::EndObject(const char*) {
    if (ignored_ != 0) {
        --ignored_;
        return true;
    }
    DropFirsts();
    open_.Top().table->Entries().FinishBulkLoad();
    open_.Pop();
    return true;
}

bool JsonLoader::BeginArray(const char*) {
    if (!IsMember(0.0F)) {
        ++ignored_;
        return true;
    }
    in_array_ = true;
    elements_ = 0;
    return true;
}

bool JsonLoader::EndArray(const char*) {
    if (ignored_ != 0) {
        --ignored_;
        return true;
    }
    in_array_ = false;
    if (key_ == nullptr || FirstStoredNothing()) return true;
    const bool storable = (elements_ >= 2 && elements_ <= 4) || elements_ == kMostElements;
    if (storable) {
        StoreArray();
        return true;
    }
    const bool first = open_.Top().table->Entries().Find(key_) == nullptr;
    return !first || Remember({1, 0});
}

/// Stores an array of 2, 3, 4 or 16 elements.
void JsonLoader::StoreArray() {
    Pair* pair = Entry();
    if (pair == nullptr || pair->kind != VALUE_EMPTY) return;
    switch (elements_) {
    case 2:
        StoreElements(*pair, &Pair::SetFloat2);
        break;
    case 3:
        StoreElements(*pair, &Pair::SetFloat3);
        break;
    case 4:
        StoreElements(*pair, &Pair::SetFloat4);
        break;
    default:
        StoreElements(*pair, &Pair::SetFloat4x4);
    }
}

template <class Vector>
void JsonLoader::StoreElements(Pair& pair, std::uint32_t (Pair::*store)(const Vector*)) {
    Vector vector;
    std::memcpy(&vector, element_, sizeof vector);
    (pair.*store)(&vector);
}

/// If the text isn't a valid document, the table is left empty and the result is true. False only if memory ran out.
bool Load(Table& root, const char* text) {
    JsonLoader loader(root);
    switch (ParseJson(text, loader).error) {
    case JsonError::kNone:
        return true;
    case JsonError::kStopped:
    case JsonError::kOutOfMemory:
        return false;
    default:
        DestroyEntries(root.Entries().TakeAll(nullptr));
        return true;
    }
}

ITable* RootFromJson(const char* text) {
    Table* table = MakeTable();
    return FinishRoot(table, table != nullptr && Load(*table, text));
}

} // namespace
} // namespace Tessarin

Tessarin::ITable* OpenTableFile(const char* path) {
    Tessarin::WholeFile file;
    return file.Read(path, 1) ? Tessarin::RootFromJson(file.bytes.get()) : nullptr;
}

Tessarin::ITable* OpenTableBuffer(const void* data, std::uint32_t size) {
    if (data == nullptr || size == 0) return nullptr;
    const Tessarin::HeapBytes text(static_cast<char*>(std::malloc(std::size_t{size} + 1)));
    if (text == nullptr) return nullptr;
    std::memcpy(text.get(), data, size);
    text[size] = '\0';
    return Tessarin::RootFromJson(text.get());
}
