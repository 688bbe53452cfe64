// Where the parser of the text form sees keys and values, and what is wrong with a text.

#include "configure/text/parser.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace Configure;

/// A text, parsed from a copy of its bytes.
struct Parsed {
    explicit Parsed(std::string_view text) : given(text), bytes(given + kEndMark) {
        fault = parsed.Parse(bytes.data(), static_cast<std::uint32_t>(given.size()));
    }

    [[nodiscard]] std::string Cut(Span span) const {
        const Span in_given = parsed.SpanOf(span);
        return given.substr(in_given.first, in_given.Length());
    }

    std::string given;
    std::string bytes;
    ParsedText parsed;
    TextFault fault;
};

/// Each node as the bytes given for its key and its value, with the numbers of the block that it is in and of its own.
std::string NodesOf(std::string_view text) {
    const Parsed file(text);
    EXPECT_EQ(file.fault, TextFault::kNone) << text;
    std::string nodes;
    for (std::uint32_t number = 0; number < file.parsed.Nodes().Count(); ++number) {
        const TextNode& node = file.parsed.Nodes()[number];
        nodes += std::to_string(file.parsed.ParentOf(number)) + ":<" + file.Cut(file.parsed.KeyOf(node)) + '>';
        if (file.parsed.IsQuoted(node)) nodes += '"';
        nodes += node.IsAbsent() ? "absent" : file.Cut(file.parsed.ValueOf(node));
        if (node.Kind() != NodeKind::kScalar) nodes += '#' + std::to_string(file.parsed.BlockOf(number));
        nodes += '\n';
    }
    return nodes;
}

TEST(TextParser, NodesLeadBackToTheBytesAsTheyWereGiven) {
    const struct {
        std::string_view text, nodes;
    } cases[] = {
        {"", ""},
        {"a = 1, B : c = \"2 , 3\" x\nd =", "0:<a>1\n0:<B : c>\"2 , 3\n0:<d>absent\n"},
        {"--1\n--[[2]]a --3\n--4\nb--[[5]]c = 6--7\n--8", "0:<b--[[5]]c>6\n"},
        {"a --[[1]] = { --[[2]]1--3\n\"x y\", { } b--[[ ]]c }", "0:<a> --[[2]]1--3\n\"x y\", { } b--[[ ]]c #1\n"
                                                                "1:<>1\n1:<>\"x y\n1:<> #2\n1:<>b--[[ ]]c\n"},
        {"a={x=1 b={2}}c={{}d}e=f", "0:<a>x=1 b={2}#1\n0:<c>{}d#2\n0:<e>f\n1:<x>1\n1:<b>2#3\n2:<>#4\n2:<>d\n3:<>2\n"},
        {"a = {1 \"2", "0:<a>1 \"2#1\n1:<>1\n1:<>\"2\n"},
        {"a = {x\"1 \"y", "0:<a>x\"1 \"y#1\n1:<>x\"1\n1:<>\"y\n"},
    };
    for (const auto& [text, nodes] : cases) EXPECT_EQ(NodesOf(text), nodes) << text;
}

TEST(TextParser, SaysWhatIsWrongAndWhere) {
    const std::string key(1023, 'k');
    const struct {
        std::string text;
        TextFault fault;
        std::string before; // the bytes before the place
        std::string place;
    } cases[] = {
        {"= 1", TextFault::kNoKey, "", "="},
        {"x\n --[[y]]= 1", TextFault::kNoKey, "x\n --[[y]]", "="},
        {"a = = 1", TextFault::kNoKey, "a = ", "="},
        {"a = 1 , = 2", TextFault::kNoKey, "a = 1 , ", "="},
        {"a = { }\n= 2", TextFault::kNoKey, "a = { }\n", "="},
        {"a = { = 1 }", TextFault::kNoKey, "a = { ", "="},
        {"a = { b = { } } c = { { x = = 2 } }", TextFault::kNoKey, "a = { b = { } } c = { { x = ", "="},
        {"a = 1 b = { c = 2, = 3 }", TextFault::kNoKey, "a = 1 b = { c = 2, ", "="},
        {"--\n " + key + "k = 1", TextFault::kLongKey, "--\n ", key + "k"},
        {"a = 1 k:" + key + " = 2", TextFault::kLongKey, "a = 1 ", "k:" + key},
        {"a = { b\"" + key + "\" = 1 }", TextFault::kLongKey, "a = { ", "b\"" + key + "\""},
    };
    for (const auto& [text, fault, before, place] : cases) {
        const Parsed file(text);
        EXPECT_EQ(file.fault, fault) << text;
        const Span span = file.parsed.FaultSpan();
        EXPECT_EQ(text.substr(0, span.first), before) << text;
        EXPECT_EQ(text.substr(span.first, span.Length()), place) << text;
    }
}

} // namespace
