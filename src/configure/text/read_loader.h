/// Loads a text form for reading.

#ifndef TESSARIN_CONFIGURE_TEXT_READ_LOADER_H
#define TESSARIN_CONFIGURE_TEXT_READ_LOADER_H

#include "configure/tree/text_read_tree.h"

#include <cstdint>

namespace Configure {

/// Fills an empty tree. False for a text that can't be taken and when memory runs out; the tree then holds parts, which
/// the caller drops.
/// REQUIRES: `bytes` are the caller's own, changed in the course of it, and bytes[size] is 0xFF
[[nodiscard]] bool LoadTextForReading(char* bytes, std::uint32_t size, TextTree& tree);

} // namespace Configure

#endif
