#include "tools/key_path.h"

#include <charconv>

namespace Command {

namespace {

// Takes a piece in quotes off the front of `rest`.
bool TakeQuoted(std::string_view& rest, std::string& piece) {
    rest.remove_prefix(1);
    for (;;) {
        const std::size_t quote = rest.find('"');
        if (quote == std::string_view::npos) return false;
        piece += rest.substr(0, quote);
        rest.remove_prefix(quote + 1);
        if (rest.empty() || rest.front() != '"') return rest.empty() || rest.front() == '/';
        piece += '"';
        rest.remove_prefix(1);
    }
}

bool TakePiece(std::string_view& rest, std::string& piece) {
    if (!rest.empty() && rest.front() == '"') return TakeQuoted(rest, piece);
    piece = rest.substr(0, rest.find('/'));
    rest.remove_prefix(piece.size());
    return true;
}

} // namespace

std::optional<KeyPath> SplitKeys(std::string_view text) {
    KeyPath pieces;
    while (!text.empty()) {
        if (!TakePiece(text, pieces.emplace_back())) return std::nullopt;
        if (text.empty()) break;
        text.remove_prefix(1);
        if (text.empty()) pieces.emplace_back();
    }
    return pieces;
}

std::string SpellKey(std::string_view piece) {
    if (!piece.empty() && piece.find_first_of("/\"") == std::string_view::npos) return std::string(piece);
    std::string spelled = "\"";
    for (const char byte : piece) spelled.append(byte == '"' ? 2 : 1, byte);
    return spelled + '"';
}

std::optional<std::uint32_t> PositionOf(std::string_view piece) {
    std::uint32_t position = 0;
    const char* const end = piece.data() + piece.size();
    const auto [last, error] = std::from_chars(piece.data(), end, position);
    if (error != std::errc() || last != end) return std::nullopt;
    return position;
}

} // namespace Command
