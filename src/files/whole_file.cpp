// The size is asked for once, and the file must give exactly that many bytes: one that shrinks meanwhile fails, and of
// one that grows the first bytes are taken.

#include "files/whole_file.h"

#include "files/file_objects.h"

#include <cstdlib>
#include <cstring>

namespace Tessarin {
namespace {

WholeFile ReadAll(FileReader& file, std::uint32_t spare) {
    const std::int32_t measured = file.GetSize();
    if (measured < 0) return {nullptr, 0};
    const auto size = static_cast<std::uint32_t>(measured);
    auto* bytes = static_cast<char*>(std::malloc(std::size_t{size} + spare));
    if (bytes == nullptr) return {nullptr, 0};
    std::memset(bytes + size, 0, spare);
    if (file.Read(bytes, size, size) == size) return {bytes, size};
    std::free(bytes);
    return {nullptr, 0};
}

} // namespace

WholeFile ReadWholeFile(const char* path, std::uint32_t spare) {
    FileReader* file = FileReader::Open(path);
    if (file == nullptr) return {nullptr, 0};
    const WholeFile whole = ReadAll(*file, spare);
    file->Release();
    return whole;
}

} // namespace Tessarin
