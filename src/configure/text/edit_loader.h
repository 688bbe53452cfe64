// Loads a file of the text form into an edit tree.

#ifndef TESSARIN_CONFIGURE_TEXT_EDIT_LOADER_H
#define TESSARIN_CONFIGURE_TEXT_EDIT_LOADER_H

#include "configure/tree/edit_tree.h"

#include <cstdint>

namespace Configure {

/// Fills an empty tree; bytes and result as for LoadTextForReading.
[[nodiscard]] bool LoadTextForEditing(char* bytes, std::uint32_t size, EditTree& tree);

} // namespace Configure

#endif
