// Configuration trees as text, so that expectations are easy to read, and the three ways to get a tree.

#ifndef TESSARIN_TESTS_CONFIGURE_TREE_TEXT_H
#define TESSARIN_TESTS_CONFIGURE_TREE_TEXT_H

#include "tessarin/configure.h"

#include "tests/support/memory_files.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace TestSupport {

struct Released {
    void operator()(Configure::IFile* file) const { file->Release(); }
};
using FilePointer = std::unique_ptr<Configure::IFile, Released>;

inline FilePointer NewFile(IFileIO& files) { return FilePointer(CreateRLFile(&files)); }

inline std::string Quoted(cstr text) { return text == nullptr ? "null" : '\'' + std::string(text) + '\''; }

enum class Order { kOwn, kSorted };

std::string TextOf(Configure::ITable* table, Order order = Order::kOwn);
std::string TextOf(Configure::IArray* array, Order order = Order::kOwn);

/// A Unit's value: 'text', null, {table} or [array]. Expects that a child's name is the Unit's key.
inline std::string ValueOf(Configure::IIterator& unit, Order order = Order::kOwn) {
    switch (unit.GetType()) {
    case Configure::KIND_STRING:
        return Quoted(unit.GetString());
    case Configure::KIND_TABLE:
        EXPECT_EQ(unit.GetTable()->GetName(), unit.GetKey());
        return '{' + TextOf(unit.GetTable(), order) + '}';
    case Configure::KIND_ARRAY:
        EXPECT_EQ(unit.GetArray()->GetName(), unit.GetKey());
        return '[' + TextOf(unit.GetArray(), order) + ']';
    default:
        return "(no kind)";
    }
}

/// The pieces of all Units, with blanks between them. Expects as many as the container's count.
template <class Container, class PieceOf>
std::string Joined(Container* container, Order order, PieceOf piece_of) {
    if (container == nullptr) return "(none)";
    std::vector<std::string> pieces;
    for (auto* unit = container->Begin(); unit != container->End(); unit = container->Next(unit)) {
        pieces.push_back(piece_of(*unit));
    }
    EXPECT_EQ(pieces.size(), container->GetCount());
    if (order == Order::kSorted) std::sort(pieces.begin(), pieces.end());
    std::string joined;
    for (const std::string& piece : pieces) joined += (joined.empty() ? "" : " ") + piece;
    return joined;
}

/// The entries of a table, each `key=value`.
inline std::string TextOf(Configure::ITable* table, Order order) {
    return Joined(table, order, [order](Configure::IIterator& unit) {
        EXPECT_EQ(unit.GetKey(), cstr_find(unit.GetKey()));
        return unit.GetKey() + ('=' + ValueOf(unit, order));
    });
}

/// An array keeps its own order, whatever the order of the tables in it.
inline std::string TextOf(Configure::IArray* array, Order order) {
    return Joined(array, Order::kOwn, [order](Configure::IIterator& unit) {
        EXPECT_EQ(unit.GetKey(), nullptr);
        return ValueOf(unit, order);
    });
}

enum class Family { kText, kBinary, kEdit };

/// A text as a tree of one of the families: loaded from the text for reading, from its compiled form, or for editing.
struct Loaded {
    Loaded(Family family, std::string_view text) {
        files["text"] = text;
        root = file->Load("text", family == Family::kEdit ? Configure::ACCESS_EDIT : Configure::ACCESS_READ,
                          Configure::FORMAT_TEXT);
        if (family != Family::kBinary || root == nullptr) return;
        EXPECT_TRUE(file->SaveAs("binary", Configure::FORMAT_BINARY));
        root = file->Load("binary", Configure::ACCESS_READ, Configure::FORMAT_BINARY);
    }
    ~Loaded() { EXPECT_EQ(files.handles, 0); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    MemoryFiles files;
    FilePointer file = NewFile(files);
    Configure::ITable* root = nullptr;
};

} // namespace TestSupport

#endif
