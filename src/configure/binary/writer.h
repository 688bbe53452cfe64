/// The binary form of a tree, whatever family it is of.

#ifndef TESSARIN_CONFIGURE_BINARY_WRITER_H
#define TESSARIN_CONFIGURE_BINARY_WRITER_H

#include "tessarin/configure_interface.h"
#include "tessarin/documents.h"

namespace Configure {

/// Writes a tree to a file, which is truncated before the tree is looked at. The bytes depend on the content alone.
/// root     null fails, like a Unit of no kind, like an array or a table that shares its key with another entry, and
///          like content too large for a file. Of texts that share a key the last one counts; a null text is an empty
///          one
/// returns  false also if the file can't be opened or written whole, and when memory runs out: the file stays as far as
///          it was written
[[nodiscard]] bool WriteBinary(IFileIO& fileio, const char* path, ITable* root);

} // namespace Configure

#endif
