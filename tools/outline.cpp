#include "tools/outline.h"

#include <rapidjson/filewritestream.h>
#include <rapidjson/writer.h>

namespace Command {

namespace {

// ------------------------------------------------------------------------------------------------------------- drawing

// Beyond this depth branches aren't drawn to the right any more; a file of a million levels would take a terabyte.
constexpr std::size_t kDrawnDepth = 64;

constexpr const char* kPlain = "\033[0m";
constexpr const char* kBold = "\033[1m";
constexpr const char* kDim = "\033[2m";
constexpr const char* kGreen = "\033[32m";
constexpr const char* kCyan = "\033[36m";

struct Artist {
    std::FILE* out;
    bool has_colour;
    std::string stems; // what stands in front of a row for each level above it

    void Put(const char* colour, const std::string& text) const {
        if (has_colour) std::fputs(colour, out);
        std::fwrite(text.data(), 1, text.size(), out);
        if (has_colour) std::fputs(kPlain, out);
    }

    void PutBranch(const Row& row) {
        if (row.depth == 0) return;
        // A stem takes the bytes of its signs: a bar is three, a gap as many blanks as there are columns. So each
        // level's stem is kept behind a mark of its own, which isn't printed.
        std::size_t end = 0;
        for (std::size_t level = 1; level < row.depth && end < stems.size(); ++level) end = stems.find('\0', end) + 1;
        stems.resize(end);
        for (const char byte : stems) {
            if (byte != '\0') std::fputc(byte, out);
        }
        if (row.depth > kDrawnDepth) std::fprintf(out, "(%zu) ", row.depth);
        std::fputs(row.is_last ? "└─ " : "├─ ", out);
        if (row.depth < kDrawnDepth) (stems += row.is_last ? "   " : "│  ") += '\0';
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

// ---------------------------------------------------------------------------------------------------------------- JSON

using Stream = rapidjson::FileWriteStream;
using Writer = rapidjson::Writer<Stream>;

void WriteText(Writer& writer, const std::string& text) {
    const std::string valid = ToUtf8(text);
    writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

void Begin(Writer& writer, const Row& row) {
    if (row.depth > 0 && !row.is_in_array) WriteText(writer, row.key);
    switch (row.shape) {
    case Shape::Text:
        WriteText(writer, row.value);
        break;
    case Shape::Literal:
        writer.RawValue(row.value.data(), row.value.size(), rapidjson::kNumberType);
        break;
    case Shape::Table:
        writer.StartObject();
        break;
    case Shape::Array:
        writer.StartArray();
        break;
    }
}

void End(Writer& writer, Shape shape) { shape == Shape::Table ? writer.EndObject() : writer.EndArray(); }

bool IsContainer(const Row& row) { return row.shape == Shape::Table || row.shape == Shape::Array; }

// ---------------------------------------------------------------------------------------------------------------- text

// The length of the UTF-8 character that a text begins with; 0 if it begins with none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned first = byte(0);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    // The second byte's bounds leave out the forms that are too long, the surrogates, and what is beyond U+10FFFF.
    const unsigned least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < least || byte(1) > most) return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (std::size_t i = 2; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    return length;
}

std::string Escape(unsigned char byte) {
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    default:
        break;
    }
    constexpr const char* kDigits = "0123456789abcdef";
    return std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
}

// A text with what isn't UTF-8, controls, and some more characters escaped.
std::string Escaped(std::string_view text, std::string_view more) {
    std::string escaped;
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        const std::size_t length = CharacterLength(text);
        const std::string_view character = text.substr(0, length == 0 ? 1 : length);
        // U+0080 to U+009F command a terminal, too.
        const bool is_control =
            first < 0x20 || first == 0x7F || (first == 0xC2 && length == 2 && (text[1] & 0xE0) == 0x80);
        if (length == 0 || is_control || more.find(text.front()) != std::string_view::npos) {
            for (const char byte : character) escaped += Escape(static_cast<unsigned char>(byte));
        } else {
            escaped += character;
        }
        text.remove_prefix(character.size());
    }
    return escaped;
}

} // namespace

void Draw(const Outline& rows, bool has_colour, std::FILE* out) {
    Artist artist{out, has_colour, {}};
    for (const Row& row : rows) {
        artist.PutBranch(row);
        artist.PutKey(row);
        artist.PutValue(row);
    }
}

void WriteJson(const Outline& rows, std::FILE* out) {
    char buffer[1 << 14];
    Stream stream(out, buffer, sizeof buffer);
    Writer writer(stream);
    std::vector<Shape> open;
    for (const Row& row : rows) {
        for (; open.size() > row.depth; open.pop_back()) End(writer, open.back());
        Begin(writer, row);
        if (IsContainer(row)) open.push_back(row.shape);
    }
    for (; !open.empty(); open.pop_back()) End(writer, open.back());
    stream.Put('\n');
    stream.Flush();
}

std::string Describe(const Row& row) {
    if (!IsContainer(row)) return row.shape == Shape::Text ? Quote(row.value) : row.value;
    const char* const unit = row.shape == Shape::Table ? (row.count == 1 ? " entry" : " entries")
                                                       : (row.count == 1 ? " element" : " elements");
    return (row.shape == Shape::Table ? "table, " : "array, ") + std::to_string(row.count) + unit;
}

std::string Quote(std::string_view text) { return '"' + Escaped(text, "\"\\") + '"'; }

std::string Printable(std::string_view text) { return Escaped(text, ""); }

std::string ToUtf8(std::string_view text) {
    std::string valid;
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        valid += length == 0 ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

} // namespace Command
