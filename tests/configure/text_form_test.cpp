// The meaning of texts. Every text is loaded with both accesses, which must agree.

#include "tests/configure/tree_text.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;
using namespace std::string_view_literals;

struct Case {
    std::string_view text;
    std::string_view tree;
};

/// The tree in the order of the text, the same with both accesses; "(none)" if it doesn't load.
std::string TreeOf(std::string_view text) {
    const Loaded edited(Family::kEdit, text);
    const Loaded read(Family::kText, text);
    EXPECT_EQ(TextOf(read.root, Order::kSorted), TextOf(edited.root, Order::kSorted));
    return TextOf(edited.root);
}

template <std::size_t kCount>
void Check(const Case (&cases)[kCount]) {
    for (const auto& [text, tree] : cases) EXPECT_EQ(TreeOf(text), tree) << text;
}

TEST(TextForm, EntriesNeedNothingBetweenThem) {
    Check({
        {"", ""},
        {" \t\r\n ", ""},
        {"no equals sign { at all }", ""},
        {"a = 1\nb = 2", "a='1' b='2'"},
        {"a=1,b=2", "a='1' b='2'"},
        {"a = 1 b = 2", "a='1' b='2'"},
        {"a = 1\rb = 2\r\nc = 3\n\r", "a='1' b='2' c='3'"},
        {"a = one two\nthree\nb = 3", "a='one two' b='3'"},
        {"a = one two b = 3", "a='one two' b='3'"},
        {"A = Mixed Case", "a='Mixed Case'"},
        {"Key = 1\nKEY = 2", "key='1' key='2'"},
        {"a = {}b = {1}c = 3", "a={} b=['1'] c='3'"},
        // An `=` in quotes doesn't count, but braces don't hide one from the value before it.
        {R"(a = "b=c" d = x"e=f" g = 1)", R"(a='b=c' d='x"e=f"' g='1')"},
        {"a = b=c", "a='' b='c'"},
        {"a = x { b = 1 }", "a='x {' b='1 }'"},
        {"{ a = 1 }", "{ a='1 }'"},
        // Vertical tab and form feed aren't blanks.
        {"a\v = \f1\f\n\vb = 2", "a\v='\f1\f' \vb='2'"},
    });
}

TEST(TextForm, TheFirstKeyIsWhatStandsOnItsLine) {
    Check({
        {"foo  bar = 2", "foo  bar='2'"},
        {"lost\n \t foo\tbar \t = 2", "foo bar='2'"},
        {"Item : Base = { }", "item:base={}"},
        {"K1 , K2\t:\tK3 = 5", "k1,k2:k3='5'"},
        {R"("Quoted  Key" = 5)", "quoted  key='5'"},
        {R"(" A : B ,C " = 5)", " a : b ,c ='5'"},
        {R"(x  " y"z = 5)", "x   yz='5'"},
        {R"("" = 1)", "='1'"},
        // The end of a line is found without regard to quotes: a lone closing quote is a byte of the key.
        {"\"a\nb\" = 1", "b\"='1'"},
        {R"(Path/To\\File = C:\\Dir)", R"(path\to\file='C:\\Dir')"},
        {R"("//A/ b" = /x//y)", R"(\a\ b='/x//y')"},
        // The same holds after a block, and the comma belongs to the key.
        {"a = { x = 1, }, b = 2", "a={x='1'} ,b='2'"},
        {"a = { }\n , b = 2", "a={} ,b='2'"},
        {"a = { }\n,\nb c = 2", "a={} b c='2'"},
        {"a = { }}} b = 2", "a={} }} b='2'"},
        {"\xEF\xBB\xBF"
         "A = 1",
         "\xEF\xBB\xBF"
         "a='1'"},
    });
}

TEST(TextForm, AKeyBehindAScalarIsSplitOffFromTheRight) {
    Check({
        {"c = 1\nfoo bar = 2", "c='1' bar='2'"},
        {"c = 1 Item : Base = 2", "c='1' item:base='2'"},
        {"c = 1 a:b: c :d = 2", "c='1' a:b:c:d='2'"},
        {"c = 1\na :\n b = 2", "c='1' a:b='2'"},
        {"c = 1, a:b = 2", "c='1' a:b='2'"},
        {"c = 1 a::b = 2", "c='1' a::b='2'"},
        {"c = 1 , : b = 2", "c='1 ' :b='2'"},
        // With nothing on its left side, the `:` is the value.
        {"c = : b = 2", "c=':' b='2'"},
        {"c =\n: : b = 2", "c=':' :b='2'"},
        {R"(c = "x y" "b c" : "D e" = 1)", "c='x y' b c:d e='1'"},
        {R"(c = 1 b"C  = d"e = 2)", "c='1' bc  = de='2'"},
        {R"(c = 1 "" = 2)", "c='1' ='2'"},
        {R"(c = 1 A//"b/ c" = 2)", R"(c='1' a\b\ c='2')"},
        // What could be the value is the key if there is nothing else.
        {"a = 1\n= 2", "a='' 1='2'"},
        {R"(a = "x" = 2)", "a='' x='2'"},
        {"a =\nb = 2", "a='' b='2'"},
        {"a = , b = 2", "a='' b='2'"},
    });
}

TEST(TextForm, AScalarEndsWithItsLine) {
    Check({
        {R"(a = "x" junk)"
         "\nb = 2",
         "a='x' b='2'"},
        {"a = \"two\nlines\"", "a='two\nlines'"},
        {"a = x \"two\nlines\" b = 1", "a='x \"two' b='1'"},
        {"a =\n\n one\ntwo", "a='one'"},
        {"a = [1,2]", "a='[1,2]'"},
        {"a = -1 - 2", "a='-1 - 2'"},
        {R"(a = C:\dir\)", R"(a='C:\dir\')"},
        // Blanks are removed, then commas, once each.
        {"a = 1,,\nb = 2", "a='1' b='2'"},
        {"a = 1 ,\nb = 2", "a='1 ' b='2'"},
        {"a = 1, , b = 2", "a='1, ' b='2'"},
        {"a = ,", "a=''"},
        {R"(a = " 1, ",)", "a=' 1, '"},
        {R"(a = "")", "a=''"},
        // With nothing after the sign the value is absent, which isn't an empty text.
        {"a =", "a=null"},
        {"a = {b = \n}c = \t", "a={b=null} c=null"},
    });
}

TEST(TextForm, ABlockIsATableOrAnArray) {
    Check({
        {"a = { 1, 2 3 }", "a=['1' '2' '3']"},
        {R"(a = { "x" "y", z })", "a=['x' 'y' 'z']"},
        {"a = { 1,,2, }", "a=['1' '' '2']"},
        {"a = {,}", "a=['']"},
        {"a = {1 ,\n, }", "a=['1' '']"},
        {"a = { b = 1 }", "a={b='1'}"},
        {"a = { \n }", "a={}"},
        {R"(a = { "x = 1" })", "a=['x = 1']"},
        {R"(a = { "" })", "a=['']"},
        {R"(a = { "k" = 1 })", "a={k='1'}"},
        {"a = { { } { x = 1 } { 2 } }", "a=[{} {x='1'} ['2']]"},
        {"a = {{1}{2},{3},{{}}}", "a=[['1'] ['2'] ['3'] [{}]]"},
        {"a = { 1 2 b = 3 }", "a={1 2 b='3'}"},
        {"a = { { 1 } b = 3 }", "a={{ 1 } b='3'}"},
        {"a = { b = { c = { 1 } } d = 2 }, e = 3", "a={b={c=['1']} d='2'} ,e='3'"},
        // In a bare word quotes and braces are ordinary bytes, but they still count when the end of the block is
        // searched.
        {R"(a = { x"y z" "b"c })", R"(a=['x"y' 'z"' 'b' 'c'])"},
        {"a = { x{ 1 } y{2} }", "a=['x{' '1' '}' 'y{2}']"},
        {R"(a = { x"} b = 2 }")", R"(a=['x"}' 'b' '=' '2' '}"'])"},
        {R"(a = { "}" "{" } b = 1)", "a=['}' '{'] b='1'"},
    });
}

TEST(TextForm, WhatIsOpenClosesAtTheEnd) {
    Check({
        {"a = {", "a={}"},
        {"a = { b = 1", "a={b='1'}"},
        {"a = { 1 { 2", "a=['1' ['2']]"},
        {"a = { {", "a=[{}]"},
        {R"(a = "abc)", "a='abc'"},
        {R"(a = ")", "a=''"},
        {R"(a = { "x } b = 2)", "a=['x } b = 2']"},
        {R"(a = { k = "x } b = 2)", "a={k='x } b = 2'}"},
        {R"(a = 1 " b = 2)", R"(a='1 " b = 2')"},
        {"} a = 1 }", "} a='1 }'"},
    });
}

TEST(TextForm, CommentsGoFirst) {
    Check({
        {"a = 1--2", "a='1'"},
        {"a = 1 --", "a='1'"},
        {"a = -", "a='-'"},
        {"a = 1 --[x ]] y\nb = 2", "a='1' b='2'"},
        {"a = 1 -- x --[[\r\nb = 2 --]]", "a='1' b='2'"},
        {"a = 1 --[[ long\n -- \" { ]] b = 2", "a='1' b='2'"},
        {"a = 1--[[x]]2", "a='12'"},
        {"a = 1---[[x]]2\nb = 3", "a='1' b='3'"},
        {"a = 1--[[x]]--[[y]]2-- z", "a='12'"},
        {"--[[]]a = 1", "a='1'"},
        {"--[[]a]]b = 1", "b='1'"},
        {"--[[x]]]]a = 1", "]]a='1'"},
        {"a = 1 --[[ b = 2 ]", "a='1'"},
        {"x --[[ c ]] y = 1", "x  y='1'"},
        // Comments disregard quotes.
        {"a = \"x -- y\"\nb = 2", "a='x \nb = 2'"},
        {"a = \"x -- y\"\nb = \"z\"", "a='x \nb = '"},
        {R"(a = "x --[[ y" ]] z")", "a='x  z'"},
    });
}

TEST(TextForm, SomeBytesEndTexts) {
    Check({
        {"a = 1\xFF"
         "b = 2",
         "a='1'"},
        {"a = \"1\xFF\"", "a='1'"},
        {"a = { 1\xFF }", "a=['1']"},
        {"a = 1 --[[ \xFF ]] b", "a='1'"},
        {"\xFF\xFE"
         "a\0=\0"sv,
         ""},
        {"a\0b = 1\0x\n\0 = 2"sv, "a='1' ='2'"},
        {"a\0/b = { x\0y \0 }"sv, "a=['x' '']"},
        {"a = \"x\0y\" \0b=3"sv, "a='x' ='3'"},
    });
}

TEST(TextForm, KeysAndTextsHaveTheirLimits) {
    const std::string key(1023, 'k');
    const std::string long_text(1048567, 'x');
    const std::string path = "p\\" + std::string(253, 'q');
    EXPECT_EQ(TreeOf("  " + key + "  = 1 " + key + " = 2"), key + "='1' " + key + "='2'");
    EXPECT_EQ(TreeOf("a = 1 \"k\" : " + key.substr(2) + " = 2"), "a='1' k:" + key.substr(2) + "='2'");
    EXPECT_EQ(TreeOf("P//" + std::string(300, 'Q') + " = 1"), path + "='1'");
    EXPECT_EQ(TreeOf("a = " + long_text), "a='" + long_text + "'");
    for (const std::string& text :
         {key + "k = 1", "a = 1 k" + key + " = 2", "a b\"" + key.substr(2) + "\" = 1", "a = 1 k:" + key + " = 2",
          "p/" + key + " = 1", "a = x" + long_text, "a = { \"x" + long_text + "\" }", "a = { " + key + "k = 1 }"}) {
        EXPECT_EQ(TreeOf(text), "(none)") << text.substr(0, 20) << text.size();
    }
}

} // namespace
