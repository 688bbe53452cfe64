#include "configure/binary_accessors.h"

#include "core/string_forms.h"

namespace Configure {
namespace {

/// The one of a node's children that a key byte leads to, or null.
const KeyNode* FindChild(const KeyNode* children, std::uint32_t count, unsigned char byte) {
    std::uint32_t low = 0, high = count;
    while (low < high) {
        const std::uint32_t middle = (low + high) / 2;
        const unsigned char its_byte = KeyByte(children[middle].word);
        if (its_byte == byte) return &children[middle];
        if (its_byte < byte) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return nullptr;
}

} // namespace

BinTable::Unit* BinTable::Search(const char* key) const {
    const KeyNode* node = root_node;
    for (; *key != '\0'; ++key) {
        const auto byte = static_cast<unsigned char>(Tessarin::LowerCase(*key));
        node = FindChild(root_node + node->children, ChildCount(node->word), byte);
        if (node == nullptr) return nullptr;
    }
    return (node->word & kTerminalBit) != 0 ? units + node->unit : nullptr;
}

} // namespace Configure
