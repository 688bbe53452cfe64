// How the text form spells a key: from the bytes in the text to the bytes that are interned.

#ifndef TESSARIN_CONFIGURE_TEXT_KEY_SPELLING_H
#define TESSARIN_CONFIGURE_TEXT_KEY_SPELLING_H

#include "configure/text/nodes.h"

#include <cstdint>

namespace Configure {

inline constexpr std::uint32_t kMostKeyBytes = 1023;

/// A node's spelled key. Most keys are just their bytes in the text; the others are put together here.
class SpelledKey {
public:
    /// text     the bytes that positions are in, borrowed
    /// key      the bytes of the node's key
    SpelledKey(const char* text, Span key, const TextNode& node);
    SpelledKey(const SpelledKey&) = delete;
    SpelledKey& operator=(const SpelledKey&) = delete;

    /// Whether the key is within kMostKeyBytes. If it isn't, the other functions mustn't be called.
    [[nodiscard]] bool Fits() const { return fits_; }
    /// Whether the key is just its bytes in the text. These then contain no NUL and no path separator.
    [[nodiscard]] bool IsPlain() const { return bytes_ != room_; }
    /// The spelled bytes, followed by a NUL unless the key is plain. A NUL among them ends the key.
    [[nodiscard]] const char* Bytes() const { return bytes_; }
    [[nodiscard]] std::uint32_t Length() const { return length_; }

private:
    void SpellFirst(const char* text, Span key, bool begins_in_quote);
    void SpellBehindScalar(const char* text, Span key);
    std::uint32_t PutPiece(const char* text, std::uint32_t position, std::uint32_t last);
    void Put(const char* bytes, std::uint32_t count);
    void Put(char byte) { Put(&byte, 1); }
    void PutBlanks(std::uint32_t count) {
        for (; fits_ && count != 0; --count) Put(' ');
    }

    const char* bytes_;
    std::uint32_t length_ = 0;
    bool fits_ = true;
    char room_[kMostKeyBytes + 1];
};

} // namespace Configure

#endif
