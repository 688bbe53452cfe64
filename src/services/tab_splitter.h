// A parser of tab-separated text: bytes in, fields out, each with its place. It doesn't know what the fields fill.
//
//     item TAB price CR LF lamp TAB 12 LF  rope TAB
//     \__/     \___/       \__/     \/     \__/     |
//     0,0 tab  0,1 CR LF   1,0 tab  1,1 LF 2,0 tab  2,1 text end, an empty field
//
// Invariants:
// 1. Only tabs and line feeds close a field, whatever other bytes there are, NULs too. A carriage return is a byte of
//    its field unless a line feed follows it.
// 2. Each byte of the text is in one field, or is a delimiter, or is a carriage return before one; fields come in the
//    order of their bytes.
// 3. Bytes before the first delimiter that hasn't been reported aren't read again, but for the one in front of it: so a
//    caller may overwrite a field's delimiter as soon as it has the field.
//
// The class is in the header, and its only call out of line doesn't take its address: a loop over the fields then keeps
// all of its state in registers, although that loop writes characters, which may be bytes of anything with an address.

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
    std::uint32_t offset; // of the first byte, from the text's begin
    std::uint32_t length; // in bytes, without what ends it
    std::uint32_t row;    // the line feeds before it
    std::uint32_t column; // the tabs before it in its line
    FieldEnd end;
};

class TabSplitter {
public:
    /// text     `size` bytes, which the caller keeps while it asks for fields; ignored if `size` is 0
    TabSplitter(const char* text, std::uint32_t size)
        : text_(text), size_(size), delimiters_(DelimitersOf(text, size)) {}

    /// Takes the next field.
    /// returns  false at the text's end, `field` then unchanged. A line feed that ends the text begins no field; a tab
    ///          that ends it begins an empty one
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
    // Delimiters are searched in blocks of this many bytes: a bit for each in a word.
    static constexpr std::uint32_t kBlock = 64;

    /// Which bytes of a block are delimiters: the first byte is the lowest bit. The block ends with the `size` bytes,
    /// if it has no kBlock of them.
    static std::uint64_t DelimitersOf(const char* block, std::uint32_t size);

    /// Ends the current field at a delimiter and begins the one behind it.
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

    /// The field that nothing closes. No field is left at the text's end in column 0, so that is where it leaves off.
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
    std::uint64_t delimiters_; // those of the block that haven't been reported
    std::uint32_t offset_ = 0; // these three of the next field
    std::uint32_t row_ = 0;
    std::uint32_t column_ = 0;
};

} // namespace Tessarin

#endif
