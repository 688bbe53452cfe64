/// A file read whole, for the loaders that edit its text in place.

#ifndef TESSARIN_FILES_WHOLE_FILE_H
#define TESSARIN_FILES_WHOLE_FILE_H

#include <cstdint>

namespace Tessarin {

struct WholeFile {
    char* bytes;        ///< the file and the spare bytes behind it, the caller's, freed with free; null on a failure
    std::uint32_t size; ///< of the file alone
};

/// Reads a file into one block with `spare` zero bytes behind the file's own.
/// returns  null bytes and nothing left behind if the file can't be opened or measured, gives fewer bytes than its size
///          says, or when memory runs out; a null or an empty path is such a file
/// REQUIRES: `spare` isn't 0, so that the block of an empty file is one
WholeFile ReadWholeFile(const char* path, std::uint32_t spare);

} // namespace Tessarin

#endif
