// Writes a configuration tree of any family in the binary form.

#ifndef TESSARIN_CONFIGURE_BINARY_WRITER_H
#define TESSARIN_CONFIGURE_BINARY_WRITER_H

#include "tessarin/configure_interface.h"
#include "tessarin/documents.h"

namespace Configure {

/// Writes a tree to a file, which is truncated before the tree is read. The bytes depend on the content alone.
/// root     null fails, and so do a Unit of no kind, an array or a table that shares its key with another entry, and
///          content too large for a file. Of texts that share a key the last one is written; a null text is written as
///          an empty one
/// returns  false also if the file can't be opened or completely written, and when memory runs out; the file then has
///          what was written until the failure
[[nodiscard]] bool WriteBinary(IFileIO& fileio, const char* path, ITable* root);

} // namespace Configure

#endif
