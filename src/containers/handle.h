// Handles of the C containers: every record begins with a signature, and one function checks it.

#ifndef TESSARIN_CONTAINERS_HANDLE_H
#define TESSARIN_CONTAINERS_HANDLE_H

#include <cstdint>

namespace Tessarin {

/// The first word of a live record, by family. Flat arrays and hash maps have the same number, so the check can't
/// distinguish them. The signature of a destroyed record isn't reset: its memory is freed and must not be read anyway.
inline constexpr std::uint32_t kFlatArraySignature = 24;
inline constexpr std::uint32_t kHashMapSignature = 24;
inline constexpr std::uint32_t kCommandQueueSignature = 28;
inline constexpr std::uint32_t kFixedSizePoolSignature = 20;
inline constexpr std::uint32_t kIncrementalPoolSignature = 12;

/// The exported functions call this first. Inside the library, handles are known to be live, so the records' member
/// functions are called without this check.
template <class Record>
[[nodiscard]] inline bool IsLive(const Record* handle) {
    return handle != nullptr && handle->signature == Record::kSignature;
}

} // namespace Tessarin

#endif
