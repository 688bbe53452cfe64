// The binary form: the bytes of known trees, which files a load accepts and which it refuses, hostile files, and
// failing allocations. The trie's nodes are compared with those of a plain tree of maps.

#include "tests/support/failing_heap.h"
#include "tests/support/small_stack.h"

#include "configure/binary/format.h"
#include "configure/binary/loader.h"
#include "configure/binary/trie.h"
#include "configure/binary/writer.h"
#include "configure/text/read_loader.h"
#include "strings/string_table.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace Configure;
using namespace std::string_literals;

/// A file service with one file in memory, which holds at most `capacity` bytes.
struct MemoryFile : IFileIO {
    void* Open(const char* path, std::int32_t mode) override {
        if (path == nullptr || mode != 1) return nullptr;
        bytes.clear();
        ++open;
        return this;
    }
    void Close(void*) override { --open; }
    std::int32_t GetSize(void*) override { return 0; }
    std::uint32_t Read(void*, void*, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint32_t Write(void*, const void* buffer, std::uint32_t size) override {
        const auto taken = static_cast<std::uint32_t>(std::min<std::size_t>(size, capacity - bytes.size()));
        bytes.append(static_cast<const char*>(buffer), taken);
        return taken;
    }
    bool Exists(const char*) override { return false; }

    std::string bytes;
    std::size_t capacity = 1U << 30;
    int open = 0;
};

/// The bytes of numbers in a file.
std::string Words(std::initializer_list<std::uint32_t> words) {
    std::string bytes;
    for (const std::uint32_t word : words) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift);
    }
    return bytes;
}

std::string Written(ITable* root) {
    MemoryFile file;
    const bool written = WriteBinary(file, "path", root);
    EXPECT_EQ(file.open, 0);
    return written ? file.bytes : "(refused)";
}

void LoadText(std::string text, TextTree& tree) {
    const auto size = static_cast<std::uint32_t>(text.size());
    text += '\xFF';
    ASSERT_TRUE(LoadTextForReading(text.data(), size, tree));
}

std::string Compiled(std::string_view text) {
    TextTree tree;
    LoadText(std::string(text), tree);
    return Written(&tree.tables[0]);
}

/// Loads from a block of exactly that size, so that the sanitizers see a read beyond it.
bool Load(std::string_view bytes, BinTree& tree) {
    const auto block = std::make_unique<unsigned char[]>(bytes.size());
    std::memcpy(block.get(), bytes.data(), bytes.size());
    return LoadBinary(block.get(), static_cast<std::uint32_t>(bytes.size()), tree);
}

std::string NameOf(cstr name) { return name == nullptr ? "" : name; }

/// Calls every getter of a Unit. Returns its value as a text.
std::string Value(IIterator& unit) {
    unit.GetInteger(), unit.GetFloat(), unit.GetBool(), unit.GetInterval(), unit.IsInterval();
    if (unit.IsArray()) return "array "s + NameOf(unit.GetArray()->GetName());
    if (unit.IsTable()) return "table "s + NameOf(unit.GetTable()->GetName());
    return unit.GetString();
}

/// Describes a tree as a text, container by container: `{}` is a table, `[]` an array.
struct TreeWalk {
    void AddUnit(IIterator& unit) {
        text += Value(unit);
        if (unit.IsTable()) tables.push_back(unit.GetTable());
        if (unit.IsArray()) arrays.push_back(unit.GetArray());
    }

    void AddTable(ITable& table) {
        text += '{';
        std::uint32_t count = 0;
        for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit), ++count) {
            text += NameOf(unit->GetKey()) + "=";
            AddUnit(*unit);
            text += ';';
            table.Find(unit->GetKey()), table.FindPath(unit->GetKey()), table.GetInteger(unit->GetKey(), 1);
        }
        EXPECT_EQ(count, table.GetCount());
        table.GetString("absent"), table.GetBool(7U), table.FindFormat("is", 1, "\xFF");
        text += '}';
    }

    void AddArray(IArray& array) {
        text += '[';
        for (std::uint32_t position = 0; position < array.GetCount(); ++position) {
            AddUnit(*array.At(position));
            text += ',';
        }
        EXPECT_EQ(array.At(array.GetCount()), nullptr);
        text += ']';
    }

    std::vector<ITable*> tables;
    std::vector<IArray*> arrays;
    std::string text;
};

/// Puts all known tables before the next array.
std::string WalkedText(BinTree& tree) {
    TreeWalk walk;
    walk.tables.push_back(&tree.tables[0]);
    std::size_t table = 0, array = 0;
    while (table < walk.tables.size() || array < walk.arrays.size()) {
        while (table < walk.tables.size()) walk.AddTable(*walk.tables[table++]);
        if (array < walk.arrays.size()) walk.AddArray(*walk.arrays[array++]);
    }
    EXPECT_EQ(table, tree.tables.Count());
    EXPECT_EQ(array, tree.arrays.Count());
    return walk.text;
}

std::string Loaded(std::string_view bytes) {
    BinTree tree;
    return Load(bytes, tree) ? WalkedText(tree) : "(refused)";
}

const char* const kText = "a = 1\nab = { x = \"y\" }\nc = { 2, { z = 1 } }";

std::string Example() {
    return "NIBx"s + Words({8, 17, 3, 5, 1, 2}) + "a\0001\0c\0ab\0002\0x\0y\0z\0"s + Words({3, 1, 1, 4, 2, 2}) +
           Words({0x202, 0x184C01, 0, 2, 0x18E400, 4, 0, 0x189400, 6, 4}) + Words({2}) + "\1" + Words({9}) + "\2" +
           Words({6}) + Words({0x201, 0x1E0C00, 11, 13}) + Words({0x201, 0x1E8C00, 15, 2});
}

std::string EmptyRoot() { return "NIBx"s + Words({1, 0, 1, 0, 0, 0, 0, 1, 0x200}); }

/// A file with a bit of everything, as the start of hostile ones.
std::string RichFile() {
    return Compiled("_default = { k = 5, _default = {} } t = { a = { {} { x y } { n = { 1 } } } abc = 1 abd = 2 ac = 3 "
                    "b\xE9 = 4 b\xFE = k } abc = 1 u = {} \"\" = 0");
}

/// `bytes` with another word at `offset`.
std::string WithWord(std::string bytes, std::size_t offset, std::uint32_t word) {
    return bytes.replace(offset, 4, Words({word}));
}

TEST(BinaryForm, BytesOfKnownTrees) {
    ASSERT_EQ(Example().size(), 155U);
    EXPECT_EQ(Compiled(kText), Example());
    EXPECT_EQ(Loaded(Example()), "{a=1;c=array c;ab=table ab;}{x=y;}[2,table ,]{z=1;}");
    ASSERT_EQ(EmptyRoot().size(), 40U);
    EXPECT_EQ(Compiled(""), EmptyRoot());
    EXPECT_EQ(Loaded(EmptyRoot()), "{}");
    for (const std::string& bytes : {Example(), EmptyRoot(), RichFile()}) {
        BinTree tree;
        ASSERT_TRUE(Load(bytes, tree));
        EXPECT_EQ(Written(&tree.tables[0]), bytes); // the bytes depend on the content alone
    }
}

TEST(BinaryForm, PoolAndSharedKeys) {
    const std::string texts = Compiled("x = { Case, case, \"x\", Case, \"\" }");
    EXPECT_EQ(texts.substr(28, 13), "x\0Case\0case\0\0"s);
    EXPECT_EQ(Loaded(texts), "{x=array x;}[Case,case,x,Case,,]");
    const std::string shared = Compiled("a = 1\nb = 9\na = 2\na = 3");
    EXPECT_EQ(shared.substr(16, 4), Words({4})); // table_unit_count has them all
    EXPECT_EQ(shared.substr(28 + 8, 8), Words({2, 3}));
    EXPECT_EQ(Loaded(shared).size(), Loaded(Compiled("a = 1\nb = 9")).size());

    TextTree tree;
    LoadText("a = 1\na = 2\nb = { 5 }", tree);
    const auto units = tree.table_units.begin();
    std::uint32_t last = 0;
    for (std::uint32_t index = 0; index < 3; ++index) last = std::strcmp(units[index].key, "a") == 0 ? index : last;
    EXPECT_EQ(Loaded(Written(&tree.tables[0])), "{a="s + units[last].value.text + ";b=array b;}[5,]");
    const auto value = units[last].value;
    units[last].value.text = nullptr;
    EXPECT_EQ(Loaded(Written(&tree.tables[0])), "{a=;b=array b;}[5,]");
    units[last].kind = KIND_NONE;
    EXPECT_EQ(Written(&tree.tables[0]), "(refused)");
    units[last].kind = KIND_ARRAY;
    units[last].value.array = &tree.arrays[0];
    EXPECT_EQ(Written(&tree.tables[0]), "(refused)");
    units[last].kind = KIND_STRING;
    units[last].value = value;
    tree.array_units[0].kind = KIND_NONE;
    EXPECT_EQ(Written(&tree.tables[0]), "(refused)");
    EXPECT_EQ(Written(nullptr), "(refused)");
}

TEST(BinaryForm, LookupsIterationAndDefaults) {
    EXPECT_EQ(Loaded(Compiled("aa = 1, b = 2, \xE9 = 3, \xFE\xE9 = 4, az = 5, a = 6")),
              "{a=6;b=2;\xE9=3;aa=1;az=5;\xFE\xE9=4;}");
    BinTree tree;
    ASSERT_TRUE(
        Load(Compiled("_default = { a = 1, b = 2, _default = { deep = 3 } } x = { a = 9, y = { q = 1 } }"), tree));
    ITable* x = tree.tables[0].GetTable("X");
    EXPECT_EQ(x->GetInteger("A", 0), 9);
    EXPECT_EQ(x->GetInteger("b", 0), 2);
    EXPECT_EQ(x->Find("b"), nullptr);
    EXPECT_EQ(x->GetTable("y")->GetInteger("deep", 0), 3);
    EXPECT_EQ(tree.tables[0].GetTable("_default")->GetInteger("b", 0), 2);
    for (const char* key : {"a", "xx", "_defaul", "_default2", "\xFF"}) EXPECT_EQ(tree.tables[0].Find(key), nullptr);
}

/// A trie as a plain tree.
struct ModelNode {
    std::map<unsigned char, ModelNode> children;
    std::uint32_t entry = TrieBuilder::kNoEntry;
};

TEST(BinaryForm, TrieBuilderAgreesWithAPlainTree) {
    std::mt19937 random(7);
    TrieBuilder trie;
    for (int round = 0; round < 300; ++round) {
        ModelNode root;
        trie.Clear();
        const std::string start(random() % 20, 'p'); // keys differ in the first window of the sort or later
        for (std::uint32_t entry = 0; entry < random() % 60; ++entry) {
            std::string key = start;
            for (auto length = random() % (round % 2 == 0 ? 4 : 30); length != 0; --length)
                key += "ab\x7F\x80\xFF"[random() % 5];
            ASSERT_TRUE(trie.Add(Tessarin::string_table->Intern(key.c_str()), true));
            ModelNode* node = &root;
            for (const char byte : key) node = &node->children[static_cast<unsigned char>(byte)];
            node->entry = entry;
        }
        ASSERT_TRUE(trie.Build());
        std::vector<std::pair<unsigned char, const ModelNode*>> queue = {{'\0', &root}};
        for (std::size_t head = 0; head < queue.size(); ++head) {
            const auto [byte, model] = queue[head];
            ASSERT_LT(head, trie.Nodes().Count());
            const TrieBuilder::Node node = trie.Nodes()[static_cast<std::uint32_t>(head)];
            std::uint32_t word = WordOfKeyByte(byte) | static_cast<std::uint32_t>(model->children.size());
            if (head == 0) word |= kRootBit;
            if (model->entry != TrieBuilder::kNoEntry) word |= kTerminalBit;
            ASSERT_EQ(node.word, word);
            ASSERT_EQ(node.entry, model->entry);
            for (const auto& [child_byte, child] : model->children) queue.emplace_back(child_byte, &child);
        }
        ASSERT_EQ(queue.size(), trie.Nodes().Count());
    }
}

TEST(BinaryForm, RefusesInvalidFiles) {
    const std::string valid = Loaded(Example());
    EXPECT_EQ(Loaded(Example() + "more"), valid);
    EXPECT_EQ(Loaded(WithWord(Example(), 16, 0xFFFFFFFF)), valid);  // table_unit_count has no upper bound
    EXPECT_EQ(Loaded(WithWord(Example(), 105, 0xFFFFFFFF)), valid); // a table's number isn't used
    struct Change {
        std::size_t offset;
        std::vector<std::uint32_t> words;
    };
    const Change changes[] = {{0, {0}},                                // magic
                              {4, {7, 9, 0xFFFFFFFF}},                 // node_count
                              {8, {16, 0xFFFFFFFF}},                   // strings_size
                              {12, {0, 2, 4, 0x80000000, 0xFFFFFFFF}}, // table_count
                              {16, {4}},                               // table_unit_count
                              {20, {0, 2, 0xFFFFFFFF}},                // array_count
                              {24, {1, 3, 0xFFFFFFFF}},                // array_unit_count
                              {45, {2, 4, 0xFFFFFFFF}},                // unit_counts
                              {57, {0, 3, 5, 0xFFFFFFFC}},             // node_counts
                              {69, {0x201, 0x203, 0xA02}},             // too few children, too many, a value and no key
                              {73, {0x184401, 0x184801, 0x185C01, 0x186C01}}, // no value bit, one and no key, two
                              {73, {0x18CC01}},                               // the next sibling's byte
                              {85, {0x182400, 0x186400}}, // a lower byte than the sibling's, the same
                              {77, {1, 17, 0xFFFFFFFF}},  // no text starts there
                              {77, {2, 6}},               // a text that the path doesn't spell, and a longer one
                              {101, {0}},                 // a shorter one
                              {81, {3, 16}},
                              {93, {1}},                 // not the next array
                              {109, {1, 3, 0xFFFFFFFF}}, // an array's count
                              {114, {10}}};
    for (const Change& change : changes) {
        for (const std::uint32_t word : change.words) {
            EXPECT_EQ(Loaded(WithWord(Example(), change.offset, word)), "(refused)") << change.offset << " " << word;
        }
    }
    for (const char type : {'\0', '\3', '\4', '\5', '\10', '\x81'}) {
        EXPECT_EQ(Loaded(Example().replace(113, 1, 1, type)), "(refused)");
    }
    EXPECT_EQ(Loaded(Example().replace(44, 1, 1, 'z')), "(refused)"); // the last text has no end
    // Fewer keys than announced, fewer nodes.
    EXPECT_EQ(Loaded(WithWord(WithWord(Example(), 45, 4), 16, 6) + std::string(8, '\0')), "(refused)");
    EXPECT_EQ(Loaded(WithWord(WithWord(Example(), 65, 3), 4, 9) + std::string(4, '\0')), "(refused)");
    // An array that is its own element and that no container holds.
    EXPECT_EQ(Loaded("NIBx"s + Words({1, 0, 1, 0, 1, 1, 0, 1, 0x200, 1}) + "\4" + Words({0})), "(refused)");
}

TEST(BinaryForm, DamagedFilesAreSafe) {
    std::mt19937 random(11);
    for (const std::string& file : {Example(), EmptyRoot(), RichFile()}) {
        ASSERT_NE(Loaded(file), "(refused)");
        for (std::size_t size = 0; size < file.size(); ++size) {
            EXPECT_EQ(Loaded(file.substr(0, size)), "(refused)") << size;
        }
        for (std::size_t place = 0; place < file.size(); ++place) {
            for (const int flip : {0x01, 0x04, 0x08, 0x10, 0x20, 0x80, 0xFF}) {
                std::string bytes = file;
                bytes[place] = static_cast<char>(bytes[place] ^ flip);
                Loaded(bytes);
            }
            for (const char byte : {'\0', '\1', '\xFF'}) Loaded(std::string(file).replace(place, 1, 1, byte));
        }
        for (int round = 0; round < 20000; ++round) {
            std::string bytes = file;
            for (auto count = 2 + random() % 6; count != 0; --count) {
                // Mostly bytes of the file itself, which turn one valid number into another.
                bytes[random() % bytes.size()] =
                    random() % 4 == 0 ? static_cast<char>(random()) : bytes[random() % bytes.size()];
            }
            Loaded(bytes);
        }
    }
}

TEST(BinaryForm, EveryAllocationMayFail) {
    const std::string file = RichFile();
    const std::size_t in_load = TestSupport::FailEachAllocation([&](TestSupport::FailingHeap& heap) {
        BinTree tree;
        const bool loaded = LoadBinary(reinterpret_cast<const unsigned char*>(file.data()),
                                       static_cast<std::uint32_t>(file.size()), tree);
        EXPECT_NE(loaded, heap.Failed());
        tree.Clear();
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_GE(in_load, 7U);
    BinTree tree;
    ASSERT_TRUE(Load(file, tree));
    MemoryFile target;
    target.bytes.reserve(2 * file.size()); // so that it allocates nothing itself
    const std::size_t in_write = TestSupport::FailEachAllocation([&](TestSupport::FailingHeap& heap) {
        const bool written = WriteBinary(target, "path", &tree.tables[0]);
        EXPECT_NE(written, heap.Failed());
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_GE(in_write, 10U);
    for (target.capacity = 0; target.capacity < file.size(); ++target.capacity) {
        EXPECT_FALSE(WriteBinary(target, "path", &tree.tables[0])); // writes are cut short
    }
    EXPECT_TRUE(WriteBinary(target, "path", &tree.tables[0]));
    EXPECT_FALSE(WriteBinary(target, "path", nullptr));
    EXPECT_EQ(target.bytes, ""); // truncated nevertheless
    EXPECT_FALSE(WriteBinary(target, nullptr, &tree.tables[0]));
    EXPECT_EQ(target.open, 0);
}

TEST(BinaryForm, DeepNestingUsesNoStack) {
    TestSupport::RunOnSmallStack([] {
        std::string text;
        for (int depth = 0; depth < 50000; ++depth) text += "a={{";
        const std::string bytes = Compiled(text);
        BinTree tree;
        ASSERT_TRUE(Load(bytes, tree));
        EXPECT_EQ(tree.arrays.Count(), 50000U);
        EXPECT_EQ(Written(&tree.tables[0]), bytes);
    });
}

} // namespace
