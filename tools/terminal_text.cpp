// Escapes texts. utf8proc decodes the characters; it rejects overlong forms, surrogates and code points above U+10FFFF.

#include "tools/terminal_text.h"

#include <utf8proc.h>

namespace Command {

namespace {

struct Character {
    std::string_view bytes;
    utf8proc_int32_t codepoint; // negative for a byte that isn't part of valid UTF-8
};

// Takes the first character off a text that isn't empty; if no valid character begins there, one byte.
Character TakeCharacter(std::string_view& text) {
    Character first{};
    const auto* const bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const utf8proc_ssize_t length =
        utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &first.codepoint);
    first.bytes = text.substr(0, length > 0 ? static_cast<std::size_t>(length) : 1);
    text.remove_prefix(first.bytes.size());
    return first;
}

bool IsControl(utf8proc_int32_t codepoint) { return codepoint < 0x20 || (codepoint >= 0x7F && codepoint < 0xA0); }

std::string Escape(unsigned char byte) {
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    default:
        break;
    }
    constexpr const char* kDigits = "0123456789abcdef";
    return std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
}

// also_escaped  ASCII characters to escape besides controls and invalid bytes
std::string EscapeText(std::string_view text, std::string_view also_escaped) {
    std::string escaped;
    while (!text.empty()) {
        const auto [bytes, codepoint] = TakeCharacter(text);
        const bool is_escaped =
            codepoint < 0 || IsControl(codepoint) || also_escaped.find(bytes.front()) != std::string_view::npos;
        if (!is_escaped) {
            escaped += bytes;
            continue;
        }
        for (const char byte : bytes) escaped += Escape(static_cast<unsigned char>(byte));
    }
    return escaped;
}

} // namespace

std::string Quote(std::string_view text) { return '"' + EscapeText(text, "\"\\") + '"'; }

std::string Printable(std::string_view text) { return EscapeText(text, ""); }

std::string ToUtf8(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        const auto [bytes, codepoint] = TakeCharacter(text);
        valid += codepoint < 0 ? std::string_view("\xEF\xBF\xBD") : bytes;
    }
    return valid;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const utf8proc_int32_t codepoint = TakeCharacter(text).codepoint;
        if (codepoint >= 0) width += static_cast<std::size_t>(utf8proc_charwidth(codepoint));
    }
    return width;
}

} // namespace Command
