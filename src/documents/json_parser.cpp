// Translates RapidJSON's errors to JsonError. The errors about escapes and encodings never occur: JsonStream shows the
// reader no escape but `\\`, and encodings aren't validated. RapidJSON reports a byte below 0x20 in a string as an
// invalid escape.

#include "documents/json_parser.h"

#include <iterator>

namespace Tessarin {
namespace {

constexpr JsonError kErrors[] = {
    JsonError::kNone,             // kParseErrorNone
    JsonError::kEmpty,            // kParseErrorDocumentEmpty
    JsonError::kBehindRoot,       // kParseErrorDocumentRootNotSingular
    JsonError::kNoValue,          // kParseErrorValueInvalid
    JsonError::kNoKey,            // kParseErrorObjectMissName
    JsonError::kNoColon,          // kParseErrorObjectMissColon
    JsonError::kNoCommaOrBrace,   // kParseErrorObjectMissCommaOrCurlyBracket
    JsonError::kNoCommaOrBracket, // kParseErrorArrayMissCommaOrSquareBracket
    JsonError::kControlByte,      // kParseErrorStringUnicodeEscapeInvalidHex, never
    JsonError::kControlByte,      // kParseErrorStringUnicodeSurrogateInvalid, never
    JsonError::kControlByte,      // kParseErrorStringEscapeInvalid
    JsonError::kOpenString,       // kParseErrorStringMissQuotationMark
    JsonError::kControlByte,      // kParseErrorStringInvalidEncoding, never
    JsonError::kNumberTooLarge,   // kParseErrorNumberTooBig
    JsonError::kNoFraction,       // kParseErrorNumberMissFraction
    JsonError::kNoExponent,       // kParseErrorNumberMissExponent
    JsonError::kStopped,          // kParseErrorTermination
    JsonError::kBadComment,       // kParseErrorUnspecificSyntaxError
};
static_assert(std::size(kErrors) == rapidjson::kParseErrorUnspecificSyntaxError + 1);

} // namespace

JsonFailure JsonFailureOf(const rapidjson::ParseResult& result) {
    const JsonError error = kErrors[result.Code()];
    const bool has_place = error != JsonError::kNone && error != JsonError::kStopped;
    return {error, has_place ? reinterpret_cast<const char*>(result.Offset()) : nullptr};
}

} // namespace Tessarin
