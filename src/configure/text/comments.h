// Comments of the text form. They are stripped in place before anything else reads a text, and their places are kept,
// so that each position in the stripped text can be mapped back to the bytes as they were given.

#ifndef TESSARIN_CONFIGURE_TEXT_COMMENTS_H
#define TESSARIN_CONFIGURE_TEXT_COMMENTS_H

#include "configure/text/characters.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// Where comments were, in the order of the text.
class StrippedComments {
public:
    /// Strips the comments of `size` bytes in place, and writes an end mark after the bytes that are left. A 0xFF among
    /// the bytes ends the text, as the end mark after them does.
    /// left     takes the number of bytes that are left
    /// returns  false if memory runs out; the text is then stripped only in part
    /// REQUIRES: bytes[size] is the end mark
    [[nodiscard]] bool Strip(char* bytes, std::uint32_t size, std::uint32_t& left);

    /// The offset in the bytes as they were given.
    [[nodiscard]] std::uint32_t OffsetOf(std::uint32_t position) const;

    /// The span in the bytes as they were given, without comments at its ends.
    [[nodiscard]] Span SpanOf(Span span) const;

private:
    // Before the comments were stripped, the bytes from `position` on were `distance` bytes further back.
    struct Cut {
        std::uint32_t position;
        std::uint32_t distance;
    };

    Tessarin::List<Cut> cuts_; // by ascending position
};

} // namespace Configure

#endif
