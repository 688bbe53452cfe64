// Trees that are edited: adds, removals, setters.

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

TEST(Edit, AddsEntriesUnderKeysThatAreFree) {
    const Edited tree("a = 1 P//Q = 2");
    ITable& root = *tree.root;
    IIterator* text = root.AddString("Key", "MixedCase");
    IIterator* array = root.AddArray("List");
    IIterator* table = root.AddTable("T");
    for (IIterator* made : {text, array, table}) ASSERT_NE(made, nullptr);
    EXPECT_EQ(root.Find("kEY"), text);
    EXPECT_EQ(root.Find("list"), array);
    ASSERT_NE(table->GetTable()->AddString("x", ""), nullptr);
    const char* const null = nullptr;
    for (const char* key : {"key", "KEY", "a", "A", "list", "t", "", null}) {
        EXPECT_EQ(root.AddString(key, "v"), nullptr);
        EXPECT_EQ(root.AddArray(key), nullptr);
        if (key == nullptr || *key != '\0') {
            EXPECT_EQ(root.AddTable(key), nullptr);
        }
    }
    EXPECT_EQ(root.AddString("free", null), nullptr);
    EXPECT_EQ(TextOf(&root), "a='1' p\\q='2' key='MixedCase' list=[] t={x=''}");

    // An added key is never put in path form; only a table may have an empty key, and no text finds it.
    IIterator* slash = root.AddString("A/B", "3");
    ASSERT_NE(slash, nullptr);
    EXPECT_EQ(root.Find("a/b"), slash);
    EXPECT_EQ(root.FindPath("a/b"), nullptr);
    IIterator* empty = root.AddTable("");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(root.AddTable(""), nullptr);
    EXPECT_EQ(root.Find(""), nullptr);
    EXPECT_EQ(root.FindFormat(""), empty);
    IIterator* number = root.AddString("7", "seven");
    EXPECT_EQ(root.Find(7U), number);
    EXPECT_EQ(root.GetString(7U), number->GetString());
}

TEST(Edit, ArraysGrowAtTheEnd) {
    Edited tree("a = { 1 }");
    IArray& array = *tree.root->GetArray("a");
    IIterator* text = array.AddString(0, "X y");
    IIterator* inner = array.AddArray(77);
    IIterator* table = array.AddTable(UINT32_MAX);
    EXPECT_EQ(array.AddString(0, nullptr), nullptr);
    std::uint32_t position = 1;
    for (IIterator* unit : {text, inner, table}) ASSERT_EQ(array.At(position++), unit);
    inner->GetArray()->AddString(0, "deep");
    EXPECT_EQ(TextOf(&array), "'1' 'X y' ['deep'] {}");
    EXPECT_FALSE(text->SetKey("k"));
    EXPECT_EQ(array.Remove(inner), table);
    EXPECT_EQ(array.At(2), table);
    EXPECT_EQ(array.At(3), nullptr);
    EXPECT_EQ(array.Remove(inner), nullptr);
    EXPECT_EQ(array.Remove(table), nullptr);
    EXPECT_EQ(TextOf(&array), "'1' 'X y'");
}

TEST(Edit, RemoveClosesTheGap) {
    const Edited tree("a = 1 b = 2 c = 3 d = 4 t = { a = 5 }");
    ITable& root = *tree.root;
    IIterator* c = root.Find("c");
    EXPECT_EQ(root.Remove(root.Find("b")), c);
    EXPECT_EQ(root.Next(c), root.Find("d"));
    EXPECT_EQ(root.Remove(root.GetTable("t")->Begin()), nullptr);
    EXPECT_EQ(root.Remove(nullptr), nullptr);
    EXPECT_EQ(TextOf(&root), "a='1' c='3' d='4' t={a='5'}");
    EXPECT_EQ(root.Remove(root.Find("t")), nullptr);
    ASSERT_NE(root.AddString("b", "again"), nullptr);
    EXPECT_EQ(TextOf(&root), "a='1' c='3' d='4' b='again'");
    for (IIterator* unit = root.Begin(); unit != root.End(); unit = root.Remove(unit)) {
    }
    EXPECT_EQ(root.GetCount(), 0U);
    EXPECT_EQ(root.Begin(), root.End());
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

TEST(Edit, SettersReplaceTheText) {
    // Files never have the locale's decimal comma.
    const TestSupport::CommaLocale comma;
    const Edited tree("a = x l = { 1 } t = { }");
    ITable& root = *tree.root;
    for (IIterator* unit : {root.Find("a"), root.GetArray("l")->At(0)}) {
        for (const std::int32_t value : {-5, 0, std::numeric_limits<std::int32_t>::min()}) {
            EXPECT_TRUE(unit->SetInteger(value));
            EXPECT_EQ(unit->GetString(), std::to_string(value));
            EXPECT_EQ(unit->GetInteger(), value);
        }
        EXPECT_TRUE(unit->SetFloat(1.5F));
        EXPECT_STREQ(unit->GetString(), "1.500000");
        EXPECT_EQ(unit->GetFloat(), 1.5F);
        EXPECT_TRUE(unit->SetFloat(-std::numeric_limits<float>::max()));
        EXPECT_STREQ(unit->GetString(), "-340282346638528859811704183484516925440.000000");
        EXPECT_TRUE(unit->SetString("Some Text"));
        EXPECT_FALSE(unit->SetString(nullptr));
        EXPECT_STREQ(unit->GetString(), "Some Text");
    }
    for (IIterator* unit : {root.Find("l"), root.Find("t")}) {
        EXPECT_FALSE(unit->SetInteger(1) || unit->SetFloat(1) || unit->SetString("x"));
    }
    EXPECT_EQ(TextOf(&root), "a='Some Text' l=['Some Text'] t={}");
}

TEST(Edit, SetKeyAsksNothing) {
    const Edited tree("a = 1 t = { x = 1 } b = 2");
    ITable& root = *tree.root;
    IIterator* a = root.Find("a");
    IIterator* b = root.Find("b");
    IIterator* t = root.Find("t");
    EXPECT_FALSE(a->SetKey(nullptr));
    EXPECT_TRUE(b->SetKey("A"));
    EXPECT_STREQ(b->GetKey(), "a");
    EXPECT_EQ(root.Find("a"), a);
    EXPECT_EQ(root.Find("b"), nullptr);
    EXPECT_TRUE(a->SetKey("P/Q"));
    EXPECT_EQ(root.Find("p/q"), a);
    EXPECT_EQ(root.Find("a"), b);
    EXPECT_TRUE(t->SetKey("u"));
    EXPECT_EQ(root.GetTable("u"), t->GetTable());
    EXPECT_STREQ(t->GetTable()->GetName(), "t");
}

} // namespace
