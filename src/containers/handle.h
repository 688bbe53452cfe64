/// What every container record begins with, and the one test of a handle.

#ifndef TESSARIN_CONTAINERS_HANDLE_H
#define TESSARIN_CONTAINERS_HANDLE_H

#include <cstdint>

namespace Tessarin {

/// The first word of a live record, by family. Flat arrays and hash maps have the same number, so the guard can't tell
/// one from the other. A destroyed record keeps its number: its memory is gone, and there is nothing left to test.
inline constexpr std::uint32_t kFlatArraySignature = 24;
inline constexpr std::uint32_t kHashMapSignature = 24;
inline constexpr std::uint32_t kCommandQueueSignature = 28;
inline constexpr std::uint32_t kObjectPoolSignature = 20;
inline constexpr std::uint32_t kIncrementalPoolSignature = 12;

/// The guard at the head of the exported functions. Inside the library handles are known to be live, and the records'
/// own functions are called without it.
template <class Record>
[[nodiscard]] inline bool IsLive(const Record* handle) {
    return handle != nullptr && handle->signature == Record::kSignature;
}

} // namespace Tessarin

#endif
