// Splits a key path in one pass, which takes key after key off the front of the text.

#include "tools/key_path.h"

#include <charconv>

namespace Command {

namespace {

// Takes a key in quotes off the front of `rest`; a `/` or the end must follow it.
bool TakeQuotedKey(std::string_view& rest, std::string& key) {
    rest.remove_prefix(1);
    for (;;) {
        const std::size_t quote = rest.find('"');
        if (quote == std::string_view::npos) return false;
        key += rest.substr(0, quote);
        rest.remove_prefix(quote + 1);
        if (rest.empty() || rest.front() != '"') return rest.empty() || rest.front() == '/';
        key += '"';
        rest.remove_prefix(1);
    }
}

bool TakeKey(std::string_view& rest, std::string& key) {
    if (!rest.empty() && rest.front() == '"') return TakeQuotedKey(rest, key);
    key = rest.substr(0, rest.find('/'));
    rest.remove_prefix(key.size());
    return true;
}

} // namespace

std::optional<KeyPath> SplitKeyPath(std::string_view text) {
    KeyPath keys;
    while (!text.empty()) {
        if (!TakeKey(text, keys.emplace_back())) return std::nullopt;
        if (text.empty()) break;
        text.remove_prefix(1);
        if (text.empty()) keys.emplace_back();
    }
    return keys;
}

std::string QuoteKey(std::string_view key) {
    if (!key.empty() && key.find_first_of("/\"") == std::string_view::npos) return std::string(key);
    std::string quoted = "\"";
    for (const char byte : key) quoted.append(byte == '"' ? 2 : 1, byte);
    return quoted + '"';
}

std::optional<std::uint32_t> ParsePosition(std::string_view key) {
    std::uint32_t position = 0;
    const char* const end = key.data() + key.size();
    const auto [last, error] = std::from_chars(key.data(), end, position);
    if (error != std::errc() || last != end) return std::nullopt;
    return position;
}

} // namespace Command
