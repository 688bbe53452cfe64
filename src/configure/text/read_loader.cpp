// The loader of read trees. The parser has counted the objects, so all of them are allocated at once, with exact sizes.
// The blocks are filled in their order: a node that is a block gets the next free table or array, and blocks of one
// kind are filled in that same order. A block's nodes are consecutive, and hence its Units are, too.

#include "configure/text/read_loader.h"

#include "configure/text/text_interner.h"
#include "configure/tree/default_tables.h"

#include <algorithm>

namespace Configure {
namespace {

class ReadLoader {
public:
    ReadLoader(const ParsedText& parsed, TextTree& tree) : parsed_(parsed), tree_(tree), texts_(parsed) {}

    [[nodiscard]] bool Load() {
        const TextCounts& counts = parsed_.Counts();
        if (!tree_.tables.Make(counts.tables) || !tree_.MakeArrays(counts.arrays) ||
            !tree_.table_units.Make(counts.entries) || !tree_.array_units.Make(counts.elements)) {
            return false;
        }
        Cursor filled = StartOf(tree_);
        next_ = filled;
        ++next_.table; // the root is taken
        for (std::uint32_t number = 0; number < parsed_.BlockCount(); ++number) {
            const TextBlock block = parsed_.BlockAt(number);
            const bool is_filled = block.kind == NodeKind::kTable ? Fill(block, *filled.table++, filled.table_unit)
                                                                  : Fill(block, *filled.array++, filled.array_unit);
            if (!is_filled) return false;
        }
        return texts_.Finish();
    }

private:
    // The next objects of the tree to hand out, or to fill.
    struct Cursor {
        TxtTableReader* table;
        TxtArrayReader* array;
        TxtTableReader::Unit* table_unit;
        TxtArrayReader::Unit* array_unit;
    };

    static Cursor StartOf(TextTree& tree) {
        return {tree.tables.begin(), tree.arrays.begin(), tree.table_units.begin(), tree.array_units.begin()};
    }

    template <class Container, class Unit>
    bool Fill(const TextBlock& block, Container& container, Unit*& next_unit) {
        container.Fill(next_unit, block.child_count);
        const std::uint32_t last = block.first_child + block.child_count;
        for (std::uint32_t node = block.first_child; node != last; ++node) {
            if (!TakeNode(parsed_.Nodes()[node], *next_unit++)) return false;
        }
        return true;
    }

    template <class Unit>
    bool TakeNode(const TextNode& node, Unit& unit) {
        cstr* const name = TakeBlock(node.Kind(), unit);
        if constexpr (requires { unit.key; }) {
            if (!texts_.AddKey(node, &unit.key, name)) return false;
        }
        return node.Kind() != NodeKind::kScalar || texts_.AddValue(node, &unit.HoldText());
    }

    /// Hands out a table or an array. Returns the address of its name; null for a scalar.
    cstr* TakeBlock(NodeKind node, ReadValue& value) {
        switch (node) {
        case NodeKind::kTable:
            value.Hold(next_.table);
            return &(next_.table++)->name;
        case NodeKind::kArray:
            value.Hold(next_.array);
            return &(next_.array++)->name;
        default:
            return nullptr;
        }
    }

    const ParsedText& parsed_;
    TextTree& tree_;
    TextInterner texts_;
    Cursor next_ = {}; // the next objects to hand out; its Units aren't used
};

/// Parses and fills. The parser's nodes are freed before the tree gets its index.
bool Fill(char* bytes, std::uint32_t size, TextTree& tree) {
    ParsedText parsed;
    return parsed.Parse(bytes, size) == TextFault::kNone && ReadLoader(parsed, tree).Load();
}

} // namespace

bool LoadTextForReading(char* bytes, std::uint32_t size, TextTree& tree) {
    if (!Fill(bytes, size, tree) || !ReadyToWire()) return false;
    for (TxtTableReader& table : tree.tables) table.Sort();
    if (!tree.IndexKeys()) return false;
    DefaultWiring<TxtTableReader> defaults;
    return std::ranges::all_of(tree.tables, [&defaults](TxtTableReader& table) { return defaults.Wire(table); });
}

} // namespace Configure
