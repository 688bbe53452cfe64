// The readable text form: what each notation is stored as, what is forgiven and what fails.

#include "tests/support/comma_locale.h"
#include "tests/support/small_stack.h"
#include "tests/support/table_text.h"
#include "tests/support/temporary_folder.h"

#include "tables/table.h"
#include "tessarin/documents.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using TestSupport::EntriesAndClose;

class Readable : public testing::Test {
protected:
    Tessarin::ITable* Open(std::string_view text) {
        return OpenTableReadableFile(folder_.File("document", text).c_str());
    }
    std::string Load(std::string_view text) { return EntriesAndClose(Open(text)); }

    TestSupport::TemporaryFolder folder_;
};

struct Case {
    std::string_view text;
    const char* entries; // "null" for a load that fails
};

TEST_F(Readable, EveryNotation) {
    const Case cases[] = {
        {"", "{}"},
        {" \t\r\n= \xFF", "{}"},
        {"a 1", R"({"a":1})"},
        {"a=1", R"({"a":1})"},
        {"a = = == 1", R"({"a":1})"},
        {"a\0"
         "1"sv,
         R"({"a":1})"},
        {"a\xFF"
         "1",
         R"({"a":1})"},
        {"a\v1 b", R"({"a\u000B1":"b"})"}, // no other byte is white space
        // numbers
        {"a = -5", R"({"a":-5})"},
        {"a = .5", R"({"a":0.5})"},
        {"a = 5.", R"({"a":5.0})"},
        {"a = -", R"({"a":0})"},
        {"a = .", R"({"a":0.0})"},
        {"a = -.25", R"({"a":-0.25})"},
        {"a +5 b 1e5 c 1-2 d 1.2.3 e true f 0x10",
         R"({"a":"+5","b":"1e5","c":"1-2","d":"1.2.3","e":"true","f":"0x10"})"},
        {"a 4294967295 b 2147483648 c 99999999999999999999", R"({"a":-1,"b":-2147483648,"c":-1})"},
        // texts
        {R"(a = "x y")", R"({"a":"x y"})"},
        {R"(a = "")", R"({"a":""})"},
        {R"(a = "12")", R"({"a":"12"})"},
        {"a = \"two\nlines }={\"", "{\"a\":\"two\\nlines }={\"}"},
        {R"(a = "x\" b = 2)", R"({"a":"x\\","b":2})"},
        {R"(a = x"y)", R"({"a":"x\"y"})"},
        {"a = 1, b = 2", R"({"a":"1,","b":2})"},
        {"a = x y z", R"({"a":"x","y":"z"})"},
        // keys
        {R"("k" = 1)", R"({"\"k\"":1})"},
        {"[a](b),\"c = 1", R"({"[a](b),\"c":1})"},
        {"Key 1 key 2", R"({"Key":1,"key":2})"},
        {"a 1 a two a 3.", R"({"a":3.0})"}, // a scalar overwrites any kind
        // vectors
        {"v = [1,2,3] w = (1,2,3,4)", R"({"v":[1.0,2.0,3.0],"w":[1.0,2.0,3.0,4.0]})"},
        {"v = [ 1 ,\n -2.5e1 , .5 ]", R"({"v":[1.0,-25.0,0.5]})"},
        {"v = [1,2] w = (7) x = [] y = [5",
         R"({"v":[1.0,2.0,0.0],"w":[7.0,0.0,0.0,0.0],"x":[0.0,0.0,0.0],"y":[5.0,0.0,0.0]})"},
        {"v = [1,2,3,4] w = [a,2b,(3]", R"({"v":[1.0,2.0,3.0],"w":[0.0,2.0,0.0]})"},
        {"x abc[1,2,3]y", nullptr},
        {"x abc[1,2,3]", R"({"x":[1.0,2.0,3.0]})"},
        {"a 1 a [1,2,3] v [1,2,3] v (1,2,3,4) v [4,5,6]", R"({"a":1,"v":[4.0,5.0,6.0]})"},
        {"v [1,2,3] v [1.00000001,2,3]", R"({"v":[1.0,2.0,3.0]})"},
        {"v [1,2,3] v x", R"({"v":"x"})"},
        // blocks
        {"t { a = 1 } b = 2", R"({"t":{"a":1},"b":2})"},
        {"t{a 1}b 2", R"({"t":{"a":1},"b":2})"},
        {"t { u { v { a 1 } } }", R"({"t":{"u":{"v":{"a":1}}}})"},
        {"x abc{ a 1 }", R"({"x":{"a":1}})"},
        {"{ a = 1 } b = 2", R"({"a":1})"},
        {"a 1 } b 2", R"({"a":1})"},
        {"t { a = 1", R"({"t":{"a":1}})"},
        {"t {", R"({"t":{}})"},
        {"t { a } b = 1", nullptr}, // the brace is skipped in search of the value
        {"t { a 1 dropped} b 2", R"({"t":{"a":1},"b":2})"},
        {"t { } t = 1", R"({"t":1})"},
        {"t { } t { }", nullptr},
        {"t = 1 t { }", nullptr},
        {"t [1,2,3] t { }", nullptr},
        {"t [1,2,3 t { }", R"({"t":[1.0,2.0,3.0]})"},
        // keys without a value
        {"a", nullptr},
        {"a = ", nullptr},
        {"a = x y", nullptr},
        {"t { a = 1 b", nullptr},
        {"a = \"x", nullptr},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(Load(each.text), each.entries == nullptr ? "null" : each.entries) << each.text;
    }
}

TEST_F(Readable, Comments) {
    const Case cases[] = {
        {"a = 1 -- note\nb = 2 --", R"({"a":1,"b":2})"},
        {"a = 1 -- note\rb = 2", R"({"a":1,"b":2})"},
        {"a - b 1-2", R"({"a":0,"b":"1-2"})"},
        {"--[[ x -- a = 1", R"({"a":1})"},
        {"--[[ x\ny ]] z", "{}"},
        {"--[[--a 1", R"({"a":1})"},
        {"--[[ x - y -z--a 1", R"({"a":1})"},
        {"--[[-", "{}"},
        {"--[ x\na 1", R"({"a":1})"},
        {"--[[ x --]] a = 1", nullptr},
        {"a --[[ in between -- 1", R"({"a":1})"},
        {"a 1---b\nc 2", R"({"a":1,"c":2})"},
        {"s = \"a--b\" c\nd\" e = 1", R"({"s":"a","e":1})"}, // blanked in quotes too, which then end at the next quote
        {"v = [1, --x\n 2,3]", R"({"v":[1.0,0.0,3.0]})"},    // a blanked comment ends the number it is in
    };
    for (const Case& each : cases) {
        EXPECT_EQ(Load(each.text), each.entries == nullptr ? "null" : each.entries) << each.text;
    }
}

TEST_F(Readable, FilesThatCanNotBeRead) {
    EXPECT_EQ(OpenTableReadableFile(nullptr), nullptr);
    EXPECT_EQ(OpenTableReadableFile(""), nullptr);
    EXPECT_EQ(OpenTableReadableFile(folder_.Path("missing").c_str()), nullptr);
    EXPECT_EQ(OpenTableReadableFile(folder_.Path("").c_str()), nullptr); // a folder
}

TEST_F(Readable, ChildrenAreUnknownToTheRegistry) {
    Tessarin::ITable* root = Open("t { u { a 1 } }");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(ValidateTable(root), 1U);
    EXPECT_EQ(ValidateTable(root->GetTable("t")), 0U);
    EXPECT_EQ(ValidateTable(root->GetTable("t")->GetTable("u")), 0U);
    CloseTable(root);
}

TEST_F(Readable, TextsBeyondAnInternedString) {
    const std::string longest(1048567, 'x');
    Tessarin::ITable* root = Open("a " + longest + " b " + longest + "y c 1 " + longest + "z 2");
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(root->GetString("a"), longest.c_str());
    EXPECT_EQ(root->Find("b")->GetType(), Tessarin::VALUE_EMPTY);
    EXPECT_EQ(root->GetInteger("c"), 1);
    EXPECT_EQ(root->GetElementCount(), 3U);
    CloseTable(root);
}

TEST_F(Readable, BlocksComeOutInTheirTablesOrder) {
    // Keys interned from the last to the first, so that no order of addresses is the order of the text.
    for (int i = 199; i >= 0; --i) cstr_string(("order " + std::to_string(i)).c_str());
    std::string text = "big {";
    for (int i = 0; i < 200; ++i) text += " order" + std::to_string(i) + " " + std::to_string(i);
    Tessarin::ITable* root = Open(text + "} small { z 1 y 2 x 3 }");
    ASSERT_NE(root, nullptr);
    for (const char* name : {"big", "small"}) {
        auto* table = static_cast<Tessarin::Table*>(root->GetTable(name));
        EXPECT_TRUE(table->Entries().IsValid()) << name;
    }
    EXPECT_EQ(TestSupport::Entries(root->GetTable("small")), R"({"z":1,"y":2,"x":3})");
    CloseTable(root);
}

TEST_F(Readable, LocaleDoesNotMatter) {
    const TestSupport::CommaLocale comma;
    EXPECT_EQ(Load("a 1.5 v [.5,1,2]"), R"({"a":1.5,"v":[0.5,1.0,2.0]})");
}

TEST_F(Readable, DepthCostsNoStack) {
    constexpr int kDepth = 1000000;
    std::string text;
    for (int i = 0; i < kDepth; ++i) text += "t{";
    std::string path = folder_.File("deep", text + "a 1");
    TestSupport::RunOnSmallStack([&path] {
        Tessarin::ITable* root = OpenTableReadableFile(path.c_str());
        ASSERT_NE(root, nullptr);
        int depth = 0;
        for (Tessarin::ITable* at = root; at != nullptr; at = at->GetTable("t")) ++depth;
        EXPECT_EQ(depth, kDepth + 1);
        EXPECT_EQ(CloseTable(root), 1U);
    });
}

} // namespace
