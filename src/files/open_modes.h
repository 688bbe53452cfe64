// Names for the values of IFileIO::Open's `mode`. Hosts see the values, so they never change. FileIO::Open
// (file_io.cpp) translates them for the runtime library.

#ifndef TESSARIN_FILES_OPEN_MODES_H
#define TESSARIN_FILES_OPEN_MODES_H

#include <cstdint>

namespace Tessarin {

constexpr std::int32_t kOpenToRead = 0;
constexpr std::int32_t kOpenToWrite = 1; // creates the file or truncates it

} // namespace Tessarin

#endif
