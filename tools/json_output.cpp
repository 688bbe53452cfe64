// The JSON writer. `open` holds the containers around the current row, one per level; a row closes all containers that
// aren't around it.

#include "tools/json_output.h"

#include "tools/terminal_text.h"

#include <rapidjson/filewritestream.h>
#include <rapidjson/writer.h>

namespace Command {

namespace {

using JsonStream = rapidjson::FileWriteStream;
using JsonWriter = rapidjson::Writer<JsonStream>;

void WriteText(JsonWriter& writer, const std::string& text) {
    const std::string valid = ToUtf8(text);
    writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

void BeginRow(JsonWriter& writer, const Row& row) {
    if (row.depth > 0 && !row.is_in_array) WriteText(writer, row.key);
    switch (row.shape) {
    case Shape::Text:
        WriteText(writer, row.value);
        break;
    case Shape::Literal:
        writer.RawValue(row.value.data(), row.value.size(), rapidjson::kNumberType);
        break;
    case Shape::Table:
        writer.StartObject();
        break;
    case Shape::Array:
        writer.StartArray();
        break;
    }
}

void EndContainer(JsonWriter& writer, Shape shape) { shape == Shape::Table ? writer.EndObject() : writer.EndArray(); }

} // namespace

void WriteJson(const RowList& rows, std::FILE* out) {
    char buffer[1 << 14];
    JsonStream stream(out, buffer, sizeof buffer);
    JsonWriter writer(stream);
    std::vector<Shape> open;
    for (const Row& row : rows) {
        for (; open.size() > row.depth; open.pop_back()) EndContainer(writer, open.back());
        BeginRow(writer, row);
        if (IsContainer(row)) open.push_back(row.shape);
    }
    for (; !open.empty(); open.pop_back()) EndContainer(writer, open.back());
    stream.Put('\n');
    stream.Flush();
}

} // namespace Command
