// The drawing. A row begins with its prefix, which has one piece for each level above it: a bar if more siblings follow
// on that level, a gap if none do.
//
//     root
//     ├─ a
//     │  └─ x      prefix of x: "│  " for a, which has a sibling below
//     └─ b
//        └─ y      prefix of y: "   " for b, the last of its level

#include "tools/draw_tree.h"

#include "tools/terminal_text.h"

namespace Command {

namespace {

// Branches below this depth aren't drawn further to the right: a file of a million levels would need a terabyte of
// prefixes.
constexpr std::size_t kDrawnDepth = 64;

constexpr const char* kPlain = "\033[0m";
constexpr const char* kBold = "\033[1m";
constexpr const char* kDim = "\033[2m";
constexpr const char* kGreen = "\033[32m";
constexpr const char* kCyan = "\033[36m";

struct TreeDrawing {
    std::FILE* out;
    bool has_colour;
    std::string prefix; // of the current row; a NUL, which isn't printed, ends each level's piece

    void Put(const char* colour, const std::string& text) const {
        if (has_colour) std::fputs(colour, out);
        std::fwrite(text.data(), 1, text.size(), out);
        if (has_colour) std::fputs(kPlain, out);
    }

    void PutBranch(const Row& row) {
        if (row.depth == 0) return;
        // Pieces differ in their number of bytes, so the end of a level's piece is found by its NUL.
        std::size_t end = 0;
        for (std::size_t level = 1; level < row.depth && end < prefix.size(); ++level) end = prefix.find('\0', end) + 1;
        prefix.resize(end);
        for (const char byte : prefix) {
            if (byte != '\0') std::fputc(byte, out);
        }
        if (row.depth > kDrawnDepth) std::fprintf(out, "(%zu) ", row.depth);
        std::fputs(row.is_last ? "└─ " : "├─ ", out);
        if (row.depth < kDrawnDepth) (prefix += row.is_last ? "   " : "│  ") += '\0';
    }

    void PutKey(const Row& row) const {
        const bool is_plain = !row.key.empty() && row.key.find_first_of(" =\"\n\t\r") == std::string::npos;
        if (row.depth == 0) {
            const std::string quoted = Quote(row.key);
            Put(kBold, quoted.substr(1, quoted.size() - 2));
        } else if (row.is_in_array) {
            Put(kDim, '[' + row.key + ']');
        } else {
            Put(kBold, is_plain ? Printable(row.key) : Quote(row.key));
        }
    }

    void PutValue(const Row& row) const {
        if (row.shape == Shape::Text) {
            std::fputs(" = ", out);
            Put(kGreen, Quote(row.value));
        } else if (row.shape == Shape::Literal) {
            std::fputs(" = ", out);
            Put(kCyan, row.value);
            Put(kDim, std::string("  ") + row.kind);
        } else {
            Put(kDim, "  " + Describe(row));
        }
        std::fputc('\n', out);
    }
};

} // namespace

void DrawTree(const RowList& rows, bool has_colour, std::FILE* out) {
    TreeDrawing drawing{out, has_colour, {}};
    for (const Row& row : rows) {
        drawing.PutBranch(row);
        drawing.PutKey(row);
        drawing.PutValue(row);
    }
}

std::string Describe(const Row& row) {
    if (!IsContainer(row)) return row.shape == Shape::Text ? Quote(row.value) : row.value;
    const char* const unit = row.shape == Shape::Table ? (row.count == 1 ? " entry" : " entries")
                                                       : (row.count == 1 ? " element" : " elements");
    return (row.shape == Shape::Table ? "table, " : "array, ") + std::to_string(row.count) + unit;
}

} // namespace Command
