// A document is parsed whole before the table sees anything of it, so that a fault at its end leaves nothing behind.
// Then its members go into the table in order, nested objects by a stack of their own.
//
// Members that share a key: strings and the three words store their own value. A number stores the value of the first
// member of its key, arrays and objects count only if they are that first one. Looking the first member up each time
// would cost the square of the object's size. It isn't needed: the entry itself holds what the first member stored,
// except where a word has since overwritten a number, and where the first member was an array that stored nothing.
// Those two are remembered in a map that an object gets when it first needs one.

#include "documents/json_load.h"

#include "containers/hash_map.h"
#include "core/library_state.h"
#include "core/table.h"
#include "core/table_lifecycle.h"
#include "documents/json_raw_strings.h"
#include "documents/walk_stack.h"
#include "documents/whole_file.h"
#include "tessarin/documents.h"

#include <cstring>

#include <rapidjson/document.h>

namespace Tessarin {
namespace {

using Pool = rapidjson::MemoryPoolAllocator<ThrowingAllocator>;
using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, ThrowingAllocator>;
using Value = Document::ValueType;

constexpr std::size_t kPoolChunk = std::size_t{64} * 1024;
constexpr std::size_t kParseStack = 1024;
constexpr unsigned kParseFlags =
    rapidjson::kParseInsituFlag | rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag;

/// What an object must remember of a key's first member beyond its entry.
struct FirstMember {
    std::uint32_t stored_nothing;
    std::int32_t integer; // otherwise: the value that a word has overwritten since
};

/// An object on its way into a table.
struct OpenObject {
    const Value::Member* next;
    const Value::Member* end;
    Table* table;
    hm* firsts; // by key, FirstMember values; null until needed
};

class JsonLoader {
public:
    JsonLoader() = default;
    ~JsonLoader() {
        while (open_.Depth() != 0) Close();
    }
    JsonLoader(const JsonLoader&) = delete;
    JsonLoader& operator=(const JsonLoader&) = delete;

    bool Load(Table& root, const Value& object) {
        if (!Open(root, object)) return false;
        while (open_.Depth() != 0) {
            OpenObject& top = open_.Top();
            if (top.next == top.end) {
                Close();
            } else if (!StoreMember(*top.next++)) {
                return false;
            }
        }
        return true;
    }

private:
    [[nodiscard]] bool Open(Table& table, const Value& object) {
        const Value::Member* members = object.MemberCount() == 0 ? nullptr : &*object.MemberBegin();
        return open_.Push({members, members + object.MemberCount(), &table, nullptr});
    }

    void Close() {
        OpenObject& top = open_.Top();
        top.table->Entries().Settle();
        if (top.firsts != nullptr) hm::Destroy(top.firsts);
        open_.Pop();
    }

    bool StoreMember(const Value::Member& member);
    bool StoreWord(cstr key, std::int32_t word);
    void StoreNumber(cstr key, const Value& number);
    bool StoreArray(cstr key, const Value& array);
    bool StoreObject(cstr key, const Value& object);
    void StoreString(cstr key, const Value& string);

    Pair* EntryFor(cstr key) {
        bool existed = false;
        return open_.Top().table->Entries().FindOrAppend(key, existed);
    }

    const FirstMember* Remembered(cstr key) {
        hm* firsts = open_.Top().firsts;
        return firsts == nullptr ? nullptr : static_cast<const FirstMember*>(firsts->Get(MapKey(key)));
    }

    bool StoredNothing(cstr key) {
        const FirstMember* first = Remembered(key);
        return first != nullptr && first->stored_nothing != 0;
    }

    /// False if memory ran out. Only the first call for a key has an effect.
    bool Remember(cstr key, FirstMember first) {
        hm*& firsts = open_.Top().firsts;
        if (firsts == nullptr) firsts = hm::Create(16, sizeof first);
        if (firsts == nullptr) return false;
        return Remembered(key) != nullptr || firsts->Set(MapKey(key), &first) != 0;
    }

    static std::uintptr_t MapKey(cstr key) { return reinterpret_cast<std::uintptr_t>(key); }

    WalkStack<OpenObject> open_;
};

/// A member that can't be stored is missing from the table; false only if the walk can't go on.
bool JsonLoader::StoreMember(const Value::Member& member) {
    if (member.name.GetStringLength() == 0) return true;
    cstr key = library_state.strings.Intern(member.name.GetString(), member.name.GetStringLength());
    if (key == nullptr) return true;
    switch (member.value.GetType()) {
    case rapidjson::kStringType:
        StoreString(key, member.value);
        return true;
    case rapidjson::kNumberType:
        StoreNumber(key, member.value);
        return true;
    case rapidjson::kObjectType:
        return StoreObject(key, member.value);
    case rapidjson::kArrayType:
        return StoreArray(key, member.value);
    default:
        return StoreWord(key, member.value.IsTrue() ? 1 : 0);
    }
}

void JsonLoader::StoreString(cstr key, const Value& string) {
    Pair* pair = EntryFor(key);
    if (pair == nullptr || (pair->kind != VALUE_EMPTY && pair->kind != VALUE_STRING)) return;
    cstr text = library_state.strings.Intern(string.GetString(), string.GetStringLength());
    if (text != nullptr) pair->SetString(text);
}

/// `null`, `false` or `true`.
bool JsonLoader::StoreWord(cstr key, std::int32_t word) {
    Pair* pair = EntryFor(key);
    if (pair == nullptr || (pair->kind != VALUE_EMPTY && pair->kind != VALUE_INTEGER)) return true;
    if (pair->kind == VALUE_INTEGER && !Remember(key, {0, pair->GetInteger()})) return false;
    pair->SetInteger(word);
    return true;
}

void JsonLoader::StoreNumber(cstr key, const Value& number) {
    const FirstMember* first = Remembered(key);
    if (first != nullptr && first->stored_nothing != 0) return;
    Pair* pair = EntryFor(key);
    if (pair == nullptr) return;
    if (pair->kind != VALUE_EMPTY) { // the first member's value is there, unless a word came in between
        if (first != nullptr) pair->SetInteger(first->integer);
    } else if (number.IsInt64()) {
        pair->SetInteger(static_cast<std::int32_t>(number.GetInt64()));
    } else if (number.IsUint64()) {
        pair->SetInteger(static_cast<std::int32_t>(number.GetUint64()));
    } else {
        pair->SetReal(static_cast<float>(number.GetDouble()));
    }
}

float Component(const Value& element) {
    if (element.IsNumber()) return static_cast<float>(element.GetDouble());
    return element.IsTrue() ? 1.0F : 0.0F;
}

template <class Vector>
void StoreElements(Pair& pair, const Value& array, std::uint32_t (Pair::*store)(const Vector*)) {
    float components[sizeof(Vector) / sizeof(float)];
    for (rapidjson::SizeType i = 0; i < array.Size(); ++i) components[i] = Component(array[i]);
    Vector vector;
    std::memcpy(&vector, components, sizeof vector);
    (pair.*store)(&vector);
}

/// Arrays of 2, 3, 4 and 16.
bool JsonLoader::StoreArray(cstr key, const Value& array) {
    if (StoredNothing(key)) return true;
    rapidjson::SizeType size = array.Size();
    bool has_kind = (size >= 2 && size <= 4) || size == 16;
    if (!has_kind) {
        bool first = open_.Top().table->Entries().Find(key) == nullptr;
        return !first || Remember(key, {1, 0});
    }
    Pair* pair = EntryFor(key);
    if (pair == nullptr || pair->kind != VALUE_EMPTY) return true;
    switch (size) {
    case 2:
        StoreElements(*pair, array, &Pair::SetFloat2);
        break;
    case 3:
        StoreElements(*pair, array, &Pair::SetFloat3);
        break;
    case 4:
        StoreElements(*pair, array, &Pair::SetFloat4);
        break;
    default:
        StoreElements(*pair, array, &Pair::SetFloat4x4);
    }
    return true;
}

bool JsonLoader::StoreObject(cstr key, const Value& object) {
    if (StoredNothing(key)) return true;
    Pair* pair = EntryFor(key);
    if (pair == nullptr || pair->kind != VALUE_EMPTY) return true;
    Table* child = MakeChild();
    if (child == nullptr) return true;
    pair->Set(child);
    return Open(*child, object);
}

bool ParseAndLoad(Table& root, char* text) {
    ThrowingAllocator heap;
    Pool pool(kPoolChunk, &heap);
    Document document(&pool, kParseStack, &heap);
    RawStringStream stream(text);
    document.ParseStream<kParseFlags>(stream);
    if (document.HasParseError() || !document.IsObject()) return true;
    return JsonLoader().Load(root, document);
}

Table* RootFromJson(char* text) {
    Table* table = text == nullptr ? nullptr : MakeTable();
    bool filled = table != nullptr && LoadJson(*table, text);
    std::free(text);
    return FinishRoot(table, filled);
}

} // namespace

bool LoadJson(Table& root, char* text) {
    try {
        return ParseAndLoad(root, text);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace Tessarin

Tessarin::ITable* OpenTableFile(const char* path) {
    return Tessarin::RootFromJson(Tessarin::ReadWholeFile(path, 1).bytes);
}

Tessarin::ITable* OpenTableBuffer(const void* data, std::uint32_t size) {
    if (data == nullptr || size == 0) return nullptr;
    auto* text = static_cast<char*>(std::malloc(std::size_t{size} + 1));
    if (text != nullptr) {
        std::memcpy(text, data, size);
        text[size] = '\0';
    }
    return Tessarin::RootFromJson(text);
}
