// Files as Linux has them: names with upper and lower case, pipes, and the files of the kernel.

#include "files/file_io.h"
#include "files/whole_file.h"
#include "tessarin/configure.h"
#include "tests/support/temporary_folder.h"

#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using TestSupport::ReadWhole;
using TestSupport::TemporaryFolder;

/// The size as the service measures it; -2 if it doesn't open the file.
std::int32_t SizeOf(const std::string& path) {
    Tessarin::FileIO service;
    void* handle = service.Open(path.c_str(), 0);
    const std::int32_t size = handle == nullptr ? -2 : service.GetSize(handle);
    service.Close(handle);
    return size;
}

TEST(LinuxFiles, MeasuresNoPipe) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int other_end = open(path.c_str(), O_RDWR);
    ASSERT_GE(other_end, 0);
    EXPECT_EQ(SizeOf(path), -1);
    close(other_end);
}

TEST(LinuxFiles, ServiceFindsTheHostsNameToReadButNotToWrite) {
    const TemporaryFolder folder;
    Tessarin::FileIO service;
    std::filesystem::create_directory(folder.Path("Data"));
    static_cast<void>(folder.File("Data/Items.Tab", "host"));
    const std::string spelt = folder.Path("data\\items.tab");
    EXPECT_TRUE(service.Exists(spelt.c_str()));
    EXPECT_EQ(SizeOf(spelt), 4);
    for (const char* name : {"data/items.tab", "data\\items.txt"}) {
        EXPECT_FALSE(service.Exists(folder.Path(name).c_str()));
        EXPECT_EQ(SizeOf(folder.Path(name)), -2);
    }
    // Writing creates a file of just that name, which is then found first.
    void* handle = service.Open(spelt.c_str(), 1);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(service.Write(handle, "as it is", 8), 8U);
    service.Close(handle);
    EXPECT_EQ(ReadWhole(spelt), "as it is");
    EXPECT_EQ(ReadWhole(folder.Path("Data/Items.Tab")), "host");
    EXPECT_EQ(SizeOf(spelt), 8);
}

// A file of the kernel reports the size of a page and gives a few bytes.
TEST(LinuxFiles, ReadsNoWholeFileThatGivesLessThanItsSize) {
    const char* path = "/sys/devices/system/cpu/online";
    const std::int32_t size = SizeOf(path);
    if (size == -2) GTEST_SKIP() << "the host has no " << path;
    EXPECT_GT(size, static_cast<std::int32_t>(ReadWhole(path).size()));
    Tessarin::WholeFile whole;
    EXPECT_FALSE(whole.Read(path, 2));
    EXPECT_EQ(whole.bytes, nullptr);
}

// A small file stays in the stream's buffer until it is closed. The text form doesn't look at what its writes return.
TEST(LinuxFiles, BinarySaveOnAFullDiskFails) {
    const TemporaryFolder folder;
    const std::string text = folder.File("text", "a = 1\r\n");
    Configure::IFile* file = CreateRLFile(nullptr);
    ASSERT_NE(file->Load(text.c_str(), Configure::ACCESS_READ, Configure::FORMAT_TEXT), nullptr);
    EXPECT_FALSE(file->SaveAs("/dev/full", Configure::FORMAT_BINARY));
    EXPECT_TRUE(file->SaveAs("/dev/full", Configure::FORMAT_TEXT));
    EXPECT_TRUE(file->SaveAs(folder.Path("binary").c_str(), Configure::FORMAT_BINARY));
    file->Release();
}

} // namespace
