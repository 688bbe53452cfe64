// Files as Linux has them: names with upper and lower case, pipes, and the files of the kernel.

#include "files/file_io.h"
#include "files/whole_file.h"
#include "tests/support/temporary_folder.h"

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using TestSupport::ReadWhole;
using TestSupport::TemporaryFolder;

TEST(LinuxFiles, MeasuresNoPipe) {
    const TemporaryFolder folder;
    Tessarin::FileIO service;
    const std::string path = folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int other_end = open(path.c_str(), O_RDWR);
    ASSERT_GE(other_end, 0);
    void* handle = service.Open(path.c_str(), 0);
    EXPECT_EQ(service.GetSize(handle), -1);
    service.Close(handle);
    close(other_end);
}

TEST(LinuxFiles, ServiceFindsTheHostsNameToReadButNotToWrite) {
    const TemporaryFolder folder;
    Tessarin::FileIO service;
    std::filesystem::create_directory(folder.Path("Data"));
    static_cast<void>(folder.File("Data/Items.Tab", "host"));
    const std::string spelt = folder.Path("data\\items.tab");
    EXPECT_TRUE(service.Exists(spelt.c_str()));
    EXPECT_FALSE(service.Exists(folder.Path("data/items.tab").c_str()));
    EXPECT_FALSE(service.Exists(folder.Path("data\\items.txt").c_str()));
    EXPECT_EQ(service.Open(folder.Path("data\\items.txt").c_str(), 0), nullptr);

    void* handle = service.Open(spelt.c_str(), 0);
    ASSERT_NE(handle, nullptr);
    char buffer[4];
    EXPECT_EQ(service.Read(handle, buffer, 4, 4), 4U);
    EXPECT_EQ(std::memcmp(buffer, "host", 4), 0);
    service.Close(handle);

    // Writing creates a file of just that name, which is then found first.
    handle = service.Open(spelt.c_str(), 1);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(service.Write(handle, "as it is", 8), 8U);
    service.Close(handle);
    EXPECT_EQ(ReadWhole(spelt), "as it is");
    EXPECT_EQ(ReadWhole(folder.Path("Data/Items.Tab")), "host");
    handle = service.Open(spelt.c_str(), 0);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(service.GetSize(handle), 8);
    service.Close(handle);
}

// A file of the kernel reports the size of a page and gives a few bytes.
TEST(LinuxFiles, ReadsNoWholeFileThatGivesLessThanItsSize) {
    const char* path = "/sys/devices/system/cpu/online";
    Tessarin::FileIO service;
    void* handle = service.Open(path, 0);
    if (handle == nullptr) GTEST_SKIP() << "the host has no " << path;
    EXPECT_GT(service.GetSize(handle), static_cast<std::int32_t>(ReadWhole(path).size()));
    service.Close(handle);
    Tessarin::WholeFile whole;
    EXPECT_FALSE(whole.Read(path, 2));
    EXPECT_EQ(whole.bytes, nullptr);
}

} // namespace
