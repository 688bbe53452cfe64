// The binary form: the bytes of known trees, and which files a load refuses. That a save holds what the tree holds, for
// any tree, and that any damaged file is safe, is what the fuzzers check.

#include "tests/configure/tree_text.h"

#include "configure/binary/loader.h"
#include "configure/binary/writer.h"
#include "configure/text/read_loader.h"

#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace Configure;
using namespace TestSupport;
using namespace std::string_literals;

/// The bytes of numbers in a file.
std::string Words(std::initializer_list<std::uint32_t> words) {
    std::string bytes;
    for (const std::uint32_t word : words) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift);
    }
    return bytes;
}

std::string Compiled(std::string_view text) {
    Loaded loaded(Family::kText, text);
    return loaded.file->SaveAs("binary", FORMAT_BINARY) ? loaded.files["binary"] : "(refused)";
}

/// The tree, loaded from a block of exactly that size, so that the sanitizers see a read beyond it.
std::string TreeOf(std::string_view bytes) {
    const auto block = std::make_unique<unsigned char[]>(bytes.size());
    std::memcpy(block.get(), bytes.data(), bytes.size());
    BinTree tree;
    const bool loaded = LoadBinary(block.get(), static_cast<std::uint32_t>(bytes.size()), tree);
    return loaded ? TextOf(&tree.tables[0]) : "(refused)";
}

const char* const kText = "a = 1\nab = { x = \"y\" }\nc = { 2, { z = 1 } }";

std::string Example() {
    return "NIBx"s + Words({8, 17, 3, 5, 1, 2}) + "a\0001\0c\0ab\0002\0x\0y\0z\0"s + Words({3, 1, 1, 4, 2, 2}) +
           Words({0x202, 0x184C01, 0, 2, 0x18E400, 4, 0, 0x189400, 6, 4}) + Words({2}) + "\1" + Words({9}) + "\2" +
           Words({6}) + Words({0x201, 0x1E0C00, 11, 13}) + Words({0x201, 0x1E8C00, 15, 2});
}

/// `bytes` with another word at `offset`.
std::string WithWord(std::string bytes, std::size_t offset, std::uint32_t word) {
    return bytes.replace(offset, 4, Words({word}));
}

TEST(BinaryForm, BytesOfKnownTrees) {
    EXPECT_EQ(Compiled(kText), Example());
    EXPECT_EQ(TreeOf(Example()), "a='1' c=['2' {z='1'}] ab={x='y'}");
    EXPECT_EQ(Compiled(""), "NIBx"s + Words({1, 0, 1, 0, 0, 0, 0, 1, 0x200}));
    // Keys and texts share the pool, in the order of their first use, by their exact bytes.
    EXPECT_EQ(Compiled("x = { Case, case, \"x\", Case, \"\" }").substr(28, 13), "x\0Case\0case\0\0"s);
    // Two entries of one key are one node, but count as two in the header.
    const std::string shared = Compiled("a = 1\nb = 9\na = 2\na = 3");
    EXPECT_EQ(shared.substr(16, 4), Words({4}));
    EXPECT_EQ(shared.substr(28 + 8, 8), Words({2, 3}));
}

TEST(BinaryForm, AUnitOfNoKindIsntWritten) {
    char text[] = "a = { 1 }\xFF";
    TextTree tree;
    ASSERT_TRUE(LoadTextForReading(text, sizeof text - 2, tree));
    MemoryFiles files;
    EXPECT_TRUE(WriteBinary(files, "f", &tree.tables[0]));
    static_cast<ReadValue&>(tree.array_units[0]) = ReadValue();
    EXPECT_FALSE(WriteBinary(files, "f", &tree.tables[0]));
    static_cast<ReadValue&>(tree.table_units[0]) = ReadValue();
    EXPECT_FALSE(WriteBinary(files, "f", &tree.tables[0]));
    EXPECT_EQ(files.handles, 0);
}

TEST(BinaryForm, RefusesInvalidFiles) {
    const std::string valid = TreeOf(Example());
    EXPECT_EQ(TreeOf(Example() + "more"), valid);
    EXPECT_EQ(TreeOf(WithWord(Example(), 16, 0xFFFFFFFF)), valid);  // table_unit_count has no upper bound
    EXPECT_EQ(TreeOf(WithWord(Example(), 105, 0xFFFFFFFF)), valid); // a table's number isn't used
    const struct {
        std::size_t offset;
        std::vector<std::uint32_t> words;
    } changes[] = {{0, {0}},                                       // magic
                   {4, {7, 9, 0xFFFFFFFF}},                        // node_count
                   {8, {16, 0xFFFFFFFF}},                          // strings_size
                   {12, {0, 2, 4, 0x80000000, 0xFFFFFFFF}},        // table_count
                   {16, {4}},                                      // table_unit_count
                   {20, {0, 2, 0xFFFFFFFF}},                       // array_count
                   {24, {1, 3, 0xFFFFFFFF}},                       // array_unit_count
                   {45, {2, 4, 0xFFFFFFFF}},                       // unit_counts
                   {57, {0, 3, 5, 0xFFFFFFFC}},                    // node_counts
                   {69, {0x201, 0x203, 0xA02}},                    // too few children, too many, a value and no key
                   {73, {0x184401, 0x184801, 0x185C01, 0x186C01}}, // no value bit, one and no key, two
                   {73, {0x18CC01}},                               // the next sibling's byte
                   {85, {0x182400, 0x186400}},                     // a lower byte than the sibling's, the same
                   {77, {1, 17, 0xFFFFFFFF}},                      // no text starts there
                   {77, {2, 6}},              // a text that the path doesn't spell, and a longer one
                   {101, {0}},                // a shorter one
                   {81, {3, 16}},             // not a text's start
                   {93, {1}},                 // not the next array
                   {109, {1, 3, 0xFFFFFFFF}}, // an array's count
                   {114, {10}}};
    for (const auto& change : changes) {
        for (const std::uint32_t word : change.words) {
            EXPECT_EQ(TreeOf(WithWord(Example(), change.offset, word)), "(refused)") << change.offset << " " << word;
        }
    }
    for (const char type : {'\0', '\3', '\4', '\5', '\10', '\x81'}) {
        EXPECT_EQ(TreeOf(Example().replace(113, 1, 1, type)), "(refused)");
    }
    for (std::size_t size = 0; size < Example().size(); ++size) {
        EXPECT_EQ(TreeOf(Example().substr(0, size)), "(refused)") << size;
    }
    EXPECT_EQ(TreeOf(Example().replace(44, 1, 1, 'z')), "(refused)"); // the last text has no end
    // Fewer keys than announced, fewer nodes.
    EXPECT_EQ(TreeOf(WithWord(WithWord(Example(), 45, 4), 16, 6) + std::string(8, '\0')), "(refused)");
    EXPECT_EQ(TreeOf(WithWord(WithWord(Example(), 65, 3), 4, 9) + std::string(4, '\0')), "(refused)");
    // An array that is its own element and that no container holds.
    EXPECT_EQ(TreeOf("NIBx"s + Words({1, 0, 1, 0, 1, 1, 0, 1, 0x200, 1}) + "\4" + Words({0})), "(refused)");
}

} // namespace
