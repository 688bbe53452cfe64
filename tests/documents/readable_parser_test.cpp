// What the parser of the readable form finds, at which place of the text, and which errors it finds where.

#include "documents/readable_parser.h"

#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using Tessarin::ReadableError;
using Tessarin::ReadableEvent;

/// ` KIND KEY@OFFSET VALUE@OFFSET` for each event, then the error. Bytes are those of the original text, comments
/// included.
std::string Events(std::string_view given) {
    const char* const kinds[] = {"block",   "vector3", "vector4",  "quoted", "text",
                                 "integer", "real",    "blockend", "textend"};
    std::string text(given);
    Tessarin::ReadableParser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    const auto offset = [&text](const char* place) { return static_cast<std::size_t>(place - text.data()); };
    std::ostringstream events;
    const auto add = [&](std::string_view span) {
        events << ' ' << given.substr(offset(span.data()), span.size()) << '@' << offset(span.data());
    };
    ReadableEvent event;
    while (parser.Next(event)) {
        events << ' ' << kinds[static_cast<int>(event.kind)];
        add(event.key);
        add(event.value);
    }
    EXPECT_FALSE(parser.Next(event)) << "there is nothing behind the end";
    const auto [error, place] = parser.Failure();
    if (error == ReadableError::kKeyWithoutValue) events << " no value@" << offset(place);
    if (error == ReadableError::kOpenQuote) events << " open quote@" << offset(place);
    return events.str();
}

TEST(ReadableParser, SaysWhatStandsWhereAndWhatIsWrong) {
    const struct {
        std::string_view text;
        const char* events;
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
        {"\0key\xFF"sv, " no value@1"},
        {"a 1 --[[--\nkey = --", " integer a@0 1@2 no value@11"},
        {"t { key }", " block t@0 {@2 no value@4"},
        {"a = \"b", " open quote@4"},
    };
    for (const auto& each : cases) EXPECT_EQ(Events(each.text), each.events) << each.text;
}

} // namespace
