// A parser of tab-separated text: it returns one field after the other, each with its place. It doesn't know where the
// fields are stored.
//
//     item TAB price CR LF lamp TAB 12 LF  rope TAB
//     \__/     \___/       \__/     \/     \__/     |
//     0,0 tab  0,1 CR LF   1,0 tab  1,1 LF 2,0 tab  2,1 text end, an empty field
//
// Invariants:
// 1. Only tabs and line feeds close a field; all other bytes may be in one, NULs too. A carriage return belongs to its
//    field unless a line feed follows it.
// 2. Each byte of the text is in one field, or is a delimiter, or is a carriage return before a line feed. Fields are
//    returned in the order of their bytes.
// 3. Bytes before the next delimiter aren't read again, except the one directly in front of it. So a caller may
//    overwrite a field's delimiter as soon as it has the field.
//
// The class is in the header, and the only function that isn't inlined doesn't take the object's address. So a loop
// over the fields keeps all of its state in registers, although the loop writes chars, which may alias anything whose
// address is known.

#ifndef TESSARIN_SERVICES_TAB_SPLITTER_H
#define TESSARIN_SERVICES_TAB_SPLITTER_H

#include <bit>
#include <cstdint>

namespace Tessarin {

enum class FieldEnd : std::uint8_t {
    kTab,
    kLineFeed,
    kReturnAndLineFeed,
    kTextEnd, // nothing closes the field
};

struct TabField {
    std::uint32_t offset; // of the first byte, from the start of the text
    std::uint32_t length; // in bytes, without its delimiter
    std::uint32_t row;    // the number of line feeds before it
    std::uint32_t column; // the number of tabs before it in its line
    FieldEnd end;
};

class TabSplitter {
public:
    /// text     `size` bytes, which must exist as long as fields are taken; ignored if `size` is 0
    TabSplitter(const char* text, std::uint32_t size)
        : text_(text), size_(size), delimiters_(DelimitersOf(text, size)) {}

    /// Takes the next field.
    /// returns  false at the end of the text; `field` is then unchanged. If the text ends with a line feed, there is no
    ///          field after it; if it ends with a tab, an empty field follows
    bool Next(TabField& field) {
        while (delimiters_ == 0) {
            if (size_ - block_ <= kBlock) return TakeLast(field);
            block_ += kBlock;
            delimiters_ = DelimitersOf(text_ + block_, size_ - block_);
        }
        const std::uint32_t delimiter = block_ + static_cast<std::uint32_t>(std::countr_zero(delimiters_));
        delimiters_ &= delimiters_ - 1;
        Close(field, delimiter);
        return true;
    }

private:
    // Delimiters are searched for in blocks of this many bytes, each of which has a bit in a word.
    static constexpr std::uint32_t kBlock = 64;

    /// Which bytes of a block are delimiters: the lowest bit is for the first byte. If `size` is less than kBlock, the
    /// block has only `size` bytes.
    static std::uint64_t DelimitersOf(const char* block, std::uint32_t size);

    /// Ends the current field at a delimiter and begins the next one.
    void Close(TabField& field, std::uint32_t delimiter) {
        const std::uint32_t length = delimiter - offset_;
        field = {offset_, length, row_, column_, FieldEnd::kTab};
        offset_ = delimiter + 1;
        ++column_;
        if (text_[delimiter] == '\t') return;
        const bool has_return = length != 0 && text_[delimiter - 1] == '\r';
        field.length = has_return ? length - 1 : length;
        field.end = has_return ? FieldEnd::kReturnAndLineFeed : FieldEnd::kLineFeed;
        ++row_;
        column_ = 0;
    }

    /// The field that no delimiter closes. At the end of the text in column 0 there is no such field, so column 0 at
    /// the text's end marks that everything has been returned.
    bool TakeLast(TabField& field) {
        if (offset_ == size_ && column_ == 0) return false;
        field = {offset_, size_ - offset_, row_, column_, FieldEnd::kTextEnd};
        offset_ = size_;
        column_ = 0;
        return true;
    }

    const char* text_;
    std::uint32_t size_;
    std::uint32_t block_ = 0;  // the current block's offset
    std::uint64_t delimiters_; // those of the block that haven't been reached
    std::uint32_t offset_ = 0; // the next field's, like row_ and column_
    std::uint32_t row_ = 0;
    std::uint32_t column_ = 0;
};

} // namespace Tessarin

#endif
