// Composite keys: any format with any arguments, compared with the key that it should spell. A tree of each family that
// has that key finds it, and every getter returns its value; a format that spells no key finds nothing.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/configure_tree.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Fuzz;
using namespace Configure;

constexpr std::size_t kMostLetters = 6;
constexpr std::size_t kRoom = 1024; // of a key with its terminator, in all families

struct Argument {
    std::int32_t number = 0;
    std::optional<std::string> text; // nothing is a null text

    [[nodiscard]] const char* Text() const { return text ? text->c_str() : nullptr; }
};

struct Request {
    std::string format;
    std::array<Argument, kMostLetters> arguments;
};

/// The key, with a `:` after each piece; nothing if the format doesn't spell a key.
std::optional<std::string> Spelled(const Request& request) {
    std::string key;
    for (std::size_t i = 0; i < request.format.size(); ++i) {
        const Argument& argument = request.arguments[i];
        const char letter = request.format[i];
        if (letter != 'i' && letter != 's' && letter != 'p') return std::nullopt;
        if (letter != 'i' && !argument.text) return std::nullopt;
        key += letter == 'i'   ? std::to_string(argument.number)
               : letter == 's' ? *argument.text
                               : PathForm(*argument.text);
        key += ':';
        if (key.size() >= kRoom) return std::nullopt;
    }
    return key;
}

/// Calls with the arguments that the format's letters take. A variadic call has a fixed number of arguments, so each
/// letter adds one to the pack. A letter that takes none ends the list, because the library gives up the key there.
template <class Call, class... Taken>
void WithArguments(const Request& request, const Call& call, Taken... taken) {
    constexpr std::size_t kTaken = sizeof...(Taken);
    if constexpr (kTaken < kMostLetters) {
        const char letter = request.format[kTaken];
        const Argument& argument = request.arguments[kTaken];
        if (letter == 'i') return WithArguments(request, call, taken..., argument.number);
        if (letter == 's' || letter == 'p') return WithArguments(request, call, taken..., argument.Text());
    }
    call(request.format.c_str(), taken...);
}

/// Calls every operation that takes a format, on a table in which it must find `expected`, or nothing if that is null.
void CheckAll(ITable& table, const Request& request, IIterator* expected) {
    WithArguments(request, [&table, expected](const char* format, auto... taken) {
        Require(table.FindFormat(format, taken...) == expected, "another Unit is found, or none");
        const bool is_text = expected != nullptr && expected->IsString();
        Require(table.GetIntegerFormat(-7, format, taken...) == (is_text ? expected->GetInteger() : -7), "an integer");
        Require(table.GetFloatFormat(-7.5F, format, taken...) == (is_text ? expected->GetFloat() : -7.5F), "a float");
        Require(table.GetStringFormat(format, taken...) == (is_text ? expected->GetString() : nullptr), "a string");
        Require(table.GetBoolFormat(format, taken...) == (is_text && expected->GetBool()), "a bool");
        Require(table.GetArrayFormat(format, taken...) == (expected ? expected->GetArray() : nullptr), "an array");
        Require(table.GetTableFormat(format, taken...) == (expected ? expected->GetTable() : nullptr), "a table");
    });
}

/// A table that is edited and has one entry of one of the kinds; or none, if the key is empty.
ITable& TableWith(LoadedFile& file, const std::string& key, std::uint32_t kind) {
    ITable* root = file.Load("", ACCESS_EDIT, FORMAT_TEXT);
    if (key.empty()) return *root;
    IIterator* added = kind == 0   ? root->AddArray(key.c_str())
                       : kind == 1 ? root->AddTable(key.c_str())
                                   : root->AddString(key.c_str(), "12.5");
    Require(added != nullptr, "a key isn't taken");
    return *root;
}

void CheckOnlyUnit(ITable& table, const Request& request) {
    CheckAll(table, request, table.GetCount() == 0 ? nullptr : table.Begin());
}

/// With a last `:` the key is that of the text families, without it that of the binary family. A key that is looked up
/// is put into lower case, and so is one that is added.
void CheckFamilies(const Request& request, std::string key, std::uint32_t kind) {
    LoadedFile edited, read, compiled;
    ITable& root = TableWith(edited, key, kind);
    CheckOnlyUnit(root, request);
    // Written in quotes, most keys read back; those with separators if they are paths already.
    const bool is_path = key.find_first_of("\\/") == key.npos || PathForm(key) == LowerCase(key);
    const bool is_quotable = key.find_first_of("\"\r\n\xFF") == key.npos && key.find("--") == key.npos;
    const std::string text = key.empty() ? "" : '"' + key + "\" = " + (kind == 0 ? "{,}" : kind == 1 ? "{}" : "12.5");
    if (is_path && is_quotable) CheckOnlyUnit(*read.Load(text, ACCESS_READ, FORMAT_TEXT), request);
    if (!key.empty()) key.pop_back();
    TableWith(edited, key, kind);
    CheckOnlyUnit(*compiled.Load(edited.Saved(FORMAT_BINARY).value(), ACCESS_READ, FORMAT_BINARY), request);
}

Request ReadRequest(ByteSource& source) {
    constexpr std::string_view kLetters = "ispispispispispx"; // rarely an invalid one
    Request request;
    const std::uint32_t count = source.Below(kMostLetters + 1);
    for (std::uint32_t i = 0; i < count; ++i) request.format += kLetters[source.Below(kLetters.size())];
    for (std::size_t i = 0; i < request.format.size(); ++i) {
        Argument& argument = request.arguments[i];
        if (request.format[i] == 'i') argument.number = source.Plain<std::int32_t>();
        if (request.format[i] == 's' || request.format[i] == 'p') argument.text = source.Text();
        if (argument.text == "null") argument.text.reset();
    }
    return request;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    const std::uint32_t kind = source.Below(4);
    const Request request = ReadRequest(source);
    if (const std::optional<std::string> key = Spelled(request)) {
        CheckFamilies(request, *key, kind);
        return 0;
    }
    LoadedFile file;
    CheckAll(*file.Load("a = 1", ACCESS_READ, FORMAT_TEXT), request, nullptr);
    CheckAll(*file.Load("a = 1", ACCESS_EDIT, FORMAT_TEXT), request, nullptr);
    return 0;
}
