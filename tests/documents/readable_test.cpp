// The readable form: files that can't be read, limits, and what doesn't depend on the text. readable_parser_test.cpp
// has what the texts say.

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

using Tessarin::ITable;

class Readable : public testing::Test {
protected:
    ITable* Open(std::string_view text) { return OpenTableReadableFile(folder_.File("document", text).c_str()); }
    std::string Load(std::string_view text) { return TestSupport::EntriesAndClose(Open(text)); }

    TestSupport::TemporaryFolder folder_;
};

TEST_F(Readable, FilesThatCanNotBeRead) {
    EXPECT_EQ(OpenTableReadableFile(nullptr), nullptr);
    for (const std::string& path : {std::string(), folder_.Path("missing"), folder_.Path("")}) {
        EXPECT_EQ(OpenTableReadableFile(path.c_str()), nullptr) << path;
    }
}

/// The last value ends where the file does, whatever is behind the text in memory: of these sizes, some fill their
/// block of the heap to the last byte.
TEST_F(Readable, TheEndOfTheFileEndsItsLastValue) {
    for (std::size_t size = 1; size <= 64; ++size) {
        const std::string text(size, 'x');
        EXPECT_EQ(Load("a " + text), R"({"a":")" + text + "\"}");
    }
}

TEST_F(Readable, ChildrenAreUnknownToTheRegistry) {
    ITable* root = Open("t { u { a 1 } }");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(ValidateTable(root), 1U);
    EXPECT_EQ(ValidateTable(root->GetTable("t")), 0U);
    EXPECT_EQ(ValidateTable(root->GetTable("t")->GetTable("u")), 0U);
    CloseTable(root);
}

TEST_F(Readable, TextsBeyondAnInternedString) {
    const std::string longest(1048567, 'x');
    ITable* root = Open("a " + longest + " b " + longest + "y c 1 " + longest + "z 2");
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
    ITable* root = Open(text + "} a 1");
    ASSERT_NE(root, nullptr);
    EXPECT_TRUE(static_cast<Tessarin::Table*>(root->GetTable("big"))->Entries().IsValid());
    EXPECT_TRUE(static_cast<Tessarin::Table*>(root)->Entries().IsValid());
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
    const std::string path = folder_.File("deep", text + "a 1");
    TestSupport::RunOnSmallStack([&path] {
        ITable* root = OpenTableReadableFile(path.c_str());
        ASSERT_NE(root, nullptr);
        int depth = 0;
        for (ITable* at = root; at != nullptr; at = at->GetTable("t")) ++depth;
        EXPECT_EQ(depth, kDepth + 1);
        EXPECT_EQ(CloseTable(root), 1U);
    });
}

} // namespace
