// What the operations of a loaded tree return: one suite for the three families, through the interfaces only. That
// every key and every composite key is found, in which order Units come, and what a default table serves for any tree,
// is what the fuzzers' models check.

#include "tests/configure/tree_text.h"

#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace Configure;
using namespace TestSupport;

class Families : public testing::TestWithParam<Family> {};

constexpr const char* kNames[] = {"Text", "Binary", "Edit"};

INSTANTIATE_TEST_SUITE_P(Accessors, Families, testing::Values(Family::kText, Family::kBinary, Family::kEdit),
                         [](const auto& its) { return kNames[static_cast<std::size_t>(its.param)]; });

std::string Shown(const Interval& interval) {
    return std::to_string(interval.lower_int) + ".." + std::to_string(interval.upper_int) + '/' +
           std::to_string(interval.flags);
}

std::string Shown(float number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(number));
    return text;
}

/// `int float text bool array table`, as the six getters return them.
std::string Row(std::int32_t integer, float real, cstr text, bool truth, IArray* array, ITable* table) {
    return std::to_string(integer) + ' ' + Shown(real) + ' ' + Quoted(text) + (truth ? " true " : " false ") +
           (array == nullptr ? "-" : TextOf(array)) + ' ' + (table == nullptr ? "-" : TextOf(table));
}

template <class Key>
std::string Results(ITable& table, Key key) {
    return Row(table.GetInteger(key, 42), table.GetFloat(key, 4.5F), table.GetString(key), table.GetBool(key),
               table.GetArray(key), table.GetTable(key)) +
           ' ' + Shown(table.GetInterval(key));
}

template <class... Arguments>
std::string FormatResults(ITable& table, const char* format, Arguments... arguments) {
    return Row(table.GetIntegerFormat(42, format, arguments...), table.GetFloatFormat(4.5F, format, arguments...),
               table.GetStringFormat(format, arguments...), table.GetBoolFormat(format, arguments...),
               table.GetArrayFormat(format, arguments...), table.GetTableFormat(format, arguments...));
}

std::string Results(IIterator& unit) {
    EXPECT_EQ(unit.IsInteger(), unit.IsString());
    EXPECT_EQ(unit.IsFloat(), unit.IsString());
    EXPECT_EQ(unit.IsBool(), unit.IsString());
    EXPECT_EQ(unit.IsString(), unit.GetType() == KIND_STRING);
    EXPECT_EQ(unit.IsArray(), unit.GetType() == KIND_ARRAY);
    EXPECT_EQ(unit.IsTable(), unit.GetType() == KIND_TABLE);
    return Row(unit.GetInteger(), unit.GetFloat(), unit.GetString(), unit.GetBool(), unit.GetArray(), unit.GetTable()) +
           ' ' + Shown(unit.GetInterval()) + (unit.IsInterval() ? " interval" : "");
}

std::string Results(IArray& array, std::uint32_t position) {
    return Row(array.GetInteger(position, 42), array.GetFloat(position, 4.5F), array.GetString(position),
               array.GetBool(position), array.GetArray(position), array.GetTable(position));
}

constexpr std::string_view kNothing = "42 4.5 null false - - 0..0/0";

struct Case {
    const char* own;          // the value in the table itself; null if the key is absent there
    const char* fallback;     // the value in its default table
    std::string_view getters; // what the table's getters return, with the fallbacks 42 and 4.5
    std::string_view unit;    // what the table's own Unit returns
};

constexpr Case kCases[] = {
    {"12abc", nullptr, "12 12 '12abc' true - - 0..0/0", "12 12 '12abc' true - - 0..0/0"},
    {"3.9", nullptr, "3 3.9000001 '3.9' true - - 0..0/0", "3 3.9000001 '3.9' true - - 0..0/0"},
    {"1e3", nullptr, "1 1000 '1e3' true - - 0..0/0", "1 1000 '1e3' true - - 0..0/0"},
    {" -5 ", "9", "-5 -5 ' -5 ' true - - 0..0/0", "-5 -5 ' -5 ' true - - 0..0/0"},
    {"4294967297", nullptr, "1 4.2949673e+09 '4294967297' true - - 0..0/0",
     "1 4.2949673e+09 '4294967297' true - - 0..0/0"},
    {"0x10", nullptr, "0 16 '0x10' true - - 0..0/0", "0 16 '0x10' true - - 0..0/0"},
    {"abc", "[1,2]", "0 0 'abc' true - - 0..0/0", "0 0 'abc' true - - 0..0/0"},
    {"", "9", "0 0 '' true - - 0..0/0", "0 0 '' true - - 0..0/0"},
    {"FALSE", nullptr, "0 0 'FALSE' false - - 0..0/0", "0 0 'FALSE' false - - 0..0/0"},
    {"False", nullptr, "0 0 'False' false - - 0..0/0", "0 0 'False' false - - 0..0/0"},
    {"0", "true", "0 0 '0' false - - 0..0/0", "0 0 '0' false - - 0..0/0"},
    {"00", nullptr, "0 0 '00' true - - 0..0/0", "0 0 '00' true - - 0..0/0"},
    {"0.0", nullptr, "0 0 '0.0' true - - 0..0/0", "0 0 '0.0' true - - 0..0/0"},
    {"false ", nullptr, "0 0 'false ' true - - 0..0/0", "0 0 'false ' true - - 0..0/0"},
    {"x [3,7)", nullptr, "0 0 'x [3,7)' true - - 3..7/8", "0 0 'x [3,7)' true - - 3..7/8 interval"},
    {"(1,5]", nullptr, "0 0 '(1,5]' true - - 1..5/4", "0 0 '(1,5]' true - - 1..5/4 interval"},
    {"{ 1 2 }", "7", "42 4.5 null false '1' '2' - 0..0/0", "0 0 null false '1' '2' - 0..0/0"},
    {"{ x = 1 }", "{ 1 2 }", "42 4.5 null false - x='1' 0..0/0", "0 0 null false - x='1' 0..0/0"},
    {"5", "{ x = 1 }", "5 5 '5' true - - 0..0/0", "5 5 '5' true - - 0..0/0"},
    {nullptr, nullptr, kNothing, ""},
    {nullptr, "[-8,8)", "0 0 '[-8,8)' true - - -8..8/8", ""},
    {nullptr, "8", "8 8 '8' true - - 0..0/0", ""},
    {nullptr, "{ 1 2 }", "42 4.5 null false '1' '2' - 0..0/0", ""},
    {nullptr, "{ x = 1 }", "42 4.5 null false - x='1' 0..0/0", ""},
};

std::string ValueText(const std::string& value) { return value[0] == '{' ? value : '"' + value + '"'; }

/// Both keys that find the number: its digits, and the same as a composite key in a text.
void Add(std::string& table, std::size_t number, const char* value) {
    if (value == nullptr) return;
    for (const char* end : {"", ":"}) table += '"' + std::to_string(number) + end + "\" = " + ValueText(value) + '\n';
}

TEST_P(Families, EveryGetterReadsEveryKindOfKey) {
    std::string own = "t = { ", fallback = "_default = { ";
    for (std::size_t i = 0; i < std::size(kCases); ++i) {
        Add(own, i, kCases[i].own);
        Add(fallback, i, kCases[i].fallback);
    }
    Loaded loaded(GetParam(), own + "}\n" + fallback + '}');
    ITable* table = loaded.root->GetTable("t");
    ASSERT_NE(table, nullptr);
    for (std::uint32_t i = 0; i < std::size(kCases); ++i) {
        const Case& expected = kCases[i];
        const std::string digits = std::to_string(i);
        EXPECT_EQ(Results(*table, digits.c_str()), expected.getters) << expected.own;
        EXPECT_EQ(Results(*table, i), expected.getters) << expected.own;
        const std::string composite = FormatResults(*table, "i", i);
        EXPECT_EQ(composite, expected.getters.substr(0, expected.getters.rfind(' '))) << expected.own;
        EXPECT_EQ(FormatResults(*table, "s", digits.c_str()), composite) << expected.own;
        IIterator* unit = table->Find(digits.c_str());
        EXPECT_EQ(unit == nullptr ? "" : Results(*unit), expected.unit);
        EXPECT_EQ(table->Find(i), unit);
        EXPECT_EQ(table->FindPath(digits.c_str()), unit);
        EXPECT_EQ(table->FindFormat("i", i),
                  table->Find((digits + (GetParam() == Family::kBinary ? "" : ":")).c_str()));
    }
}

TEST_P(Families, ArraysAreReadByPosition) {
    std::string text = "a = { ";
    std::vector<std::string_view> expected;
    for (const Case& value : kCases) {
        if (value.own == nullptr) continue;
        text += ValueText(value.own) + ", ";
        expected.push_back(value.getters.substr(0, value.getters.rfind(' ')));
    }
    Loaded loaded(GetParam(), text + '}');
    IArray* array = loaded.root->GetArray("a");
    ASSERT_NE(array, nullptr);
    ASSERT_EQ(array->GetCount(), expected.size());
    std::uint32_t i = 0;
    for (auto* unit = array->Begin(); unit != array->End(); unit = array->Next(unit), ++i) {
        EXPECT_EQ(array->At(i), unit);
        EXPECT_EQ(Results(*array, i), expected[i]);
    }
    const auto count = static_cast<std::uint32_t>(expected.size());
    for (const std::uint32_t beyond : {count, count + 1, UINT32_MAX}) {
        EXPECT_EQ(array->At(beyond), nullptr);
        EXPECT_EQ(Results(*array, beyond), "42 4.5 null false - -");
    }
}

TEST_P(Families, TextKeysAreFoundInAnyCaseAndWhole) {
    const Loaded loaded(
        GetParam(), "Speed = 5\n7 = s\nA//B = p\n4294967295 = big\n\"\xE9\xC9Z\" = e\n\"\" = none\n\"a b\" = blank");
    ITable& root = *loaded.root;
    for (const char* key : {"speed", "SPEED", "7", "a\\b", "A\\B", "\xE9\xC9z", "a b"})
        EXPECT_NE(root.Find(key), nullptr) << key;
    for (const char* key : {"spee", "speeds", "07", "7:", "a/b", "a\\\\b", "\xE9\xE9z", "a", "", " speed"}) {
        EXPECT_EQ(root.Find(key), nullptr) << key;
        EXPECT_EQ(Results(root, key), kNothing) << key;
    }
    const char* const null = nullptr;
    EXPECT_EQ(root.Find(null), nullptr);
    EXPECT_EQ(Results(root, null), kNothing);
    EXPECT_STREQ(root.GetString(4294967295U), "big");
    EXPECT_EQ(root.Find(70U), nullptr);
    for (const char* path : {"A//b", "a/\\/B", "a\\b"}) EXPECT_EQ(root.FindPath(path), root.Find("a\\b")) << path;
    for (const char* path : {"", null, "a/b/", "/a/b"}) EXPECT_EQ(root.FindPath(path), nullptr);
}

TEST_P(Families, OnlyTheTextFormInternsWhatIsAskedFor) {
    Loaded loaded(GetParam(), "a = 1");
    const std::string key = std::string("Nobody has ") + kNames[static_cast<std::size_t>(GetParam())];
    const std::string lower = "nobody has " + std::string(cstr_tolower(key.c_str() + 11));
    EXPECT_EQ(loaded.root->Find(key.c_str()), nullptr);
    EXPECT_EQ(cstr_find(lower.c_str()) == nullptr, GetParam() == Family::kBinary);
}

TEST_P(Families, WhatSpellsNoKeyFindsNothing) {
    const Loaded loaded(GetParam(), R"("-1" = 1 "-1:" = 2 "" = empty)");
    ITable& root = *loaded.root;
    const std::string_view nothing = kNothing.substr(0, kNothing.rfind(' '));
    const char* const null = nullptr;
    for (const char* format : {"x", "ix", "I", "i ", "%d", null}) {
        EXPECT_EQ(root.FindFormat(format, -1), nullptr) << Quoted(format);
        EXPECT_EQ(FormatResults(root, format, -1), nothing) << Quoted(format);
    }
    for (const char* format : {"s", "p"}) EXPECT_EQ(FormatResults(root, format, null), nothing);
    // An empty format spells the empty key, which no text can look up.
    EXPECT_STREQ(root.GetStringFormat(""), "empty");
    EXPECT_EQ(root.Find(""), nullptr);
}

TEST_P(Families, ADefaultTableServesItsSiblingsAndNoFurther) {
    const Loaded loaded(GetParam(), R"(
        t = { y = own, sub = { z = 1 } }
        _DEFAULT = { x = d, shared = { s = 1 } "" = e, _default = { x = deep } }
        list = { { a = 1 } { _default = { x = inner } kid = { } } }
        other = { _default = text, kid = { } }
    )");
    ITable& root = *loaded.root;
    ITable* fallback = root.GetTable("_default");
    ITable* table = root.GetTable("t");
    ITable* sub = table->GetTable("sub");
    EXPECT_STREQ(table->GetString("X"), "d");
    EXPECT_EQ(table->Find("x"), nullptr);
    EXPECT_EQ(table->FindPath("x"), nullptr);
    EXPECT_EQ(table->GetCount(), 2U);
    EXPECT_EQ(root.GetTable("other")->GetTable("shared"), fallback->GetTable("shared"));
    EXPECT_STREQ(root.GetTable("other")->GetString("_default"), "text");
    EXPECT_EQ(root.GetString("x"), nullptr);
    EXPECT_EQ(table->GetStringFormat(""), nullptr);
    EXPECT_STREQ(fallback->GetStringFormat(""), "e");
    // A table without a `_default` passes on the one in its own default, but then only that one is searched.
    EXPECT_STREQ(sub->GetString("x"), "deep");
    EXPECT_EQ(sub->GetString("shared"), nullptr);
    EXPECT_STREQ(fallback->GetTable("shared")->GetString("x"), "deep");
    EXPECT_EQ(root.GetTable("other")->GetTable("kid")->GetString("x"), nullptr);
    IArray* list = root.GetArray("list");
    EXPECT_EQ(list->GetTable(0)->GetString("x"), nullptr);
    EXPECT_EQ(list->GetTable(1)->GetString("x"), nullptr);
    EXPECT_STREQ(list->GetTable(1)->GetTable("kid")->GetString("x"), "inner");
    EXPECT_EQ(root.GetName(), nullptr);
}

TEST(Accessors, OnlyAnEditedTreeChanges) {
    for (const Family family : {Family::kText, Family::kBinary}) {
        const Loaded loaded(family, "a = 1 l = { 1, {} } t = { }");
        ITable& root = *loaded.root;
        IArray& list = *root.GetArray("l");
        for (IIterator* unit : {root.Find("a"), list.At(0)}) {
            EXPECT_FALSE(unit->SetKey("k") || unit->SetInteger(2) || unit->SetFloat(2) || unit->SetString("x"));
        }
        for (IIterator* made :
             {root.Remove(root.Begin()), root.AddString("k", "v"), root.AddArray("k"), root.AddTable("k"),
              list.Remove(list.Begin()), list.AddString(0, "v"), list.AddArray(0), list.AddTable(0)}) {
            EXPECT_EQ(made, nullptr);
        }
        EXPECT_EQ(TextOf(&root, Order::kSorted), "a='1' l=['1' {}] t={}");
    }
}

} // namespace
