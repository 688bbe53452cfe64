// The delimiters of a text, the bytes that determine its structure: quotes, braces with a partner, and `=` outside of
// quotes. An opening brace also says whether its block is a table or an array: CloseBlockAt in delimiters.cpp.

#ifndef TESSARIN_CONFIGURE_TEXT_DELIMITERS_H
#define TESSARIN_CONFIGURE_TEXT_DELIMITERS_H

#include "configure/text/characters.h"
#include "memory/chunked_list.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

enum DelimiterKind : std::uint32_t { kEquals, kOpenQuote, kCloseQuote, kOpenTable, kOpenArray, kCloseBlock };

struct Delimiter {
    std::uint32_t position : kPositionBits;
    DelimiterKind kind : 4;
};
static_assert(sizeof(Delimiter) == 4, "a load holds nearly two for every entry of the file");

/// Adjacent delimiters, from the number `first` up to, but not including, `last`.
struct DelimiterRange {
    std::uint32_t first, last;
};

/// All delimiters of a text, by ascending position. An opening quote is directly followed by its closing quote. Quotes
/// and blocks that are still open at the text's end are closed there, by delimiters after the last byte. One delimiter
/// closes all such blocks: a text may consist of nothing but opening braces.
class Delimiters {
public:
    /// False if memory runs out. REQUIRES: `size` is at most kMostTextBytes
    [[nodiscard]] bool Find(const char* text, std::uint32_t size);

    [[nodiscard]] std::uint32_t Count() const { return delimiters_.Count(); }
    [[nodiscard]] const Delimiter& operator[](std::uint32_t number) const { return delimiters_[number]; }

    /// The number of the first `=` in the range, or range.last. An `=` inside nested braces counts, too.
    [[nodiscard]] std::uint32_t NextEquals(DelimiterRange range) const {
        while (range.first < range.last && delimiters_[range.first].kind != kEquals) ++range.first;
        return range.first;
    }

    /// A block's braces, by the numbers of their delimiters, and the number of the next block that opens after it.
    struct Block {
        std::uint32_t open, close, next;
    };

    /// All blocks are numbered in the order in which they open.
    [[nodiscard]] const Block& BlockAt(std::uint32_t number) const { return blocks_[number]; }

    /// The number of the block that opens at a delimiter. REQUIRES: it is `first` or a later one
    [[nodiscard]] std::uint32_t FindBlock(std::uint32_t open, std::uint32_t first) const {
        while (blocks_[first].open != open) ++first;
        return first;
    }

    /// Whether a quote closes at a position. If so, `position` becomes the position where it opens.
    [[nodiscard]] bool SkipQuoteBackwards(std::uint32_t& position, DelimiterRange range) const;

private:
    // The innermost open block; those around it are linked through `next` until they are closed, and `close` says
    // whether a block directly contains an `=`. So a nest needs no stack beside the list of blocks.
    static constexpr std::uint32_t kNoBlock = UINT32_MAX;

    bool Add(std::uint32_t position, DelimiterKind kind) { return delimiters_.Push({position & kMostTextBytes, kind}); }
    bool AddQuote(const char* text, std::uint32_t size, std::uint32_t& position);
    bool OpenBlockAt(std::uint32_t position, std::uint32_t& open);
    void CloseBlockAt(const char* text, std::uint32_t& open, std::uint32_t position);

    Tessarin::ChunkedList<Delimiter> delimiters_;
    Tessarin::List<Block> blocks_; // in the order of their opening braces
};

} // namespace Configure

#endif
