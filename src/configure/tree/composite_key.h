// Composite keys: keys of several pieces, spelled into a buffer on the caller's stack.

#ifndef TESSARIN_CONFIGURE_TREE_COMPOSITE_KEY_H
#define TESSARIN_CONFIGURE_TREE_COMPOSITE_KEY_H

#include "platform/number_text.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace Configure {

/// Room for a key with its terminator.
inline constexpr std::size_t kCompositeKeyRoom = 1024;

/// A composite key: one piece for each letter of the format, each with a `:` after it.
class CompositeKey {
public:
    /// `format` may be null; then there is no key. `keep_last_colon` keeps the `:` after the last piece.
    CompositeKey(const char* format, std::va_list arguments, bool keep_last_colon);

    /// Null if the key couldn't be built: the format has a letter other than `i`, `s` and `p`, a text is null, or the
    /// key is too long.
    [[nodiscard]] const char* Text() const { return built_ ? text_ : nullptr; }

private:
    bool PutPiece(const char* piece, std::size_t piece_length);

    char text_[kCompositeKeyRoom];
    std::size_t length_ = 0;
    bool built_;
};

} // namespace Configure

#endif
