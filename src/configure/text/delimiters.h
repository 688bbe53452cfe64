// The bytes of a text that its structure hangs on: quotes, braces with a partner, and `=` outside of quotes.

#ifndef TESSARIN_CONFIGURE_TEXT_DELIMITERS_H
#define TESSARIN_CONFIGURE_TEXT_DELIMITERS_H

#include "configure/text/characters.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

enum DelimiterKind : std::uint32_t { kEquals, kOpenQuote, kCloseQuote, kOpenTable, kOpenArray, kCloseBlock };

struct Delimiter {
    std::uint32_t position : kPositionBits;
    DelimiterKind kind : 4;
    std::uint32_t partner; // of a quote or a brace: the number of the delimiter that it ends with, or begins with
};
static_assert(sizeof(Delimiter) == 8);

/// Neighbours among the delimiters.
struct DelimiterRange {
    std::uint32_t first, last;
};

/// All delimiters of a text, by ascending position. What is still open at the text's end is closed there, innermost
/// first, by delimiters behind the last byte.
class Delimiters {
public:
    /// False if memory runs out. REQUIRES: `size` is at most kMostTextBytes
    [[nodiscard]] bool Find(const char* text, std::uint32_t size);

    [[nodiscard]] std::uint32_t Count() const { return delimiters_.Count(); }
    [[nodiscard]] const Delimiter& operator[](std::uint32_t number) const { return delimiters_[number]; }

    /// The number of the first `=` in the range, or its end. Braces aren't looked at.
    [[nodiscard]] std::uint32_t NextEquals(DelimiterRange range) const {
        while (range.first < range.last && delimiters_[range.first].kind != kEquals) ++range.first;
        return range.first;
    }

    /// The quote of that kind at a position; null if there is none, or another byte. For a text the same as Find's.
    [[nodiscard]] const Delimiter* QuoteAt(const char* text, std::uint32_t position, DelimiterKind kind,
                                           DelimiterRange range) const;

private:
    bool Add(std::uint32_t position, DelimiterKind kind, std::uint32_t partner = 0) {
        return delimiters_.Push({position & kMostTextBytes, kind, partner});
    }
    bool AddQuote(const char* text, std::uint32_t size, std::uint32_t& position);
    bool CloseBlock(const char* text, std::uint32_t open, bool has_equals, std::uint32_t end);

    Tessarin::List<Delimiter> delimiters_;
};

} // namespace Configure

#endif
