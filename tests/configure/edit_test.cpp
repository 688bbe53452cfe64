// Trees that are edited: what is refused, keys as they are added, defaults, and texts of numbers. Programs of edits are
// compared with a model in fuzz/configure_edit.cpp.

#include "tests/configure/tree_text.h"
#include "tests/support/comma_locale.h"

#include <cstdint>
#include <limits>
#include <string>

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
