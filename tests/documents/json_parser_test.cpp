// What the JSON parser finds, at which place of the text, and which errors it finds where. The test of the form's cases
// shows which texts are documents.

#include "documents/json_parser.h"

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

TEST(JsonParser, KnowsWhatIsWrongAndWhere) {
    const struct {
        const char* text;
        JsonError error;
        std::ptrdiff_t offset;
    } cases[] = {
        {" //\\", JsonError::kEmpty, 4},
        {"/*\\*/ [1]", JsonError::kRootIsNoObject, 6},
        {" \"\\\"", JsonError::kRootIsNoObject, 1},
        {" -1.5", JsonError::kRootIsNoObject, 1},
        {" null", JsonError::kRootIsNoObject, 1},
        {" true", JsonError::kRootIsNoObject, 1},
        {"//\\\nfalse ", JsonError::kRootIsNoObject, 4},
        {R"({"\":1}\)", JsonError::kBehindRoot, 7},
        {R"({"\":\1})", JsonError::kNoValue, 5},
        {R"({"\":nul})", JsonError::kNoValue, 8},
        {R"({"\":)", JsonError::kNoValue, 5},
        {R"({\"a":1})", JsonError::kNoKey, 1},
        {R"({"\":1,})", JsonError::kNoKey, 7},
        {R"({"\" 1})", JsonError::kNoColon, 5},
        {R"({"\":"\"b"})", JsonError::kNoCommaOrBrace, 8},
        {R"({"\":["\"b])", JsonError::kNoCommaOrBracket, 9},
        {"{\"\\\":\"\\\n\"}", JsonError::kControlByte, 7},
        {R"({"\":"\)", JsonError::kOpenString, 7},
        {R"({"\":[1e999]})", JsonError::kNumberTooLarge, 6},
        {R"({"\":1.e})", JsonError::kNoFraction, 7},
        {R"({"\":1e+})", JsonError::kNoExponent, 8},
        {R"({"\":1}/\)", JsonError::kBadComment, 8},
        {R"({"\":1}/*\*)", JsonError::kBadComment, 11},
    };
    for (const auto& each : cases) {
        Recorder recorder(each.text);
        const Tessarin::JsonFailure failure = ParseJson(each.text, recorder);
        EXPECT_EQ(failure.error, each.error) << each.text;
        EXPECT_EQ(failure.place - each.text, each.offset) << each.text;
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
