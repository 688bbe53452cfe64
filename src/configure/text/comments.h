// Comments of the text form: stripped in place before anything else looks at a text, and remembered, so that every
// position in what is left leads back to the bytes as they were given.

#ifndef TESSARIN_CONFIGURE_TEXT_COMMENTS_H
#define TESSARIN_CONFIGURE_TEXT_COMMENTS_H

#include "configure/text/characters.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// Where comments were, in the order of the text.
class StrippedComments {
public:
    /// Strips the comments of `size` bytes in place, and writes an end mark behind what is left. A 0xFF among the bytes
    /// ends the text, like the one behind them.
    /// left     takes the number of bytes that are left
    /// returns  false if memory runs out, the text then in parts
    /// REQUIRES: bytes[size] is the end mark
    [[nodiscard]] bool Strip(char* bytes, std::uint32_t size, std::uint32_t& left);

    /// The offset in the bytes as they were given.
    [[nodiscard]] std::uint32_t OffsetOf(std::uint32_t position) const;

    /// A span in the bytes as they were given: no comment that stood beside it is in it.
    [[nodiscard]] Span SpanOf(Span span) const;

private:
    // From the position on, the bytes stood so many bytes further back.
    struct Cut {
        std::uint32_t position;
        std::uint32_t distance;
    };

    Tessarin::List<Cut> cuts_; // by ascending position
};

} // namespace Configure

#endif
