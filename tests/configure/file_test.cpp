// The file object: what loads with which access and form, what a save leaves, depth, and threads. What a save writes is
// compared with a model in fuzz/; a file service or a heap that fails, in tests/faults/.

#include "tests/configure/tree_text.h"
#include "tests/support/at_once.h"
#include "tests/support/failing_heap.h"
#include "tests/support/small_stack.h"
#include "tests/support/temporary_folder.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace Configure;
using namespace TestSupport;
using namespace std::string_literals;

class File : public testing::Test {
protected:
    ~File() override { EXPECT_EQ(files.handles, 0); }

    MemoryFiles files;
    FilePointer file = NewFile(files);
};

const std::string kEmptyBinary = "NIBx\1\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\0\2\0\0"s;

TEST_F(File, TheFormatIsGivenOrSeenAtTheHead) {
    const std::string text28 = "NIBx = 1" + std::string(20, ' ');
    const std::string text27 = text28.substr(0, 27);
    struct {
        std::string bytes;
        std::uint32_t access, format;
        const char* tree; // null if it doesn't load
    } const cases[] = {
        {"", ACCESS_READ, FORMAT_AUTO, ""},
        {"", ACCESS_EDIT, FORMAT_AUTO, ""},
        {"", ACCESS_EDIT, FORMAT_TEXT, ""},
        {"", ACCESS_READ, FORMAT_BINARY, nullptr},
        {text27, ACCESS_READ, FORMAT_AUTO, "nibx='1'"},
        {text27, ACCESS_READ, FORMAT_BINARY, nullptr},
        {text28, ACCESS_READ, FORMAT_AUTO, nullptr},
        {text28, ACCESS_READ, FORMAT_TEXT, "nibx='1'"},
        {text28, ACCESS_EDIT, FORMAT_TEXT, "nibx='1'"},
        {kEmptyBinary, ACCESS_READ, FORMAT_AUTO, ""},
        {kEmptyBinary, ACCESS_READ, FORMAT_BINARY, ""},
        {kEmptyBinary, ACCESS_EDIT, FORMAT_AUTO, nullptr},
        {kEmptyBinary, ACCESS_EDIT, FORMAT_BINARY, nullptr},
        {text28, 0, FORMAT_TEXT, nullptr},
        {text28, 3, FORMAT_TEXT, nullptr},
        {kEmptyBinary, 0, FORMAT_BINARY, nullptr},
        {text28, ACCESS_READ, 0, nullptr},
        {text28, ACCESS_EDIT, 4, nullptr},
    };
    for (const auto& [bytes, access, format, tree] : cases) {
        files["f"] = bytes;
        ITable* root = file->Load("f", access, format);
        EXPECT_EQ(TextOf(root), tree == nullptr ? "(none)" : tree) << bytes << access << format;
        EXPECT_EQ(file->GetRoot(), root);
        EXPECT_EQ(file->Save(), tree != nullptr && access == ACCESS_EDIT);
    }
}

TEST_F(File, EveryLoadDropsWhatWasThere) {
    files["good"] = "a = 1";
    files["bad"] = "= 1";
    cstr text = nullptr;
    for (const std::uint32_t access : {ACCESS_READ, ACCESS_EDIT}) {
        for (const char* path : {"bad", "missing", "", static_cast<const char*>(nullptr)}) {
            ASSERT_NE(file->Load("good", access, FORMAT_AUTO), nullptr);
            text = file->GetRoot()->GetString("a");
            EXPECT_EQ(file->Load(path, access, FORMAT_AUTO), nullptr);
            EXPECT_EQ(file->GetRoot(), nullptr);
            EXPECT_FALSE(file->Save());
        }
        file->Load("good", access, FORMAT_AUTO);
        EXPECT_TRUE(file->Reset());
        EXPECT_EQ(file->GetRoot(), nullptr);
        EXPECT_TRUE(file->Reset());
        EXPECT_FALSE(file->Save());
    }
    EXPECT_STREQ(text, "1");
}

TEST_F(File, ASizeThatCantBeDoesntLoad) {
    files["f"] = "a = 1";
    for (std::int32_t size : {INT32_MIN, 1 << 28}) {
        files.claimed_size = size;
        EXPECT_EQ(file->Load("f", ACCESS_READ, FORMAT_TEXT), nullptr) << size;
    }
}

TEST_F(File, SaveGoesToThePathOfTheLoad) {
    files["Dir\\File.TXT"] = "a = 1";
    files["other"] = "b = 1";
    file->Load("other", ACCESS_READ, FORMAT_TEXT);
    const int opens = files.opens;
    EXPECT_FALSE(file->Save());
    EXPECT_EQ(files.opens, opens);
    ITable* root = file->Load("Dir\\File.TXT", ACCESS_EDIT, FORMAT_AUTO);
    root->Begin()->SetInteger(2);
    EXPECT_TRUE(file->SaveAs("copy", FORMAT_TEXT));
    EXPECT_EQ(files["Dir\\File.TXT"], "a = 1");
    EXPECT_TRUE(file->Save());
    EXPECT_EQ(files["Dir\\File.TXT"], "a = \"2\"\r\n");
    EXPECT_EQ(files["copy"], files["Dir\\File.TXT"]);
    EXPECT_EQ(files["other"], "b = 1");
    EXPECT_EQ(file->GetRoot(), root);
    EXPECT_TRUE(file->Exists("Dir\\File.TXT"));
    EXPECT_FALSE(file->Exists("dir\\file.txt"));
    EXPECT_FALSE(file->Exists(nullptr));
    files.refuses = true;
    EXPECT_FALSE(file->Save() || file->SaveAs("copy", FORMAT_TEXT) || file->SaveAs("copy", FORMAT_BINARY));
}

TEST_F(File, APathTooLongToInternLoadsButIsNotKept) {
    const std::string path(1048568, 'p');
    files[path] = "a = 1";
    EXPECT_EQ(TextOf(file->Load(path.c_str(), ACCESS_EDIT, FORMAT_TEXT)), "a='1'");
    EXPECT_EQ(file->GetRoot(), nullptr);
    EXPECT_FALSE(file->Save());
}

TEST_F(File, ARefusedSaveOpensNothingUnlessItsTheContent) {
    files["f"] = "a = 1";
    file->Load("f", ACCESS_EDIT, FORMAT_TEXT);
    const int opens = files.opens;
    for (const std::uint32_t format : {FORMAT_TEXT, FORMAT_BINARY}) {
        EXPECT_FALSE(file->SaveAs(nullptr, format));
        EXPECT_FALSE(file->SaveAs("", format));
    }
    for (const std::uint32_t format : {0U, 1U, 4U}) EXPECT_FALSE(file->SaveAs("g", format)) << format;
    EXPECT_EQ(files.opens, opens);
    file->Reset();
    for (const std::uint32_t format : {FORMAT_TEXT, FORMAT_BINARY}) {
        files["g"] = "old";
        EXPECT_FALSE(file->SaveAs("g", format));
        EXPECT_EQ(files["g"], "");
    }
}

TEST_F(File, DepthIsNoMatter) {
    static constexpr int kDepth = 500000; // of a table and an array each
    std::string& text = files["deep"];
    for (int i = 0; i < kDepth; ++i) text += "a={{";
    RunOnSmallStack([this] {
        const auto depth_of = [](ITable* table) {
            int depth = 0;
            for (; table->GetCount() == 1; ++depth) table = table->GetArray("a")->GetTable(0);
            return depth;
        };
        for (const std::uint32_t access : {ACCESS_READ, ACCESS_EDIT}) {
            EXPECT_EQ(depth_of(file->Load("deep", access, FORMAT_TEXT)), kDepth);
            EXPECT_FALSE(file->SaveAs("text", FORMAT_TEXT));
            EXPECT_TRUE(file->SaveAs(access == ACCESS_READ ? "read" : "edit", FORMAT_BINARY));
        }
        EXPECT_EQ(depth_of(file->Load("read", ACCESS_READ, FORMAT_AUTO)), kDepth);
        EXPECT_TRUE(file->SaveAs("edited", FORMAT_BINARY));
        file.reset();
    });
    EXPECT_TRUE(files["read"] == files["edit"]);
    EXPECT_TRUE(files["read"] == files["edited"]);
}

TEST(FileOfTheLibrary, LoadsAndSavesOnDisk) {
    const TemporaryFolder folder;
    const std::string path = folder.File("Text.cfg", "a = 1");
    const FilePointer file(CreateRLFile(nullptr));
    ITable* root = file->Load(path.c_str(), ACCESS_EDIT, FORMAT_AUTO);
    ASSERT_NE(root, nullptr);
    root->AddString("b", "2");
    EXPECT_TRUE(file->Save());
    EXPECT_EQ(ReadWhole(path), "a = \"1\"\r\nb = \"2\"\r\n");
    EXPECT_TRUE(file->SaveAs(folder.Path("b.bin").c_str(), FORMAT_BINARY));
    EXPECT_TRUE(file->Exists(folder.Path("b.bin").c_str()));
    EXPECT_FALSE(file->Exists(folder.Path("c").c_str()));
    EXPECT_EQ(TextOf(file->Load(folder.Path("b.bin").c_str(), ACCESS_READ, FORMAT_AUTO)), "a='1' b='2'");
    EXPECT_FALSE(file->SaveAs(folder.Path("missing/x").c_str(), FORMAT_TEXT));
    FailEachAllocation([](FailingHeap& heap) {
        IFile* made = CreateRLFile(nullptr);
        EXPECT_EQ(made == nullptr, heap.Failed());
        if (made != nullptr) made->Release();
        EXPECT_EQ(heap.Outstanding(), 0);
    });
}

TEST(ConfigureThreads, ReadOneTreeByEveryKindOfKey) {
    std::string text = "_default = { \"d:\" = fallback d = fallback } t = { ";
    for (int i = 0; i < 100; ++i) {
        const std::string n = std::to_string(i);
        text += '"' + n + "\" = " + n + " \"" + n + ":\" = " + n + " \"k/" + n + "\" = \"[0," + n + "]\" ";
    }
    for (const Family family : {Family::kText, Family::kBinary}) {
        Loaded loaded(family, text + '}');
        ITable* table = loaded.root->GetTable("t");
        AtOnce([table](int thread) {
            for (int step = 0; step < 1000; ++step) {
                const int i = (step * 7 + thread * 13) % 100;
                const std::string n = std::to_string(i);
                ASSERT_EQ(table->GetInteger(n.c_str(), -1), i);
                ASSERT_EQ(table->GetInteger(static_cast<std::uint32_t>(i), -1), i);
                ASSERT_EQ(table->GetIntegerFormat(-1, "i", i), i);
                ASSERT_EQ(table->GetFloatFormat(-1, "s", n.c_str()), static_cast<float>(i));
                ASSERT_EQ(table->FindPath(("K//" + n).c_str())->GetInterval().upper_int, i);
                ASSERT_EQ(table->GetBool(n.c_str()), i != 0);
                ASSERT_STREQ(table->GetStringFormat("s", "D"), "fallback");
            }
        });
    }
}

TEST(ConfigureThreads, LoadAndSaveDifferentFiles) {
    MemoryFiles files;
    AtOnce([&files](int thread) {
        const std::string name = std::to_string(thread);
        FilePointer file = NewFile(files);
        for (int round = 0; round < 50; ++round) {
            const std::string key = "key " + std::to_string(round % 7) + ' ' + name;
            const std::string text = key + " = { \"" + key + "\" { a/b = [1,2) c = " + std::to_string(round) + " } }";
            void* handle = files.Open(name.c_str(), 1);
            files.Write(handle, text.data(), static_cast<std::uint32_t>(text.size()));
            files.Close(handle);
            ITable* root = file->Load(name.c_str(), ACCESS_EDIT, FORMAT_TEXT);
            ASSERT_NE(root, nullptr);
            ASSERT_NE(root->AddTable("Added")->GetTable()->AddString("v", key.c_str()), nullptr);
            ASSERT_TRUE(root->GetArray(key.c_str())->GetTable(1)->Begin()->SetInteger(round));
            const std::string tree = TextOf(root, Order::kSorted);
            ASSERT_TRUE(file->Save());
            ASSERT_EQ(TextOf(file->Load(name.c_str(), ACCESS_READ, FORMAT_TEXT), Order::kSorted), tree);
            ASSERT_TRUE(file->SaveAs((name + 'b').c_str(), FORMAT_BINARY));
            ASSERT_EQ(TextOf(file->Load((name + 'b').c_str(), ACCESS_READ, FORMAT_AUTO), Order::kSorted), tree);
        }
    });
    EXPECT_EQ(files.handles, 0);
}

} // namespace
