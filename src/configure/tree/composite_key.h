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

/// A composite key: a piece for each letter of the format, each with a `:` behind it.
class CompositeKey {
public:
    /// `format` may be null, which gives no key. `keep_last_colon` leaves the `:` behind the last piece in place.
    CompositeKey(const char* format, std::va_list arguments, bool keep_last_colon);

    /// Null if the key couldn't be built: another letter than `i`, `s` and `p`, a null text, or no room.
    [[nodiscard]] const char* Text() const { return built_ ? text_ : nullptr; }

private:
    bool PutPiece(const char* piece, std::size_t piece_length);

    char text_[kCompositeKeyRoom];
    std::size_t length_ = 0;
    bool built_;
};

} // namespace Configure

#endif
