// Game content that the benchmarks of configuration files share: one tree, made anew from a fixed seed, and the
// writers that put it into our text form and into those of the peers.
//
// The tree is groups of 50 things, and each thing is a table of 7 to 13 entries. No table has so many entries that the
// time of a peer which searches a list for each new key would be the time of that search.

#ifndef TESSARIN_BENCH_CONFIGURE_TEXTS_H
#define TESSARIN_BENCH_CONFIGURE_TEXTS_H

#include "bench/texts.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Bench {

/// Every syntax can express all of these but intervals, which are plain texts for the peers.
enum class NodeKind { Number, Text, Interval, Array, Table };

struct Node {
    NodeKind kind = NodeKind::Table;
    std::string key = {};
    std::string text = {};
    std::vector<Node> children = {};
};

/// The number of entries and elements in a tree, without its root.
inline std::size_t CountEntries(const Node& node) {
    std::size_t count = node.children.size();
    for (const Node& child : node.children) count += CountEntries(child);
    return count;
}

/// Makes the tree. Keys come from a short list, as they do in a game; each name, description and file is unique, and
/// numbers are sometimes equal.
class Content {
public:
    explicit Content(std::size_t things) {
        root.children.reserve(things / kGroup + 1);
        for (std::size_t i = 0; i < things; ++i) {
            if (i % kGroup == 0) root.children.push_back(Table("group_" + std::to_string(i / kGroup)));
            root.children.back().children.push_back(Thing(i));
        }
    }

    Node root = {};

private:
    static constexpr std::size_t kGroup = 50;
    enum class Field { Whole, Real, Flag, Range, Word, Path, Sentence, Words, Color, Offset, Body, Drops };

    static Node Table(std::string key) { return {NodeKind::Table, std::move(key), {}, {}}; }

    Node Thing(std::size_t number) {
        static const struct {
            const char* key;
            Field field;
            unsigned range;
        } fields[] = {
            {"level", Field::Whole, 100},
            {"price", Field::Whole, 20000},
            {"damage", Field::Range, 300},
            {"weight", Field::Real, 9000},
            {"rarity", Field::Word, 0},
            {"icon", Field::Path, 0},
            {"health", Field::Whole, 8000},
            {"armor", Field::Range, 150},
            {"speed", Field::Real, 2500},
            {"is_magical", Field::Flag, 0},
            {"stack_size", Field::Whole, 99},
            {"tags", Field::Words, 0},
            {"cooldown", Field::Real, 12000},
            {"color", Field::Color, 0},
            {"respawn_time", Field::Range, 3600},
            {"description", Field::Sentence, 0},
            {"faction", Field::Word, 0},
            {"durability", Field::Whole, 1500},
            {"body", Field::Body, 0},
            {"drops", Field::Drops, 0},
            {"quest_id", Field::Whole, 90000},
            {"attack_range", Field::Range, 60},
            {"spawn_chance", Field::Real, 100},
            {"mesh", Field::Path, 0},
            {"offset", Field::Offset, 0},
            {"experience", Field::Whole, 50000},
        };
        constexpr std::size_t count = sizeof fields / sizeof *fields;
        Node thing = Table(Word() + "_" + Word() + "_" + std::to_string(number));
        thing.children.push_back(Text("name", Word() + " " + Word() + " of the harbour, " + std::to_string(number)));
        std::size_t left = 6 + random_() % 7;
        for (std::size_t i = 0; i < count && left > 0; ++i) {
            if (random_() % (count - i) >= left) continue;
            thing.children.push_back(Entry(fields[i].key, fields[i].field, fields[i].range));
            --left;
        }
        return thing;
    }

    Node Entry(const char* key, Field field, unsigned range) {
        switch (field) {
        case Field::Whole:
            return Number(key, Whole(range));
        case Field::Real:
            return Number(key, Real(range));
        case Field::Flag:
            return Number(key, random_() % 2 == 0 ? "false" : "true");
        case Field::Range:
            return Range(key, range);
        case Field::Word:
            return Text(key, Word());
        case Field::Path:
            return Text(key, std::string(key) + "s/" + Word() + "/" + Word() + "_" + Whole(2000) + ".dat");
        case Field::Sentence:
            return Text(key, "A " + Word() + " thing that was found at low tide by a " + Word() + " crew of " +
                                 Whole(90000));
        case Field::Body:
            return Body(key);
        default:
            return List(key, field);
        }
    }

    Node List(const char* key, Field field) {
        Node list{NodeKind::Array, key, {}, {}};
        for (std::size_t i = 0; i < (field == Field::Color || field == Field::Offset ? 3 : 1 + random_() % 4); ++i) {
            switch (field) {
            case Field::Words:
                list.children.push_back(Text("", Word()));
                break;
            case Field::Color:
                list.children.push_back(Number("", Whole(256)));
                break;
            case Field::Offset:
                list.children.push_back(Number("", Real(3000)));
                break;
            default:
                list.children.push_back(Drop());
            }
        }
        return list;
    }

    Node Body(const char* key) {
        Node body = Table(key);
        body.children = {Number("mass", Real(20000)), Number("friction", Real(100)), Number("layer", Whole(32)),
                         Number("flags", Whole(4096))};
        return body;
    }

    Node Drop() {
        Node drop = Table("");
        drop.children = {Text("item", Word() + "_" + Word()), Number("chance", Real(10000))};
        return drop;
    }

    Node Range(const char* key, unsigned range) {
        unsigned lower = static_cast<unsigned>(random_()) % range;
        unsigned upper = lower + static_cast<unsigned>(random_()) % range;
        return {NodeKind::Interval, key, "[" + std::to_string(lower) + "," + std::to_string(upper) + "]", {}};
    }

    static Node Number(const char* key, std::string text) { return {NodeKind::Number, key, std::move(text), {}}; }
    static Node Text(const char* key, std::string text) { return {NodeKind::Text, key, std::move(text), {}}; }
    std::string Whole(unsigned range) { return std::to_string(random_() % range); }

    /// One of `range` numbers with two decimals, from 1.00 upwards.
    std::string Real(unsigned range) {
        std::string digits = std::to_string(random_() % range + 100);
        return digits.insert(digits.size() - 2, ".");
    }

    std::string Word() {
        static const std::vector<std::string> words = {
            "iron", "oak",     "silver", "frayed",  "salted",  "quiet",   "lantern", "heron",  "gull",      "barrel",
            "rope", "anchor",  "tide",   "captain", "broken",  "ancient", "copper",  "common", "rare",      "cursed",
            "bell", "harpoon", "mast",   "otter",   "drowned", "gilded",  "storm",   "pearl",  "driftwood", "keel"};
        return words[random_() % words.size()];
    }

    std::mt19937 random_{3};
};

/// How a form writes groups, things and their entries, each on a line of its own. In `group_open` and `thing_open`, `@`
/// is replaced with the key of the group or thing, and `#` with that of the enclosing group.
struct Syntax {
    const char *group_open, *thing_open, *indent, *assign, *line_end, *thing_close, *group_close;
    const char* separator;                // between entries that share a line
    const char *array_open, *array_close; // of numbers and texts
    const char *list_open, *list_close;   // of tables
    const char* interval_quote;
};

inline constexpr Syntax kOurs = {"@ = {\n", "\t@ = {\n", "\t\t", " = ", "\n", "\t}\n", "}\n",
                                 " ",       "{ ",        " }",   "{ ",  " }", ""};
inline constexpr Syntax kLibconfig = {"@ = {\n", "\t@ = {\n", "\t\t", " = ", ";\n", "\t};\n", "};\n",
                                      "; ",      "[",         "]",    "( ",  " )",  "\""};
inline constexpr Syntax kToml = {"", "[#.@]\n", "", " = ", "\n", "", "", ", ", "[", "]", "[", "]", "\""};
inline constexpr Syntax kYaml = {"@:\n", "  @:\n", "    ", ": ", "\n", "", "", ", ", "[", "]", "[", "]", "\""};

/// Writes a tree in one of the forms.
class TextWriter {
public:
    TextWriter(const Node& root, const Syntax& syntax) : syntax_(syntax) {
        for (const Node& group : root.children) {
            Open(syntax_.group_open, group, group);
            for (const Node& thing : group.children) {
                Open(syntax_.thing_open, thing, group);
                for (const Node& entry : thing.children) {
                    text += syntax_.indent + entry.key + syntax_.assign;
                    Value(entry);
                    text += syntax_.line_end;
                }
                text += syntax_.thing_close;
            }
            text += syntax_.group_close;
        }
    }

    std::string text = {};

private:
    void Open(const char* form, const Node& own, const Node& group) {
        for (; *form != 0; ++form) {
            if (*form == '@') {
                text += own.key;
            } else if (*form == '#') {
                text += group.key;
            } else {
                text += *form;
            }
        }
    }

    void Value(const Node& node) {
        switch (node.kind) {
        case NodeKind::Number:
            text += node.text;
            break;
        case NodeKind::Text:
            text += '"' + node.text + '"';
            break;
        case NodeKind::Interval:
            text += syntax_.interval_quote + node.text + syntax_.interval_quote;
            break;
        case NodeKind::Array:
            Array(node);
            break;
        case NodeKind::Table:
            Inline(node, "{ ", " }", syntax_.separator);
        }
    }

    void Array(const Node& node) {
        bool of_tables = !node.children.empty() && node.children[0].kind == NodeKind::Table;
        if (of_tables) {
            Inline(node, syntax_.list_open, syntax_.list_close, ", ");
        } else {
            Inline(node, syntax_.array_open, syntax_.array_close, ", ");
        }
    }

    void Inline(const Node& node, const char* open, const char* close, const char* separator) {
        const char* before = open;
        for (const Node& child : node.children) {
            text += before;
            if (!child.key.empty()) text += child.key + syntax_.assign;
            Value(child);
            before = separator;
        }
        text += close;
    }

    const Syntax& syntax_;
};

/// Things in a megabyte of our text form.
constexpr std::size_t kThingsInMegabyte = 2930;

/// A content of that many megabytes in one form.
struct WrittenContent {
    std::string text;
    std::size_t entries, groups;
};

/// Made on first use and kept; the tree isn't kept.
inline const WrittenContent& Written(std::int64_t megabytes, const Syntax& syntax) {
    static std::map<std::pair<std::int64_t, const Syntax*>, WrittenContent> texts;
    auto& written = texts[{megabytes, &syntax}];
    if (written.entries == 0) {
        Content content(static_cast<std::size_t>(megabytes) * kThingsInMegabyte);
        written = {TextWriter(content.root, syntax).text, CountEntries(content.root), content.root.children.size()};
    }
    return written;
}

} // namespace Bench

#endif
