// The page of the binary form shows a text and the bytes that it compiles to, with the meaning of each. The test reads
// both from the page, compiles the text and compares the bytes.

#include "tests/support/temporary_folder.h"

#include <tessarin/configure.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

/// The lines of the next fenced block.
std::string ReadBlock(std::istream& page) {
    std::string block;
    std::string line;
    while (std::getline(page, line) && line.substr(0, 3) != "```") {
    }
    while (std::getline(page, line) && line.substr(0, 3) != "```") block += line + '\n';
    return block;
}

/// The bytes of a dump: each line has its offset, bytes in hexadecimal, and after a bar their meaning.
std::string BytesOf(const std::string& dump) {
    std::string bytes;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line.substr(0, line.find('|')));
        std::size_t offset = 0;
        words >> std::dec >> offset >> std::hex;
        EXPECT_EQ(offset, bytes.size()) << line;
        for (unsigned byte = 0; words >> byte;) bytes += static_cast<char>(byte);
    }
    return bytes;
}

TEST(BinaryPage, ShowsTheBytesThatSaveAsWrites) {
    const TestSupport::TemporaryFolder folder;
    std::ifstream page(BINARY_PAGE);
    for (std::string line; std::getline(page, line) && line != "## An example";) {
    }
    std::ofstream(folder.Path("page.txt")) << ReadBlock(page);
    const std::string bytes = BytesOf(ReadBlock(page));
    Configure::IFile* file = CreateRLFile(nullptr);
    ASSERT_NE(file->Load(folder.Path("page.txt").c_str(), Configure::ACCESS_READ, Configure::FORMAT_TEXT), nullptr);
    ASSERT_TRUE(file->SaveAs(folder.Path("page.bin").c_str(), Configure::FORMAT_BINARY));
    file->Release();
    std::ifstream saved(folder.Path("page.bin"), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(saved), {}), bytes);
    EXPECT_EQ(bytes.size(), 155U);
}

} // namespace
