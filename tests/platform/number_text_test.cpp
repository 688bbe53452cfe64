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
#include <limits>
#include <string>
#include <string_view>

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

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
    EXPECT_EQ(std::signbit(read), std::signbit(expected)) << '"' << shown << '"';
    EXPECT_TRUE(read == expected || (std::isnan(read) && std::isnan(expected))) << '"' << shown << "\": " << read;
}

std::string Formatted(const char* format, auto value) {
    std::string text(2000, '\0');
    text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), format, value)));
    return text;
}

TEST(NumberText, ReadsWhatTheCLibraryReads) {
    const char* texts[] = {
        "\f\v\r\n\t +1.5", "\b1", "-InF", "+INFINITY", "infinit", "NaN(12)", "-0X1.8P1", "-0012.9",
        // Integers that have more than 32 bits, and more than 64, of which the low 32 of the limit are kept.
        "2147483648", "-4294967297", "9223372036854775807", "9223372036854775808", "18446744073709551617",
        "-9223372036854775807", "-9223372036854775808", "-99999999999999999999999",
        // The edges of the range, and exponents beyond any.
        "0x1.fffffffffffff7p1023", "0x1p1024", "0x1p-1075", "0x1.000001p-1075", "0x3p-1076", "0x0p99999999999",
        "-0x1p-99999999999999999999", "0x1p99999999999999999999", "1.7976931348623157e308", "1.7976931348623158e308",
        "1.7976931348623159e308", "-1e309", "1e310", "1e311", "-1e999999999999999999999999",
        "1e-999999999999999999999999", "-1e-99999", "0e999999999999999999999", "4.9e-324", "2.5e-324", "2.4e-324",
        "-2.4e-324", "1e-330", "1e-331", "2.2250738585072011e-308", "0.000001e-318", "123456e-329",
        // Half way between two doubles, and a little more.
        "1.00000000000000011102230246251565404236316680908203125",
        "1.00000000000000011102230246251565404236316680908203126",
        "1.00000000000000033306690738754696212708950042724609375", "9007199254740993", "9007199254740993.00000000001",
        "0x1.000000000000080000000000000000000001p0", "0x1.00000000000018p0"};
    for (const char* text : texts) ExpectAsTheCLibrary(text);
}

/// All texts of up to four of these bytes, behind a beginning of their own.
TEST(NumberText, ReadsEveryShortTextAsTheCLibrary) {
    constexpr std::string_view kBytes = "019aFxXpe.+- n";
    std::uint64_t sum = 0;
    for (const char* beginning : {"", "-", "0x", "7e", "0x1p", ".", "1.", "in", "na"}) {
        std::string text = beginning;
        const auto add = [&](auto& itself, int left) -> void {
            ExpectAsTheCLibrary(text);
            sum = sum * 31 + std::bit_cast<std::uint64_t>(Real(text));
            if (left == 0) return;
            for (const char byte : kBytes) {
                text += byte;
                itself(itself, left - 1);
                text.pop_back();
            }
        };
        add(add, 4);
    }
    EXPECT_EQ(sum, 146261258529854605U);
}

/// In each binade the first doubles, the last and one in the middle, with fewer digits than they have and with more,
/// and the points half way to their neighbours.
TEST(TextToReal, ReadsEveryBinadeAsTheCLibrary) {
    for (int exponent = -1074; exponent <= 1023; ++exponent) {
        for (const double mantissa : {1.0, 1.0 + 0x1p-52, 1.4142135623730951, 2.0 - 0x1p-52}) {
            const double value = std::ldexp(mantissa, exponent);
            for (const char* format : {"%.17g", "%.3e", "-%.25e", "%a"}) ExpectAsTheCLibrary(Formatted(format, value));
        }
        for (const char* half : {"0x1.00000000000008p", "0x1.6a09e667f3bcc8p", "-0x1.fffffffffffff8p", "0x3.7ffp"})
            ExpectAsTheCLibrary(half + std::to_string(exponent));
    }
}

TEST(TextToReal, CountsDigitsAndZerosOfAnyNumber) {
    const std::string zeros(1'000'000, '0');
    EXPECT_EQ(Real("0." + zeros + "25e1000001"), 2.5);
    EXPECT_EQ(Real("25" + zeros + "e-1000001"), 2.5);
    EXPECT_EQ(Real("-0x0." + zeros + "8p4000000"), -0.5);
    EXPECT_EQ(Real("0x1" + zeros + ".8p-4000000"), 1.0);
    EXPECT_EQ(Real(zeros + "7"), 7.0);
    EXPECT_EQ(Real("7" + zeros), kInfinity);
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

TEST(NumberText, EndsWhereTheTextEnds) {
    const struct {
        std::string_view text;
        std::size_t size;
        double value;
    } cases[] = {{"123456", 3, 123}, {"1e5", 2, 1}, {"1e-5", 3, 1}, {"0x8", 2, 0},
                 {"inf", 2, 0},      {".5", 1, 0},  {"-5", 1, 0},   {std::string_view("1.5\0002", 5), 5, 1.5}};
    for (const auto& each : cases) {
        EXPECT_EQ(Real(each.text.substr(0, each.size)), each.value) << each.text;
        EXPECT_EQ(Integer(each.text.substr(0, each.size)), static_cast<std::int32_t>(each.value)) << each.text;
    }
    EXPECT_EQ(Tessarin::TextToInteger(nullptr, nullptr), 0);
    EXPECT_EQ(Tessarin::TextToReal(nullptr, nullptr), 0.0);
}

TEST(NumberText, IsTheSameInACommaLocale) {
    const TestSupport::CommaLocale comma;
    EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
    EXPECT_EQ(Real("1.5"), 1.5);
    EXPECT_EQ(Real("1,5"), 1.0);
    EXPECT_EQ(Real("1.234.567"), 1.234);
    EXPECT_EQ(Real("0x1.8p1"), 3.0);
    EXPECT_EQ(Integer("1.234"), 1);
    EXPECT_STREQ(Tessarin::RealToText(-1234567.25F).text, "-1234567.250000");
    EXPECT_STREQ(Tessarin::IntegerToText(-1234567).text, "-1234567");
}

TEST(NumberToText, WritesIntegers) {
    for (const std::int32_t number : {0, 7, -7, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(Tessarin::IntegerToText(number).text, std::to_string(number));
    }
    EXPECT_STREQ(Tessarin::IntegerToText(UINT32_MAX).text, "4294967295");
    EXPECT_EQ(Tessarin::IntegerToText(UINT32_MAX).length, 10U);
}

/// Floats of both signs and of each binade, up to the infinities and nans. Of 0x1p-7, 0x3p-7 and 0x5p-7 there are more
/// than six decimals, which end with a 5 alone.
TEST(NumberToText, WritesRealsAsPrintf) {
    for (std::uint32_t top = 0; top < 512; ++top) {
        for (const std::uint32_t rest : {0U, 1U, 0x200000U, 0x400000U, 0x55AA55U, 0x7FFFFFU}) {
            const auto number = std::bit_cast<float>(top << 23 | rest);
            if (std::isnan(number) && !CLibraryIsExact()) continue;
            const std::string expected = Formatted("%f", static_cast<double>(number));
            for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD}) {
                ASSERT_EQ(std::fesetround(mode), 0);
                const Tessarin::RealText text = Tessarin::RealToText(number);
                std::fesetround(FE_TONEAREST);
                EXPECT_EQ(text.text, expected);
                EXPECT_EQ(text.length, expected.size());
            }
        }
    }
}

} // namespace
