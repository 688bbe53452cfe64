// How a configuration tree is read through the interfaces, with every way to ask for a value compared with the others,
// and which trees each form keeps as they are.

#include "fuzz/configure_tree.h"

#include "fuzz/check.h"

#include <algorithm>
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
    static_cast<void>(unit.GetInteger());
    static_cast<void>(unit.GetFloat());
    static_cast<void>(unit.GetInterval());
    if (!is_text) Require(!unit.GetBool() && unit.GetInteger() == 0, "what has no text has a value");
}

Node NodeOf(IIterator& unit, bool in_file_order);

template <class Container>
std::vector<Node> UnitsOf(Container& container, bool in_file_order) {
    std::vector<Node> units;
    for (IIterator* unit = container.Begin(); unit != container.End(); unit = container.Next(unit)) {
        units.push_back(NodeOf(*unit, in_file_order));
    }
    Require(units.size() == container.GetCount(), "the walk has another number of Units than the count");
    return units;
}

Node NodeOf(IIterator& unit, bool in_file_order) {
    CheckUnit(unit);
    Node node{unit.GetType(), std::nullopt, std::nullopt, {}};
    if (unit.GetKey() != nullptr) node.key = unit.GetKey();
    switch (unit.GetType()) {
    case KIND_STRING:
        if (unit.GetString() != nullptr) node.text = unit.GetString();
        break;
    case KIND_ARRAY:
        Require(unit.GetArray()->GetName() == unit.GetKey(), "an array has another name");
        node.units = UnitsOf(*unit.GetArray(), in_file_order);
        break;
    default:
        Require(unit.IsTable(), "a Unit has no kind");
        Require(unit.GetTable()->GetName() == unit.GetKey(), "a table has another name");
        node.units = TreeOf(*unit.GetTable(), in_file_order).units;
    }
    return node;
}

/// Find and the getters find a key in upper and in lower case.
void CheckSearch(ITable& table, bool in_file_order) {
    std::map<std::string, IIterator*> firsts;
    for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
        const cstr key = unit->GetKey();
        Require(key == cstr_find(key), "a key isn't interned");
        Require(cstr_tolower(key) == key, "a key isn't in lower case");
        std::string upper = key;
        for (char& byte : upper) byte = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
        IIterator* found = table.Find(upper.c_str());
        // The empty text finds nothing, even if there is such a key.
        if (upper.empty()) {
            Require(found == nullptr, "the empty text finds something");
            continue;
        }
        Require(found != nullptr && found->GetKey() == key, "a key isn't found");
        IIterator* first = firsts.try_emplace(key, unit).first->second;
        Require(!in_file_order || found == first, "what is found isn't the first of its key");
        if (found->IsString()) Require(table.GetString(key) == found->GetString(), "a getter reads something else");
        if (found->IsTable()) Require(table.GetTable(key) == found->GetTable(), "a getter has another table");
        if (found->IsArray()) Require(table.GetArray(key) == found->GetArray(), "a getter has another array");
    }
}

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

/// Without the one number of a binary form that also counts entries which the form doesn't keep.
std::optional<std::string> WithoutUnitCount(std::optional<std::string> binary) {
    if (binary) binary->replace(16, 4, 4, '\0');
    return binary;
}

bool Holds(std::string_view text, std::string_view bytes) { return text.find_first_of(bytes) != text.npos; }

bool IsSayableText(std::string_view text) { return !Holds(text, "\"\xFF") && text.find("--") == text.npos; }

/// A key with a separator is read in path form, which has no repeated separators and at most 255 bytes; a key that
/// begins with a `:` is joined to what precedes it.
bool IsSayableKey(std::string_view key) {
    const bool is_path = key.find('\\') != key.npos;
    if (is_path && (key.size() > 255 || key.find("\\\\") != key.npos)) return false;
    return !key.empty() && key.front() != ':' && IsSayableText(key) && !Holds(key, " \t\r\n=,/{}");
}

} // namespace

Node TreeOf(ITable& table, bool in_file_order) {
    CheckSearch(table, in_file_order);
    return {KIND_TABLE, std::nullopt, std::nullopt, UnitsOf(table, in_file_order)};
}

std::string Spelled(const Node& tree, Kept kept) {
    const bool is_table = tree.kind == KIND_TABLE;
    std::map<std::string_view, const Node*> last_scalars;
    for (const Node& unit : tree.units) {
        if (is_table && unit.kind == KIND_STRING) last_scalars[*unit.key] = &unit;
    }
    std::vector<std::string> units;
    for (const Node& unit : tree.units) {
        const bool is_scalar = is_table && unit.kind == KIND_STRING;
        const bool is_dropped = kept == Kept::kCompiled && is_scalar && last_scalars[*unit.key] != &unit;
        if (!is_dropped) units.push_back(Spelled(unit, kept));
    }
    if (is_table) std::sort(units.begin(), units.end());
    const bool has_text = tree.text || (kept != Kept::kAll && tree.kind == KIND_STRING);
    std::string text = tree.key.value_or("(none)") + '\0' + std::to_string(tree.kind) + (has_text ? "text" : "null");
    text += tree.text.value_or("") + '\0';
    for (const std::string& unit : units) text += unit;
    return text + ')';
}

bool SharesKeyOfContainer(const Node& tree) {
    std::map<std::optional<std::string>, std::pair<int, int>> scalars_and_others;
    for (const Node& unit : tree.units) {
        if (SharesKeyOfContainer(unit)) return true;
        auto& counts = scalars_and_others[unit.key];
        ++(unit.kind == KIND_STRING ? counts.first : counts.second);
        if (tree.kind == KIND_TABLE && counts.second > 0 && counts.first + counts.second > 1) return true;
    }
    return false;
}

bool IsSayable(const Node& tree) {
    if (tree.key && !IsSayableKey(*tree.key)) return false;
    if (tree.text && !IsSayableText(*tree.text)) return false;
    if (tree.kind == KIND_ARRAY && tree.units.empty()) return false;
    return std::all_of(tree.units.begin(), tree.units.end(), IsSayable);
}

std::size_t LongestLine(const Node& tree) {
    std::size_t longest = 0;
    for (const Node& unit : tree.units) longest = std::max(longest, LongestLine(unit));
    return longest + tree.key.value_or("").size() + tree.text.value_or("").size() + 16;
}

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

LoadedFile::~LoadedFile() { Require(files_.handles == 0, "a file stays open"); }

ITable* LoadedFile::Load(std::string_view bytes, std::uint32_t access, std::uint32_t format) {
    files_["file"] = bytes;
    return file_->Load("file", access, format);
}

std::optional<std::string> LoadedFile::Saved(std::uint32_t format) {
    if (!file_->SaveAs("saved", format)) return std::nullopt;
    return files_["saved"];
}

void CheckCompiled(LoadedFile& file, const Node& tree) {
    const std::optional<std::string> binary = file.Saved(FORMAT_BINARY);
    Require(binary.has_value() != SharesKeyOfContainer(tree), "the binary form is wrongly refused, or wrongly written");
    if (!binary) return;
    LoadedFile compiled;
    ITable* root = compiled.Load(*binary, ACCESS_READ, FORMAT_AUTO);
    Require(root != nullptr, "a binary save doesn't load");
    CheckDefaults(*root, nullptr);
    Require(Spelled(TreeOf(*root, false), Kept::kAll) == Spelled(tree, Kept::kCompiled),
            "a binary save reads back as something else");
    Require(WithoutUnitCount(compiled.Saved(FORMAT_BINARY)) == WithoutUnitCount(binary),
            "a binary form, saved again, isn't the same");
}

void CheckWritten(LoadedFile& file, const Node& tree) {
    const std::optional<std::string> text = file.Saved(FORMAT_TEXT);
    Require(text || LongestLine(tree) >= 1024, "the text form is wrongly refused");
    if (!text) return;
    const bool is_sayable = IsSayable(tree);
    const std::string expected = is_sayable ? Spelled(tree, Kept::kWritten) : "";
    for (const std::uint32_t access : {ACCESS_EDIT, ACCESS_READ}) {
        LoadedFile written;
        ITable* root = written.Load(*text, access, FORMAT_TEXT);
        if (!is_sayable) continue;
        Require(root != nullptr, "a text save doesn't load");
        CheckDefaults(*root, nullptr);
        Require(Spelled(TreeOf(*root, access == ACCESS_EDIT), Kept::kAll) == expected,
                "a text save reads back as something else");
    }
}

} // namespace Fuzz
