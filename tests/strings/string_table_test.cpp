// Interned strings: what each form makes of a text, that equal texts are one address, and what memory and limits do.

#include "strings/string_hash.h"
#include "strings/string_table.h"
#include "tessarin/interned_strings.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Tessarin::CstrLength;
using Tessarin::StringTable;

using Form = cstr (*)(const char*);

TEST(InternedStrings, EachFormMakesItsText) {
    std::string long_path(255, 'p');
    std::string cut_in_run = std::string(254, 'Q') + "//R";
    const struct {
        Form form;
        std::string text, expected;
    } cases[] = {
        {cstr_string, "Key \xC3\x84/\\", "Key \xC3\x84/\\"},
        {cstr_string0, "Key", "Key"},
        {cstr_string, "", ""},
        {cstr_tolower, "KEY\x80\xC4\xFF@[`{Zz", "key\x80\xC4\xFF@[`{zz"},
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
        {cstr_path, cut_in_run, std::string(254, 'q') + "\\"},
    };
    for (const auto& row : cases) {
        cstr interned = row.form(row.text.c_str());
        ASSERT_NE(interned, nullptr) << row.text;
        EXPECT_STREQ(interned, row.expected.c_str());
        EXPECT_EQ(CstrLength(interned), row.expected.size()) << row.text;
        EXPECT_EQ(interned, cstr_string(row.expected.c_str())) << row.text; // the forms share one table
        EXPECT_EQ(interned, cstr_string(interned)) << row.text;
    }
}

TEST(InternedStrings, LowerCaseTouchesLettersAlone) {
    std::string text, expected;
    for (int byte = 1; byte < 256; ++byte) {
        text += static_cast<char>(byte);
        expected += static_cast<char>(byte >= 0x41 && byte <= 0x5A ? byte + 0x20 : byte);
    }
    EXPECT_EQ(std::string(cstr_tolower(text.c_str())), expected);
}

TEST(InternedStrings, NullHasItsOwnAnswerPerFunction) {
    for (Form form : {cstr_string, cstr_tolower, cstr_path, cstr_find}) EXPECT_EQ(form(nullptr), nullptr);
    EXPECT_EQ(cstr_string0(nullptr), cstr_string(""));
    EXPECT_EQ(cstr_path0(nullptr), cstr_path(".\\"));
    EXPECT_STREQ(cstr_path0(nullptr), ".\\");
}

TEST(InternedStrings, FindAddsNothingAndNormalisesNothing) {
    EXPECT_EQ(cstr_find("find\\me"), nullptr);
    EXPECT_EQ(cstr_find("find\\me"), nullptr);
    cstr interned = cstr_path("Find/Me");
    EXPECT_EQ(cstr_find("find\\me"), interned);
    EXPECT_EQ(cstr_find("Find/Me"), nullptr);
    EXPECT_EQ(cstr_find("find\\m"), nullptr);
}

/// The hash by its definition, byte for byte.
std::uint32_t HashByByte(const std::string& text) {
    std::uint32_t hash = 0;
    for (char byte : text) hash = hash * 131 + static_cast<std::uint32_t>(static_cast<signed char>(byte));
    return hash & 0x7FFFFFFF;
}

std::uint32_t BucketOf(const std::string& text) { return HashByByte(text) % 99991; }

std::string Lower(std::string text) {
    for (char& byte : text) byte = Tessarin::LowerCase(byte);
    return text;
}

/// Whether hash and comparison take a text for `form`, and for nothing that differs from it in a byte.
template <class Form>
void ExpectTakenFor(const std::string& form, const char* text) {
    std::size_t length = form.size();
    EXPECT_EQ(Tessarin::HashOfText<Form>(text, length), HashByByte(form)) << form;
    EXPECT_TRUE(Tessarin::EqualTexts<Form>(form.data(), text, length)) << form;
    for (std::size_t i = 0; i < length; ++i) {
        std::string other = form;
        other[i] = static_cast<char>(other[i] ^ 0x20); // the bit between a capital and its small letter
        EXPECT_FALSE(Tessarin::EqualTexts<Form>(other.data(), text, length)) << form;
    }
}

TEST(TextWords, AgreeWithTheBytesAtEveryLength) {
    EXPECT_EQ(HashByByte("abc"), 1677554U);
    const std::string alphabet = "@AMZ[`amz{\x01\x7F\x80\xC1\xDA\xE1\xFF 09";
    std::mt19937 random(3);
    for (std::size_t length = 0; length < 40; ++length) {
        for (int n = 0; n < 40; ++n) {
            std::string form(length, ' ');
            // Mostly plain letters at first: words without a high byte go another way than the rest.
            for (char& byte : form) byte = alphabet[random() % (n < 20 ? 10 : alphabet.size())];
            std::vector<char> text(form.begin(), form.end()); // no byte more: nothing may be read beyond them
            ExpectTakenFor<Tessarin::AsItIs>(form, text.data());
            ExpectTakenFor<Tessarin::InLowerCase>(Lower(form), text.data());
        }
    }
}

// 40 texts of one bucket and one length: the chain is long, and only the bytes tell them apart.
TEST(StringTable, KeepsApartWhatSharesABucket) {
    std::vector<std::string> texts = {"\xFF\x80\xFE\x81"};
    for (std::uint32_t n = 1; texts.size() < 40; ++n) {
        std::string text(4, '\0');
        for (unsigned i = 0; i < 4; ++i) text[i] = static_cast<char>(n >> (7 * i) | 0x80U);
        if (BucketOf(text) == BucketOf(texts[0]) && text != texts[0]) texts.push_back(text);
    }
    StringTable strings;
    std::vector<cstr> interned;
    for (const std::string& text : texts) {
        EXPECT_EQ(strings.Find(text.c_str()), nullptr);
        interned.push_back(strings.Intern(text.c_str()));
        EXPECT_EQ(std::string(interned.back()), text);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(strings.Find(texts[i].c_str()), interned[i]);
}

TEST(StringTable, MovesOnToNewArenasWithoutMovingAText) {
    constexpr int kTexts = 120000; // of 11 to 16 bytes and their lengths: two arenas and a half
    StringTable strings;
    std::vector<cstr> interned;
    auto text_of = [](int n) { return "some key " + std::to_string(n); };
    for (int n = 0; n < kTexts; ++n) interned.push_back(strings.Intern(text_of(n).c_str()));
    for (int n = 0; n < kTexts; ++n) {
        ASSERT_EQ(std::string(interned[static_cast<std::size_t>(n)]), text_of(n));
        ASSERT_EQ(strings.Intern(text_of(n).c_str()), interned[static_cast<std::size_t>(n)]);
    }
}

TEST(StringTable, TakesTextsUpToTheRoomOfAnArena) {
    std::string longest(0x100000 - 9, 'L');
    std::string beyond = longest + "L";
    StringTable strings;
    cstr interned = strings.Intern(longest.c_str());
    ASSERT_NE(interned, nullptr);
    EXPECT_EQ(CstrLength(interned), longest.size());
    EXPECT_EQ(strings.Intern(longest.c_str()), interned);
    EXPECT_EQ(strings.Intern(beyond.c_str()), nullptr);
    EXPECT_EQ(strings.InternLowerCase(beyond.c_str()), nullptr);
    EXPECT_EQ(strings.Find(beyond.c_str()), nullptr);
}

TEST(StringTable, AnswersNullWithoutMemoryAndTriesAgain) {
    std::string big(0x100000 - 9, 'b');
    std::size_t failures = TestSupport::FailEachAllocation([&](TestSupport::FailingHeap& heap) {
        {
            StringTable strings;
            bool came_up = !heap.Failed(); // without its buckets a table answers null for good
            // The two short ones have one hash: the bucket needs more room than it has in itself.
            for (const char* text : {big.c_str(), "ab", "b\xDF"}) {
                bool failed_before = heap.Failed();
                cstr interned = strings.Intern(text);
                EXPECT_EQ(interned == nullptr, !came_up || (heap.Failed() && !failed_before));
                if (interned == nullptr) {
                    EXPECT_EQ(strings.Find(text), nullptr);
                    interned = strings.Intern(text);
                }
                EXPECT_EQ(interned != nullptr, came_up);
                EXPECT_EQ(strings.Find(text), interned);
                EXPECT_TRUE(interned == nullptr || std::strcmp(interned, text) == 0);
            }
        }
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_EQ(failures, 4U); // the buckets, two arenas, the overflow block
}

} // namespace
