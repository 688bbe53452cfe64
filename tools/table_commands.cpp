// `tessarin table`. Which of the two forms a document has is told by what it begins with: a JSON document's first sign
// is a brace or a comment's slash, with which no readable text can begin. JSON behind a byte order mark is told to be
// broken; as a readable text it would be taken, for something else.

#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/files.h"

#include <tessarin/documents.h>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace Command {

namespace {

using Tessarin::IIterator;
using Tessarin::ITable;

struct TableCloser {
    void operator()(ITable* table) const { CloseTable(table); }
};
using Table = std::unique_ptr<ITable, TableCloser>;

// ------------------------------------------------------------------------------------------------------------- opening

std::string ReadWhole(const Input& input) {
    std::string text(static_cast<std::size_t>(input.Size()), '\0');
    std::FILE* const file = std::fopen(input.Path().c_str(), "rb");
    const bool is_read = file && std::fread(text.data(), 1, text.size(), file) == text.size();
    if (file) std::fclose(file);
    if (!is_read) throw Failure(input.Name(), "can't be read whole");
    return text;
}

// Where in a text something is, as people count.
std::string PlaceIn(const std::string& text, std::size_t offset) {
    std::size_t line = 1, column = 1;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
        column = text[i] == '\n' ? 1 : column + 1;
        if (text[i] == '\n') ++line;
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// A broken JSON text loads as an empty table, so an empty one is looked at again for what is wrong with it.
void CheckJson(const Input& input, const std::string& text) {
    rapidjson::StringStream stream(text.c_str());
    rapidjson::BaseReaderHandler<> ignore;
    rapidjson::Reader reader;
    const auto result = reader.Parse<rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag>(stream, ignore);
    if (!result) {
        throw Failure(input.Name(), "is broken JSON at " + PlaceIn(text, result.Offset()) + ": " +
                                        rapidjson::GetParseError_En(result.Code()));
    }
}

Table Open(const Input& input) {
    const std::string text = ReadWhole(input);
    const std::size_t first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    const bool is_json = first != std::string::npos && (text[first] == '{' || text[first] == '/');
    Table table(is_json ? OpenTableFile(input.Path().c_str()) : OpenTableReadableFile(input.Path().c_str()));
    if (!table) throw Failure(input.Name(), "has a key without a value, an open quote, or a block under a key in use");
    if (is_json && table->GetElementCount() == 0) CheckJson(input, text);
    return table;
}

// ------------------------------------------------------------------------------------------------------------- walking

// The shortest text that reads as the same number. JSON has none for those that aren't finite.
std::string Number(float value) {
    if (!std::isfinite(value)) return "null";
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

std::string Numbers(const float* values, std::size_t count) {
    std::string list = "[";
    for (std::size_t i = 0; i < count; ++i) (list += i == 0 ? "" : ", ") += Number(values[i]);
    return list + ']';
}

void DescribeNumbers(IIterator* entry, Row& row) {
    Float4x4 matrix{};
    Float4 words{};
    const std::size_t count = entry->GetType() - Tessarin::VALUE_FLOAT2 + 2;
    row.shape = Shape::Literal;
    if (entry->GetFloat4x4(&matrix) == 1) {
        row.kind = "float4x4";
        row.value = Numbers(matrix.m, 16);
    } else {
        entry->GetFloat4(&words);
        constexpr const char* kKinds[] = {"float2", "float3", "float4"};
        row.kind = kKinds[count - 2];
        const float values[] = {words.x, words.y, words.z, words.w};
        row.value = Numbers(values, count);
    }
}

void Literal(Row& row, const char* kind, std::string value) {
    row.shape = Shape::Literal;
    row.kind = kind;
    row.value = std::move(value);
}

void Describe(IIterator* entry, Row& row) {
    switch (entry->GetType()) {
    case Tessarin::VALUE_STRING:
        if (!entry->GetString()) return Literal(row, "string", "null");
        row.value = entry->GetString();
        return;
    case Tessarin::VALUE_TABLE:
        row.shape = Shape::Table;
        row.count = entry->GetTable()->GetElementCount();
        return;
    case Tessarin::VALUE_INTEGER:
        return Literal(row, "integer", std::to_string(entry->GetInteger()));
    case Tessarin::VALUE_REAL:
        return Literal(row, "real", Number(entry->GetReal()));
    case Tessarin::VALUE_EMPTY:
        return Literal(row, "empty", "null");
    default:
        return DescribeNumbers(entry, row); // no document makes pointers, handles or other people's tables
    }
}

// What is left of a table's entries, or of none.
class Entries {
public:
    explicit Entries(ITable* table) : table_(table), entry_(table ? table->First() : nullptr) {}

    [[nodiscard]] bool IsEmpty() const { return entry_ == nullptr; }

    Entries Take(Row& row) {
        IIterator* const entry = entry_;
        entry_ = table_->Next(&entry_);
        row.key = entry->GetKey();
        Describe(entry, row);
        return Entries(entry->GetType() == Tessarin::VALUE_TABLE ? entry->GetTable() : nullptr);
    }

private:
    ITable* table_;
    IIterator* entry_;
};

// The tree at a way; none if nothing stands there.
Outline OutlineOf(ITable* root, const KeyPath& way, const std::string& key, std::size_t limit) {
    Row row;
    row.key = key;
    row.shape = Shape::Table;
    row.count = root->GetElementCount();
    ITable* table = root;
    for (const std::string& piece : way) {
        IIterator* const entry = table ? table->Find(piece.c_str()) : nullptr;
        if (!entry) return {};
        row = Row{};
        row.key = key;
        Describe(entry, row);
        table = row.shape == Shape::Table ? entry->GetTable() : nullptr;
    }
    return MakeOutline(std::move(row), Entries(table), limit);
}

// ------------------------------------------------------------------------------------------------------------ commands

struct Arguments {
    std::string file;
    std::string way;
    std::string output = "-";
    Showing showing;
    Asking asking;
};

int ShowCommand(const Arguments& given) {
    const KeyPath way = ParseWay(given.way);
    const Input input(given.file);
    const Table table = Open(input);
    const Outline rows = OutlineOf(table.get(), way, way.empty() ? input.Name() : given.way, given.showing.depth);
    if (rows.empty()) throw Failure(input.Name(), "has no " + given.way);
    return Show(rows, given.showing);
}

int GetCommand(const Arguments& given) {
    const KeyPath way = ParseWay(given.way);
    const Input input(given.file);
    const Table table = Open(input);
    return Answer(input.Name(), given.way, OutlineOf(table.get(), way, "", kWhole), given.asking);
}

int JsonCommand(const Arguments& given) {
    const Input input(given.file);
    const Table table = Open(input);
    Draft draft(given.output);
    void* data = nullptr;
    std::uint32_t size = 0;
    if (table->SaveBuffer(&data, &size) == 0) throw Failure(input.Name(), "has no JSON, or memory ran out");
    const std::unique_ptr<void, decltype(&std::free)> block(data, &std::free);
    draft.Write({static_cast<const char*>(data), size});
    draft.Keep();
    return kDone;
}

using Run = int (*)(const Arguments&);

std::pair<CLI::App*, std::shared_ptr<Arguments>> Offer(CLI::App& group, Job& job, const char* name, const char* what,
                                                       Run run) {
    CLI::App* const command = group.add_subcommand(name, what);
    auto given = std::make_shared<Arguments>();
    command->add_option("FILE", given->file, "A readable text or a JSON document; - is standard input")->required();
    command->callback([&job, given, run] { job = [given, run] { return run(*given); }; });
    return {command, given};
}

} // namespace

void OfferTable(CLI::App& app, Job& job) {
    CLI::App* const group = app.add_subcommand("table", "Tables, from readable text or JSON");
    group->require_subcommand(1);
    const auto [show, shown] = Offer(*group, job, "show", "Draw a document's tree, or a part of it", ShowCommand);
    show->add_option("KEY", shown->way, "Keys with / between them; \"a/b\" is one key");
    OfferShowing(*show, shown->showing);
    const auto [get, asked] = Offer(*group, job, "get", "Print one value", GetCommand);
    get->add_option("KEY", asked->way, "Keys with / between them; \"a/b\" is one key")->required();
    OfferAsking(*get, asked->asking);
    const auto [json, written] = Offer(*group, job, "json", "Write a document as JSON", JsonCommand);
    json->add_option("OUT", written->output, "The JSON file; standard output without one");
}

} // namespace Command
