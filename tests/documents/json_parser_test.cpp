// Reading JSON: the documents of tests/golden/json/, what the parser finds at which place of a text, and that its
// handler can stop it.

#include "documents/json_parser.h"

#include "tests/support/golden.h"
#include "tests/support/table_text.h"

#include "tessarin/documents.h"

#include <climits>
#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using Tessarin::JsonError;
using Tessarin::ParseJson;

/// Writes ` WHAT@OFFSET` for each event, and stops the parser after a number of events.
struct Recorder {
    explicit Recorder(const char* given, int most = INT_MAX) : text(given), left(most) {}

    bool Null(const char* place) { return Add("null", place); }
    bool Bool(bool value, const char* place) { return Add(value, place); }
    bool Integer(std::int64_t value, double, const char* place) { return Add(value, place); }
    bool Real(double value, const char* place) { return Add(value, place); }
    bool String(std::string_view string) { return Add(string, string.data()); }
    bool Key(std::string_view key) { return Add(key, key.data()); }
    bool BeginObject(const char* place) { return Add('{', place); }
    bool EndObject(const char* place) { return Add('}', place); }
    bool BeginArray(const char* place) { return Add('[', place); }
    bool EndArray(const char* place) { return Add(']', place); }

    template <class What>
    bool Add(const What& what, const char* place) {
        events << ' ' << what << '@' << place - text;
        return --left > 0;
    }

    const char* text;
    int left;
    std::ostringstream events = {};
};

std::string Load(const std::string& text, std::size_t size) {
    return TestSupport::EntriesAndClose(OpenTableBuffer(text.data(), static_cast<std::uint32_t>(size)));
}

/// The tree; or, as any other text loads as an empty table, the rule that the text breaks and where.
std::string Outcome(const std::string& text) {
    constexpr const char* kRules[] = {"none",
                                      "empty",
                                      "no object",
                                      "behind the root",
                                      "no value",
                                      "no key",
                                      "no colon",
                                      "no comma or brace",
                                      "no comma or bracket",
                                      "control byte",
                                      "open string",
                                      "number too large",
                                      "no fraction",
                                      "no exponent",
                                      "bad comment"};
    std::string tree = Load(text, text.size());
    Recorder recorder(text.c_str());
    const Tessarin::JsonFailure failure = ParseJson(text.c_str(), recorder);
    if (failure.error == JsonError::kNone) return tree;
    EXPECT_EQ(tree, "{}");
    return std::string(kRules[static_cast<int>(failure.error)]) + " at " + std::to_string(failure.place - text.data());
}

TEST(JsonDocuments, AreWhatTheirNamesSay) {
    for (const auto& document : TestSupport::GoldenDocuments("json")) {
        const std::string outcome = Outcome(document.text);
        EXPECT_EQ(outcome + '\n', document.expected) << document.name;
        EXPECT_NE(document.name[0], outcome[0] == '{' ? 'n' : 'y') << document.name;
        if (outcome[0] != '{') continue;
        // No beginning of a document is one, and all that was read of it is dropped.
        const std::size_t end = std::string(document.text.c_str()).rfind('}');
        for (std::size_t size = 1; size <= end; ++size) EXPECT_EQ(Load(document.text, size), "{}") << document.name;
    }
}

TEST(JsonParser, KnowsWhereEachThingIs) {
    const struct {
        const char* text;
        const char* events;
    } cases[] = {
        {R"({"a":null,"b":true,"c":false})", " {@0 a@2 null@5 b@11 1@14 c@20 0@23 }@28"},
        {R"( { "a" : -12 , "b" : [ 1.5 , { } ] } )", " {@1 a@4 -12@9 b@16 [@21 1.5@23 {@29 }@31 ]@33 }@35"},
        {R"({"\\a\":"c:\dir\\","b\":["\"]})", R"( {@0 \\a\@2 c:\dir\\@9 b\@20 [@24 \@26 ]@28 }@29)"},
        {"//\\\\\n{/* \\\\\\\" */\"a\"/*\\*/:1//\\\n}//\\", " {@5 a@17 1@25 }@30"},
    };
    for (const auto& each : cases) {
        Recorder recorder(each.text);
        EXPECT_EQ(ParseJson(each.text, recorder).error, JsonError::kNone) << each.text;
        EXPECT_EQ(recorder.events.str(), each.events);
    }
}

TEST(JsonParser, StopsWhereTheHandlerSaysSo) {
    const char* const text = R"({"a":[1,-2,3000000000,-3000000000,2.5,"s",null,true],"b":{}})";
    Recorder all(text);
    ASSERT_EQ(ParseJson(text, all).error, JsonError::kNone);
    const int events = INT_MAX - all.left;
    for (int most = 1; most <= events; ++most) {
        Recorder recorder(text, most);
        const Tessarin::JsonFailure failure = ParseJson(text, recorder);
        EXPECT_EQ(failure.error, JsonError::kStopped) << most;
        EXPECT_EQ(failure.place, nullptr);
        EXPECT_EQ(recorder.left, 0);
    }
}

} // namespace
