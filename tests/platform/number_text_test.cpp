// The C library is the reference: its strtoll and strtod read each text too, in the C locale.

#include "platform/number_text.h"

#include "tests/support/comma_locale.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::int32_t Integer(std::string_view text) { return Tessarin::TextToInteger(text.data(), text.data() + text.size()); }
double Real(std::string_view text) { return Tessarin::TextToReal(text.data(), text.data() + text.size()); }

/// Some C libraries read a sign alone as -0, round the smallest numbers wrongly and don't print the sign of a nan.
/// Reals can't be compared with theirs; instead a checksum of results shows that ours are the same everywhere.
bool CLibraryIsExact() { return !std::signbit(std::strtod("- 5", nullptr)); }

void ExpectAsTheCLibrary(const std::string& text) {
    const std::string shown = text.substr(0, 100);
    EXPECT_EQ(Integer(text), static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10))) << '"' << shown << '"';
    if (!CLibraryIsExact()) return;
    const double expected = std::strtod(text.c_str(), nullptr);
    const double read = Real(text);
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(read)) << '"' << shown << '"';
        EXPECT_EQ(std::signbit(read), std::signbit(expected)) << '"' << shown << '"';
    } else {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(expected)) << '"' << shown << '"';
    }
}

std::string Formatted(const char* format, auto value) {
    std::vector<char> text(2000);
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

TEST(TextToInteger, KeepsTheLowBitsOfTheValueHeldTo64Bits) {
    const struct {
        const char* text;
        std::int32_t value;
    } cases[] = {
        {"", 0},
        {"-", 0},
        {"+", 0},
        {"+-5", 0},
        {"- 5", 0},
        {" \t\n\v\f\r+12x", 12},
        {"-0012.9", -12},
        {"0x10", 0},
        {"2147483647", 2147483647},
        {"2147483648", std::numeric_limits<std::int32_t>::min()},
        {"4294967297", 1},
        {"-4294967297", -1},
        {"9223372036854775807", -1},
        {"9223372036854775808", -1},
        {"18446744073709551617", -1},
        {"-9223372036854775807", 1},
        {"-9223372036854775808", 0},
        {"-99999999999999999999999", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Integer(c.text), c.value) << c.text;
        ExpectAsTheCLibrary(c.text);
    }
}

TEST(TextToReal, ReadsWhatTheCLibraryReads) {
    const char* texts[] = {
        // Signs, points and exponents that are whole, or that break off.
        "", " ", "-", "+", ".", "-.", "..1", "--1", "+-1", "-+1", "- 1", "\f\v\r\n\t 1.5", "\b1", "0", "-0", "-0.0e9",
        "-.0", "5.", ".5", "-.5", "1.2.3", "1,5", "1_0", "1e", "1e+", "1e+-2", "1e2.5", "1E2", "1e-2", ".e5", "e5",
        "1p5", "1d5", "00012.50", "1.5f",
        // Words.
        "inf", "-InF", "+INFINITY", "infinit", "in", "-in", "nan", "-nan", "NaN(12)", "na", "-.inf", ".nan",
        // Hexadecimal.
        "0x", "-0x", "0xg", "0x.", "0x.p1", "0x1", "-0X1.8P1", "0x1p", "0x1p+", "0x1p-2x", "0xap0", "0xAe1", "0x.8",
        "0x1.", "0x1p1.5", "00x1", "x1", "0x-1", "0x0p99999999999", "0x1p1023", "0x1p1024", "0x1.fffffffffffff7p1023",
        "0x1.fffffffffffff8p1023", "0x1p-1074", "0x1p-1075", "0x1.000001p-1075", "0x3p-1076", "0x1.8p-1074",
        "-0x1p-99999999999999999999", "0x1p99999999999999999999", "0x1.00000000000008p0", "0x1.00000000000018p0",
        "0x1.000000000000080000000000000000000001p0",
        // The edges of the range.
        "1.7976931348623157e308", "1.7976931348623158e308", "1.7976931348623159e308", "-1e309", "1e310", "1e311",
        "1e99999", "-1e999999999999999999999999", "1e-999999999999999999999999", "-1e-99999", "0e999999999999999999999",
        "4.9e-324", "2.5e-324", "2.4e-324", "-2.4e-324", "1e-330", "1e-331", "2.2250738585072011e-308",
        "2.2250738585072014e-308", "0.000001e-318", "123456e-329",
        // Half way between two doubles, and a little more.
        "1.00000000000000011102230246251565404236316680908203125",
        "1.00000000000000011102230246251565404236316680908203126",
        "1.00000000000000033306690738754696212708950042724609375", "9007199254740993", "9007199254740993.00000000001"};
    for (const char* text : texts) ExpectAsTheCLibrary(text);
}

TEST(TextToReal, CountsDigitsAndZerosOfAnyNumber) {
    const std::string zeros(1'000'000, '0');
    EXPECT_EQ(Real("0." + zeros + "25e1000001"), 2.5);
    EXPECT_EQ(Real("25" + zeros + "e-1000001"), 2.5);
    EXPECT_EQ(Real("-0x0." + zeros + "8p4000000"), -0.5);
    EXPECT_EQ(Real("0x1" + zeros + ".8p-4000000"), 1.0);
    EXPECT_EQ(Real(zeros + "7"), 7.0);
    EXPECT_EQ(Real("7" + zeros), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Real("7e-" + zeros + "1"), 0.7);
    EXPECT_EQ(Real("0." + zeros + "7"), 0.0);

    // The longest exact expansions: half of the smallest double, and one and a half of it. One more digit takes them
    // over the edge, even if it is the last of many.
    for (const long double units : {0.5L, 1.5L}) {
        const std::string half_way =
            Formatted("%.1080Lf", units * static_cast<long double>(std::numeric_limits<double>::denorm_min()));
        ExpectAsTheCLibrary(half_way);
        ExpectAsTheCLibrary(half_way + zeros.substr(0, 500) + "1");
        EXPECT_GT(Real(half_way + "1"), Real(half_way + "e-1"));
    }
}

TEST(TextToReal, ReadsRandomNumbersAsTheCLibrary) {
    std::mt19937_64 random(20240601);
    for (int round = 0; round < 5000; ++round) {
        const auto value = std::bit_cast<double>(random());
        for (const char* format : {"%.17g", "%.3e", "%.25e", "%a", "%g"}) ExpectAsTheCLibrary(Formatted(format, value));
        // Twice as many bits as a double has: its neighbour on the one side or the other, or half way.
        ExpectAsTheCLibrary(Formatted("0x%llx.8", static_cast<unsigned long long>(random())) + "p-1060");
    }
}

TEST(NumberText, ReadsRandomTextAsTheCLibrary) {
    const std::string_view pieces[] = {"0", "1", "7",  "9",   "25", "000", "123456789", ".",   ".",       "e",  "E",
                                       "p", "P", "0x", "0X",  "a",  "F",   "-",         "+",   " ",       "\t", "inf",
                                       "i", "n", ",",  "nan", "e-", "e30", "e-32",      "p-9", "infinity"};
    std::mt19937 random(7);
    std::uint64_t sum = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (auto left = random() % 9; left > 0; --left) text += pieces[random() % std::size(pieces)];
        ExpectAsTheCLibrary(text);
        sum = sum * 31 + std::bit_cast<std::uint64_t>(Real(text));
    }
    EXPECT_EQ(sum, 2460260182877212673U);
}

TEST(NumberText, EndsWhereTheTextEnds) {
    constexpr std::string_view digits = "123456";
    EXPECT_EQ(Integer(digits.substr(0, 3)), 123);
    EXPECT_EQ(Real(digits.substr(0, 3)), 123.0);
    EXPECT_EQ(Real(std::string_view("1e5").substr(0, 2)), 1.0);
    EXPECT_EQ(Real(std::string_view("1e-5").substr(0, 3)), 1.0);
    EXPECT_EQ(Real(std::string_view("0x8").substr(0, 2)), 0.0);
    EXPECT_EQ(Real(std::string_view("inf").substr(0, 2)), 0.0);
    EXPECT_EQ(Real(std::string_view(".5").substr(0, 1)), 0.0);
    EXPECT_EQ(Real(std::string_view("-5").substr(0, 1)), 0.0);
    EXPECT_EQ(Integer(std::string_view("1\0002", 3)), 1);
    EXPECT_EQ(Real(std::string_view("1.5\0002", 5)), 1.5);
    EXPECT_EQ(Tessarin::TextToInteger(nullptr, nullptr), 0);
    EXPECT_EQ(Tessarin::TextToReal(nullptr, nullptr), 0.0);
}

/// What a comma locale would get wrong.
void ExpectPoints() {
    EXPECT_EQ(Real("1.5"), 1.5);
    EXPECT_EQ(Real("1,5"), 1.0);
    EXPECT_EQ(Real("1.234.567"), 1.234);
    EXPECT_EQ(Real("0x1.8p1"), 3.0);
    EXPECT_EQ(Real("-1.25e400"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(Integer("1.234"), 1);
    EXPECT_STREQ(Tessarin::RealToText(-1234567.25F).text, "-1234567.250000");
    EXPECT_STREQ(Tessarin::IntegerToText(-1234567).text, "-1234567");
}

TEST(NumberText, IsTheSameInACommaLocale) {
    const TestSupport::CommaLocale comma;
    EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
    ExpectPoints();
}

TEST(NumberText, IsTheSameInACommaLocaleOfTheStreams) {
    struct Comma final : std::numpunct<char> {
        [[nodiscard]] char do_decimal_point() const override { return ','; }
        [[nodiscard]] char do_thousands_sep() const override { return '.'; }
        [[nodiscard]] std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    ExpectPoints();
    std::locale::global(before);
}

TEST(TextToReal, RoundsToNearestWhateverTheHostRoundsTo) {
    const auto narrow = [](const std::string& text) {
        return Tessarin::TextToFloat(text.data(), text.data() + text.size());
    };
    const double nearest = Real("0.3");
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        ASSERT_EQ(std::fesetround(mode), 0);
        const double read = Real("0.3");
        const float narrowed[] = {narrow("0.1"), narrow("-0.7"), narrow("16777217.0"), narrow("1e39")};
        const int mode_after = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(read, nearest);
        EXPECT_EQ(mode_after, mode);
        EXPECT_EQ(narrowed[0], 0.1F);
        EXPECT_EQ(narrowed[1], -0.7F);
        EXPECT_EQ(narrowed[2], 16777216.0F);
        EXPECT_EQ(narrowed[3], std::numeric_limits<float>::infinity());
    }
}

TEST(NumberToText, WritesWhatPrintfWrites) {
    for (const std::int32_t number : {0, 7, -7, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(Tessarin::IntegerToText(number).text, std::to_string(number));
    }
    EXPECT_STREQ(Tessarin::IntegerToText(UINT32_MAX).text, "4294967295");
    EXPECT_EQ(Tessarin::IntegerToText(UINT32_MAX).length, 10U);
    constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kMost = std::numeric_limits<float>::max();
    // The third row is half way between two texts of six decimals.
    std::vector<float> numbers = {0.0F,        -0.0F,      1.5F,       -2.0000005F, 1e-45F, 0.0000005F,
                                  16777217.0F, kInfinity,  -kInfinity, kMost,       -kMost, kNan,
                                  -kNan,       0.9999999F, 0x1p-7F,    0x3p-7F,     0x5p-7F};
    std::mt19937 random(11);
    for (int round = 0; round < 10000; ++round)
        numbers.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
    for (const float number : numbers) {
        if (std::isnan(number) && !CLibraryIsExact()) continue;
        char expected[64];
        std::snprintf(expected, sizeof expected, "%f", static_cast<double>(number));
        for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD}) {
            ASSERT_EQ(std::fesetround(mode), 0);
            const Tessarin::RealText text = Tessarin::RealToText(number);
            std::fesetround(FE_TONEAREST);
            EXPECT_STREQ(text.text, expected);
            EXPECT_EQ(text.length, std::strlen(expected));
        }
    }
}

} // namespace
