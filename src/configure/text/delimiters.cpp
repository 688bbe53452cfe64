// One pass over the text finds the delimiters, with a stack of the open blocks, which are linked. It also notes for
// each block whether it directly contains an `=`, and so decides whether the block is a table or an array:
// CloseBlockAt.

#include "configure/text/delimiters.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Configure {

bool Delimiters::Find(const char* text, std::uint32_t size) {
    std::uint32_t open = kNoBlock; // the innermost
    for (std::uint32_t position = 0; position < size; ++position) {
        if (!Is(kDelimiter, text[position])) continue;
        bool done = true;
        switch (text[position]) {
        case '=':
            if (open != kNoBlock) blocks_[open].close = 1;
            done = Add(position, kEquals);
            break;
        case '"':
            done = AddQuote(text, size, position);
            break;
        case '{':
            done = OpenBlockAt(position, open);
            break;
        default: // a `}` without a partner is an ordinary byte
            if (open == kNoBlock) break;
            CloseBlockAt(text, open, position);
            done = Add(position, kCloseBlock);
        }
        if (!done) return false;
    }
    if (open == kNoBlock) return true;
    while (open != kNoBlock) CloseBlockAt(text, open, size);
    return Add(size, kCloseBlock);
}

/// Adds the quote that opens at the position, and the quote that closes it; `position` then becomes that of the closing
/// quote.
bool Delimiters::AddQuote(const char* text, std::uint32_t size, std::uint32_t& position) {
    if (!Add(position, kOpenQuote)) return false;
    const void* found = std::memchr(text + position + 1, '"', size - position - 1);
    position = found == nullptr ? size : static_cast<std::uint32_t>(static_cast<const char*>(found) - text);
    return Add(position, kCloseQuote);
}

bool Delimiters::OpenBlockAt(std::uint32_t position, std::uint32_t& open) {
    const std::uint32_t around = std::exchange(open, blocks_.Count());
    return blocks_.Push({Count(), 0, around}) && Add(position, kOpenTable);
}

/// Decides the kind of the innermost block: it is an array if it isn't empty and doesn't directly contain an `=`. The
/// next delimiter is to close it. `open` becomes the block around it.
void Delimiters::CloseBlockAt(const char* text, std::uint32_t& open, std::uint32_t position) {
    Block& block = blocks_[open];
    Delimiter& opening = delimiters_[block.open];
    const bool is_table = block.close != 0 || SkipWhite(text, opening.position + 1U, position) == position;
    opening.kind = is_table ? kOpenTable : kOpenArray;
    open = std::exchange(block.next, blocks_.Count());
    block.close = Count();
}

bool Delimiters::SkipQuoteBackwards(std::uint32_t& position, DelimiterRange range) const {
    while (range.first < range.last) { // finds the first one that isn't before the position
        const std::uint32_t middle = range.first + (range.last - range.first) / 2;
        if (delimiters_[middle].position < position) {
            range.first = middle + 1;
        } else {
            range.last = middle;
        }
    }
    if (range.first == Count()) return false;
    const Delimiter& delimiter = delimiters_[range.first];
    if (delimiter.position != position || delimiter.kind != kCloseQuote) return false;
    position = delimiters_[range.first - 1].position;
    return true;
}

} // namespace Configure
