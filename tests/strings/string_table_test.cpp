// Interned strings: the normal forms, one address for equal texts, and limits of length. Plain loops over bytes are the
// reference for the hash and the comparison by words.

#include "configure/tree/key_index.h"
#include "strings/keyed_hash.h"
#include "strings/string_hash.h"
#include "strings/string_table.h"
#include "tessarin/interned_strings.h"
#include "tests/support/at_once.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Tessarin::CstrLength;
using Tessarin::StringTable;
using Tessarin::TextForm;

using InternFunction = cstr (*)(const char*);

TEST(InternedStrings, EachFunctionInternsItsNormalForm) {
    const std::string long_path(255, 'p');
    const std::string cut_in_separators = std::string(254, 'Q') + "//R";
    const struct {
        InternFunction intern;
        std::string text, expected;
    } cases[] = {
        {cstr_string, "Key \xC3\x84/\\", "Key \xC3\x84/\\"},
        {cstr_string0, "Key", "Key"},
        {cstr_string, "", ""},
        {cstr_tolower, "AKEYZ\x80\xC4\xFF@[`{az", "akeyz\x80\xC4\xFF@[`{az"},
        {cstr_tolower, "", ""},
        {cstr_path, "", ""},
        {cstr_path, "A//B\\\\C/", "a\\b\\c\\"},
        {cstr_path, "/x", "\\x"},
        {cstr_path, "\\/\\/x", "\\x"},
        {cstr_path, "..\\Data", "..\\data"},
        {cstr_path, "./C:/\xC4.B", ".\\c:\\\xC4.b"},
        {cstr_path0, "A/b", "a\\b"},
        {cstr_path, long_path, long_path},
        {cstr_path, long_path + "x", long_path},
        {cstr_path, long_path + "/", long_path},
        {cstr_path, std::string(400, '/') + "end", "\\end"}, // bytes written count, not bytes read
        {cstr_path, cut_in_separators, std::string(254, 'q') + "\\"},
    };
    for (const auto& row : cases) {
        const cstr interned = row.intern(row.text.c_str());
        ASSERT_NE(interned, nullptr) << row.text;
        EXPECT_STREQ(interned, row.expected.c_str());
        EXPECT_EQ(CstrLength(interned), row.expected.size()) << row.text;
        EXPECT_EQ(interned, cstr_string(row.expected.c_str())) << row.text; // the forms share one table
        EXPECT_EQ(interned, cstr_string(interned)) << row.text;
    }
}

TEST(InternedStrings, NullInputPerFunction) {
    for (const InternFunction function : {cstr_string, cstr_tolower, cstr_path, cstr_find}) {
        EXPECT_EQ(function(nullptr), nullptr);
    }
    EXPECT_EQ(cstr_string0(nullptr), cstr_string(""));
    EXPECT_EQ(cstr_path0(nullptr), cstr_path(".\\"));
    EXPECT_STREQ(cstr_path0(nullptr), ".\\");
}

TEST(InternedStrings, FindNeitherAddsNorNormalises) {
    EXPECT_EQ(cstr_find("find\\me"), nullptr);
    EXPECT_EQ(cstr_find("find\\me"), nullptr);
    const cstr interned = cstr_path("Find/Me");
    EXPECT_EQ(cstr_find("find\\me"), interned);
    EXPECT_EQ(cstr_find("Find/Me"), nullptr);
    EXPECT_EQ(cstr_find("find\\m"), nullptr);
}

/// The hash by its definition, byte for byte.
std::uint32_t HashByByte(const std::string& text) {
    std::uint32_t hash = 0;
    for (const char byte : text) hash = hash * 131 + static_cast<std::uint32_t>(static_cast<signed char>(byte));
    return hash & 0x7FFFFFFF;
}

/// Hash and comparison of `text` must be those of `expected`, its form, and no other text may compare equal to it.
template <TextForm form>
void ExpectForm(const std::string& expected, const std::vector<char>& text) {
    EXPECT_EQ(Tessarin::HashOfText<form>(text.data(), text.size()), HashByByte(expected)) << expected;
    EXPECT_TRUE(Tessarin::EqualTexts<form>(expected.data(), text.data(), text.size())) << expected;
    for (std::string other = expected; char& byte : other) {
        byte = static_cast<char>(byte ^ 0x20); // the bit between a capital and its small letter
        EXPECT_FALSE(Tessarin::EqualTexts<form>(other.data(), text.data(), text.size())) << expected;
        byte = static_cast<char>(byte ^ 0x20);
    }
}

TEST(StringHash, AgreesWithALoopOverBytesAtEveryLength) {
    EXPECT_EQ(HashByByte("abc"), 1677554U);
    // Letters and their neighbours; the second half has bytes of 0x80 and above, with which a word takes another
    // branch.
    const std::string alphabet = "@AMZ[`amz{ 09\x01\x7F~@AMZ[`amz{\x80\xC1\xDA\xE1\xFF\x9F";
    for (std::size_t length = 0; length < 40; ++length) {
        for (std::size_t start = 0; start < alphabet.size(); ++start) {
            std::string plain;
            for (std::size_t i = 0; i < length; ++i)
                plain += alphabet[(start + i) % (start < 16 ? 16 : alphabet.size())];
            std::string lower = plain;
            for (char& byte : lower) byte = Tessarin::LowerCase(byte);
            const std::vector<char> text(plain.begin(), plain.end()); // without a NUL: nothing beyond it may be read
            ExpectForm<TextForm::kAsIs>(plain, text);
            ExpectForm<TextForm::kLowerCase>(lower, text);
        }
    }
}

TEST(KeyedHash, IsSipHash) {
    constexpr Tessarin::TextKey kKey = {0x0706050403020100, 0x0F0E0D0C0B0A0908};
    const std::string bytes("\0\1\2\3\4\5\6\7\x8\x9\xA\xB\xC\xD\xE", 15);
    const struct {
        std::size_t length;
        std::uint64_t one_three, two_four;
    } rows[] = {{0, 0xABAC0158050FC4DC, 0x726FDB47DD0E0E31},
                {1, 0xC9F49BF37D57CA93, 0x74F839C593DC67FD},
                {7, 0xD3927D989BB11140, 0xAB0200F58B01D137},
                {8, 0x369095118D299A8E, 0x93F5F5799A932462},
                {15, 0xD320D86D2A519956, 0xA129CA6149BE45E5}};
    for (const auto& row : rows) {
        const std::vector<char> text(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(row.length));
        const auto hash = Tessarin::KeyedHashOfText<TextForm::kAsIs>(kKey, text.data(), text.size());
        const auto two_four =
            Tessarin::KeyedHashOfText<TextForm::kAsIs, Tessarin::SipHash<2, 4>>(kKey, text.data(), text.size());
        EXPECT_EQ(hash, row.one_three) << row.length;
        EXPECT_EQ(two_four, row.two_four) << row.length;
    }
    const auto folded = Tessarin::KeyedHashOfText<TextForm::kLowerCase>(kKey, "SOME Key 12", 11);
    EXPECT_EQ(folded, Tessarin::KeyedHashOfText<TextForm::kAsIs>(kKey, "some key 12", 11));
}

/// Different texts of one hash: "ab" and "b\xDF" have the same, so each pair of letters may be either.
std::vector<std::string> TextsOfOneHash(unsigned pairs) {
    std::vector<std::string> texts;
    for (std::uint32_t n = 0; n < std::uint32_t{1} << pairs; ++n) {
        std::string text;
        for (unsigned i = 0; i < pairs; ++i) text += (n >> i & 1) == 0 ? "ab" : "b\xDF";
        texts.push_back(text);
    }
    return texts;
}

/// Texts of one bucket with several hashes: with it, a bucket becomes long by its number of texts alone.
std::vector<std::string> TextsOfOneBucket(std::size_t count) {
    std::vector<std::string> texts = {"\xFF\x80\xFE\x81"};
    for (std::uint32_t n = 1; texts.size() < count; ++n) {
        std::string text(4, '\0');
        for (unsigned i = 0; i < 4; ++i) text[i] = static_cast<char>(n >> (7 * i) | 0x80U);
        if (HashByByte(text) % 99991 == HashByByte(texts[0]) % 99991 && text != texts[0]) texts.push_back(text);
    }
    return texts;
}

TEST(StringTable, DistinguishesTextsOfOneBucket) {
    // Of 16384 texts in a trie some pairs agree in the first 24 bits of the keyed hash, and need a second one.
    for (const std::vector<std::string>& texts : {TextsOfOneHash(14), TextsOfOneBucket(70)}) {
        StringTable strings({1, 2});
        std::vector<cstr> interned;
        for (const std::string& text : texts) {
            EXPECT_EQ(strings.Find(text.c_str()), nullptr);
            interned.push_back(strings.Intern(text.c_str()));
            ASSERT_EQ(std::string(interned.back()), text);
        }
        for (std::size_t i = 0; i < texts.size(); ++i) {
            ASSERT_EQ(strings.Find(texts[i].c_str()), interned[i]);
            ASSERT_EQ(strings.Intern(texts[i].c_str()), interned[i]);
        }
    }
}

TEST(StringTableThreads, AgreeOnTextsOfOneHash) {
    StringTable strings;
    const std::vector<std::string> texts = TextsOfOneHash(10);
    std::vector<std::vector<cstr>> interned(TestSupport::kThreads);
    TestSupport::AtOnce([&](int thread) {
        for (const std::string& text : texts) {
            const cstr found = strings.Find(text.c_str());
            std::vector<cstr>& own = interned[static_cast<std::size_t>(thread)];
            own.push_back(strings.Intern(text.c_str()));
            EXPECT_TRUE(found == nullptr || found == own.back());
        }
    });
    for (const std::vector<cstr>& own : interned) EXPECT_EQ(own, interned[0]);
}

// The first of equal keys is found, whichever of its two hashes the index uses, and whatever the secret is.
TEST(KeyIndex, FindsTheFirstOfEqualKeys) {
    struct Unit {
        cstr key;
    };
    const Tessarin::ProcessSecret own = Tessarin::process_secret;
    for (const unsigned pairs : {1U, 10U}) {
        std::vector<Unit> units;
        for (const std::string& text : TextsOfOneHash(pairs)) units.push_back({cstr_string(text.c_str())});
        const auto distinct = units.size();
        units.insert(units.end(), units.rbegin(), units.rend());
        const auto count = static_cast<std::uint32_t>(units.size());
        for (const std::uint64_t number : {1U, 2U}) {
            Tessarin::process_secret = {{number, number}, {number * 2 + 1, number * 4 + 1}};
            std::vector<std::uint32_t> slots(Configure::KeyIndex::SlotsFor(count));
            Configure::KeyIndex index;
            index.Build(slots.data(), units.data(), count);
            for (std::size_t i = 0; i < distinct; ++i) {
                ASSERT_EQ(index.Find(units.data(), units[i].key, 2 * pairs), &units[i]);
            }
            EXPECT_EQ(index.Find(units.data(), "AB", 2), pairs == 1 ? units.data() : nullptr);
            EXPECT_EQ(index.Find(units.data(), "zz", 2), nullptr);
        }
    }
    Tessarin::process_secret = own;
}

TEST(StringTable, NewArenasMoveNoText) {
    constexpr int kTexts = 120000; // of 11 to 16 bytes and their lengths: two arenas and a half
    StringTable strings;
    std::vector<cstr> interned;
    const auto text_of = [](int n) { return "some key " + std::to_string(n); };
    for (int n = 0; n < kTexts; ++n) interned.push_back(strings.Intern(text_of(n).c_str()));
    for (int n = 0; n < kTexts; ++n) {
        ASSERT_EQ(std::string(interned[static_cast<std::size_t>(n)]), text_of(n));
        ASSERT_EQ(strings.Intern(text_of(n).c_str()), interned[static_cast<std::size_t>(n)]);
    }
}

TEST(StringTable, LongestTextFillsAnArena) {
    const std::string longest(0x100000 - 9, 'L');
    const std::string beyond = longest + "L";
    StringTable strings;
    const cstr interned = strings.Intern(longest.c_str());
    ASSERT_NE(interned, nullptr);
    EXPECT_EQ(CstrLength(interned), longest.size());
    EXPECT_EQ(strings.Intern(longest.c_str()), interned);
    EXPECT_EQ(strings.Intern(beyond.c_str()), nullptr);
    EXPECT_EQ(strings.InternLowerCase(beyond.c_str()), nullptr);
    EXPECT_EQ(strings.Find(beyond.c_str()), nullptr);
}

TEST(StringTable, EveryAllocationMayFail) {
    // One that fills an arena; the others share a bucket with a trie of more nodes than fit in a chunk.
    std::vector<std::string> texts = TextsOfOneHash(12);
    texts.insert(texts.begin(), std::string(0x100000 - 9, 'b'));
    const std::size_t failures = TestSupport::FailEachAllocation([&](TestSupport::FailingHeap& heap) {
        {
            StringTable strings({1, 2});             // a fixed key: the number of nodes depends on it
            const bool has_buckets = !heap.Failed(); // without them a table returns null from then on
            for (const std::string& long_or_short : texts) {
                const char* const text = long_or_short.c_str();
                const bool failed_before = heap.Failed();
                cstr interned = strings.Intern(text);
                EXPECT_EQ(interned == nullptr, !has_buckets || (heap.Failed() && !failed_before));
                if (interned == nullptr) {
                    EXPECT_EQ(strings.Find(text), nullptr);
                    interned = strings.Intern(text);
                }
                EXPECT_EQ(interned != nullptr, has_buckets);
                EXPECT_EQ(strings.Find(text), interned);
                EXPECT_TRUE(interned == nullptr || std::strcmp(interned, text) == 0);
            }
        }
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_EQ(failures, 5U); // the buckets, two arenas, two chunks of blocks and nodes
}

} // namespace
