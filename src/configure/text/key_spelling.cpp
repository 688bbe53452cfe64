// How a key is put together. Its bytes begin and end outside of quotes, except that its line may begin inside a quote
// (KeyBeginsInQuote). Any other quote in the bytes opens a string, which the next quote closes.

#include "configure/text/key_spelling.h"

#include <algorithm>
#include <cstring>

namespace Configure {
namespace {

bool IsPlainKey(const char* text, Span key) {
    for (std::uint32_t position = key.first; position < key.last; ++position) {
        if (Is(kSpelled, text[position])) return false;
    }
    return key.Length() <= kMostKeyBytes;
}

} // namespace

SpelledKey::SpelledKey(const char* text, Span key, const TextNode& node) {
    if (IsPlainKey(text, key)) {
        bytes_ = text + key.first;
        length_ = key.Length();
        return;
    }
    bytes_ = room_;
    if (node.Scan() == KeyScan::kFirst) {
        SpellFirst(text, key, node.KeyBeginsInQuote());
    } else {
        SpellBehindScalar(text, key);
    }
    room_[length_] = '\0';
}

/// Turns white space inside a key into blanks, and drops it beside `:` and `,`.
void SpelledKey::SpellFirst(const char* text, Span key, bool begins_in_quote) {
    std::uint32_t blanks = 0;
    for (std::uint32_t position = key.first; position < key.last; ++position) {
        const char byte = text[position];
        if (Is(kWhite, byte)) {
            ++blanks;
        } else if (byte == ':' || byte == ',') {
            Put(byte);
            blanks = 0;
            position = SkipWhite(text, position + 1, key.last) - 1;
        } else {
            PutBlanks(blanks);
            blanks = 0;
            if (byte == '"' && begins_in_quote) {
                Put(byte);
                begins_in_quote = false;
            } else {
                position = PutPiece(text, position, key.last);
            }
        }
    }
}

/// Drops white space outside of quotes.
void SpelledKey::SpellBehindScalar(const char* text, Span key) {
    for (std::uint32_t position = key.first; position < key.last; ++position) {
        if (!Is(kWhite, text[position])) position = PutPiece(text, position, key.last);
    }
}

/// Puts the byte at the position, or the quoted string that begins there. Returns the position of the last byte that it
/// has put.
std::uint32_t SpelledKey::PutPiece(const char* text, std::uint32_t position, std::uint32_t last) {
    if (text[position] != '"') {
        Put(text[position]);
        return position;
    }
    const char* const first = text + position + 1;
    const char* const close = std::find(first, text + last, '"');
    Put(first, static_cast<std::uint32_t>(close - first));
    return static_cast<std::uint32_t>(close - text);
}

void SpelledKey::Put(const char* bytes, std::uint32_t count) {
    fits_ = fits_ && count <= kMostKeyBytes - length_;
    if (!fits_) return;
    std::memcpy(room_ + length_, bytes, count);
    length_ += count;
}

} // namespace Configure
