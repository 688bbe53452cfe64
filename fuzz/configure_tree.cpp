// How a configuration tree is read through the interfaces, with every way to ask for a value compared with the others,
// and how loads and saves are compared with the model.

#include "fuzz/configure_tree.h"

#include "fuzz/check.h"
#include "fuzz/configure_model.h"

#include <functional>
#include <map>
#include <utility>

namespace Fuzz {
namespace {

using namespace Configure;

/// A Unit's tests depend on its kind, and its getters on whether it has a text, whatever that text is.
void CheckUnit(IIterator& unit) {
    const bool is_scalar = unit.GetType() == KIND_STRING;
    const bool is_text = is_scalar && unit.GetString() != nullptr;
    const bool tests[] = {unit.IsInteger(), unit.IsFloat(), unit.IsString(), unit.IsBool()};
    for (const bool test : tests) Require(test == is_scalar, "a test of a scalar is wrong");
    Require(unit.IsArray() == (unit.GetArray() != nullptr), "an array isn't handed out");
    Require(unit.IsTable() == (unit.GetTable() != nullptr), "a table isn't handed out");
    Require(unit.IsInterval() == (is_text && Interval::CanToInterval(unit.GetString()) != 0), "a test of an interval");
    const bool is_zero = unit.GetInteger() == 0 && unit.GetFloat() == 0 && !unit.GetBool();
    Require(unit.GetInterval().flags < 16, "an interval has other marks");
    if (!is_text) Require(is_zero, "what has no text has a value");
}

Node NodeOf(IIterator& unit);

template <class Container>
std::vector<Node> UnitsOf(Container& container) {
    std::vector<Node> units;
    for (IIterator* unit = container.Begin(); unit != container.End(); unit = container.Next(unit)) {
        units.push_back(NodeOf(*unit));
    }
    Require(units.size() == container.GetCount(), "the walk has another number of Units than the count");
    return units;
}

Node NodeOf(IIterator& unit) {
    CheckUnit(unit);
    Node node{unit.GetType(), std::nullopt, std::nullopt, {}};
    if (unit.GetKey() != nullptr) node.key = unit.GetKey();
    if (unit.GetString() != nullptr) node.text = unit.GetString();
    if (IArray* array = unit.GetArray()) {
        Require(array->GetName() == unit.GetKey(), "an array has another name");
        node.units = UnitsOf(*array);
    } else if (ITable* table = unit.GetTable()) {
        Require(table->GetName() == unit.GetKey(), "a table has another name");
        node.units = TreeOf(*table).units;
    } else {
        Require(unit.IsString(), "a Unit has no kind");
    }
    return node;
}

/// Find and the getters find a key in upper and in lower case.
void CheckSearch(ITable& table) {
    std::map<std::string, IIterator*> firsts;
    for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
        const cstr key = unit->GetKey();
        Require(key == cstr_find(key), "a key isn't interned");
        Require(cstr_tolower(key) == key, "a key isn't in lower case");
        std::string upper = key;
        for (char& byte : upper) byte = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
        IIterator* found = table.Find(upper.c_str());
        // The empty text finds nothing, even if there is such a key.
        IIterator* first = upper.empty() ? nullptr : firsts.try_emplace(key, unit).first->second;
        Require(found == first, "what is found isn't the first of its key");
        if (found == nullptr) continue;
        Require(table.GetString(key) == found->GetString(), "a getter reads something else");
        Require(table.GetTable(key) == found->GetTable(), "a getter has another table");
        Require(table.GetArray(key) == found->GetArray(), "a getter has another array");
    }
}

void CheckDefaults(ITable& table, ITable* fallback);

IIterator* Begin(ITable* table) { return table == nullptr ? nullptr : table->Begin(); }
IIterator* End(ITable* table) { return table == nullptr ? nullptr : table->End(); }

/// Tables in an array have no default.
template <class Container>
void CheckChildren(Container& container, ITable* their_default) {
    for (IIterator* unit = container.Begin(); unit != container.End(); unit = container.Next(unit)) {
        if (ITable* table = unit->GetTable()) CheckDefaults(*table, their_default);
        if (IArray* array = unit->GetArray()) CheckChildren(*array, nullptr);
    }
}

/// Getters find in a table's default table what the table itself doesn't have; a default table is one named `_default`.
/// fallback  the default of `table`; null for a root
void CheckDefaults(ITable& table, ITable* fallback) {
    for (IIterator* unit = Begin(fallback); unit != End(fallback); unit = fallback->Next(unit)) {
        const cstr key = unit->GetKey();
        if (*key == '\0') continue; // the empty text finds nothing
        IIterator* own = table.Find(key);
        IIterator* found = own != nullptr ? own : fallback->Find(key);
        Require(table.GetString(key) == found->GetString(), "a getter returns another text than the default has");
        Require(table.GetTable(key) == found->GetTable(), "a getter has another default's table");
        Require(table.GetArray(key) == found->GetArray(), "a getter has another default's array");
    }
    IIterator* own = table.Find("_default");
    IIterator* inherited = own != nullptr || fallback == nullptr ? own : fallback->Find("_default");
    CheckChildren(table, inherited == nullptr ? nullptr : inherited->GetTable());
}

/// Without the one number of a binary form that also counts entries which the form doesn't keep.
std::optional<std::string> WithoutUnitCount(std::optional<std::string> binary) {
    if (binary) binary->replace(16, 4, 4, '\0');
    return binary;
}

/// The addresses of keys order the Units of a table that is loaded for reading.
void CheckOrder(ITable& table) {
    for (IIterator *unit = table.Begin(), *next; unit != table.End(); unit = next) {
        next = table.Next(unit);
        const bool in_order = next == table.End() || !std::less<>()(next->GetKey(), unit->GetKey());
        Require(in_order, "a text's Units aren't in the order of their keys' addresses");
    }
}

/// The tree with the Units of each table by their keys; those of one key stay in order.
Node ByKey(const Node& tree) {
    Node sorted{tree.kind, tree.key, tree.text, {}};
    std::multimap<std::string, Node> units;
    for (const Node& unit : tree.units) units.emplace(unit.key.value_or(""), ByKey(unit));
    for (auto& [key, unit] : units) sorted.units.push_back(std::move(unit));
    return sorted;
}

void CheckCompiled(LoadedFile& file) {
    const std::optional<Node> expected = Compiled(TreeOf(*file.Root()));
    const std::optional<std::string> binary = file.Saved(FORMAT_BINARY);
    Require(binary.has_value() == expected.has_value(), "the binary form is wrongly refused, or wrongly written");
    if (!binary) return;
    LoadedFile compiled;
    ITable* root = compiled.Load(*binary, ACCESS_READ, FORMAT_AUTO);
    Require(root != nullptr, "a binary save doesn't load");
    CheckDefaults(*root, nullptr);
    Require(TreeOf(*root) == *expected, "a binary save reads back as something else");
    Require(WithoutUnitCount(compiled.Saved(FORMAT_BINARY)) == WithoutUnitCount(binary),
            "a binary form, saved again, isn't the same");
}

void CheckWritten(LoadedFile& file) {
    std::string expected;
    const bool fits = AppendText(TreeOf(*file.Root()), 0, expected);
    const std::optional<std::string> text = file.Saved(FORMAT_TEXT);
    Require(text == (fits ? std::optional(expected) : std::nullopt), "the text form is written in another way");
    LoadedFile reading, editing;
    if (text) CheckText(*text, reading, editing);
}

} // namespace

Node TreeOf(ITable& table) {
    CheckSearch(table);
    return {KIND_TABLE, std::nullopt, std::nullopt, UnitsOf(table)};
}

std::string LowerCase(std::string text) {
    for (char& byte : text) byte = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
    return text;
}

std::string PathForm(const std::string& text) {
    std::string path;
    for (const char byte : LowerCase(text)) {
        const bool separates = byte == '/' || byte == '\\';
        if (path.size() == 255) break;
        if (!separates || path.empty() || path.back() != '\\') path += separates ? '\\' : byte;
    }
    return path;
}

LoadedFile::~LoadedFile() { Require(files_.handles == 0, "a file stays open"); }

ITable* LoadedFile::Load(std::string_view bytes, std::uint32_t access, std::uint32_t format) {
    files_["file"] = bytes;
    return file_->Load("file", access, format);
}

std::optional<std::string> LoadedFile::Saved(std::uint32_t format) {
    if (!file_->SaveAs("saved", format)) return std::nullopt;
    return files_["saved"];
}

void CheckText(std::string_view text, LoadedFile& reading, LoadedFile& editing) {
    const std::optional<Node> expected = TextModel(text).Tree();
    ITable* edited = editing.Load(text, ACCESS_EDIT, FORMAT_TEXT);
    ITable* read = reading.Load(text, ACCESS_READ, FORMAT_TEXT);
    Require((edited != nullptr) == expected.has_value(), "a text is wrongly refused, or wrongly loaded for editing");
    Require((read != nullptr) == expected.has_value(), "a text is wrongly refused, or wrongly loaded for reading");
    if (!expected) return;
    Require(TreeOf(*edited) == *expected, "a text is loaded for editing as another tree");
    Require(ByKey(TreeOf(*read)) == ByKey(*expected), "a text is loaded for reading as another tree");
    CheckOrder(*read);
    CheckDefaults(*read, nullptr);
    CheckDefaults(*edited, nullptr);
}

void CheckSaves(LoadedFile& file) {
    CheckCompiled(file);
    CheckWritten(file);
}

} // namespace Fuzz
