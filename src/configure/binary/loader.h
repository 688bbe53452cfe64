// Loads the binary form of a configuration file into a read tree.

#ifndef TESSARIN_CONFIGURE_BINARY_LOADER_H
#define TESSARIN_CONFIGURE_BINARY_LOADER_H

#include "configure/tree/binary_read_tree.h"

#include <cstdint>

namespace Configure {

/// Builds the tree from a file's bytes, which aren't needed afterwards. Bytes after the last record are ignored.
/// returns  true if every operation on the tree is safe; false if the bytes aren't a complete and valid file or memory
///          runs out: `tree` may then hold parts, which the caller must clear
/// REQUIRES: `tree` is empty
[[nodiscard]] bool LoadBinary(const unsigned char* bytes, std::uint32_t size, BinTree& tree);

} // namespace Configure

#endif
