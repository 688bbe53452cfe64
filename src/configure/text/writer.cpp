// The writer of the text form. Each entry has its own line; a block's opening brace ends the line of its key, and its
// closing brace has its own line. Indents are tabs of 4 columns. A closing brace is in the column of its opening brace,
// which needn't be a tab's column, so it is indented with blanks.
//
//     key = {                   a frame of width 7
//             entry = "text"    two tabs
//           }                   six blanks
//
// A frame's `width` is the column where its content begins, before rounding up to a tab: 4 columns after the key. Both
// braces are in column width - 1.

#include "configure/text/writer.h"

#include "files/open_modes.h"
#include "memory/list.h"
#include "strings/string_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Configure {
namespace {

constexpr std::uint32_t kLineRoom = 1024;
constexpr std::uint32_t kTabColumns = 4;
constexpr char kLineBreak[] = "\r\n";

/// One line of at most kLineRoom - 1 bytes.
class Line {
public:
    Line& Put(const char* bytes, std::uint32_t count) {
        fits_ = fits_ && count < kLineRoom - length_;
        if (fits_) {
            std::memcpy(text_ + length_, bytes, count);
            length_ += count;
        }
        return *this;
    }
    Line& Put(cstr text) { return text == nullptr ? *this : Put(text, Tessarin::CstrLength(text)); }
    template <std::uint32_t Room>
    Line& PutLiteral(const char (&text)[Room]) {
        return Put(text, Room - 1);
    }

    [[nodiscard]] bool Write(::IFileIO& fileio, void* handle) {
        if (fits_) static_cast<void>(fileio.Write(handle, text_, length_));
        return fits_;
    }

private:
    char text_[kLineRoom];
    std::uint32_t length_ = 0;
    bool fits_ = true;
};

/// A container that is being written: a table or an array, and its next Unit.
struct Frame {
    ITable* table; // null for an array
    IArray* array;
    IIterator* cursor;
    std::uint32_t width;

    [[nodiscard]] bool AtEnd() const { return cursor == (table != nullptr ? table->End() : array->End()); }
    IIterator* Advance() {
        IIterator* unit = cursor;
        cursor = table != nullptr ? table->Next(unit) : array->Next(unit);
        return unit;
    }
    [[nodiscard]] std::uint32_t Tabs() const { return (width + kTabColumns - 1) / kTabColumns; }
};

class TextWriter {
public:
    TextWriter(::IFileIO& fileio, void* handle) : fileio_(fileio), handle_(handle) {
        std::fill(std::begin(tabs_), std::end(tabs_), '\t');
        std::fill(std::begin(blanks_), std::end(blanks_), ' ');
    }

    bool Write(ITable& root) {
        if (!frames_.Push({&root, nullptr, root.Begin(), 0})) return false;
        while (!frames_.IsEmpty()) {
            if (frames_.Top().AtEnd()) {
                Close(frames_.Pop());
            } else if (!WriteUnit(*frames_.Top().Advance())) {
                return false;
            }
        }
        return true;
    }

private:
    bool WriteUnit(IIterator& unit) {
        static_cast<void>(fileio_.Write(handle_, tabs_, frames_.Top().Tabs()));
        Line line;
        if (frames_.Top().table != nullptr) line.Put(unit.GetKey()).PutLiteral(" = ");
        if (unit.GetType() != KIND_STRING) return OpenBlock(unit, line.PutLiteral("{").PutLiteral(kLineBreak));
        line.PutLiteral("\"").Put(unit.GetString()).PutLiteral("\"").PutLiteral(kLineBreak);
        return line.Write(fileio_, handle_);
    }

    /// Opens a block. False for a Unit of no kind, and for a block that would be indented too far.
    bool OpenBlock(IIterator& unit, Line& line) {
        ITable* table = unit.GetTable();
        IArray* array = unit.GetArray();
        if (table == nullptr && array == nullptr) return false;
        const Frame& parent = frames_.Top();
        const std::uint32_t key_length = parent.table != nullptr ? Tessarin::CstrLength(unit.GetKey()) : 0;
        const std::uint32_t width = key_length + (parent.Tabs() + 1) * kTabColumns;
        if (width > kLineRoom || !line.Write(fileio_, handle_)) return false;
        return frames_.Push({table, array, table != nullptr ? table->Begin() : array->Begin(), width});
    }

    /// Writes a block's closing brace; the root has none.
    void Close(const Frame& frame) {
        if (frames_.IsEmpty()) return;
        blanks_[frame.width - 1] = '}';
        static_cast<void>(fileio_.Write(handle_, blanks_, frame.width));
        blanks_[frame.width - 1] = ' ';
        static_cast<void>(fileio_.Write(handle_, kLineBreak, sizeof kLineBreak - 1));
    }

    ::IFileIO& fileio_;
    void* handle_;
    Tessarin::List<Frame> frames_;
    char tabs_[kLineRoom / kTabColumns];
    char blanks_[kLineRoom];
};

} // namespace

bool WriteText(::IFileIO& fileio, const char* path, ITable* root) {
    void* handle = fileio.Open(path, Tessarin::kOpenToWrite);
    if (handle == nullptr) return false;
    const bool written = root != nullptr && TextWriter(fileio, handle).Write(*root);
    fileio.Close(handle);
    return written;
}

} // namespace Configure
