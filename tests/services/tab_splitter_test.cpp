// Fields of tab-separated text with their places: chosen texts, and random ones against a loop over the bytes.

#include "services/tab_splitter.h"

#include <cstdint>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using Tessarin::FieldEnd;
using Tessarin::TabField;

/// "row,column@offset+length" and a letter for the end: tab, line feed, return and line feed, or end of the text.
std::string PlaceText(const TabField& field) {
    return std::to_string(field.row) + ',' + std::to_string(field.column) + '@' + std::to_string(field.offset) + '+' +
           std::to_string(field.length) + "tlre"[static_cast<int>(field.end)] + ' ';
}

std::string PlacesOf(const std::string& text) {
    std::string places;
    Tessarin::TabSplitter splitter(text.data(), static_cast<std::uint32_t>(text.size()));
    TabField field{};
    while (splitter.Next(field)) places += PlaceText(field);
    EXPECT_FALSE(splitter.Next(field)); // the end stays the end
    return places;
}

TEST(TabSplitter, ReportsEachFieldWithItsPlace) {
    struct {
        std::string text, places;
    } const cases[] = {
        {"", ""},
        {"a", "0,0@0+1e "},
        {"\n", "0,0@0+0l "},
        {"\r\n", "0,0@0+0r "},
        {"\t", "0,0@0+0t 0,1@1+0e "},
        {"item\tprice\r\nlamp\t12\nrope\t", "0,0@0+4t 0,1@5+5r 1,0@12+4t 1,1@17+2l 2,0@20+4t 2,1@25+0e "},
        {"a\r\tb\r\r\n\r", "0,0@0+2t 0,1@3+2r 1,0@7+1e "},
        {"\0\xFF\n"s, "0,0@0+2l "},
    };
    for (const auto& [text, places] : cases) EXPECT_EQ(PlacesOf(text), places) << testing::PrintToString(text);
}

std::string PlacesByteByByte(const std::string& text) {
    std::string places;
    TabField field{};
    for (std::uint32_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\t' && text[at] != '\n') continue;
        const bool returns = text[at] == '\n' && at > field.offset && text[at - 1] == '\r';
        field.length = at - field.offset - (returns ? 1 : 0);
        field.end = text[at] == '\t' ? FieldEnd::kTab : returns ? FieldEnd::kReturnAndLineFeed : FieldEnd::kLineFeed;
        places += PlaceText(field);
        field = text[at] == '\t' ? TabField{at + 1, 0, field.row, field.column + 1, {}}
                                 : TabField{at + 1, 0, field.row + 1, 0, {}};
    }
    field.length = static_cast<std::uint32_t>(text.size()) - field.offset;
    field.end = FieldEnd::kTextEnd;
    return field.length != 0 || field.column != 0 ? places + PlaceText(field) : places;
}

/// Lengths around multiples of the block that the splitter searches at a time.
TEST(TabSplitter, AgreesWithALoopOverTheBytes) {
    std::mt19937 random(20);
    // The delimiters, and bytes that differ from them in one bit.
    const std::string bytes = "\t\n\r\0\xFF\x89\x8A\x08\x0B"s;
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 3 * 64 + random() % 6, 'c');
        const std::size_t sparse = random() % 40 + 1; // one byte in this many is drawn
        for (char& byte : text) byte = random() % sparse == 0 ? bytes[random() % bytes.size()] : byte;
        ASSERT_EQ(PlacesOf(text), PlacesByteByByte(text)) << testing::PrintToString(text);
    }
}

} // namespace
