// What the `mode` of IFileIO::Open says, by name: the values are a host's to see, so they never change.

#ifndef TESSARIN_FILES_OPEN_MODES_H
#define TESSARIN_FILES_OPEN_MODES_H

#include <cstdint>

namespace Tessarin {

constexpr std::int32_t kOpenToRead = 0;
constexpr std::int32_t kOpenToWrite = 1; // creates the file or truncates it

} // namespace Tessarin

#endif
