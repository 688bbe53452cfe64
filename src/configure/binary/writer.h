// Writes a configuration tree of any of the three families in the binary form.

#ifndef TESSARIN_CONFIGURE_BINARY_WRITER_H
#define TESSARIN_CONFIGURE_BINARY_WRITER_H

#include "tessarin/configure_interface.h"
#include "tessarin/documents.h"

namespace Configure {

/// Closes a file that was written. False if its service can say that bytes haven't reached the file.
using Closer = bool (*)(IFileIO& fileio, void* handle);

/// For a host's service, which can't say it.
inline bool CloseByService(IFileIO& fileio, void* handle) {
    fileio.Close(handle);
    return true;
}

/// Writes a tree to a file, which is truncated before the tree is read. The bytes depend only on the content. Of texts
/// that share a key the last one is written; a null text is written as an empty one.
/// returns  false for a null root, for a Unit of no kind, for an array or a table that shares its key with another
///          entry, for content too large for a file, if the file can't be opened or completely written, and if memory
///          runs out; the file then has what was written until the failure
[[nodiscard]] bool WriteBinary(IFileIO& fileio, const char* path, ITable* root, Closer close = CloseByService);

} // namespace Configure

#endif
