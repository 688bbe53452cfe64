// Loads a readable text into a table: each event of the parser, which has decided the kind of each value (Classify in
// readable_parser.cpp), is stored at once. The tables of the open blocks are on
// a stack that is allocated on the heap; when a block ends, FinishBulkLoad puts its table in order.

#include "documents/readable_parser.h"
#include "files/whole_file.h"
#include "memory/list.h"
#include "platform/float_environment.h"
#include "platform/number_text.h"
#include "strings/string_table.h"
#include "tables/table.h"
#include "tables/table_factory.h"
#include "tessarin/documents.h"

#include <cstring>

namespace Tessarin {
namespace {

cstr Interned(std::string_view text) { return string_table->Intern(text.data(), text.size()); }

float ToFloat(std::string_view number) {
    return static_cast<float>(TextToReal(number.data(), number.data() + number.size()));
}

class ReadableLoader {
public:
    explicit ReadableLoader(ReadableParser& parser) : parser_(parser) {}

    /// Fills a table from the text.
    /// returns  false if the text is wrong, a block's key has a value already, or memory ran out for a block; the table
    ///          then holds what was read so far, and the caller must destroy it
    bool Load(Table& root) {
        if (!open_.Push(&root)) return false;
        ReadableEvent event;
        while (parser_.Next(event)) {
            if (!Store(event)) return false;
        }
        if (parser_.Failure().error == ReadableError::kNone) return true;
        static_cast<void>(Interned(event.key)); // a key is a text of the process even if its value is missing
        return false;
    }

private:
    bool Store(const ReadableEvent& event);
    void StoreEntry(cstr key, const ReadableEvent& event);
    bool OpenBlock(cstr key);
    void CloseBlock();
    template <class Vector>
    void StoreVector(cstr key, ValueKind kind, std::string_view value, std::uint32_t (Pair::*store)(const Vector*));
    void StoreString(cstr key, std::string_view text);
    Pair* EntryFor(cstr key);

    ReadableParser& parser_;
    List<Table*> open_; // the table being filled on top, those around it below
};

bool ReadableLoader::Store(const ReadableEvent& event) {
    if (event.kind == ReadableKind::kBlockEnd || event.kind == ReadableKind::kTextEnd) {
        CloseBlock();
        return true;
    }
    const cstr key = Interned(event.key);
    if (event.kind == ReadableKind::kBlock) return OpenBlock(key);
    StoreEntry(key, event);
    return true;
}

/// A scalar overwrites any value that the entry had.
void ReadableLoader::StoreEntry(cstr key, const ReadableEvent& event) {
    switch (event.kind) {
    case ReadableKind::kVector3:
        StoreVector(key, VALUE_FLOAT3, event.value, &Pair::SetFloat3);
        return;
    case ReadableKind::kVector4:
        StoreVector(key, VALUE_FLOAT4, event.value, &Pair::SetFloat4);
        return;
    case ReadableKind::kQuoted:
        StoreString(key, QuotedText(event.value));
        return;
    case ReadableKind::kText:
        StoreString(key, event.value);
        return;
    default:
        break;
    }
    Pair* pair = EntryFor(key);
    if (pair == nullptr) return;
    if (event.kind == ReadableKind::kReal) {
        pair->SetReal(ToFloat(event.value));
    } else {
        pair->SetInteger(TextToInteger(event.value.data(), event.value.data() + event.value.size()));
    }
}

/// The entry in which to put a value, old or new; null if the key is null or memory runs out.
Pair* ReadableLoader::EntryFor(cstr key) {
    bool existed = false;
    return open_.Top()->Entries().FindOrAppend(key, existed);
}

/// Attaches a table for a block that begins.
bool ReadableLoader::OpenBlock(cstr key) {
    Pair* pair = EntryFor(key);
    if (pair == nullptr || pair->kind != VALUE_EMPTY) return false;
    Table* child = MakeTableWithRoom(); // never registered: hosts can't validate it
    if (child == nullptr) return false;
    pair->Set(child);
    return open_.Push(child);
}

void ReadableLoader::CloseBlock() {
    open_.Top()->Entries().FinishBulkLoad();
    open_.Pop();
}

/// Stores as many components as the kind has; missing ones are 0. An entry of another kind stays as it is.
template <class Vector>
void ReadableLoader::StoreVector(cstr key, ValueKind kind, std::string_view value,
                                 std::uint32_t (Pair::*store)(const Vector*)) {
    constexpr std::size_t kCount = sizeof(Vector) / sizeof(float);
    const char closing = value.front() == '[' ? ']' : ')';
    value.remove_prefix(1);
    float components[kCount] = {};
    for (std::size_t i = 0; i < kCount; ++i) {
        components[i] = ToFloat(TakeComponent(value, i + 1 < kCount ? ',' : closing));
    }
    Vector vector;
    std::memcpy(&vector, components, sizeof vector);
    Pair* pair = EntryFor(key);
    if (pair == nullptr || (pair->kind != VALUE_EMPTY && pair->kind != kind)) return;
    if (pair->kind == VALUE_EMPTY || !pair->SameVector(vector)) (pair->*store)(&vector);
}

/// A text that can't be interned is not stored.
void ReadableLoader::StoreString(cstr key, std::string_view text) {
    Pair* pair = EntryFor(key);
    if (pair == nullptr) return;
    if (const cstr interned = Interned(text)) pair->SetString(interned);
}

bool Load(Table& root, char* text, std::uint32_t size) {
    const DefaultFloatEnvironment environment;
    ReadableParser parser(text, size);
    return ReadableLoader(parser).Load(root);
}

} // namespace
} // namespace Tessarin

Tessarin::ITable* OpenTableReadableFile(const char* path) {
    using namespace Tessarin;
    WholeFile file;
    Table* table = file.Read(path, 1) ? MakeTable() : nullptr;
    const bool filled = table != nullptr && Load(*table, file.bytes.get(), file.size);
    file.bytes.reset();
    return FinishRoot(table, filled);
}
