// Tab files: the grids of texts and flags, numbers, and failures. The fuzzer tests random texts.

#include "tessarin/tab_files.h"

#include "tests/support/comma_locale.h"
#include "tests/support/failing_heap.h"
#include "tests/support/memory_files.h"
#include "tests/support/temporary_folder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

// AddressSanitizer's heap ends the program when an allocation fails, unless this option makes it return null.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; } // NOLINT

namespace {

using namespace std::string_literals;
using namespace TestSupport;

struct Released {
    void operator()(ITabFile* file) const { file->Release(); }
};
using TabFilePointer = std::unique_ptr<ITabFile, Released>;

/// "rows x columns: cells", with a `|` between cells and a `/` after each row; `~` is a null.
std::string GridText(ITabFile& file) {
    const std::uint32_t rows = file.GetRowCount(), columns = file.GetColumnCount();
    std::string text = std::to_string(rows) + "x" + std::to_string(columns) + ":";
    for (std::uint32_t i = 0; i < rows * columns; ++i) {
        const char* cell = file.GetCell(i / columns, i % columns);
        text += i % columns == 0 ? " " : "|";
        text += cell == nullptr ? "~" : cell;
        if (i % columns == columns - 1) text += "/";
    }
    return text;
}

const std::string kRefused = "refused, 0x0:";

class TabFile : public testing::Test {
protected:
    ~TabFile() override { EXPECT_EQ(files.handles, 0); }

    std::string Opened(const char* path, std::uint32_t flags) {
        const bool opened = file->Open(path, flags);
        return (opened ? "" : "refused, ") + GridText(*file);
    }

    std::string GridOf(const std::string& text, std::uint32_t flags) {
        files["f"] = text;
        return Opened("f", flags);
    }

    MemoryFiles files;
    TabFilePointer file{CreateTabFile(&files)};
};

constexpr std::uint32_t kDefaults = TABFILE_DEFAULT_ROW, kLine = TABFILE_SKIP_FIRST_LINE,
                        kColumn = TABFILE_SKIP_FIRST_COLUMN;

TEST_F(TabFile, CutsTheTextAtTabsAndLineEnds) {
    struct {
        std::string text;
        std::uint32_t flags;
        std::string grid;
    } const cases[] = {
        {"a\tb\n1\t2\n", 0, "2x2: a|b/ 1|2/"},
        {"a\r\tb\r\r\n\r\n\t\r\n", 0, "3x2: a\r|b\r/ |~/ |/"},
        // A line without a line feed isn't in the grid, except that a 0xFF may make room for it; tabs still close its
        // fields.
        {"a\tb\n1\t2", 0, "1x2: a|b/"},
        {"a\tb", 0, "0x1:"},
        {"a\tb\n1\xFF\t2", 0, "2x2: a|b/ 1\xFF|~/"},
        {"a\xFF\tb\nc\td\n", 0, "3x1: a\xFF/ c/ ~/"},
        {"a\tb\n1\n1\t2\t3\t4\n", 0, "3x2: a|b/ 1|~/ 1|2/"},
        {"", kDefaults | kLine | kColumn, "0x0:"},
        // The first line sets the columns, and an empty one leaves none.
        {"\n1\t2\n", 0, "2x0:"},
        {"a\tb\n1\t2\t3\n", kLine, "1x2: 1|2/"},
        {"a\tb\n", kLine, kRefused},
        // A default replaces an empty field, never a missing one.
        {"x\ty\n\tb\na\n\t\n", kDefaults, "3x2: x|b/ a|~/ x|y/"},
        {"h\ti\nx\ty\n\t\n", kDefaults | kLine, "1x2: x|y/"},
        {"x\ty\n\0z\t1\n"s, kDefaults, "1x2: x|1/"},
        {"x\ty\n", kDefaults, kRefused},
        {"h\ti\nx\ty\n", kDefaults | kLine, kRefused},
        // The next field overwrites the skipped one.
        {"k\t1\nk\n\t\nk\t2\t3\n", kColumn, "4x1: 1/ k/ / 2/"},
        {"k\th\ti\nk\tx\ty\nk\t\t2\n", kDefaults | kLine | kColumn, "1x2: x|2/"},
        {"a\nb\n", kColumn, kRefused},
        {"a\tb\n", 0xFFFFFFF8, "1x2: a|b/"},
    };
    for (const auto& [text, flags, grid] : cases) EXPECT_EQ(GridOf(text, flags), grid) << text << flags;
}

TEST_F(TabFile, ReadsNumbersInAnyLocale) {
    struct {
        const char* cell;
        std::int32_t integer;
        float real;
    } const cases[] = {
        {"", 0, 0}, {"12abc", 12, 12}, {"1.5e3", 1, 1500}, {"+2,5", 2, 2}, {"4294967297", 1, 4294967296.0F}};
    for (const auto& row : cases) files["f"] += row.cell + "\tz\n"s;
    ASSERT_TRUE(file->Open("f", 0));
    const CommaLocale comma;
    for (std::uint32_t row = 0; row < std::size(cases); ++row) {
        EXPECT_EQ(file->GetInteger(row, 0, 9), cases[row].integer) << cases[row].cell;
        EXPECT_EQ(file->GetIntegerAlso(row, 0, 9), cases[row].integer) << cases[row].cell;
        EXPECT_EQ(file->GetReal(row, 0, 9), cases[row].real) << cases[row].cell;
    }
}

TEST_F(TabFile, ReturnsTheDefaultWhereNoCellIs) {
    files["f"] = "1\t2\n3\n";
    ASSERT_TRUE(file->Open("f", 0));
    for (const auto& [row, column] : {std::pair{1U, 1U}, {0U, 2U}, {2U, 0U}, {0U, ~0U}, {~0U, 0U}, {~0U, ~0U}}) {
        EXPECT_EQ(file->GetCell(row, column), nullptr) << row << "," << column;
        EXPECT_EQ(file->GetInteger(row, column, 7), 7);
        EXPECT_EQ(file->GetIntegerAlso(row, column, -7), -7);
        EXPECT_EQ(file->GetReal(row, column, 0.5F), 0.5F);
    }
    EXPECT_TRUE(file->Reserved(nullptr));
}

TEST_F(TabFile, AsksTheServiceForThePathForm) {
    files["data\\sub\\file.txt"] = "a\n";
    EXPECT_EQ(Opened("Data\\Sub//FILE.TXT", 0), "1x1: a/");
}

TEST_F(TabFile, AFailedOpenLeavesNothing) {
    EXPECT_EQ(GridText(*file), "0x0:");
    files["bad"] = "a\n";
    const auto hold = [this] { ASSERT_EQ(GridOf("x\ty\n\tz\n", kDefaults), "1x2: x|z/"); };
    for (const char* path : {static_cast<const char*>(nullptr), "", "missing"}) {
        hold();
        EXPECT_EQ(Opened(path, 0), kRefused);
    }
    for (const std::uint32_t flag : {kDefaults, kLine, kColumn}) {
        hold();
        EXPECT_EQ(Opened("bad", flag), kRefused);
    }
    hold();
    files.read_room = 6;
    EXPECT_EQ(Opened("f", 0), kRefused);
    files.read_room = MemoryFiles::kUnlimited;
    hold();
    files.refuses = true;
    EXPECT_EQ(Opened("f", 0), kRefused);
    files.refuses = false;
    for (const std::int32_t size : {-1, INT32_MIN, 0}) {
        hold();
        files.claimed_size = size;
        EXPECT_EQ(Opened("f", kLine), size == 0 ? "0x0:" : kRefused);
        files.claimed_size.reset();
    }
}

/// 2^32 cells and some more, but the text has only one row: the other lines are bytes 0xFF.
TEST_F(TabFile, CountsCellsBeyond32Bits) {
    files["f"] = std::string(65535, '\t') + "\n" + std::string(65536, '\xFF');
    if (!file->Open("f", 0)) {
        EXPECT_EQ(GridText(*file), "0x0:");
        return; // this machine doesn't have the memory
    }
    EXPECT_EQ(file->GetRowCount(), 65537U);
    EXPECT_STREQ(file->GetCell(0, 65535), "");
    EXPECT_EQ(file->GetCell(65536, 65535), nullptr);
}

TEST_F(TabFile, FreesWhatItAllocates) {
    files["f"] = "h\ti\nx\ty\n\t2\n";
    ASSERT_TRUE(file->Open("f", 0)); // its path is interned, for good
    const FailingHeap heap;
    ITabFile* other = CreateTabFile(&files);
    EXPECT_TRUE(other->Open("f", kDefaults | kLine) && other->Open("f", kDefaults | kLine));
    other->Release();
    EXPECT_EQ(heap.Outstanding(), 0);
}

TEST(TabFileOfItsOwnService, ReadsTheHostsFileOfAnySpelling) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.Path("data/sub"));
    static_cast<void>(folder.File("data/sub/File.txt", "a\tb\n1\t2\n"));
    const TabFilePointer file(CreateTabFile(nullptr));
    for (const char* path : {"Data\\Sub\\FILE.TXT", "data/sub/File.txt"}) {
        EXPECT_TRUE(file->Open(folder.Path(path).c_str(), 0));
        EXPECT_EQ(GridText(*file), "2x2: a|b/ 1|2/");
    }
    EXPECT_FALSE(file->Open(folder.Path("data/sub").c_str(), 0));
    EXPECT_FALSE(file->Open(folder.Path("data/sub/none.txt").c_str(), 0));

    {
        const FailingHeap heap;
        CreateTabFile(nullptr)->Release();
        EXPECT_EQ(heap.Outstanding(), 0);
    }
    const FailingHeap heap(1);
    const TabFilePointer without(CreateTabFile(nullptr));
    ASSERT_NE(without, nullptr);
    EXPECT_TRUE(heap.Failed());
    EXPECT_FALSE(without->Open(folder.Path("data/sub/File.txt").c_str(), 0));
}

} // namespace
