// The rules of the form, member by member, over RapidJSON's own documents. Its objects keep members that share a key,
// so the first of each is looked up in a map here.

#include "fuzz/json_oracle.h"

#include "fuzz/check.h"
#include "tessarin/documents.h"
#include "tests/support/table_text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include <rapidjson/document.h>

namespace Fuzz {
namespace {

using namespace Tessarin;
using Json = rapidjson::Value;

const std::string kMarkerKey = "__internal_type";
const std::string kMarkerText = "qv game schema";

std::string TextOf(const Json& string) { return {string.GetString(), string.GetStringLength()}; }

bool IsWord(const Json& json) { return json.IsNull() || json.IsBool(); }
Value WordValue(const Json& json) { return IntegerValue(json.IsTrue() ? 1 : 0); }

Value NumberValue(const Json& number) {
    if (number.IsInt64()) return IntegerValue(static_cast<std::int32_t>(number.GetInt64()));
    if (number.IsUint64()) return IntegerValue(static_cast<std::int32_t>(number.GetUint64()));
    return RealValue(static_cast<float>(number.GetDouble()));
}

float ElementValue(const Json& json) {
    return json.IsNumber() ? static_cast<float>(json.GetDouble()) : json.IsTrue() ? 1.0F : 0.0F;
}

Value TreeOfObject(const Json& object);

/// What a member stores, given the first member of its key; nothing if it doesn't count.
std::optional<Value> Stored(const Json& member, const Json& first) {
    if (member.IsString()) return StringValue(TextOf(member));
    if (IsWord(member)) return WordValue(member);
    if (member.IsNumber()) {
        if (IsWord(first)) return WordValue(first);
        return first.IsNumber() ? std::optional(NumberValue(first)) : std::nullopt;
    }
    if (&member != &first) return std::nullopt;
    if (member.IsObject()) return TreeOfObject(member);
    const std::size_t count = member.Size();
    if (count != 16 && (count < 2 || count > 4)) return std::nullopt;
    std::vector<float> reals;
    for (const Json& element : member.GetArray()) reals.push_back(ElementValue(element));
    return VectorValue(std::move(reals));
}

Value TreeOfObject(const Json& object) {
    std::map<std::string, Value> stored;
    std::map<std::string, const Json*> firsts;
    for (const auto& member : object.GetObject()) {
        const std::string key = TextOf(member.name);
        if (key.empty()) continue;
        const Json* first = firsts.try_emplace(key, &member.value).first->second;
        std::optional<Value> value = Stored(member.value, *first);
        const auto there = stored.find(key);
        if (!value || (there != stored.end() && there->second.kind != value->kind)) continue;
        stored[key] = std::move(*value);
    }
    Value tree;
    for (auto& [key, value] : stored) tree.entries.push_back({key, std::move(value)});
    return tree;
}

/// Pointers and handles aren't saved, and no load takes an empty key.
bool IsKept(const Entry& entry) {
    const std::uint32_t kind = entry.value.kind;
    return !entry.key.empty() && kind != VALUE_EMPTY && kind != VALUE_PTR && kind != VALUE_HANDLE;
}

/// Removes what isn't kept; what the form has no text for becomes null.
void KeepWhatIsSaved(Value& tree) {
    tree.entries.erase(std::remove_if(tree.entries.begin(), tree.entries.end(), std::not_fn(IsKept)),
                       tree.entries.end());
    for (Entry& entry : tree.entries) {
        Value& value = entry.value;
        const bool is_finite = value.kind != VALUE_REAL || std::isfinite(std::bit_cast<float>(value.integer));
        if (!is_finite || value.kind == VALUE_EXTERNAL_TABLE) value = IntegerValue(0);
        for (float& real : value.reals) real = std::isfinite(real) ? real : 0.0F;
        KeepWhatIsSaved(value);
    }
}

/// The marker comes first; an entry of its key replaces it only with a string.
Value AsSaved(Value tree) {
    KeepWhatIsSaved(tree);
    if (Value* there = tree.Find(kMarkerKey)) {
        if (there->kind != VALUE_STRING) *there = StringValue(kMarkerText);
        return tree;
    }
    auto behind =
        std::find_if(tree.entries.begin(), tree.entries.end(), [](const Entry& e) { return e.key > kMarkerKey; });
    tree.entries.insert(behind, {kMarkerKey, StringValue(kMarkerText)});
    return tree;
}

} // namespace

Value TreeOfStandardJson(const std::string& text) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseCommentsFlag>(text.c_str());
    return document.HasParseError() || !document.IsObject() ? Value{} : TreeOfObject(document);
}

Value TreeOfRawJson(std::string_view text) {
    std::string standard;
    for (const char byte : text) standard.append(byte == '\\' ? 2 : 1, byte);
    return TreeOfStandardJson(standard);
}

void CheckSave(ITable& table) {
    const std::string saved = TestSupport::SavedJson(&table);
    Require(TreeOfStandardJson(saved) == AsSaved(TreeOf(table)), "a save doesn't say what the table holds");
    const TableHolder loaded(OpenTableBuffer(saved.data(), static_cast<std::uint32_t>(saved.size())));
    Require(loaded != nullptr, "a save doesn't load");
    Require(TreeOf(*loaded) == TreeOfRawJson(saved), "a save is loaded as something else");
}

} // namespace Fuzz
