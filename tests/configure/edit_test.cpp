// Trees that are edited: what is refused, keys as they are added, defaults, and texts of numbers. Programs of edits are
// compared with a model in fuzz/configure_edit.cpp.

#include "tests/configure/tree_text.h"
#include "tests/support/comma_locale.h"
#include "tests/support/failing_heap.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace Configure;
using namespace TestSupport;

struct Edited : Loaded {
    explicit Edited(std::string_view text) : Loaded(Family::kEdit, text) {}
};

TEST(Edit, WhatIsRefusedChangesNothing) {
    const Edited tree("a = 1 P//Q = 2 l = { 1 } t = { a = 3 } u = { }");
    ITable& root = *tree.root;
    IArray& list = *root.GetArray("l");
    IIterator* text = root.Find("a");
    const std::string before = TextOf(&root);
    const char* const null = nullptr;
    for (const char* key : {"a", "A", "p\\Q", "L", "t", "", null}) {
        EXPECT_EQ(root.AddString(key, "v"), nullptr);
        EXPECT_EQ(root.AddArray(key), nullptr);
        EXPECT_TRUE((key != nullptr && *key == '\0') || root.AddTable(key) == nullptr);
    }
    EXPECT_EQ(root.AddString("free", null), nullptr);
    EXPECT_EQ(list.AddString(0, null), nullptr);
    for (IIterator* other : {root.GetTable("t")->Begin(), list.At(0), static_cast<IIterator*>(nullptr)}) {
        EXPECT_EQ(root.Remove(other), nullptr);
    }
    EXPECT_EQ(list.Remove(text), nullptr);
    EXPECT_FALSE(text->SetKey(null) || text->SetString(null) || list.At(0)->SetKey("k"));
    for (IIterator* unit : {root.Find("l"), root.Find("t")}) {
        EXPECT_FALSE(unit->SetInteger(1) || unit->SetFloat(1) || unit->SetString("x"));
    }
    EXPECT_EQ(TextOf(&root), before);
}

TEST(Edit, KeysAreTakenAsTheyAre) {
    const Edited tree("a = 1 t = { x = 1 } b = 2");
    ITable& root = *tree.root;
    // An added key is never put in path form; only a table may have an empty key, and no text finds it.
    IIterator* slash = root.AddString("A/B", "3");
    EXPECT_EQ(root.Find("a/b"), slash);
    EXPECT_EQ(root.FindPath("a/b"), nullptr);
    IIterator* empty = root.AddTable("");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(root.AddTable(""), nullptr);
    EXPECT_EQ(root.Find(""), nullptr);
    EXPECT_EQ(root.FindFormat(""), empty);
    IIterator* seven = root.AddString("7", "seven");
    EXPECT_EQ(root.Find(7U), seven);
    EXPECT_STREQ(root.GetString(7U), "seven");
    // A key that is set may be another's, and a table's isn't its name.
    EXPECT_TRUE(root.Find("b")->SetKey("A"));
    EXPECT_TRUE(root.Find("t")->SetKey("u"));
    EXPECT_STREQ(root.GetTable("u")->GetName(), "t");
    EXPECT_STREQ(root.GetString("a"), "1");
    EXPECT_EQ(root.Find("b"), nullptr);
}

/// Long lists leave gaps, and close them from time to time: adds and removals in any order, compared with a vector.
TEST(Edit, LongListsChangeAnywhere) {
    const Edited tree("a = { x }");
    IArray& array = *tree.root->GetArray("a");
    std::vector<IIterator*> units = {array.At(0)};
    std::mt19937 random(7);
    for (const std::size_t goal : {300U, 20U, 5000U, 100U, 4000U, 0U, 70U}) {
        while (units.size() != goal) {
            const bool grows = random() % 4 != 0 ? units.size() < goal : units.empty();
            if (grows) {
                units.push_back(array.AddString(0, "x"));
            } else {
                const std::size_t place = random() % 3 == 0 ? 0 : random() % units.size();
                IIterator* const after = array.Remove(units[place]);
                units.erase(units.begin() + static_cast<std::ptrdiff_t>(place));
                ASSERT_EQ(after, place < units.size() ? units[place] : nullptr);
            }
            const std::size_t place = random() % (units.size() + 1);
            ASSERT_EQ(array.At(static_cast<std::uint32_t>(place)), place < units.size() ? units[place] : nullptr);
            ASSERT_EQ(array.GetCount(), units.size());
        }
        IIterator* unit = array.Begin();
        for (IIterator* const expected : units) {
            ASSERT_EQ(unit, expected);
            unit = array.Next(unit);
        }
        ASSERT_EQ(unit, nullptr);
    }
}

/// A removed Unit's storage is used again, and a list that moves along its slots doesn't grow.
TEST(Edit, AddingAndRemovingInTurnTakesNoMemory) {
    const Edited tree("");
    ITable& root = *tree.root;
    for (int i = 0; i < 200; ++i) root.AddString(std::to_string(i).c_str(), "x");
    const FailingHeap heap;
    for (int i = 200; i < 20000; ++i) {
        ASSERT_NE(root.Remove(root.Begin()), nullptr);
        ASSERT_NE(root.AddString(std::to_string(i % 400).c_str(), "x"), nullptr);
        ASSERT_LE(heap.Outstanding(), 3); // a counter of gaps, and one arena of texts
    }
}

TEST(Edit, ARemovedDefaultGoesOnServing) {
    Edited tree("_default = { x = 1 deeper = { y = 2 } } t = { }");
    ITable& root = *tree.root;
    ITable* table = root.GetTable("t");
    ITable* deeper = table->GetTable("deeper");
    IIterator* behind = root.Remove(root.Begin());
    EXPECT_EQ(behind, root.Begin());
    EXPECT_STREQ(table->GetString("x"), "1");
    EXPECT_EQ(table->GetTable("deeper"), deeper);
    EXPECT_STREQ(deeper->GetString("y"), "2");
    // A new default has an effect from the next load on, and for a new table, too.
    root.AddTable("_default")->GetTable()->AddString("x", "new");
    EXPECT_EQ(root.AddTable("u")->GetTable()->GetString("x"), nullptr);
    EXPECT_STREQ(table->GetString("x"), "1");
    ASSERT_TRUE(tree.file->Save());
    ITable* again = tree.file->Load("text", ACCESS_EDIT, FORMAT_TEXT);
    EXPECT_STREQ(again->GetTable("t")->GetString("x"), "new");
    EXPECT_STREQ(again->GetTable("u")->GetString("x"), "new");
}

TEST(Edit, NumbersAreWrittenInEveryLocaleAlike) {
    const CommaLocale comma;
    const Edited tree("a = x");
    IIterator* unit = tree.root->Begin();
    EXPECT_TRUE(unit->SetFloat(1.5F));
    EXPECT_STREQ(unit->GetString(), "1.500000");
    EXPECT_EQ(unit->GetFloat(), 1.5F);
    EXPECT_TRUE(unit->SetFloat(-std::numeric_limits<float>::max()));
    EXPECT_STREQ(unit->GetString(), "-340282346638528859811704183484516925440.000000");
    EXPECT_TRUE(unit->SetInteger(std::numeric_limits<std::int32_t>::min()));
    EXPECT_STREQ(unit->GetString(), "-2147483648");
}

} // namespace
