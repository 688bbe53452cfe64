// Loads a file of the text form into a read tree.

#ifndef TESSARIN_CONFIGURE_TEXT_READ_LOADER_H
#define TESSARIN_CONFIGURE_TEXT_READ_LOADER_H

#include "configure/tree/text_read_tree.h"

#include <cstdint>

namespace Configure {

/// Fills an empty tree.
/// bytes    `size` bytes followed by the end mark, 0xFF; changed by the load, and not needed after it
/// returns  false for a text with a fault and if memory runs out; the tree then holds parts, which the caller must
///          clear
[[nodiscard]] bool LoadTextForReading(char* bytes, std::uint32_t size, TextTree& tree);

} // namespace Configure

#endif
