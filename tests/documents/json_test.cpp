// The JSON form: saves, what a round trip keeps, and limits. json_parser_test.cpp has what each text loads as.

#include "tests/support/failing_heap.h"
#include "tests/support/small_stack.h"
#include "tests/support/table_text.h"
#include "tests/support/temporary_folder.h"

#include "documents/throwing_allocator.h"
#include "tables/table.h"
#include "tessarin/documents.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using Tessarin::ITable;
using TestSupport::EntriesAndClose;
using TestSupport::SavedJson;

ITable* Open(std::string_view text) { return OpenTableBuffer(text.data(), static_cast<std::uint32_t>(text.size())); }

std::string Load(std::string_view text) { return EntriesAndClose(Open(text)); }

TEST(Json, RegistryKnowsLoadedTables) {
    ITable* root = Open(R"({"o":{"p":{}}})");
    ASSERT_NE(root, nullptr);
    ITable* child = root->GetTable("o")->GetTable("p");
    EXPECT_EQ(ValidateTable(root), 1U);
    EXPECT_EQ(ValidateTable(child), 2U);
    CloseTable(root);
    EXPECT_EQ(ValidateTable(child), 0U);
}

TEST(Json, SavesWhatNoTextLoadsAs) {
    ITable* table = CreateTable();
    ITable* other = CreateTable();
    EXPECT_EQ(SavedJson(table), R"({"__internal_type":"qv game schema"})");
    const Handle handle = 7;
    const Float2 vector{std::numeric_limits<float>::infinity(), 2};
    other->SetReal("nan", std::nanf(""), 0);
    table->SetString("s", "\" \\ \b\t\n\f\r \x01\x1F / \x7F \xE2\x82\xAC", 0);
    table->SetString("null", nullptr, 0);
    table->SetPtr("p", table, 0);
    table->SetHandle("h", &handle, 0);
    table->SetExternalTable("e", other, 0);
    table->SetReferenceTable("f", other, 0);
    table->SetExternalTable("n", nullptr, 0);
    table->SetFloat2("v", &vector, 0);
    EXPECT_EQ(TestSupport::Entries(table),
              "{\"s\":\"\\\" \\\\ \\b\\t\\n\\f\\r \\u0001\\u001F / \x7F \xE2\x82\xAC\",\"null\":\"\","
              R"("e":{"nan":null},"f":{"nan":null},"n":null,"v":[null,2.0]})");
    CloseTable(table);
    CloseTable(other);
}

TEST(Json, SavesNothingWithoutAPlace) {
    ITable* table = CreateTable();
    for (const char* path : {static_cast<const char*>(nullptr), "", "/nowhere at all/x"}) {
        EXPECT_EQ(table->SaveFile(path), 0U);
    }
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(table->SaveFile("/dev/full"), 0U);
    }
    std::uint32_t size = 0;
    EXPECT_EQ(table->SaveBuffer(nullptr, &size), 0U);
    void* unsized = nullptr;
    EXPECT_EQ(table->SaveBuffer(&unsized, nullptr), 0U);
    CloseTable(table);
}

TEST(Json, ATableThatContainsItselfIsNotSaved) {
    ITable* tables[5];
    for (ITable*& table : tables) table = CreateTable();
    for (int i = 0; i < 4; ++i) tables[i]->SetExternalTable("next", tables[i + 1], 0);
    EXPECT_NE(SavedJson(tables[0]), "(refused)");
    tables[0]->SetReferenceTable("also", tables[4], 0); // twice the same is no cycle
    EXPECT_NE(SavedJson(tables[0]), "(refused)");
    for (int back = 0; back < 5; ++back) {
        tables[4]->Clear(0);
        tables[4]->SetReferenceTable("back", tables[back], 0);
        EXPECT_EQ(SavedJson(tables[0]), "(refused)") << back;
    }
    for (ITable* table : tables) CloseTable(table);
}

TEST(Json, FilesAndBuffersThatCanNotBeRead) {
    const TestSupport::TemporaryFolder folder;
    EXPECT_EQ(Open(""), nullptr);
    EXPECT_EQ(OpenTableBuffer(nullptr, 1), nullptr);
    EXPECT_EQ(OpenTableFile(nullptr), nullptr);
    EXPECT_EQ(OpenTableFile(""), nullptr);
    EXPECT_EQ(OpenTableFile(folder.Path("missing").c_str()), nullptr);
    EXPECT_EQ(EntriesAndClose(OpenTableFile(folder.File("empty", "").c_str())), "{}");
}

/// Whatever is behind the text in memory: of these sizes, some fill their block of the heap to the last byte.
TEST(Json, ATextEndsWithItsFileOrBuffer) {
    const TestSupport::TemporaryFolder folder;
    for (std::size_t size = 0; size < 64; ++size) {
        const std::string text = R"({"a":")" + std::string(size, 'x') + "\"}";
        EXPECT_EQ(Load(text), text);
        EXPECT_EQ(EntriesAndClose(OpenTableFile(folder.File("text", text).c_str())), text);
    }
}

TEST(Json, AMarkerThatWasLoadedIsSavedBehindTheMarker) {
    const TestSupport::TemporaryFolder folder;
    const std::string path = folder.Path("saved");
    ITable* first = Open(R"({"a":-7,"r":[0.1,3e-12],"t":{"s":"x"},"n":1.17549435e-38})");
    ASSERT_EQ(first->SaveFile(path.c_str()), 1U);
    ITable* second = OpenTableFile(path.c_str());
    ASSERT_NE(second, nullptr);
    const std::string marker = R"("__internal_type":"qv game schema")";
    const std::string entries = TestSupport::Entries(first).substr(1);
    EXPECT_EQ(SavedJson(second), "{" + marker + "," + marker + "," + entries);
    ITable* third = Open(SavedJson(second));
    EXPECT_EQ(SavedJson(third), SavedJson(second)); // both land on one entry
    for (ITable* table : {first, second, third}) CloseTable(table);
}

TEST(Json, DepthCostsNoStack) {
    constexpr int kDepth = 1000000;
    std::string text;
    for (int i = 0; i < kDepth; ++i) text += "{\"t\":";
    text += "1" + std::string(kDepth, '}');
    std::string arrays = "{\"a\":" + std::string(kDepth, '[') + std::string(kDepth, ']') + ",\"b\":1}";
    TestSupport::RunOnSmallStack([&] {
        ITable* root = Open(text);
        ASSERT_NE(root, nullptr);
        const std::string saved = TestSupport::Entries(root);
        EXPECT_TRUE(saved == text);
        CloseTable(root);
        EXPECT_EQ(Load(arrays), R"({"b":1})");
    });
}

/// A hundred thousand members with distinct keys, then as many again with the same keys: in quadratic time this would
/// take minutes.
TEST(Json, LargeObjectsWithDuplicates) {
    constexpr int kMembers = 100000;
    std::string text = "{";
    for (int round = 0; round < 3; ++round) {
        for (int i = kMembers - 1; i >= 0; --i) {
            const char* values[] = {"1", "true", "7"};
            text += "\"member " + std::to_string(i * 7919 % kMembers) + "\":" + values[round] + ",";
        }
    }
    text.back() = '}';
    ITable* root = Open(text);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->GetElementCount(), static_cast<std::uint32_t>(kMembers));
    EXPECT_EQ(root->GetInteger("member 4711"), 1);
    EXPECT_TRUE(static_cast<Tessarin::Table*>(root)->Entries().IsValid());
    CloseTable(root);
}

TEST(Json, TheParsersHeapGivesBackWhatIsResizedToNothing) {
    const TestSupport::FailingHeap heap;
    void* block = Tessarin::ThrowingAllocator::Malloc(8);
    block = Tessarin::ThrowingAllocator::Realloc(block, 8, 16);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(Tessarin::ThrowingAllocator::Realloc(block, 16, 0), nullptr);
    EXPECT_EQ(heap.Outstanding(), 0);
}

} // namespace
