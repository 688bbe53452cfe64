// Loads a text form for reading.

#ifndef TESSARIN_CONFIGURE_TEXT_READ_LOADER_H
#define TESSARIN_CONFIGURE_TEXT_READ_LOADER_H

#include "configure/tree/text_read_tree.h"

#include <cstdint>

namespace Configure {

/// Fills an empty tree.
/// bytes    `size` bytes and behind them the end mark, 0xFF; changed by the load, and not needed after it
/// returns  false for a text with a fault and when memory runs out; the tree then holds parts, for the caller to clear
[[nodiscard]] bool LoadTextForReading(char* bytes, std::uint32_t size, TextTree& tree);

} // namespace Configure

#endif
