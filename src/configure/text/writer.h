// Writes a configuration tree of any of the three families in the text form.

#ifndef TESSARIN_CONFIGURE_TEXT_WRITER_H
#define TESSARIN_CONFIGURE_TEXT_WRITER_H

#include "tessarin/configure.h"

namespace Configure {

/// Writes a tree to a file, which is truncated before the tree is read. Results of writes aren't checked.
/// returns  false if the file can't be opened, for a null root, for a line or an indent that is too long, for a Unit of
///          no kind, and if memory runs out; the file then has what was written until the failure
[[nodiscard]] bool WriteText(::IFileIO& fileio, const char* path, ITable* root);

} // namespace Configure

#endif
