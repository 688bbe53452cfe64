// Paths with `\` against a tree of files: case, byte order, whole names, and memory that runs out.

#include "platform/host_path.h"

#include "tests/support/failing_heap.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using TestSupport::TemporaryFolder;

constexpr const char* kNoMatch = "no match";

std::string Host(const std::string& path) {
    char* host = Tessarin::HostPath(path.c_str());
    const std::string path_or_none = host == nullptr ? kNoMatch : host;
    std::free(host);
    return path_or_none;
}

/// Relative paths start in the folder while it lives.
class InFolder {
public:
    explicit InFolder(const fs::path& folder) : before_(fs::current_path()) { fs::current_path(folder); }
    ~InFolder() { fs::current_path(before_); }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

private:
    fs::path before_;
};

class HostPath : public testing::Test {
protected:
    HostPath() {
        for (const char* name : {"Data/Items", "data2", "two", "TWO"}) fs::create_directories(tree.Path(name));
        for (const char* name : {"Data/Items/Sword.Tab", "Data/a.tab", "Data/A.tab", "Data/b.TAB", "Data/B.tab",
                                 "Data/c_", "Data/C\x1f", "two/only.tab", "Data/\xc3\x84.tab"}) {
            static_cast<void>(tree.File(name, name));
        }
    }

    TemporaryFolder tree;
};

TEST_F(HostPath, MatchesEachNameInItsFolder) {
    const InFolder inside(tree.Path(""));
    const struct {
        const char *path, *host;
    } cases[] = {
        {"data\\items\\sword.tab", "Data/Items/Sword.Tab"},
        {"DATA/ITEMS\\SWORD.TAB", "Data/Items/Sword.Tab"},
        {".\\data\\..\\data\\.\\items", "./Data/../Data/./Items"},
        {"data\\\\items\\", "Data//Items/"},
        {"data2\\", "data2/"},
        // An exact match wins, then byte order, in which capitals precede small letters.
        {"data\\a.tab", "Data/a.tab"},
        {"data\\A.TAB", "Data/A.tab"},
        {"data\\B.Tab", "Data/B.tab"},
        {"Two\\", "TWO/"},
        // Two folders match, and only the second has the file.
        {"Two\\only.tab", kNoMatch},
        // Only letters have a case, and only those of ASCII.
        {"data\\c\x7f", kNoMatch},
        {"data\\C_", "Data/c_"},
        {"data\\\xc3\xa4.tab", kNoMatch},
        {"data\\\xc3\x84.TAB", "Data/\xc3\x84.tab"},
        // A name is matched whole.
        {"data\\b.ta", kNoMatch},
        {"data\\items\\sword.tab2", kNoMatch},
        {"data\\a.tab\\b", kNoMatch},
        {"nothing\\a.tab", kNoMatch},
        {"data/items/sword.tab", kNoMatch},
        {"", kNoMatch},
    };
    for (const auto& c : cases) EXPECT_EQ(Host(c.path), c.host) << c.path;
}

TEST_F(HostPath, TakesAbsolutePathsOfAnyLength) {
    EXPECT_EQ(Host("\\"), "/");
    EXPECT_EQ(Host(tree.Path("data\\items\\SWORD.tab")), tree.Path("Data/Items/Sword.Tab"));
    std::string dots, slashes;
    for (int n = 0; n < 300; ++n) {
        dots += "\\.";
        slashes += "/.";
    }
    EXPECT_EQ(Host(tree.Path("data") + dots + "\\items"), tree.Path("Data") + slashes + "/Items");
    EXPECT_EQ(Host(tree.Path("data\\") + std::string(100'000, 'x')), kNoMatch);
}

TEST_F(HostPath, HasNoMatchWithoutMemory) {
    const std::string path = tree.Path("data\\items");
    const TestSupport::FailingHeap heap(0);
    EXPECT_EQ(Tessarin::HostPath(path.c_str()), nullptr);
    EXPECT_TRUE(heap.Failed());
}

} // namespace
