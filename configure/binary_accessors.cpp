#include "configure/binary_accessors.h"

#include "core/string_forms.h"

namespace Configure {
namespace {

/// The child that a key byte leads to, or null.
const KeyNode* ChildOf(const KeyNode& node, unsigned char byte) {
    const KeyNode* children = node.children;
    std::uint32_t low = 0, high = ChildCount(node.word);
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
        node = ChildOf(*node, static_cast<unsigned char>(Tessarin::LowerCase(*key)));
        if (node == nullptr) return nullptr;
    }
    return node->unit;
}

} // namespace Configure
