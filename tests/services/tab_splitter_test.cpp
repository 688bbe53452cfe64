// Fields of tab-separated text with their places: chosen texts. The fuzzer of tab files reads random ones.

#include "services/tab_splitter.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
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

} // namespace
