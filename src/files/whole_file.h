// A file read whole into one block of the heap: the one place where a file is opened, measured, read and closed.
//
// The size is asked for once, and exactly that many bytes are read. If the file shrinks meanwhile, the read fails; if
// it grows, the added bytes aren't read. A service's file that was opened is closed when the object ends, and so also
// after a failure: its host may look at what was loaded while it closes the file.

#ifndef TESSARIN_FILES_WHOLE_FILE_H
#define TESSARIN_FILES_WHOLE_FILE_H

#include "tessarin/documents.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Tessarin {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

/// Bytes in a block from malloc.
using HeapBytes = std::unique_ptr<char[], FreeBlock>;

class WholeFile {
public:
    HeapBytes bytes;        // the file's bytes, then the spare ones; null if there are none of either
    std::uint32_t size = 0; // of the file, without the spare bytes

    WholeFile() = default;
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    /// Reads a file through the library's own file object, which takes the path as it is.
    /// spare    the number of zero bytes to add after the file's bytes
    /// returns  false, with no bytes, if the file can't be opened or measured, if it has fewer bytes than its size
    ///          says, if memory runs out, or for a null or empty path
    [[nodiscard]] bool Read(const char* path, std::uint32_t spare);

    /// Reads a file through a file service, otherwise like the other Read. Calls Open for reading, GetSize, and Read
    /// with a buffer size that includes the spare bytes; Close when the object ends. Read isn't called if there is no
    /// byte to allocate. REQUIRES: nothing has been read yet
    [[nodiscard]] bool Read(::IFileIO& service, const char* path, std::uint32_t spare);

private:
    ::IFileIO* service_ = nullptr; // of the handle
    void* handle_ = nullptr;       // null if there is none to close
};

} // namespace Tessarin

#endif
