// The classes of bytes that the text form distinguishes. A byte without a class is an ordinary one; vertical tabs, form
// feeds and all bytes above 127 are ordinary.

#ifndef TESSARIN_CONFIGURE_TEXT_CHARACTERS_H
#define TESSARIN_CONFIGURE_TEXT_CHARACTERS_H

#include <array>
#include <cstdint>

namespace Configure {

/// Ends a text. The byte after the last one holds it, so that a search for a pair may look one byte ahead.
inline constexpr char kEndMark = '\xFF';

/// A position has 28 bits, so that 4 bits of its word are left for flags and kinds.
inline constexpr unsigned kPositionBits = 28;
inline constexpr std::uint32_t kMostTextBytes = (1U << kPositionBits) - 1;

/// Positions in a text from `first` up to, but not including, `last`.
struct Span {
    std::uint32_t first, last;

    [[nodiscard]] std::uint32_t Length() const { return last - first; }
    [[nodiscard]] bool IsEmpty() const { return first == last; }
};

enum CharacterClass : unsigned char {
    kWhite = 1,
    kLineEnd = 2,
    kDelimiter = 4, // may open or close a quote or a block, or end a key
    kSpelled = 8,   // may make a spelled key differ from its bytes in the text
    kPieceEnd = 16  // ends a piece of a key in a search backwards
};

constexpr std::array<unsigned char, 256> MakeCharacterClasses() {
    std::array<unsigned char, 256> classes = {};
    const auto add = [&classes](const char* bytes, int added) {
        for (; *bytes != '\0'; ++bytes) {
            unsigned char& entry = classes[static_cast<unsigned char>(*bytes)];
            entry = static_cast<unsigned char>(entry | added);
        }
    };
    add(" \t\n\r", kWhite | kSpelled | kPieceEnd);
    add("\n\r", kLineEnd);
    add("\"{}=", kDelimiter);
    add("\":,\\/", kSpelled);
    add(":,", kPieceEnd);
    classes[0] = kSpelled; // ends the key
    return classes;
}

inline constexpr std::array<unsigned char, 256> kCharacterClasses = MakeCharacterClasses();

inline bool Is(CharacterClass wanted, char byte) {
    return (kCharacterClasses[static_cast<unsigned char>(byte)] & wanted) != 0;
}

/// The position of the first byte from `position` on that isn't white space, or `last`. `position` may be greater than
/// `last`, after an open block or quote at the text's end; it is then the result.
inline std::uint32_t SkipWhite(const char* text, std::uint32_t position, std::uint32_t last) {
    while (position < last && Is(kWhite, text[position])) ++position;
    return position;
}

/// The position after the last byte before `position` that isn't white space, or `first`.
inline std::uint32_t TrimWhite(const char* text, std::uint32_t first, std::uint32_t position) {
    while (position > first && Is(kWhite, text[position - 1])) --position;
    return position;
}

} // namespace Configure

#endif
