// One pass blanks the comments with NULs, which are separators like any other; a second one reads keys and values in
// turn and stores each as it comes. Nothing is copied: keys and values are runs of bytes of the text. The blocks that
// are open stand on a stack of their own, and their tables are put into order as they are closed.
//
// The form is forgiving by construction. What a byte means depends on whether a key or a value is being looked for:
//
//                        key                                value
//   white space = 0 FF   before it: skipped; ends it        before it: skipped; ends a bare one
//   {                    before it: skipped; ends it        is the value, whatever stood before
//   }                    closes the block, dropping it      before it: skipped; ends a bare one
//   [ ( "                part of it                         [ ( are the value; " is if nothing stood before

#include "documents/readable_load.h"

#include "files/whole_file.h"
#include "memory/list.h"
#include "platform/nearest_rounding.h"
#include "platform/number_text.h"
#include "strings/string_table.h"
#include "tables/table.h"
#include "tables/table_factory.h"
#include "tessarin/documents.h"

#include <array>
#include <cstring>

namespace Tessarin {
namespace {

/// A run of bytes of the text.
struct Run {
    const char* first;
    const char* last;

    [[nodiscard]] std::size_t Length() const { return static_cast<std::size_t>(last - first); }
    [[nodiscard]] const char* Find(char byte) const {
        return static_cast<const char*>(std::memchr(first, byte, Length()));
    }
};

/// Interns a value; a comment that was blanked inside a quoted text ends it, as any NUL ends a text.
cstr Interned(Run run) {
    const char* end = run.Find('\0');
    return string_table->Intern(run.first, end == nullptr ? run.Length() : Run{run.first, end}.Length());
}

enum Delimiter : unsigned char { kOfKey = 1, kOfValue = 2 };

constexpr auto kDelimiters = [] {
    std::array<unsigned char, 256> table{};
    constexpr unsigned char kSeparators[] = {0x00, '\t', '\n', '\r', ' ', '=', 0xFF};
    for (unsigned char separator : kSeparators) table[separator] = static_cast<unsigned char>(kOfKey | kOfValue);
    table['{'] = kOfKey;
    table['}'] = kOfValue;
    return table;
}();

bool Delimits(char byte, Delimiter what) { return (kDelimiters[static_cast<unsigned char>(byte)] & what) != 0; }

/// Overwrites comments with NULs, in quotes too: `--[[` up to and including the next `--`, any other `--` up to the
/// line's end.
void BlankComments(char* text, std::size_t size) {
    char* end = text + size;
    char* at = text;
    while ((at = static_cast<char*>(std::memchr(at, '-', static_cast<std::size_t>(end - at)))) != nullptr) {
        if (at + 1 == end || at[1] != '-') {
            ++at;
            continue;
        }
        char* stop = at + 2;
        if (end - at > 3 && at[2] == '[' && at[3] == '[') {
            stop = at + 4;
            while (stop + 1 < end && (stop[0] != '-' || stop[1] != '-')) ++stop;
            stop = stop + 1 < end ? stop + 2 : end;
        } else {
            while (stop < end && *stop != '\r' && *stop != '\n') ++stop;
        }
        std::memset(at, 0, static_cast<std::size_t>(stop - at));
        at = stop;
    }
}

class ReadableReader {
public:
    ReadableReader(const char* first, const char* last) : position_(first), end_(last) {}

    bool Read(Table& root) {
        if (!open_.Push(&root)) return false;
        bool filled = ReadBlocks();
        while (filled && !open_.IsEmpty()) CloseBlock(); // a missing brace is no fault
        return filled;
    }

private:
    enum class Key { kFound, kBlockEnds, kTextEnds };
    enum class Number { kNone, kInteger, kReal };

    bool ReadBlocks();
    Key ScanKey(Run& key);
    bool ScanValue(Run& value);
    bool StoreValue(cstr key, Run value);
    bool OpenBlock(cstr key);
    void CloseBlock();
    template <class Vector>
    void StoreVector(cstr key, ValueKind kind, Run value, char closing, std::uint32_t (Pair::*store)(const Vector*));
    void StoreScalar(cstr key, Run value);
    void StoreString(cstr key, Run text);
    Pair* EntryFor(cstr key);
    static Number Classify(Run value);

    const char* position_;
    const char* end_;
    List<Table*> open_; // the table being filled on top, those around it below
};

bool ReadableReader::ReadBlocks() {
    for (;;) {
        Run key{};
        Run value{};
        Key found = ScanKey(key);
        if (found == Key::kTextEnds) return true;
        if (found == Key::kBlockEnds) {
            CloseBlock();
            if (open_.IsEmpty()) return true; // a brace too many ends the document
            continue;
        }
        cstr name = string_table->Intern(key.first, key.Length());
        if (!ScanValue(value) || !StoreValue(name, value)) return false;
    }
}

ReadableReader::Key ReadableReader::ScanKey(Run& key) {
    const char* at = position_;
    while (at != end_ && Delimits(*at, kOfKey)) ++at;
    key.first = at;
    while (at != end_ && *at != '}' && !Delimits(*at, kOfKey)) ++at;
    key.last = at;
    position_ = at;
    if (at == end_) return Key::kTextEnds;
    if (*at != '}') return Key::kFound;
    ++position_;
    return Key::kBlockEnds;
}

/// Finds a value and moves behind it; for a block, onto its brace. False if the text ends first.
bool ReadableReader::ScanValue(Run& value) {
    const char* at = position_;
    while (at != end_ && Delimits(*at, kOfValue)) ++at;
    value.first = at;
    if (at != end_ && *at == '"') {
        const char* closing = Run{at + 1, end_}.Find('"');
        if (closing == nullptr) return false;
        position_ = value.last = closing + 1;
        return true;
    }
    while (at != end_ && !Delimits(*at, kOfValue) && *at != '{' && *at != '[' && *at != '(') ++at;
    if (at == end_) return false;
    value.last = at;
    if (*at == '{') {
        value = {at, at};
    } else if (*at == '[' || *at == '(') {
        const char* closing = Run{at, end_}.Find(*at == '[' ? ']' : ')');
        value = {at, closing == nullptr ? end_ : closing + 1};
    }
    position_ = value.last;
    return true;
}

bool ReadableReader::StoreValue(cstr key, Run value) {
    switch (*value.first) {
    case '{':
        return OpenBlock(key);
    case '[':
        StoreVector(key, VALUE_FLOAT3, value, ']', &Pair::SetFloat3);
        return true;
    case '(':
        StoreVector(key, VALUE_FLOAT4, value, ')', &Pair::SetFloat4);
        return true;
    default:
        StoreScalar(key, value);
        return true;
    }
}

/// The entry to put a value in, old or new; null without a key, or without memory.
Pair* ReadableReader::EntryFor(cstr key) {
    bool existed = false;
    return open_.Top()->Entries().FindOrAppend(key, existed);
}

/// Attaches a table for the block at hand; its braces are read as the block's own.
bool ReadableReader::OpenBlock(cstr key) {
    Pair* pair = EntryFor(key);
    if (pair == nullptr || pair->kind != VALUE_EMPTY) return false;
    Table* child = MakeTableWithRoom(); // never registered: hosts can't validate it
    if (child == nullptr) return false;
    pair->Set(child);
    return open_.Push(child);
}

void ReadableReader::CloseBlock() {
    open_.Top()->Entries().FinishBulkLoad();
    open_.Pop();
}

/// Stores as many components as the kind has, 0 for those that are missing. An entry of another kind stays as it is.
template <class Vector>
void ReadableReader::StoreVector(cstr key, ValueKind kind, Run value, char closing,
                                 std::uint32_t (Pair::*store)(const Vector*)) {
    constexpr std::size_t kCount = sizeof(Vector) / sizeof(float);
    float components[kCount] = {};
    Run rest{value.first + 1, value.last};
    for (std::size_t i = 0; i < kCount && rest.first != nullptr; ++i) {
        const char* stop = rest.Find(i + 1 < kCount ? ',' : closing);
        components[i] = static_cast<float>(TextToReal(rest.first, stop == nullptr ? rest.last : stop));
        rest.first = stop == nullptr ? nullptr : stop + 1;
    }
    Vector vector;
    std::memcpy(&vector, components, sizeof vector);
    Pair* pair = EntryFor(key);
    if (pair == nullptr || (pair->kind != VALUE_EMPTY && pair->kind != kind)) return;
    if (pair->kind == VALUE_EMPTY || !pair->SameVector(vector)) (pair->*store)(&vector);
}

/// A scalar overwrites whatever the entry held.
void ReadableReader::StoreScalar(cstr key, Run value) {
    if (value.Length() >= 2 && *value.first == '"' && value.last[-1] == '"') {
        StoreString(key, {value.first + 1, value.last - 1});
        return;
    }
    Number number = Classify(value);
    if (number == Number::kNone) {
        StoreString(key, value);
        return;
    }
    Pair* pair = EntryFor(key);
    if (pair == nullptr) return;
    if (number == Number::kReal) {
        pair->SetReal(static_cast<float>(TextToReal(value.first, value.last)));
    } else {
        pair->SetInteger(TextToInteger(value.first, value.last));
    }
}

/// A text that can't be interned is not stored.
void ReadableReader::StoreString(cstr key, Run text) {
    Pair* pair = EntryFor(key);
    if (pair == nullptr) return;
    if (cstr interned = Interned(text)) pair->SetString(interned);
}

/// Digits, a `-` in front and at most one `.`, which makes a real.
ReadableReader::Number ReadableReader::Classify(Run value) {
    Number number = Number::kInteger;
    for (const char* at = value.first; at != value.last; ++at) {
        if (*at >= '0' && *at <= '9') continue;
        if (*at == '-' && at == value.first) continue;
        if (*at != '.' || number == Number::kReal) return Number::kNone;
        number = Number::kReal;
    }
    return number;
}

} // namespace

bool ReadReadable(Table& root, char* text, std::uint32_t size) {
    const NearestRounding rounding;
    BlankComments(text, size);
    return ReadableReader(text, text + size + 1).Read(root);
}

} // namespace Tessarin

Tessarin::ITable* OpenTableReadableFile(const char* path) {
    using namespace Tessarin;
    WholeFile file;
    Table* table = file.Read(path, 2) ? MakeTable() : nullptr;
    const bool filled = table != nullptr && ReadReadable(*table, file.bytes.get(), file.size);
    file.bytes.reset();
    return FinishRoot(table, filled);
}
