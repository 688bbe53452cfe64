// Files as the library opens, measures, reads and writes them, and the calls that a host's own file service gets.

#include "tessarin/configure.h"
#include "tessarin/tab_files.h"

#include "files/file_io.h"
#include "files/whole_file.h"
#include "tests/support/failing_heap.h"
#include "tests/support/memory_files.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace {

namespace fs = std::filesystem;
using TestSupport::FailingHeap;
using TestSupport::ReadWhole;
using TestSupport::TemporaryFolder;

/// Whether a file has one spelling of its name, and `/` separates folders.
bool IsPosix() { return fs::path::preferred_separator == '/'; }

/// 0 where the system doesn't list them.
std::ptrdiff_t OpenFiles() {
    if (!IsPosix()) return 0;
    std::error_code none;
    const fs::directory_iterator files("/proc/self/fd", none);
    return none ? 0 : std::distance(begin(files), end(files));
}

bool ReadsWhole(const char* path) {
    Tessarin::WholeFile whole;
    return whole.Read(path, 2);
}

class FileAccess : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(OpenFiles(), open_before); }

    TemporaryFolder folder;
    std::ptrdiff_t open_before = OpenFiles();
    Tessarin::FileIO service;
};

TEST_F(FileAccess, ReadsAndRewindsAFile) {
    Tessarin::IRead* file = CreateReadFile(folder.File("a", std::string("ab\0", 3)).c_str());
    ASSERT_NE(file, nullptr);
    char buffer[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(file->Read(buffer, 3, 4), 0U);
    EXPECT_EQ(file->Read(nullptr, 4, 4), 0U);
    EXPECT_EQ(std::memcmp(buffer, "xxxx", 4), 0);
    EXPECT_EQ(file->Read(buffer, 2, 2), 2U);
    EXPECT_EQ(file->GetSize(), 3);
    EXPECT_EQ(file->Read(buffer, 4, 4), 3U);
    EXPECT_EQ(std::memcmp(buffer, "ab\0x", 4), 0);
    EXPECT_EQ(file->Read(buffer, 4, 4), 0U);
    EXPECT_EQ(file->GetSize(), 3);
    EXPECT_EQ(file->Read(buffer, 4, 0), 0U);
    EXPECT_EQ(file->Read(buffer, 1, 1), 1U);
    EXPECT_EQ(file->Release(), 1U);
}

TEST_F(FileAccess, WritesAFile) {
    const std::string path = folder.File("a", "longer than before");
    Tessarin::IWrite* file = CreateWriteFile(path.c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(ReadWhole(path), "");
    EXPECT_EQ(file->Write("a\r\n", 3), 3U);
    EXPECT_EQ(file->Write(nullptr, 3), 0U);
    EXPECT_EQ(file->Write("", 0), 0U);
    EXPECT_EQ(file->Write("\0b", 2), 2U);
    EXPECT_EQ(file->Release(), 1U);
    EXPECT_EQ(ReadWhole(path), std::string("a\r\n\0b", 5));
}

TEST_F(FileAccess, HasNoObjectForWhatCantBeOpened) {
    static_cast<void>(folder.File("a.txt", ""));
    for (const std::string& path : {folder.Path("missing"), folder.Path("missing/a"), std::string()}) {
        EXPECT_EQ(CreateReadFile(path.c_str()), nullptr) << path;
    }
    for (const std::string& path : {folder.Path("missing/a"), folder.Path(""), std::string()}) {
        EXPECT_EQ(CreateWriteFile(path.c_str()), nullptr) << path;
    }
    EXPECT_EQ(CreateReadFile(nullptr), nullptr);
    EXPECT_EQ(CreateWriteFile(nullptr), nullptr);
    // The objects take a path as it is; only the service tries other spellings.
    if (IsPosix()) {
        EXPECT_EQ(CreateReadFile(folder.Path("\\A.TXT").c_str()), nullptr);
    }
}

TEST_F(FileAccess, TruncatesNothingWithoutMemory) {
    const std::string path = folder.File("a", "kept");
    {
        const FailingHeap heap(0);
        EXPECT_EQ(CreateReadFile(path.c_str()), nullptr);
        EXPECT_TRUE(heap.Failed());
    }
    {
        const FailingHeap heap(0);
        EXPECT_EQ(CreateWriteFile(path.c_str()), nullptr);
        EXPECT_TRUE(heap.Failed());
    }
    EXPECT_EQ(ReadWhole(path), "kept");
}

/// The size as the file object and as the service measure it, which must agree; -2 if there is no such file.
std::int32_t SizeOf(const std::string& path) {
    Tessarin::FileIO service;
    void* handle = service.Open(path.c_str(), 0);
    const std::int32_t size = service.GetSize(handle);
    service.Close(handle);
    Tessarin::IRead* file = CreateReadFile(path.c_str());
    if (file == nullptr || handle == nullptr) return -2;
    EXPECT_EQ(file->GetSize(), size);
    file->Release();
    return size;
}

TEST_F(FileAccess, MeasuresWhat31BitsHold) {
    const std::string path = folder.File("big", "");
    EXPECT_EQ(SizeOf(path), 0);
    constexpr std::uintmax_t kMost = std::numeric_limits<std::int32_t>::max();
    fs::resize_file(path, kMost);
    EXPECT_EQ(SizeOf(path), std::numeric_limits<std::int32_t>::max());
    for (const std::uintmax_t size : {kMost + 1, 2 * kMost + 2, 2 * kMost + 3}) {
        fs::resize_file(path, size);
        EXPECT_EQ(SizeOf(path), -1) << size;
        EXPECT_FALSE(ReadsWhole(path.c_str()));
    }
    EXPECT_FALSE(ReadsWhole(folder.Path("").c_str()));
}

TEST_F(FileAccess, ServiceReadsWhatItWrote) {
    const std::string path = folder.File("a", "longer than before");
    void* handle = service.Open(path.c_str(), 1);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(service.Write(handle, "1\r\n2", 4), 4U);
    EXPECT_EQ(service.Write(handle, nullptr, 4), 0U);
    EXPECT_EQ(service.GetSize(handle), 4);
    char buffer[5] = "xxxx";
    EXPECT_EQ(service.Read(handle, buffer, 4, 4), 4U);
    EXPECT_STREQ(buffer, "1\r\n2");
    service.Close(handle);

    handle = service.Open(path.c_str(), 0);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(service.Read(handle, buffer, 3, 4), 0U);
    EXPECT_EQ(service.Read(handle, nullptr, 4, 4), 0U);
    EXPECT_EQ(service.Read(handle, buffer, 4, 3), 3U);
    EXPECT_EQ(service.GetSize(handle), 4);
    EXPECT_EQ(service.Read(handle, buffer, 5, 5), 4U);
    service.Close(handle);
}

TEST_F(FileAccess, ServiceRefusesWhatIsNoFile) {
    const std::string path = folder.File("a", "kept");
    for (const std::int32_t mode : {-1, 2, 3}) EXPECT_EQ(service.Open(path.c_str(), mode), nullptr) << mode;
    for (const std::int32_t mode : {0, 1}) {
        EXPECT_EQ(service.Open(nullptr, mode), nullptr);
        EXPECT_EQ(service.Open("", mode), nullptr);
        EXPECT_EQ(service.Open(folder.Path("missing/a").c_str(), mode), nullptr);
    }
    EXPECT_EQ(ReadWhole(path), "kept");
    EXPECT_FALSE(service.Exists(nullptr));
    EXPECT_FALSE(service.Exists(""));
    EXPECT_FALSE(service.Exists(folder.Path("missing").c_str()));
    EXPECT_TRUE(service.Exists(path.c_str()));

    char buffer[4];
    EXPECT_EQ(service.GetSize(nullptr), 0);
    EXPECT_EQ(service.Read(nullptr, buffer, 4, 4), 0U);
    EXPECT_EQ(service.Write(nullptr, buffer, 4), 0U);
    service.Close(nullptr);
}

TEST_F(FileAccess, NamesAreUtf8AndReadInPathForm) {
    const std::string name = "\xC3\x84 \xE2\x82\xAC.txt", path = folder.Path(name);
    Tessarin::IWrite* file = CreateWriteFile(path.c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->Write("text", 4), 4U);
    file->Release();
    EXPECT_EQ(fs::file_size(reinterpret_cast<const char8_t*>(path.c_str())), 4U);
    EXPECT_EQ(SizeOf(path), 4);
    EXPECT_TRUE(service.Exists(path.c_str()));

    fs::create_directory(folder.Path("Data"));
    static_cast<void>(folder.File("Data/Items.Tab", "host"));
    EXPECT_TRUE(service.Exists(folder.Path("data\\items.tab").c_str()));
    EXPECT_FALSE(service.Exists(folder.Path("data\\items.txt").c_str()));
}

TEST_F(FileAccess, ReadsAWholeFileWithZerosBehindIt) {
    for (const std::string& text : {std::string(), std::string("a\0b", 3), std::string(200'000, '\xff')}) {
        const std::string path = folder.File("whole", text);
        for (const std::uint32_t spare : {0U, 1U, 2U}) {
            Tessarin::WholeFile whole;
            ASSERT_TRUE(whole.Read(path.c_str(), spare));
            ASSERT_EQ(whole.size, text.size());
            ASSERT_EQ(whole.bytes == nullptr, whole.size + spare == 0);
            EXPECT_EQ(std::string(whole.bytes.get(), whole.size + spare), text + std::string(spare, '\0'));
        }
    }
    for (const char* path : {static_cast<const char*>(nullptr), "", "/missing/file"}) EXPECT_FALSE(ReadsWhole(path));
}

/// Records its calls.
struct RecordingFiles : TestSupport::MemoryFiles {
    void* Open(const char* path, std::int32_t mode) override {
        calls += "open " + std::to_string(mode);
        return MemoryFiles::Open(path, mode);
    }
    void Close(void* handle) override {
        calls += ", close";
        MemoryFiles::Close(handle);
    }
    std::int32_t GetSize(void* handle) override {
        calls += ", size";
        return MemoryFiles::GetSize(handle);
    }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        calls += ", read " + std::to_string(buffer_size) + " " + std::to_string(count);
        return MemoryFiles::Read(handle, buffer, buffer_size, count);
    }

    std::string calls;
};

/// A host may check the arguments of its calls, or support only these calls.
TEST(HostsFileService, SeesTheseCallsOfALoad) {
    const struct {
        std::optional<std::int32_t> claimed_size;
        const char* text; // null for no such file
        const char* configuration;
        const char* tab_file;
    } cases[] = {
        {{}, "a = 1\n", "open 0, size, read 7 6, close", "open 0, size, read 6 6, close"},
        {{}, "", "open 0, size, read 1 0, close", "open 0, size, close"},
        {-1, "a", "open 0, size, close", "open 0, size, close"},
        {{}, nullptr, "open 0", "open 0"},
    };
    for (const auto& each : cases) {
        RecordingFiles files;
        if (each.text != nullptr) files["f"] = each.text;
        files.claimed_size = each.claimed_size;
        Configure::IFile* configuration = CreateRLFile(&files);
        static_cast<void>(configuration->Load("f", Configure::ACCESS_READ, Configure::FORMAT_TEXT));
        EXPECT_EQ(std::exchange(files.calls, {}), each.configuration);
        configuration->Release();
        ITabFile* tab_file = CreateTabFile(&files);
        static_cast<void>(tab_file->Open("f", 0));
        EXPECT_EQ(files.calls, each.tab_file);
        tab_file->Release();
    }
}

TEST_F(FileAccess, ReadsNoWholeFileWithoutMemory) {
    const std::string path = folder.File("whole", "text");
    const std::size_t failures = TestSupport::FailEachAllocation([&](const FailingHeap& heap) {
        const bool read = ReadsWhole(path.c_str());
        EXPECT_EQ(read, !heap.Failed());
    });
    EXPECT_GE(failures, 2U); // the object, the bytes, and on some hosts the name
}

} // namespace
