// One pass over the text finds the delimiters, with a stack of the open blocks. It also notes for each block whether it
// directly contains an `=`, and so decides whether the block is a table or an array: CloseBlockAt.

#include "configure/text/delimiters.h"

#include <algorithm>
#include <cstring>

namespace Configure {

bool Delimiters::Find(const char* text, std::uint32_t size) {
    Tessarin::List<OpenBlock> open;
    for (std::uint32_t position = 0; position < size; ++position) {
        if (!Is(kDelimiter, text[position])) continue;
        bool done = true;
        switch (text[position]) {
        case '=':
            if (!open.IsEmpty()) open.Top().has_equals = true;
            done = Add(position, kEquals);
            break;
        case '"':
            done = AddQuote(text, size, position);
            break;
        case '{':
            done = OpenBlockAt(position, open);
            break;
        default: // a `}` without a partner is an ordinary byte
            if (!open.IsEmpty()) done = CloseBlockAt(text, open.Pop(), position);
        }
        if (!done) return false;
    }
    while (!open.IsEmpty()) {
        if (!CloseBlockAt(text, open.Pop(), size)) return false;
    }
    return true;
}

/// Adds the quote that opens at the position, and the quote that closes it; `position` then becomes that of the closing
/// quote.
bool Delimiters::AddQuote(const char* text, std::uint32_t size, std::uint32_t& position) {
    if (!Add(position, kOpenQuote)) return false;
    const void* found = std::memchr(text + position + 1, '"', size - position - 1);
    position = found == nullptr ? size : static_cast<std::uint32_t>(static_cast<const char*>(found) - text);
    return Add(position, kCloseQuote);
}

bool Delimiters::OpenBlockAt(std::uint32_t position, Tessarin::List<OpenBlock>& open) {
    return open.Push({blocks_.Count(), false}) && blocks_.Push({Count(), 0, 0}) && Add(position, kOpenTable);
}

/// Closes a block and decides its kind: it is an array if it isn't empty and doesn't directly contain an `=`.
bool Delimiters::CloseBlockAt(const char* text, const OpenBlock& open, std::uint32_t position) {
    Block& block = blocks_[open.block];
    Delimiter& opening = delimiters_[block.open];
    const bool is_table = open.has_equals || SkipWhite(text, opening.position + 1U, position) == position;
    opening.kind = is_table ? kOpenTable : kOpenArray;
    block.close = Count();
    block.next = blocks_.Count();
    return Add(position, kCloseBlock);
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
