// The text form. Each document of tests/golden/configure/ is loaded with both accesses, which must agree. In most
// documents each block is a case of its own; those without a number show how a text may end. The fuzzer compares any
// text with a model.

#include "configure/text/parser.h"

#include "tests/configure/tree_text.h"
#include "tests/support/golden.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace Configure;
using namespace TestSupport;

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

/// The tree, with a line for each entry of the root; or the rule and the place of the fault.
std::string Outcome(std::string_view text) {
    const Loaded edited(Family::kEdit, text), read(Family::kText, text);
    EXPECT_EQ(TextOf(read.root, Order::kSorted), TextOf(edited.root, Order::kSorted));
    const Parsed file(text);
    if (edited.root == nullptr) {
        const Span span = file.parsed.FaultSpan();
        return (file.fault == TextFault::kNoKey     ? "no key"
                : file.fault == TextFault::kLongKey ? "long key"
                                                    : "another fault") +
               (" at " + std::to_string(span.first) + ", " + std::to_string(span.Length()) + " bytes\n");
    }
    EXPECT_EQ(file.fault, TextFault::kNone);
    std::string tree;
    for (auto* unit = edited.root->Begin(); unit != edited.root->End(); unit = edited.root->Next(unit)) {
        tree += unit->GetKey() + ('=' + ValueOf(*unit)) + '\n';
    }
    return tree;
}

TEST(Text, GoldenDocuments) {
    for (const auto& [name, text, expected] : GoldenDocuments("configure")) {
        const std::string outcome = Outcome(text);
        EXPECT_EQ(outcome, expected) << name;
        const bool fails = outcome.find(" bytes\n") != outcome.npos;
        EXPECT_TRUE(name[0] == 'i' || fails == (name[0] == 'n')) << name;
    }
}

TEST(Text, AValueHasRoomForAnInternedText) {
    const std::string longest(1048567, 'x');
    EXPECT_EQ(Outcome("a = " + longest), "a='" + longest + "'\n");
    for (const std::string& text : {"a = x" + longest, "a = { \"x" + longest + "\" }"}) {
        const Loaded edited(Family::kEdit, text), read(Family::kText, text);
        EXPECT_TRUE(edited.root == nullptr && read.root == nullptr);
    }
}

/// Each node as the bytes given for its key and its value, with the numbers of the block that it is in and of its own.
std::string NodesOf(std::string_view text) {
    const Parsed file(text);
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

TEST(Text, NodesLeadBackToTheBytesAsTheyWereGiven) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"a = 1, B : c = \"2 , 3\" x\nd =", "0:<a>1\n0:<B : c>\"2 , 3\n0:<d>absent\n"},
        {"--1\n--[[2]]a --3\n--4\nb--[[5]]c = 6--7\n--8", "0:<b--[[5]]c>6\n"},
        {"a --[[1]] = { --[[2]]1--3\n\"x y\", { } b--[[ ]]c }", "0:<a> --[[2]]1--3\n\"x y\", { } b--[[ ]]c #1\n"
                                                                "1:<>1\n1:<>\"x y\n1:<> #2\n1:<>b--[[ ]]c\n"},
        {"a={x=1 b={2}}c={{}d}e=f", "0:<a>x=1 b={2}#1\n0:<c>{}d#2\n0:<e>f\n1:<x>1\n1:<b>2#3\n2:<>#4\n2:<>d\n3:<>2\n"},
        {"a = {x\"1 \"y \"2", "0:<a>x\"1 \"y \"2#1\n1:<>x\"1\n1:<>\"y\n1:<>\"2\n"},
    };
    for (const auto& [text, nodes] : cases) EXPECT_EQ(NodesOf(text), nodes) << text;
}

} // namespace
