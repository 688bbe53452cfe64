// A plain model of what each form keeps of a tree, and how: the reader of the text form, its writer, and the tree that
// the binary form holds. The reader marks the partner of each quote and brace and then goes through the bytes one by
// one; it recurses, and copies whatever it cuts out.

#ifndef TESSARIN_FUZZ_CONFIGURE_MODEL_H
#define TESSARIN_FUZZ_CONFIGURE_MODEL_H

#include "fuzz/configure_tree.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Fuzz {

inline constexpr std::size_t kKeyRoom = 1024; // of a key or a written line, each with its terminator

class TextModel {
public:
    explicit TextModel(std::string_view text)
        : text_(WithoutComments(text) + '\xFF'), size_(text_.size() - 1), marks_(text_.size(), kOrdinary),
          partners_(text_.size()) {
        MarkPartners();
    }

    /// The tree of the text; nothing if it must not load.
    std::optional<Node> Tree() {
        Node root{Configure::KIND_TABLE, {}, {}, TableUnits(0, size_)};
        return fails_ ? std::nullopt : std::optional(std::move(root));
    }

private:
    enum Mark : char { kOrdinary, kOpenQuote, kCloseQuote, kTable, kArray };

    static constexpr std::string_view kWhite = "\t\n\r ";
    static constexpr std::string_view kPieceEnds = "\t\n\r ,:";

    /// Quotes don't protect a comment.
    static std::string WithoutComments(std::string_view text) {
        text = text.substr(0, text.find('\xFF'));
        std::string kept;
        for (std::size_t dashes; (dashes = text.find("--")) != text.npos;) {
            kept += text.substr(0, dashes);
            text.remove_prefix(dashes);
            const bool is_block = text.substr(2, 2) == "[[";
            const std::size_t end = is_block ? text.find("]]", 2) : text.find_first_of("\r\n");
            if (end == text.npos) return kept;
            text.remove_prefix(is_block ? end + 2 : end);
        }
        return kept.append(text);
    }

    void MarkPartners() {
        std::vector<std::size_t> open;
        const auto close = [this, &open](std::size_t position) {
            Close(open.back(), position);
            open.pop_back();
        };
        for (std::size_t i = 0; i < size_; ++i) {
            const bool in_quote = !open.empty() && text_[open.back()] == '"';
            if (text_[i] == '"' ? in_quote : text_[i] == '}' && !in_quote && !open.empty()) {
                close(i);
            } else if (!in_quote && (text_[i] == '"' || text_[i] == '{')) {
                open.push_back(i);
            }
        }
        while (!open.empty()) close(size_);
    }

    void Close(std::size_t first, std::size_t last) {
        partners_[first] = last;
        if (text_[first] == '{') {
            marks_[first] = IsTable(first + 1, last) ? kTable : kArray;
        } else {
            marks_[first] = kOpenQuote, marks_[last] = kCloseQuote;
            partners_[last] = first;
        }
    }

    /// Whether an `=` is directly between two braces, or nothing but white space.
    [[nodiscard]] bool IsTable(std::size_t first, std::size_t last) const {
        bool is_empty = true;
        for (std::size_t i = first; i < last; ++i) {
            if (marks_[i] != kOrdinary) i = partners_[i];
            if (text_[i] == '=') return true;
            is_empty = is_empty && IsOneOf(kWhite, i);
        }
        return is_empty;
    }

    std::vector<Node> TableUnits(std::size_t at, std::size_t end) {
        std::vector<Node> units;
        bool waits = false; // the last Unit waits for its value
        while (at < end && !fails_) {
            const std::size_t equals = NextEquals(at, end);
            const std::size_t key = equals == end ? end : waits ? KeyBehindScalar(at, equals) : LineOf(at, equals);
            if (waits) units.back().text = Value(at, key);
            if (equals == end) break;
            units.push_back({Configure::KIND_STRING, Key(key, equals, waits), {}, {}});
            at = AfterWhite(equals + 1, end);
            waits = at == end || text_[at] != '{';
            if (!waits) at = AddBlock(at, units.back());
        }
        return units;
    }

    std::vector<Node> ArrayUnits(std::size_t at, std::size_t end) {
        std::vector<Node> units;
        for (at = AfterWhite(at, end); at < end && !fails_;) {
            Node& unit = units.emplace_back(Node{Configure::KIND_STRING, {}, {}, {}});
            if (marks_[at] == kTable || marks_[at] == kArray) {
                at = AddBlock(at, unit);
            } else {
                const std::size_t word = std::min(end, text_.find_first_of("\t\n\r ,", at));
                unit.text = Value(at, word);
                at = marks_[at] == kOpenQuote ? partners_[at] + 1 : word;
            }
            at = AfterWhite(at, end);
            if (at < end && text_[at] == ',') at = AfterWhite(at + 1, end);
        }
        return units;
    }

    /// Returns what follows the block.
    std::size_t AddBlock(std::size_t open, Node& unit) {
        const bool is_table = marks_[open] == kTable;
        const std::size_t close = partners_[open];
        unit.kind = is_table ? Configure::KIND_TABLE : Configure::KIND_ARRAY;
        unit.units = is_table ? TableUnits(open + 1, close) : ArrayUnits(open + 1, close);
        return close + 1;
    }

    /// Braces don't hide an `=`, quotes do.
    [[nodiscard]] std::size_t NextEquals(std::size_t at, std::size_t end) const {
        for (; at < end && text_[at] != '='; ++at) {
            if (marks_[at] == kOpenQuote) at = partners_[at];
        }
        return std::min(at, end);
    }

    [[nodiscard]] std::size_t LineOf(std::size_t first, std::size_t last) const {
        std::size_t line = last;
        while (line > first && !IsOneOf("\r\n", line - 1)) --line;
        return AfterWhite(line, last);
    }

    [[nodiscard]] std::size_t KeyBehindScalar(std::size_t first, std::size_t last) const {
        std::size_t key = PieceOf(first, BeforeWhite(first, last));
        for (;;) {
            const std::size_t colon = BeforeWhite(first, key);
            if (colon == first || text_[colon - 1] != ':' || BeforeWhite(first, colon - 1) == first) return key;
            key = PieceOf(first, BeforeWhite(first, colon - 1));
        }
    }

    [[nodiscard]] std::size_t PieceOf(std::size_t first, std::size_t last) const {
        for (; last > first && !IsOneOf(kPieceEnds, last - 1); --last) {
            if (marks_[last - 1] == kCloseQuote) last = partners_[last - 1] + 1;
        }
        return last;
    }

    /// White space becomes blanks, but none beside a `:` or `,`, and none at all in a key behind a scalar.
    std::string Key(std::size_t first, std::size_t last, bool behind_scalar) {
        last = BeforeWhite(first, last);
        std::string key, blanks;
        for (std::size_t i = first; i < last; ++i) {
            const bool joins = text_[i] == ':' || text_[i] == ',';
            if (IsOneOf(kWhite, i)) {
                if (!behind_scalar) blanks += ' ';
                continue;
            }
            if (!joins) key += blanks;
            blanks.clear();
            if (marks_[i] == kOpenQuote) {
                key += text_.substr(i + 1, partners_[i] - i - 1);
                i = partners_[i];
            } else {
                key += text_[i];
            }
            if (joins && !behind_scalar) i = AfterWhite(i + 1, last) - 1;
        }
        fails_ = fails_ || first == last || key.size() >= kKeyRoom;
        const bool is_path = key.find_first_of("\\/") != key.npos;
        key.resize(std::min(key.size(), key.find('\0')));
        return is_path ? PathForm(key) : LowerCase(key);
    }

    [[nodiscard]] std::string Value(std::size_t first, std::size_t last) const {
        first = AfterWhite(first, last);
        std::string value = text_.substr(first, last - first);
        if (first < last && marks_[first] == kOpenQuote) {
            value = text_.substr(first + 1, partners_[first] - first - 1);
        } else {
            value.resize(std::min(value.size(), value.find_first_of("\r\n")));
            value.resize(value.find_last_not_of(kWhite) + 1);
            value.resize(value.find_last_not_of(',') + 1);
        }
        return value.substr(0, value.find('\0'));
    }

    [[nodiscard]] bool IsOneOf(std::string_view bytes, std::size_t i) const {
        return bytes.find(text_[i]) != bytes.npos;
    }

    [[nodiscard]] std::size_t AfterWhite(std::size_t first, std::size_t last) const {
        while (first < last && IsOneOf(kWhite, first)) ++first;
        return first;
    }

    [[nodiscard]] std::size_t BeforeWhite(std::size_t first, std::size_t last) const {
        while (first < last && IsOneOf(kWhite, last - 1)) --last;
        return last;
    }

    std::string text_; // without comments, with an end mark
    std::size_t size_; // without the end mark
    std::vector<Mark> marks_;
    std::vector<std::size_t> partners_; // where there is a mark
    bool fails_ = false;
};

/// Appends what the text form writes for the Units of a container. Returns whether all fits.
/// width  the columns of the container's indent, before they are rounded up to tabs
inline bool AppendText(const Node& container, std::size_t width, std::string& text) {
    const std::size_t tabs = (width + 3) / 4;
    return std::all_of(container.units.begin(), container.units.end(), [&](const Node& unit) {
        const bool is_scalar = unit.kind == Configure::KIND_STRING;
        const std::string value = is_scalar ? '"' + unit.text.value_or("") + '"' : "{";
        const std::string line = (unit.key ? *unit.key + " = " : "") + value + "\r\n";
        text.append(tabs, '\t').append(line);
        if (is_scalar || line.size() >= kKeyRoom) return line.size() < kKeyRoom;
        const std::size_t inner = unit.key.value_or("").size() + tabs * 4 + 4;
        if (inner > kKeyRoom || !AppendText(unit, inner, text)) return false;
        text.append(inner - 1, ' ').append("}\r\n");
        return true;
    });
}

/// What a binary form of the tree reads back as: no null texts, of several scalars with one key only the last, and keys
/// by length, then by bytes. Nothing if a table or an array shares its key, which can't be saved.
inline std::optional<Node> Compiled(const Node& tree) {
    Node compiled{tree.kind, tree.key, {}, {}};
    if (tree.kind == Configure::KIND_STRING) compiled.text = tree.text.value_or("");
    for (const Node& unit : tree.units) {
        std::optional<Node> kept = Compiled(unit);
        if (!kept) return std::nullopt;
        auto& units = compiled.units;
        const auto same = std::find_if(units.begin(), units.end(),
                                       [&unit](const Node& other) { return unit.key && other.key == unit.key; });
        if (same == units.end()) {
            units.push_back(std::move(*kept));
        } else if (kept->kind == Configure::KIND_STRING && same->kind == Configure::KIND_STRING) {
            *same = std::move(*kept);
        } else {
            return std::nullopt;
        }
    }
    if (tree.kind == Configure::KIND_TABLE) {
        std::sort(compiled.units.begin(), compiled.units.end(), [](const Node& one, const Node& other) {
            return std::pair(one.key->size(), *one.key) < std::pair(other.key->size(), *other.key);
        });
    }
    return compiled;
}

} // namespace Fuzz

#endif
