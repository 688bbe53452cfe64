// The loader of edit trees. Each table or array is made when the node that holds it is read. So the tree's chains have
// them in the order of the parser's blocks, and the next table to fill is the one after the last that was filled.

#include "configure/text/edit_loader.h"

#include "configure/text/text_interner.h"
#include "configure/tree/default_tables.h"

namespace Configure {
namespace {

class EditLoader {
public:
    EditLoader(const ParsedText& parsed, EditTree& tree) : parsed_(parsed), tree_(tree), texts_(parsed) {}

    [[nodiscard]] bool Load() {
        TxtTableWriter* table = nullptr;
        TxtArrayWriter* array = nullptr;
        for (std::uint32_t number = 0; number < parsed_.BlockCount(); ++number) {
            const TextBlock block = parsed_.BlockAt(number);
            if (block.kind == NodeKind::kTable) {
                table = table == nullptr ? tree_.tables.first : table->next;
                if (!Fill(block, *table)) return false;
            } else {
                array = array == nullptr ? tree_.arrays.first : array->next;
                if (!Fill(block, *array)) return false;
            }
        }
        return texts_.Finish();
    }

private:
    template <class Container>
    bool Fill(const TextBlock& block, Container& container) {
        if (!container.units.Reserve(block.child_count)) return false;
        const std::uint32_t last = block.first_child + block.child_count;
        for (std::uint32_t node = block.first_child; node != last; ++node) {
            auto* unit = container.NewUnit(KIND_STRING, {nullptr});
            if (unit == nullptr || !TakeNode(parsed_.Nodes()[node], *unit)) return false;
        }
        return true;
    }

    template <class Unit>
    bool TakeNode(const TextNode& node, Unit& unit) {
        cstr* name = nullptr;
        if (node.Kind() == NodeKind::kTable && !TakeBlock(tree_.tables, unit, name)) return false;
        if (node.Kind() == NodeKind::kArray && !TakeBlock(tree_.arrays, unit, name)) return false;
        if constexpr (requires { unit.key; }) {
            if (!texts_.AddKey(node, &unit.key, name)) return false;
        }
        return node.Kind() != NodeKind::kScalar || texts_.AddValue(node, &unit.value.text);
    }

    /// Gives a Unit a new table or array.
    /// name     takes the address of the new object's name
    template <class Container, class Unit>
    bool TakeBlock(Chain<Container>& chain, Unit& unit, cstr*& name) {
        Container* child = chain.Add(tree_, nullptr);
        if (child == nullptr) return false;
        unit.kind = Container::kKind;
        unit.value = child->AsValue();
        name = &child->name;
        return true;
    }

    const ParsedText& parsed_;
    EditTree& tree_;
    TextInterner texts_;
};

/// Parses and fills. The parser's nodes are freed when it returns.
bool Fill(char* bytes, std::uint32_t size, EditTree& tree) {
    ParsedText parsed;
    return parsed.Parse(bytes, size) == TextFault::kNone && EditLoader(parsed, tree).Load();
}

} // namespace

bool LoadTextForEditing(char* bytes, std::uint32_t size, EditTree& tree) {
    TxtTableWriter* root = tree.tables.Add(tree, nullptr);
    if (root == nullptr) return false;
    if (!Fill(bytes, size, tree) || !ReadyToWire()) return false;
    DefaultWiring<TxtTableWriter> defaults;
    for (TxtTableWriter* table = root; table != nullptr; table = table->next) {
        if (!defaults.Wire(*table)) return false;
    }
    return true;
}

} // namespace Configure
