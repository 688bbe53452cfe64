// Any bytes as a readable text. The table must hold what a plain reader finds in the text, byte by byte by the form's
// rules, with the C library's numbers. Written as a text of that form again, it must load as the same tree; and its
// JSON must be standard and say the same.
//
// The text that is written here has each value in the one notation that keeps it: reals with all their digits, strings
// in quotes, unless they hold a quote, which only a bare text can.

#include "fuzz/check.h"
#include "fuzz/json_oracle.h"
#include "fuzz/table_tree.h"
#include "tessarin/documents.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace Fuzz;

/// Every input goes through one file, which is removed when the program ends.
TableHolder Load(const std::string& text) {
    static const TestSupport::TemporaryFolder folder;
    return TableHolder(OpenTableReadableFile(folder.File("text", text).c_str()));
}

// -------------------------------------------------------------------------------------------------- the plain reader

std::string WithoutComments(std::string text) {
    for (std::size_t at = text.find("--"); at != text.npos; at = text.find("--", at)) {
        const bool is_block = text.compare(at + 2, 2, "[[") == 0;
        std::size_t end = is_block ? text.find("--", at + 4) : text.find_first_of("\r\n", at);
        end = end == text.npos ? text.size() : is_block ? end + 2 : end;
        for (; at != end; ++at) text[at] = '\0';
    }
    return text;
}

float RealOf(const std::string& text) { return static_cast<float>(std::strtod(text.c_str(), nullptr)); }

/// Missing components are 0; the last one is all that is left, up to the bracket.
Value ReadVector(std::string text, std::size_t count) {
    const char closing = text[0] == '[' ? ']' : ')';
    text.erase(0, 1);
    std::vector<float> reals(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = text.find(i + 1 < count ? ',' : closing);
        reals[i] = RealOf(text.substr(0, end));
        if (end == text.npos) break;
        text.erase(0, end + 1);
    }
    return VectorValue(std::move(reals));
}

Value ReadScalar(const std::string& text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        const std::string inside = text.substr(1, text.size() - 2);
        return StringValue(inside.substr(0, inside.find('\0')));
    }
    const std::string digits = text.substr(text[0] == '-' ? 1 : 0);
    const auto points = std::count(digits.begin(), digits.end(), '.');
    if (points > 1 || digits.find_first_not_of("0123456789.") != digits.npos) return StringValue(text);
    if (points == 1) return RealValue(RealOf(text));
    return IntegerValue(static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10)));
}

bool CountsAsSame(const std::vector<float>& one, const std::vector<float>& other) {
    return std::equal(one.begin(), one.end(), other.begin(),
                      [](float a, float b) { return std::fabs(a - b) < 1.1920929e-7F; });
}

void SortByKey(Value& table) {
    std::sort(table.entries.begin(), table.entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    for (Entry& entry : table.entries) SortByKey(entry.value);
}

class PlainReader {
public:
    explicit PlainReader(const std::string& text) : text_(WithoutComments(text) + '\0') {}

    /// Reads entries up to the block's end; false if the text is rejected.
    bool ReadBlock(Value& table) {
        std::string key;
        std::string value;
        while (ReadKey(key)) {
            if (!ReadValue(value) || !Store(table, key, value)) return false;
        }
        return true;
    }

private:
    static constexpr std::string_view kSeparators{"\t\n\r =\0\xFF", 7};

    [[nodiscard]] bool IsSeparator(char also) const {
        return kSeparators.find(text_[at_]) != kSeparators.npos || text_[at_] == also;
    }

    bool ReadKey(std::string& key) {
        while (at_ < text_.size() && IsSeparator('{')) ++at_;
        const std::size_t start = at_;
        while (at_ < text_.size() && text_[at_] != '}' && !IsSeparator('{')) ++at_;
        key = text_.substr(start, at_ - start);
        if (at_ == text_.size()) return false;
        if (text_[at_] != '}') return true;
        ++at_;
        return false;
    }

    /// A `{` is left to be read as the block's own.
    bool ReadValue(std::string& value) {
        while (at_ < text_.size() && IsSeparator('}')) ++at_;
        if (at_ == text_.size()) return false;
        std::size_t start = at_;
        if (text_[start] != '"') {
            while (!IsSeparator('}') && !IsOpening()) ++at_; // the last byte is a separator
            if (!IsOpening() || text_[at_] == '{') {
                value = text_[at_] == '{' ? "{" : text_.substr(start, at_ - start);
                return true;
            }
            start = at_;
        }
        const char closing = text_[start] == '"' ? '"' : text_[start] == '[' ? ']' : ')';
        const std::size_t end = text_.find(closing, start + 1);
        if (end == text_.npos && closing == '"') return false;
        at_ = end == text_.npos ? text_.size() : end + 1;
        value = text_.substr(start, at_ - start);
        return true;
    }

    [[nodiscard]] bool IsOpening() const { return text_[at_] == '{' || text_[at_] == '[' || text_[at_] == '('; }

    bool Store(Value& table, const std::string& key, const std::string& value);

    std::string text_;
    std::size_t at_ = 0;
};

/// A vector replaces a vector of its kind that doesn't count as the same, a scalar replaces anything, and a block
/// nothing.
bool PlainReader::Store(Value& table, const std::string& key, const std::string& value) {
    Value* there = table.Find(key);
    const bool is_vector = value[0] == '[' || value[0] == '(';
    Value read;
    if (value[0] == '{') {
        if (there != nullptr || !ReadBlock(read)) return false;
    } else {
        read = is_vector ? ReadVector(value, value[0] == '[' ? 3 : 4) : ReadScalar(value);
    }
    if (there == nullptr) {
        table.entries.push_back({key, std::move(read)});
    } else if (!is_vector || (there->kind == read.kind && !CountsAsSame(there->reals, read.reals))) {
        *there = std::move(read);
    }
    return true;
}

/// Nothing for a text that is rejected.
std::optional<Value> Read(const std::string& text) {
    Value table;
    if (!PlainReader(text).ReadBlock(table)) return std::nullopt;
    SortByKey(table);
    return table;
}

// ------------------------------------------------------------------------------------------------------- the writer

/// One digit more than any float needs, so that the value is read back exactly.
std::string RealText(float real) {
    if (std::isnan(real)) return "nan";
    if (std::isinf(real)) return std::string(real < 0 ? "-1" : "1").append(400, '0').append(".0");
    char text[256];
    std::snprintf(text, sizeof text, "%.150f", static_cast<double>(real));
    return text;
}

std::string VectorText(const Value& value) {
    const bool three = value.kind == Tessarin::VALUE_FLOAT3;
    std::string text(1, three ? '[' : '(');
    for (const float real : value.reals) text += RealText(real) + ',';
    text.back() = three ? ']' : ')';
    return text;
}

std::string BlockText(const Value& tree);

std::string ValueText(const Value& value) {
    switch (value.kind) {
    case Tessarin::VALUE_STRING:
        return value.text.find('"') == std::string::npos ? std::string("\"").append(value.text).append("\"")
                                                         : value.text;
    case Tessarin::VALUE_INTEGER:
        return std::to_string(value.integer);
    case Tessarin::VALUE_REAL:
        return RealText(std::bit_cast<float>(value.integer));
    case Tessarin::VALUE_TABLE:
        return std::string("{").append(BlockText(value)).append("}");
    default:
        return VectorText(value);
    }
}

std::string BlockText(const Value& tree) {
    std::string text;
    for (const Entry& entry : tree.entries) text += entry.key + " = " + ValueText(entry.value) + '\n';
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const TableHolder table = Load(text);
    const std::optional<Value> expected = Read(text);
    Require((table != nullptr) == expected.has_value(), "rejected without a reason, or wrongly accepted");
    if (table == nullptr) return 0;
    const Value tree = TreeOf(*table);
    Require(tree == *expected, "the table isn't what the text says");
    const TableHolder again = Load(BlockText(tree));
    Require(again != nullptr && TreeOf(*again) == tree, "the tree, written as text, doesn't load as it was");
    CheckSave(*table);
    return 0;
}
