#include "configure/key_spelling.h"

#include "core/library_state.h"

#include <cstring>

namespace Configure {
namespace {

/// The text of one piece, which may use `digits`; null if there is none.
const char* PieceText(char letter, std::va_list& arguments, Tessarin::IntegerText& digits) {
    switch (letter) {
    case 'i':
        digits = Tessarin::IntegerToText(va_arg(arguments, std::int32_t));
        return digits.text;
    case 's':
        return va_arg(arguments, const char*);
    case 'p':
        return Tessarin::library_state->strings.InternPath(va_arg(arguments, const char*));
    default:
        return nullptr;
    }
}

} // namespace

CompositeKey::CompositeKey(const char* format, std::va_list arguments, bool keep_last_colon)
    : built_(format != nullptr) {
    std::va_list rest;
    va_copy(rest, arguments); // a va_list that is a parameter can't be handed on by reference
    for (; built_ && *format != '\0'; ++format) {
        Tessarin::IntegerText digits;
        const char* piece = PieceText(*format, rest, digits);
        built_ = piece != nullptr && PutPiece(piece, std::strlen(piece));
    }
    va_end(rest);
    if (!keep_last_colon && length_ != 0) --length_;
    text_[length_] = '\0';
}

bool CompositeKey::PutPiece(const char* piece, std::size_t piece_length) {
    if (piece_length >= kKeyRoom - 1 - length_) return false; // the colon and the NUL
    std::memcpy(text_ + length_, piece, piece_length);
    length_ += piece_length;
    text_[length_++] = ':';
    return true;
}

} // namespace Configure
