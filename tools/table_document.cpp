// A document's form is recognised by its first character: JSON begins with a brace or with the slash of a comment; a
// readable text can't begin with either. JSON after a byte order mark is reported as broken JSON; read as readable text
// it would load, but as something else.

#include "tools/table_document.h"

#include "tools/failure.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

namespace Command {

namespace {

using Tessarin::IIterator;
using Tessarin::ITable;

std::string ReadWhole(const InputFile& input) {
    std::string text(static_cast<std::size_t>(input.Size()), '\0');
    std::FILE* const file = std::fopen(input.Path().c_str(), "rb");
    const bool is_read = file && std::fread(text.data(), 1, text.size(), file) == text.size();
    if (file) std::fclose(file);
    if (!is_read) throw Failure(input.Name(), "can't be read whole");
    return text;
}

// The line and column of an offset in a text, as a message shows them. Both count from 1; the column counts bytes.
std::string LineAndColumn(const std::string& text, std::size_t offset) {
    std::size_t line = 1, column = 1;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
        column = text[i] == '\n' ? 1 : column + 1;
        if (text[i] == '\n') ++line;
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// The library loads broken JSON as an empty table. So the text of an empty table is parsed again, for its error.
void CheckJson(const InputFile& input, const std::string& text) {
    rapidjson::StringStream stream(text.c_str());
    rapidjson::BaseReaderHandler<> ignore;
    rapidjson::Reader reader;
    const auto result = reader.Parse<rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag>(stream, ignore);
    if (!result) {
        throw Failure(input.Name(), "is broken JSON at " + LineAndColumn(text, result.Offset()) + ": " +
                                        rapidjson::GetParseError_En(result.Code()));
    }
}

// The shortest text that reads as the same number. JSON has no text for infinities and NaN, so these become null.
std::string FormatNumber(float value) {
    if (!std::isfinite(value)) return "null";
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

std::string FormatNumbers(const float* values, std::size_t count) {
    std::string list = "[";
    for (std::size_t i = 0; i < count; ++i) (list += i == 0 ? "" : ", ") += FormatNumber(values[i]);
    return list + ']';
}

void SetLiteral(Row& row, const char* kind, std::string value) {
    row.shape = Shape::Literal;
    row.kind = kind;
    row.value = std::move(value);
}

void FillRowOfVector(IIterator* entry, Row& row) {
    Float4x4 matrix{};
    if (entry->GetFloat4x4(&matrix) == 1) return SetLiteral(row, "float4x4", FormatNumbers(matrix.m, 16));
    Float4 vector{};
    entry->GetFloat4(&vector);
    const float values[] = {vector.x, vector.y, vector.z, vector.w};
    constexpr const char* kKinds[] = {"float2", "float3", "float4"};
    const std::size_t kind = entry->GetType() - Tessarin::VALUE_FLOAT2;
    SetLiteral(row, kKinds[kind], FormatNumbers(values, kind + 2));
}

void FillRow(IIterator* entry, Row& row) {
    switch (entry->GetType()) {
    case Tessarin::VALUE_STRING:
        if (!entry->GetString()) return SetLiteral(row, "string", "null");
        row.value = entry->GetString();
        return;
    case Tessarin::VALUE_TABLE:
        row.shape = Shape::Table;
        row.count = entry->GetTable()->GetElementCount();
        return;
    case Tessarin::VALUE_INTEGER:
        return SetLiteral(row, "integer", std::to_string(entry->GetInteger()));
    case Tessarin::VALUE_REAL:
        return SetLiteral(row, "real", FormatNumber(entry->GetReal()));
    case Tessarin::VALUE_EMPTY:
        return SetLiteral(row, "empty", "null");
    default:
        return FillRowOfVector(entry, row); // no document contains pointers, handles or foreign tables
    }
}

// A cursor over the entries of a table, for ListTree; a null table has no entries.
class Entries {
public:
    explicit Entries(ITable* table) : table_(table), entry_(table ? table->First() : nullptr) {}

    [[nodiscard]] bool IsEmpty() const { return entry_ == nullptr; }

    Entries Take(Row& row) {
        IIterator* const entry = entry_;
        entry_ = table_->Next(&entry_);
        row.key = entry->GetKey();
        FillRow(entry, row);
        return Entries(entry->GetType() == Tessarin::VALUE_TABLE ? entry->GetTable() : nullptr);
    }

private:
    ITable* table_;
    IIterator* entry_;
};

} // namespace

Table OpenTable(const InputFile& input) {
    const std::string text = ReadWhole(input);
    const std::size_t first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    const bool is_json = first != std::string::npos && (text[first] == '{' || text[first] == '/');
    Table table(is_json ? OpenTableFile(input.Path().c_str()) : OpenTableReadableFile(input.Path().c_str()));
    if (!table) throw Failure(input.Name(), "has a key without a value, an open quote, or a block under a key in use");
    if (is_json && table->GetElementCount() == 0) CheckJson(input, text);
    return table;
}

RowList ListEntry(ITable* root, const KeyPath& path, const std::string& key, std::size_t limit) {
    Row row;
    row.key = key;
    row.shape = Shape::Table;
    row.count = root->GetElementCount();
    ITable* table = root;
    for (const std::string& step : path) {
        IIterator* const entry = table ? table->Find(step.c_str()) : nullptr;
        if (!entry) return {};
        row = Row{};
        row.key = key;
        FillRow(entry, row);
        table = row.shape == Shape::Table ? entry->GetTable() : nullptr;
    }
    return ListTree(std::move(row), Entries(table), limit);
}

} // namespace Command
