// What may happen on several threads at once. Meant to run under a thread sanitizer as well.

#include "tests/support/at_once.h"
#include "tests/support/table_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/tables/recorder.h"

#include "tessarin/documents.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

using namespace TestSupport;

TEST(Threads, OneTextIsOneAddressOnEveryThread) {
    constexpr std::size_t kTexts = 5000;
    std::array<std::vector<cstr>, kThreads> shared, own;
    AtOnce([&](int thread) {
        auto n = static_cast<std::size_t>(thread);
        shared[n].resize(kTexts);
        for (std::size_t i = 0; i < kTexts; ++i) {
            // Half of the threads go backwards, so that two meet in the middle, and all forms of a text are interned at
            // once.
            const std::size_t which = thread % 2 == 0 ? i : kTexts - 1 - i;
            const std::string text = "race/" + std::to_string(which);
            const std::string path_form = "race\\" + std::to_string(which);
            shared[n][which] =
                thread < 2 ? cstr_path(("RACE/" + std::to_string(which)).c_str()) : cstr_tolower(path_form.c_str());
            own[n].push_back(cstr_string((text + ' ' + std::to_string(thread)).c_str()));
        }
    });
    for (std::size_t i = 0; i < kTexts; ++i) {
        cstr text = cstr_find(("race\\" + std::to_string(i)).c_str());
        for (std::size_t n = 0; n < kThreads; ++n) {
            ASSERT_EQ(shared[n][i], text);
            ASSERT_EQ(own[n][i], cstr_find(own[n][i]));
        }
    }
}

TEST(Threads, TablesOfDifferentThreadsAreIndependent) {
    AtOnce([](int thread) {
        for (int round = 0; round < 100; ++round) {
            std::string log;
            Listener listener{"", &log};
            TableHolder table = NewTable();
            const Float4x4 matrix{};
            for (int n = 0; n < 40; ++n) table->SetInteger(("key" + std::to_string(n * (thread + 1))).c_str(), n, 1);
            Tessarin::ITable* child = table->Set("child", 1);
            child->SetFloat4x4("matrix", &matrix, 1);
            EXPECT_EQ(ValidateTable(table.get()) + ValidateTable(child), 3U);
            for (int n = 0; n < 20; ++n) *table->AddRecordListener() = listener.Record();
            for (int n = 0; n < 5; ++n) *table->AddArgumentListener("child") = listener.Argument();
            table->SetInteger("key0", -1, 1);
            table->Remove("child", 1);
            EXPECT_EQ(ValidateTable(child) & ~3U, 0U); // reused by another thread by now, or free
            EXPECT_EQ(log.size(), 40 * std::string("10:key0 ").size() - 20 + 45 * std::string("11:child ").size() - 20);
        }
    });
}

TEST(Threads, AnUnchangingTableIsReadByAll) {
    TableHolder table = NewTable();
    for (int n = 0; n < 200; ++n) table->SetString(std::to_string(n).c_str(), ("text" + std::to_string(n)).c_str(), 0);
    table->SetInteger("child", 0, 0);
    AtOnce([&table](int thread) {
        for (int n = 0; n < 2000; ++n) {
            const int which = (n * 7 + thread) % 200;
            EXPECT_STREQ(table->GetString(std::to_string(which).c_str()), ("text" + std::to_string(which)).c_str());
            EXPECT_EQ(table->GetInteger(("absent" + std::to_string(n)).c_str(), thread), thread);
        }
        int walked = 0;
        for (auto* pair = table->First(); pair != nullptr; pair = table->Next(&pair)) ++walked;
        EXPECT_EQ(walked, 201);
    });
}

TEST(Threads, LoadAndSaveDocumentsOfTheirOwn) {
    const TestSupport::TemporaryFolder folder;
    AtOnce([&folder](int thread) {
        const std::string n = std::to_string(thread);
        const std::string readable = folder.File("readable" + n, "a 1 b { x 0.5 name \"n" + n + "\" } c [1,2,3]");
        const std::string saved = folder.Path("saved" + n);
        for (int round = 0; round < 50; ++round) {
            TableHolder table(OpenTableReadableFile(readable.c_str()));
            ASSERT_TRUE(table);
            table->SetInteger(("round" + std::to_string(round)).c_str(), round, 1);
            ASSERT_EQ(table->SaveFile(saved.c_str()), 1U);
            TableHolder again(OpenTableFile(saved.c_str()));
            ASSERT_TRUE(again);
            again->Remove("__internal_type", 0); // the marker that a save writes first is an entry when it is loaded
            EXPECT_EQ(TestSupport::SavedJson(again.get()), TestSupport::SavedJson(table.get()));
            EXPECT_EQ(again->GetTable("b")->GetString("name"), "n" + n);
        }
    });
}

} // namespace
