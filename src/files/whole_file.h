// A file read whole into one block of the heap: the one place where a file is opened, measured, read and closed.
//
// The size is asked for once, and the file must give exactly that many bytes: one that shrinks meanwhile fails, and of
// one that grows the first bytes are taken. A service's file that was opened is closed when the object ends, and so
// also after a failure: its host may look at what was loaded while it closes.

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
    HeapBytes bytes;        // the file's own and the spare ones behind them; null for none at all
    std::uint32_t size = 0; // of the file alone

    WholeFile() = default;
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    /// Reads a file through the library's own file object, which takes the path as it is.
    /// spare    zero bytes to be behind the file's own
    /// returns  false, with no bytes, if the file can't be opened or measured, gives fewer bytes than its size says, or
    ///          when memory runs out; a null or an empty path is such a file
    [[nodiscard]] bool Read(const char* path, std::uint32_t spare);

    /// The same through a file service: Open to read, GetSize, and Read with a buffer size that counts the spare bytes;
    /// Close when the object ends. There is no Read if there is no byte to allocate.
    /// REQUIRES: nothing has been read yet
    [[nodiscard]] bool Read(::IFileIO& service, const char* path, std::uint32_t spare);

private:
    ::IFileIO* service_ = nullptr; // of the handle
    void* handle_ = nullptr;       // null if there is none to close
};

} // namespace Tessarin

#endif
