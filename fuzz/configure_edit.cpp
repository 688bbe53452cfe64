// A random program of edits on a configuration file that was loaded from a text, compared with a plain tree at each
// step. In the end both saves read back as the edited tree.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/configure_tree.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Fuzz;
using namespace Configure;

/// A table or an array that is being edited, and what it should be.
struct Container {
    ITable* table; // one of the two
    IArray* array;
    Node* node;

    [[nodiscard]] IIterator* At(std::size_t index) const {
        if (array != nullptr) return array->At(static_cast<std::uint32_t>(index));
        if (index >= node->units.size()) return nullptr;
        IIterator* unit = table->Begin();
        while (index-- != 0) unit = table->Next(unit);
        return unit;
    }

    [[nodiscard]] bool Has(const std::string& key) const {
        return std::any_of(node->units.begin(), node->units.end(),
                           [&key](const Node& unit) { return unit.key == key; });
    }
};

class Program {
public:
    Program(ByteSource& source, LoadedFile& file, ITable& root)
        : source_(source), file_(file), tree_(TreeOf(root)), path_{{&root, nullptr, &tree_}} {}

    void Run() {
        while (!source_.AtEnd()) Step();
        Require(TreeOf(*file_.Root()) == tree_, "the edits have made something else");
        CheckSaves(file_);
    }

private:
    void Step() {
        switch (source_.Below(10)) {
        case 0:
        case 1:
        case 2:
            return Add();
        case 3:
            return Remove();
        case 4:
            return Rename();
        case 5:
            if (path_.size() > 1) path_.pop_back();
            return;
        case 6:
        case 7:
            return Descend();
        default:
            return Set();
        }
    }

    void Add();
    void Remove();
    void Rename();
    void Set();
    void Descend();

    std::string Key() {
        static const char* const kKeys[] = {"a", "B", "ab", "abc", "_default", "x y", "", "c"};
        const std::uint32_t which = source_.Below(12);
        return which < std::size(kKeys) ? kKeys[which] : source_.Text();
    }

    /// The index of a Unit in the current container, sometimes one beyond the last.
    std::size_t Index() { return source_.Byte() % (path_.back().node->units.size() + 1); }

    ByteSource& source_;
    LoadedFile& file_;
    Node tree_;
    std::vector<Container> path_; // the containers around the current one, which is the last
};

void Program::Add() {
    const Container container = path_.back();
    const std::uint32_t kind = KIND_STRING + source_.Below(3);
    const std::string key = container.table != nullptr ? Key() : "";
    const std::string value = kind == KIND_STRING ? source_.Text() : "";
    IIterator* added = nullptr;
    if (container.table != nullptr) {
        added = kind == KIND_STRING  ? container.table->AddString(key.c_str(), value.c_str())
                : kind == KIND_ARRAY ? container.table->AddArray(key.c_str())
                                     : container.table->AddTable(key.c_str());
        const bool is_taken = (!key.empty() || kind == KIND_TABLE) && !container.Has(LowerCase(key));
        Require((added != nullptr) == is_taken, "a key is taken, or isn't");
    } else {
        added = kind == KIND_STRING  ? container.array->AddString(7, value.c_str())
                : kind == KIND_ARRAY ? container.array->AddArray(7)
                                     : container.array->AddTable(7);
        Require(added != nullptr, "an element isn't taken");
    }
    if (added == nullptr) return;
    Node node{kind, {}, {}, {}};
    if (container.table != nullptr) node.key = LowerCase(key);
    if (kind == KIND_STRING) node.text = value;
    container.node->units.push_back(std::move(node));
    Require(container.At(container.node->units.size() - 1) == added, "what is added isn't the last");
}

void Program::Remove() {
    const Container container = path_.back();
    const std::size_t index = Index();
    IIterator* unit = container.At(index);
    if (unit == nullptr) return;
    IIterator* next = container.table != nullptr ? container.table->Remove(unit) : container.array->Remove(unit);
    container.node->units.erase(container.node->units.begin() + static_cast<std::ptrdiff_t>(index));
    Require(next == container.At(index), "another Unit takes the place");
}

/// Renames only scalars: a table and an array keep their names.
void Program::Rename() {
    const Container container = path_.back();
    const std::size_t index = Index();
    const std::string key = Key();
    IIterator* unit = container.At(index);
    if (unit == nullptr || unit->GetType() != KIND_STRING) return;
    Require(unit->SetKey(key.c_str()) == (container.table != nullptr), "a key is set, or isn't");
    if (container.table != nullptr) container.node->units[index].key = LowerCase(key);
}

void Program::Set() {
    const std::size_t index = Index();
    const std::uint32_t form = source_.Below(3);
    const auto number = source_.Plain<std::int32_t>();
    IIterator* unit = path_.back().At(index);
    if (unit == nullptr) return;
    std::string text = form == 0 ? source_.Text() : std::to_string(number);
    char real_text[64];
    const float real = static_cast<float>(number) / 64;
    std::snprintf(real_text, sizeof real_text, "%f", static_cast<double>(real));
    if (form == 2) text = real_text;
    const bool set = form == 0   ? unit->SetString(text.c_str())
                     : form == 1 ? unit->SetInteger(number)
                                 : unit->SetFloat(real);
    Node& node = path_.back().node->units[index];
    Require(set == (node.kind == KIND_STRING), "a value is set, or isn't");
    if (!set) return;
    node.text = text;
    if (form == 1) Require(unit->GetInteger() == number, "a number reads back as another");
    if (form == 2) Require(unit->GetFloat() == std::strtof(real_text, nullptr), "a real reads back as another");
}

void Program::Descend() {
    const std::size_t index = Index();
    IIterator* unit = path_.back().At(index);
    if (unit == nullptr || unit->GetType() == KIND_STRING) return;
    path_.push_back({unit->GetTable(), unit->GetArray(), &path_.back().node->units[index]});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    const std::string text = source.Text();
    LoadedFile file;
    ITable* root = file.Load(text, ACCESS_EDIT, FORMAT_TEXT);
    if (root != nullptr) Program(source, file, *root).Run();
    return 0;
}
