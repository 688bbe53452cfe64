// One pass over the text with a stack of the blocks that are open. It also learns of each block whether an `=` is
// directly in it, which makes it a table.

#include "configure/text/delimiters.h"

#include <algorithm>
#include <cstring>

namespace Configure {

bool Delimiters::Find(const char* text, std::uint32_t size) {
    struct OpenBlock {
        std::uint32_t delimiter;
        bool has_equals;
    };
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
            done = open.Push({Count(), false}) && Add(position, kOpenTable);
            break;
        default: // a `}` without a partner is a byte like any other
            if (open.IsEmpty()) break;
            done = CloseBlock(text, open.Top().delimiter, open.Top().has_equals, position);
            open.Pop();
        }
        if (!done) return false;
    }
    while (!open.IsEmpty()) {
        const OpenBlock block = open.Pop();
        if (!CloseBlock(text, block.delimiter, block.has_equals, size)) return false;
    }
    return true;
}

/// The quote that opens at the position, which then becomes the position where it closes.
bool Delimiters::AddQuote(const char* text, std::uint32_t size, std::uint32_t& position) {
    const std::uint32_t open = Count();
    if (!Add(position, kOpenQuote, open + 1)) return false;
    const void* found = std::memchr(text + position + 1, '"', size - position - 1);
    position = found == nullptr ? size : static_cast<std::uint32_t>(static_cast<const char*>(found) - text);
    return Add(position, kCloseQuote, open);
}

/// A block is an array if it holds something, but no `=` directly.
bool Delimiters::CloseBlock(const char* text, std::uint32_t open, bool has_equals, std::uint32_t end) {
    Delimiter& delimiter = delimiters_[open];
    const bool is_table = has_equals || SkipWhite(text, delimiter.position + 1, end) == end;
    delimiter.kind = is_table ? kOpenTable : kOpenArray;
    delimiter.partner = Count();
    return Add(end, kCloseBlock, open);
}

const Delimiter* Delimiters::QuoteAt(const char* text, std::uint32_t position, DelimiterKind kind,
                                     DelimiterRange range) const {
    if (text[position] != '"') return nullptr;
    const Delimiter* const last = delimiters_.begin() + range.last;
    const auto before = [](const Delimiter& delimiter, std::uint32_t wanted) { return delimiter.position < wanted; };
    const Delimiter* const found = std::lower_bound(delimiters_.begin() + range.first, last, position, before);
    return found != last && found->position == position && found->kind == kind ? found : nullptr;
}

} // namespace Configure
