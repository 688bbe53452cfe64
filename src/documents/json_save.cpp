// Writes a table as JSON text: one walk over the entries calls RapidJSON's writer directly, without a document in
// between. It uses the interfaces, because an external table may be of any class. The tables that the walk is inside of
// are on a stack that is allocated on the heap. Table::SaveFile and Table::SaveBuffer are defined here, so that
// src/tables doesn't depend on the form. Entries are written in the order of First and Next, which
// tables/entry_store.cpp decides.

#include "documents/throwing_allocator.h"
#include "files/file_objects.h"
#include "memory/list.h"
#include "platform/float_comparison.h"
#include "platform/float_environment.h"
#include "tables/table.h"

#include <bit>
#include <cstring>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Tessarin {
namespace {

using Text = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, ThrowingAllocator>;
using Writer = rapidjson::Writer<Text, rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator>;

constexpr char kMarkerKey[] = "__internal_type";
constexpr char kMarkerText[] = "qv game schema";
constexpr std::size_t kFirstBytes = 256;

class JsonSaver {
public:
    explicit JsonSaver(Text& text, ThrowingAllocator& heap) : text_(text), writer_(text, &heap) {}

    /// False if the table contains itself, or memory ran out for the walk.
    bool Save(ITable& root) {
        writer_.StartObject();
        writer_.Key(kMarkerKey, sizeof kMarkerKey - 1);
        writer_.String(kMarkerText, sizeof kMarkerText - 1);
        if (!Enter(root)) return false;
        for (;;) {
            if (IIterator* entry = current_.entry) {
                current_.entry = current_.table->Next(&current_.entry);
                __builtin_prefetch(current_.entry); // it is fetched while this one is written
                if (!Write(*entry)) return false;
                continue;
            }
            writer_.EndObject();
            if (outer_.Count() == 1) return true; // only the position outside of the root is left
            current_ = outer_.Pop();
        }
    }

private:
    /// The position of the walk in a table.
    struct Position {
        ITable* table;
        IIterator* entry; // the next one to write
    };

    /// Begins a table; false if the walk is found to be in a cycle. It is enough to compare with one table, the one
    /// whose depth is the highest power of two so far: a walk in a cycle reaches that table again, sooner or later.
    [[nodiscard]] bool Enter(ITable& table) {
        // Shared tables are written each time, so a text can get very long: the save fails as soon as it is too long.
        if (text_.GetSize() > UINT32_MAX || !outer_.Push(current_)) return false;
        const std::uint32_t depth = outer_.Count();
        if (outer_[std::bit_floor(depth) - 1].table == &table) return false;
        current_ = {&table, table.First()};
        return true;
    }

    bool Write(IIterator& entry) {
        const std::uint32_t kind = entry.GetType();
        if (kind == VALUE_EMPTY || kind == VALUE_PTR || kind >= VALUE_HANDLE) return true;
        WriteKey(entry.GetKey());
        switch (kind) {
        case VALUE_STRING:
            WriteString(entry.GetString());
            return true;
        case VALUE_INTEGER:
            writer_.Int(entry.GetInteger());
            return true;
        case VALUE_REAL:
            WriteReal(entry.GetReal());
            return true;
        case VALUE_FLOAT2:
            WriteArray<Float2>(entry, &IIterator::GetFloat2);
            return true;
        case VALUE_FLOAT3:
            WriteArray<Float3>(entry, &IIterator::GetFloat3);
            return true;
        case VALUE_FLOAT4:
            WriteArray<Float4>(entry, &IIterator::GetFloat4);
            return true;
        case VALUE_FLOAT4X4:
            WriteArray<Float4x4>(entry, &IIterator::GetFloat4x4);
            return true;
        default:
            return WriteTable(entry.GetTable());
        }
    }

    bool WriteTable(ITable* table) {
        if (table == nullptr) return writer_.Null();
        writer_.StartObject();
        return Enter(*table);
    }

    /// The texts of a host's own table may not be interned, so lengths are counted.
    void WriteKey(const char* key) { writer_.Key(key, static_cast<rapidjson::SizeType>(std::strlen(key))); }

    /// The form has no null string: null is written as an empty one.
    void WriteString(const char* text) {
        if (text == nullptr) text = "";
        writer_.String(text, static_cast<rapidjson::SizeType>(std::strlen(text)));
    }

    /// The form has no text for a real that isn't finite: `null` is written.
    void WriteReal(float real) {
        if (!IsFinite(real)) {
            writer_.Null();
            return;
        }
        const DefaultFloatEnvironment environment;
        const volatile float operand = real; // the widening of a float can depend on the environment, too
        writer_.Double(static_cast<double>(operand));
    }

    template <class Vector>
    void WriteArray(IIterator& entry, std::uint32_t (IIterator::*get)(Vector*)) {
        Vector vector{};
        (entry.*get)(&vector);
        float components[sizeof(Vector) / sizeof(float)];
        std::memcpy(components, &vector, sizeof vector);
        writer_.StartArray();
        for (const float component : components) WriteReal(component);
        writer_.EndArray();
    }

    Text& text_;
    Writer writer_;
    Position current_{nullptr, nullptr};
    List<Position> outer_; // in the tables that contain the current one; the first is outside of the root, in no table
};

/// Writes the document and passes its bytes to `deliver`; false if there is no document, or if `deliver` returns false.
template <class Deliver>
bool SaveJson(ITable& root, Deliver deliver) {
    try {
        ThrowingAllocator heap;
        Text text(&heap, kFirstBytes);
        if (!JsonSaver(text, heap).Save(root) || text.GetSize() > UINT32_MAX) return false;
        return deliver(text.GetString(), static_cast<std::uint32_t>(text.GetSize()));
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

std::uint32_t Table::SaveFile(const char* path) {
    if (path == nullptr || *path == '\0') return 0;
    const bool saved = SaveJson(*this, [path](const char* bytes, std::uint32_t size) {
        FileWriter* file = FileWriter::Open(path);
        if (file == nullptr) return false;
        const bool whole = file->Write(bytes, size) == size;
        return file->Finish() && whole; // a full disk may show only when the file is closed
    });
    return saved ? 1 : 0;
}

std::uint32_t Table::SaveBuffer(void** data, std::uint32_t* size) {
    if (data == nullptr || size == nullptr) return 0;
    *data = nullptr;
    *size = 0;
    const bool saved = SaveJson(*this, [data, size](const char* bytes, std::uint32_t length) {
        *size = length;
        *data = std::malloc(length);
        if (*data == nullptr) return false;
        std::memcpy(*data, bytes, length);
        return true;
    });
    return saved ? 1 : 0;
}

} // namespace Tessarin
