// Documents, one per line: what the JSON standard says about it, which table the form loads, and the reason if the two
// differ. A rejected text loads as an empty table, so each accepted one has an entry, which distinguishes them.

#include "tests/support/table_text.h"

#include "tessarin/documents.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

/// What the standard says: the text is a document, it isn't one, or a parser may choose.
enum Standard { kValid, kInvalid, kOpen };

constexpr auto kRejected = "{}"sv;

// Reasons that several cases share.
constexpr auto kRaw = "strings have no escapes: a backslash is a byte like any other"sv;
constexpr auto kComments = "a comment may stand wherever white space may"sv;
constexpr auto kVectors = "an array is a vector or a matrix: 2, 3, 4 or 16 numbers"sv;
constexpr auto kRoots = "a table is filled from an object"sv;
constexpr auto kNulEnds = "a NUL ends the text"sv;
constexpr auto kLow32 = "an integer entry has 32 bits and keeps the low ones"sv;
constexpr auto kSingle = "a real entry has single precision"sv;
constexpr auto kFirstOfKey = "a key has one entry, of one kind"sv;
constexpr auto kUtf8Only = "texts are UTF-8, which isn't checked"sv;

struct Case {
    Standard standard;
    std::string_view text;
    std::string_view entries; ///< as the table saves them, so with backslashes and quotes escaped
    std::string_view reason = {};
};

constexpr Case kCases[] = {
    // Structure
    {kValid, R"({"a":{"b":{}},"c":1})", R"({"a":{"b":{}},"c":1})"},
    {kValid, R"({"a":1,"b":{"a":2}})", R"({"a":1,"b":{"a":2}})"},
    {kValid, R"({"A":1,"a":2})", R"({"A":1,"a":2})"},
    {kValid, R"({"a.b/c d":1,"1":2})", R"({"a.b/c d":1,"1":2})"},
    {kValid, R"({"":1,"a":2,"b":{"":3}})", R"({"a":2,"b":{}})", "no key is empty"},
    {kValid, R"([])", kRejected, kRoots},
    {kValid, R"([{"a":1}])", kRejected, kRoots},
    {kValid, R"("a")", kRejected, kRoots},
    {kValid, "7.5", kRejected, kRoots},
    {kValid, "7", kRejected, kRoots},
    {kValid, "true", kRejected, kRoots},
    {kValid, "null", kRejected, kRoots},
    {kInvalid, " ", kRejected},
    {kInvalid, "{", kRejected},
    {kInvalid, "}", kRejected},
    {kInvalid, R"({"a":1)", kRejected},
    {kInvalid, R"({"a":1]})", kRejected},
    {kInvalid, R"({"a":1}})", kRejected},
    {kInvalid, R"({"a":{"b":1})", kRejected},
    {kInvalid, R"({"a":[1,2})", kRejected},
    {kInvalid, R"({"a":1}{"b":2})", kRejected},
    {kInvalid, R"({"a":1},)", kRejected},
    {kInvalid, R"({"a":1} b)", kRejected},
    {kInvalid, R"({"a":1,})", kRejected},
    {kInvalid, R"({,"a":1})", kRejected},
    {kInvalid, R"({"a":1,,"b":2})", kRejected},
    {kInvalid, R"({"a":1 "b":2})", kRejected},
    {kInvalid, R"({"a":1;"b":2})", kRejected},
    {kInvalid, R"({"a" 1})", kRejected},
    {kInvalid, R"({"a"::1})", kRejected},
    {kInvalid, R"({"a"=1})", kRejected},
    {kInvalid, R"({"a":})", kRejected},
    {kInvalid, R"({"a"})", kRejected},
    {kInvalid, R"({"b":1,"a"})", kRejected},
    {kInvalid, R"({:1})", kRejected},
    {kInvalid, R"({a:1})", kRejected},
    {kInvalid, R"({1:1})", kRejected},
    {kInvalid, R"({null:1})", kRejected},
    {kInvalid, R"({'a':1})", kRejected},
    {kInvalid, R"({"a":'b'})", kRejected},
    {kInvalid, R"({"a":b})", kRejected},
    {kInvalid, R"({"b":1,"a":[1,2,]})", kRejected},
    {kInvalid, R"({"b":1,"a":[,1,2]})", kRejected},
    {kInvalid, R"({"b":1,"a":[1 2]})", kRejected},
    {kInvalid, R"({"b":1,"a":[1:2]})", kRejected},
    {kInvalid, R"({"b":{"c":2},"a":[1,2}})", kRejected},

    // The three words
    {kValid, R"({"a":null,"b":false,"c":true})", R"({"a":0,"b":0,"c":1})", "they are integers"},
    {kInvalid, R"({"a":True})", kRejected},
    {kInvalid, R"({"a":NULL})", kRejected},
    {kInvalid, R"({"a":nul})", kRejected},
    {kInvalid, R"({"a":nulll})", kRejected},
    {kInvalid, R"({"a":truefalse})", kRejected},
    {kInvalid, R"({"a":undefined})", kRejected},

    // Integers
    {kValid, R"({"a":0,"b":-1,"c":42})", R"({"a":0,"b":-1,"c":42})"},
    {kValid, R"({"a":-0})", R"({"a":0})"},
    {kValid, R"({"a":2147483647,"b":-2147483648})", R"({"a":2147483647,"b":-2147483648})"},
    {kOpen, R"({"a":2147483648,"b":4294967296})", R"({"a":-2147483648,"b":0})", kLow32},
    {kOpen, R"({"a":-2147483649,"b":-4294967297})", R"({"a":2147483647,"b":-1})", kLow32},
    {kOpen, R"({"a":18446744073709551615,"b":-9223372036854775808})", R"({"a":-1,"b":0})", kLow32},
    {kOpen, R"({"a":73786976294838206464})", R"({"a":73786976294838210000.0})", "past 64 bits it is a real"},
    {kOpen, R"({"a":-23058430092136939520})", R"({"a":-23058430092136940000.0})", "past 64 bits it is a real"},
    {kInvalid, R"({"a":+1})", kRejected},
    {kInvalid, R"({"a":-})", kRejected},
    {kInvalid, R"({"a":--1})", kRejected},
    {kInvalid, R"({"a":- 1})", kRejected},
    {kInvalid, R"({"a":01})", kRejected},
    {kInvalid, R"({"a":-01})", kRejected},
    {kInvalid, R"({"a":0x1F})", kRejected},
    {kInvalid, R"({"a":1_000})", kRejected},
    {kInvalid, R"({"a":1 000})", kRejected},
    {kInvalid, R"({"a":1a})", kRejected},
    {kInvalid, "{\"a\":\xD9\xA1}", kRejected}, // an Arabic digit

    // Reals
    {kValid, R"({"a":1.5,"b":-0.25,"c":0.0})", R"({"a":1.5,"b":-0.25,"c":0.0})"},
    {kValid, R"({"a":-0.0})", R"({"a":-0.0})"},
    {kValid, R"({"a":1e2,"b":1E+2,"c":25e-2,"d":0e+1})", R"({"a":100.0,"b":100.0,"c":0.25,"d":0.0})"},
    {kValid, R"({"a":1.5e3})", R"({"a":1500.0})"},
    {kValid, R"({"a":0.50000000000000000000000000000000000000000000})", R"({"a":0.5})"},
    {kOpen, R"({"a":0.1})", R"({"a":0.10000000149011612})", kSingle},
    {kOpen, R"({"a":16777217.0})", R"({"a":16777216.0})", kSingle},
    {kOpen, R"({"a":1e39,"b":-1e300})", R"({"a":null,"b":null})", "past single precision it is infinite"},
    {kOpen, R"({"a":1e-400,"b":-1e-60})", R"({"a":0.0,"b":-0.0})", kSingle},
    {kOpen, R"({"a":1e400})", kRejected, "past double precision it is no number"},
    {kOpen, R"({"a":-123e99999999999999999999})", kRejected, "past double precision it is no number"},
    {kInvalid, R"({"a":.5})", kRejected},
    {kInvalid, R"({"a":-.5})", kRejected},
    {kInvalid, R"({"a":1.})", kRejected},
    {kInvalid, R"({"a":1.e2})", kRejected},
    {kInvalid, R"({"a":1.2.3})", kRejected},
    {kInvalid, R"({"a":1,5})", kRejected},
    {kInvalid, R"({"a":1e})", kRejected},
    {kInvalid, R"({"a":1e+})", kRejected},
    {kInvalid, R"({"a":1eE2})", kRejected},
    {kInvalid, R"({"a":1e1.5})", kRejected},
    {kInvalid, R"({"a":1.0f})", kRejected},
    {kInvalid, R"({"a":NaN})", kRejected},
    {kInvalid, R"({"a":-NaN})", kRejected},
    {kInvalid, R"({"a":Infinity})", kRejected},
    {kInvalid, R"({"a":-Infinity})", kRejected},
    {kInvalid, R"({"a":inf})", kRejected},

    // Arrays
    {kValid, R"({"a":[1,2.5],"b":[1,2,3],"c":[-1,0,1e1,4]})",
     R"({"a":[1.0,2.5],"b":[1.0,2.0,3.0],"c":[-1.0,0.0,10.0,4.0]})"},
    {kValid, R"({"a":[],"b":[1],"c":[1,2,3,4,5],"d":1})", R"({"d":1})", kVectors},
    {kValid, R"({"a":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15],"d":1})", R"({"d":1})", kVectors},
    {kValid, R"({"a":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17],"d":1})", R"({"d":1})", kVectors},
    {kValid, R"({"m":[0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15]})",
     R"({"m":[0.0,1.0,2.0,3.0,4.0,5.0,6.0,7.0,8.0,9.0,10.0,11.0,12.0,13.0,14.0,15.0]})"},
    {kValid, R"({"a":[null,false,true]})", R"({"a":[0.0,0.0,1.0]})", kVectors},
    {kValid, R"({"a":["3",[4],{"x":5},6]})", R"({"a":[0.0,0.0,0.0,6.0]})", kVectors},
    {kValid, R"({"a":[[[[[[[[[[[[[[[[1,2]]]]]]]]]]]]]]]],"d":1})", R"({"d":1})", kVectors},
    {kValid, R"({"a":[{"b":{"c":[{}]}}],"d":1})", R"({"d":1})", kVectors},
    {kInvalid, R"({"d":1,"a":[[[[[[[[[[[[[[[[})", kRejected},
    {kInvalid, R"({"d":1,"a":[[1,2]]]})", kRejected},
    {kInvalid, R"({"d":1,"a":[1,2)", kRejected},
    {kInvalid, R"({"d":1,"a":[1,2,)", kRejected},

    // Members that share a key
    {kOpen, R"({"a":1,"a":2})", R"({"a":1})", kFirstOfKey},
    {kOpen, R"({"a":"x","a":"y"})", R"({"a":"y"})", "strings of one key take turns"},
    {kOpen, R"({"a":{"b":1},"a":{"c":2}})", R"({"a":{"b":1}})", kFirstOfKey},
    {kOpen, R"({"a":1,"a":"x","a":[1,2],"a":{}})", R"({"a":1})", kFirstOfKey},

    // Strings
    {kValid, R"({"a":""})", R"({"a":""})"},
    {kValid, R"({"a":"a / , : [ ] { } ' // /* */"})", R"({"a":"a / , : [ ] { } ' // /* */"})"},
    {kValid, "{\"a\":\"\x7F\"}", "{\"a\":\"\x7F\"}"},
    {kValid, "{\"\xC3\xA4\":\"\xE2\x82\xAC \xF0\x9D\x84\x9E\"}", "{\"\xC3\xA4\":\"\xE2\x82\xAC \xF0\x9D\x84\x9E\"}"},
    {kValid, "{\"a\":\"\xE2\x80\xA8\xEF\xBB\xBF\xEF\xBF\xBF\"}", "{\"a\":\"\xE2\x80\xA8\xEF\xBB\xBF\xEF\xBF\xBF\"}"},
    {kValid, R"({"a":"\n\t\/\\"})", R"({"a":"\\n\\t\\/\\\\"})", kRaw},
    {kValid, R"({"a":"\u0041\u0000"})", R"({"a":"\\u0041\\u0000"})", kRaw},
    {kValid, R"({"\u0061":1,"a":2})", R"({"\\u0061":1,"a":2})", kRaw},
    {kValid, R"({"a":"\uD834\uDD1E"})", R"({"a":"\\uD834\\uDD1E"})", kRaw},
    {kValid, R"({"a":"\""})", kRejected, kRaw},
    {kValid, R"({"a":"say \"b\" twice"})", kRejected, kRaw},
    {kOpen, R"({"a":"\uD834","b":"\uDD1E\uD834"})", R"({"a":"\\uD834","b":"\\uDD1E\\uD834"})", kRaw},
    {kInvalid, R"({"a":"\"})", R"({"a":"\\"})", kRaw},
    {kInvalid, R"({"a":"\x41\a\U0041\'"})", R"({"a":"\\x41\\a\\U0041\\'"})", kRaw},
    {kInvalid, R"({"a":"\u12","b":"\uD8G0","c":"\u"})", R"({"a":"\\u12","b":"\\uD8G0","c":"\\u"})", kRaw},
    {kInvalid, R"({"a":"b)", kRejected},
    {kInvalid, R"({"a)", kRejected},
    {kInvalid, R"({"a":"b""})", kRejected},
    {kInvalid, R"({"a":"b" "c"})", kRejected},
    {kInvalid, R"({"a":\n})", kRejected},
    {kInvalid, R"({"a":\u0041})", kRejected},
    {kInvalid, R"(\{"a":1})", kRejected},
    {kInvalid, "{\"a\":\"\x01\"}", kRejected},
    {kInvalid, "{\"a\":\"b\x1F\"}", kRejected},
    {kInvalid, "{\"a\":\"b\tc\"}", kRejected},
    {kInvalid, "{\"a\":\"b\nc\"}", kRejected},
    {kInvalid, "{\"a\":\"b\r\"}", kRejected},
    {kInvalid, "{\"a\n\":1}", kRejected},
    {kInvalid, "{\"a\":\"\\\n\"}", kRejected},

    // Encodings
    {kOpen, "\xEF\xBB\xBF{\"a\":1}", kRejected, "a byte-order mark is no white space"},
    {kOpen, "{\"a\":\"\xFF\xFE\x80\"}", "{\"a\":\"\xFF\xFE\x80\"}", kUtf8Only},
    {kOpen, "{\"a\":\"\xC0\xAF \xE4\"}", "{\"a\":\"\xC0\xAF \xE4\"}", kUtf8Only}, // overlong, cut short
    {kOpen, "{\"a\":\"\xED\xA0\x80 \xF4\xBF\xBF\xBF\"}", "{\"a\":\"\xED\xA0\x80 \xF4\xBF\xBF\xBF\"}", kUtf8Only},
    {kOpen, "\xFF\xFE{\0\"\0a\0\"\0:\0\x31\0}\0"sv, kRejected, kUtf8Only},
    {kOpen, "\0{\0\"\0a\0\"\0:\0\x31\0}"sv, kRejected, kUtf8Only},
    {kInvalid, "\xEF\xBB{\"a\":1}", kRejected},
    {kInvalid, "{\"a\":\xE4}", kRejected},

    // NULs
    {kInvalid, "{\"a\":1}\0"sv, R"({"a":1})", kNulEnds},
    {kInvalid, "{\"a\":1}\0,}"sv, R"({"a":1})", kNulEnds},
    {kInvalid, "\0{\"a\":1}"sv, kRejected},
    {kInvalid, "{\"a\":1\0}"sv, kRejected},
    {kInvalid, "{\"a\":\"b\0c\"}"sv, kRejected},

    // White space and comments
    {kValid, " \t\r\n{ \t\r\n\"a\" \t\r\n: \t\r\n1 \t\r\n, \"b\" : [ 1 , 2 ] } \t\r\n", R"({"a":1,"b":[1.0,2.0]})"},
    {kInvalid, "\f{\"a\":1}", kRejected},
    {kInvalid, "{\"a\":\v1}", kRejected},
    {kInvalid, "{\"a\":\b1}", kRejected},
    {kInvalid, "{\xC2\xA0\"a\":1}", kRejected},
    {kInvalid, "{\"a\":1}\xE2\x81\xA0", kRejected},
    {kInvalid, "// b\n{\"a\":1}", R"({"a":1})", kComments},
    {kInvalid, "{\"a\":1}//", R"({"a":1})", kComments},
    {kInvalid, R"({/**/"a"/*b*/:/***/1/* /* */,/* " */"c":[1/*,*/,2]/*\*/})", R"({"a":1,"c":[1.0,2.0]})", kComments},
    {kInvalid, "{\"a\":1}/* b", kRejected},
    {kInvalid, "{\"a\":1}/*/", kRejected},
    {kInvalid, "{\"a\":1 // }", kRejected},
    {kInvalid, "{\"a\":1}/", kRejected},
    {kInvalid, "{\"a\":1/2}", kRejected},
    {kInvalid, "{\"a\":1/**/2}", kRejected},
    {kInvalid, "{\"a\":1}# b", kRejected},
    {kInvalid, "{\"a\":1}-- b", kRejected},
    {kInvalid, "{\"a\":1}<!-- b -->", kRejected},
};

constexpr bool NeedsReason(const Case& each) {
    const bool rejected = each.entries == kRejected;
    return (each.standard == kValid && rejected) || (each.standard == kInvalid && !rejected) || each.standard == kOpen;
}

static_assert(std::all_of(std::begin(kCases), std::end(kCases),
                          [](const Case& each) { return !NeedsReason(each) || !each.reason.empty(); }),
              "what differs from the standard, or is our own choice, has its reason beside it");

TEST(JsonCases, EachBecomesWhatItsLineSays) {
    for (const Case& each : kCases) {
        auto size = static_cast<std::uint32_t>(each.text.size());
        EXPECT_EQ(TestSupport::EntriesAndClose(OpenTableBuffer(each.text.data(), size)), each.entries) << each.text;
    }
}

/// No beginning of a document is a document, wherever it is cut.
TEST(JsonCases, NoBeginningOfADocumentIsOne) {
    for (const Case& each : kCases) {
        const std::size_t end = each.text.rfind('}');
        if (each.standard != kValid || each.entries == kRejected || each.text[0] != '{') continue;
        for (std::uint32_t size = 1; size <= end; ++size) {
            EXPECT_EQ(TestSupport::EntriesAndClose(OpenTableBuffer(each.text.data(), size)), kRejected) << each.text;
        }
    }
}

} // namespace
