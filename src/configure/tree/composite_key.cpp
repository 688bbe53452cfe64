// Spells composite keys: appends the pieces, each with a `:` after it. If one piece fails, there is no key.

#include "configure/tree/composite_key.h"

#include "strings/string_table.h"

#include <cstring>

namespace Configure {

CompositeKey::CompositeKey(const char* format, std::va_list arguments, bool keep_last_colon)
    : built_(format != nullptr) {
    for (; built_ && *format != '\0'; ++format) {
        Tessarin::IntegerText digits;
        const char* piece = nullptr;
        switch (*format) {
        case 'i':
            digits = Tessarin::IntegerToText(va_arg(arguments, std::int32_t));
            piece = digits.text;
            break;
        case 's':
            piece = va_arg(arguments, const char*);
            break;
        case 'p':
            piece = Tessarin::string_table->InternPath(va_arg(arguments, const char*));
            break;
        default:
            break;
        }
        built_ = piece != nullptr && PutPiece(piece, std::strlen(piece));
    }
    if (!keep_last_colon && length_ != 0) --length_;
    text_[length_] = '\0';
}

bool CompositeKey::PutPiece(const char* piece, std::size_t piece_length) {
    if (piece_length >= kCompositeKeyRoom - 1 - length_) return false; // the colon and the NUL
    std::memcpy(text_ + length_, piece, piece_length);
    length_ += piece_length;
    text_[length_++] = ':';
    return true;
}

} // namespace Configure
