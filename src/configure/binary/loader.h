/// The load of the binary form.

#ifndef TESSARIN_CONFIGURE_BINARY_LOADER_H
#define TESSARIN_CONFIGURE_BINARY_LOADER_H

#include "configure/tree/binary_read_tree.h"

#include <cstdint>

namespace Configure {

/// Makes the tree of a file's bytes, which aren't needed afterwards. Bytes behind the last record don't matter.
/// returns  true, and every operation on the tree is then safe; false if the bytes aren't a whole and sound file or
///          memory runs out, and `tree` may then hold parts, for the caller to clear
/// REQUIRES: `tree` is empty
[[nodiscard]] bool LoadBinary(const unsigned char* bytes, std::uint32_t size, BinTree& tree);

} // namespace Configure

#endif
