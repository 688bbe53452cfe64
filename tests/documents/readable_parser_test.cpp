// Reading the readable form: the documents of tests/golden/readable/, and what the parser finds at which place of a
// text.

#include "documents/readable_parser.h"

#include "tests/support/golden.h"
#include "tests/support/table_text.h"
#include "tests/support/temporary_folder.h"

#include "tessarin/documents.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using Tessarin::ReadableError;
using Tessarin::ReadableEvent;
using Tessarin::ReadableParser;

/// The rule that the text breaks and where; empty if the parser finds nothing wrong.
std::string Failure(std::string text) {
    ReadableParser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    for (ReadableEvent event; parser.Next(event);) {
    }
    const auto [error, place] = parser.Failure();
    if (error == ReadableError::kNone) return "";
    return (error == ReadableError::kOpenQuote ? "open quote at " : "no value at ") +
           std::to_string(place - text.data());
}

TEST(ReadableDocuments, AreWhatTheirNamesSay) {
    const TestSupport::TemporaryFolder folder;
    for (const auto& document : TestSupport::GoldenDocuments("readable")) {
        const std::string path = folder.File("document", document.text);
        const std::string tree = TestSupport::EntriesAndClose(OpenTableReadableFile(path.c_str()));
        const std::string failure = Failure(document.text);
        // The loader has one rule more than the parser.
        const std::string rule = failure.empty() ? "block under a key in use" : failure;
        EXPECT_EQ((tree == "null" ? rule : tree + failure) + '\n', document.expected) << document.name;
        EXPECT_NE(document.name[0], tree == "null" ? 'y' : 'n') << document.name;
    }
}

/// ` KIND KEY@OFFSET VALUE@OFFSET` for each event. Bytes are those of the original text, comments included.
std::string Events(const std::string& given) {
    const char* const kinds[] = {"block",   "vector3", "vector4",  "quoted", "text",
                                 "integer", "real",    "blockend", "textend"};
    std::string text = given;
    ReadableParser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    std::ostringstream events;
    const auto add = [&](std::string_view span) {
        const auto offset = static_cast<std::size_t>(span.data() - text.data());
        events << ' ' << given.substr(offset, span.size()) << '@' << offset;
    };
    ReadableEvent event;
    while (parser.Next(event)) {
        events << ' ' << kinds[static_cast<int>(event.kind)];
        add(event.key);
        add(event.value);
    }
    EXPECT_FALSE(parser.Next(event)) << "there is nothing behind the end";
    return events.str();
}

TEST(ReadableParser, SaysWhatStandsWhere) {
    const struct {
        const char *text, *events;
    } cases[] = {
        {"", " textend @0 @0"},
        {"a=1", " integer a@0 1@2 textend @3 @3"},
        {" a = -.5 b x", " real a@1 -.5@5 text b@9 x@11 textend @12 @12"},
        {"a--c\n \"x y\"", " quoted a@0 \"x y\"@6 textend @11 @11"},
        {"s \"a--b\" c\nd\" e 1", " quoted s@0 \"a--b\" c\nd\"@2 integer e@14 1@16 textend @17 @17"},
        {"v [1,2,3]w (1", " vector3 v@0 [1,2,3]@2 vector4 w@9 (1@11 textend @13 @13"},
        {"x void[1]", " vector3 x@0 [1]@6 textend @9 @9"},
        {"t{u void{a 1 lost}}b 2", " block t@0 {@1 block u@2 {@8 integer a@9 1@11 blockend lost@13 }@17"
                                   " blockend @18 }@18 integer b@19 2@21 textend @22 @22"},
        {"t {u {", " block t@0 {@2 block u@3 {@5 textend @6 @6 textend @6 @6 textend @6 @6"},
        {"a 1} b 2", " integer a@0 1@2 blockend @3 }@3"},
        {"t { key", " block t@0 {@2"},
    };
    for (const auto& each : cases) EXPECT_EQ(Events(each.text), each.events) << each.text;
}

} // namespace
