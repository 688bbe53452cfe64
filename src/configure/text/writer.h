// Writes a tree of any family in the text form.

#ifndef TESSARIN_CONFIGURE_TEXT_WRITER_H
#define TESSARIN_CONFIGURE_TEXT_WRITER_H

#include "tessarin/configure.h"

namespace Configure {

/// Writes a tree to a file, which is truncated before the tree is looked at.
/// returns  false if the file can't be opened, for a null root, for a line or an indent that is too long, for a Unit of
/// no
///          kind, and when memory runs out; what has been written stays. Whether writes succeed isn't looked at
[[nodiscard]] bool WriteText(::IFileIO& fileio, const char* path, ITable* root);

} // namespace Configure

#endif
