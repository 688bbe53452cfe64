/// Writes a tree of any family in the text form.

#ifndef TESSARIN_CONFIGURE_TEXT_WRITER_H
#define TESSARIN_CONFIGURE_TEXT_WRITER_H

#include "tessarin/configure.h"

namespace Configure {

/// Opens the target first, which truncates it. False if it can't be opened, for a null root, for a line or an indent
/// that is too long, for a Unit without a kind, and when memory runs out; what was written stays.
[[nodiscard]] bool WriteText(::IFileIO& fileio, const char* path, ITable* root);

} // namespace Configure

#endif
