// Records as rings hold them: a u32 with the size in bytes, then a payload that distinguishes records.

#ifndef TESSARIN_TESTS_SUPPORT_RECORDS_H
#define TESSARIN_TESTS_SUPPORT_RECORDS_H

#include <cstdint>
#include <cstring>
#include <vector>

namespace TestSupport {

using Record = std::vector<unsigned char>;

/// REQUIRES: size >= 4
inline Record MakeRecord(std::uint32_t size, std::uint32_t seed = 0) {
    Record record(size);
    for (unsigned char& byte : record) byte = static_cast<unsigned char>(seed += 37);
    std::memcpy(record.data(), &size, sizeof size);
    return record;
}

/// Whether the record at `place` has all the bytes of `expected`. Doesn't read beyond the record's own size.
inline bool HoldsRecord(const void* place, const Record& expected) {
    return place != nullptr && std::memcmp(place, expected.data(), sizeof(std::uint32_t)) == 0 &&
           std::memcmp(place, expected.data(), expected.size()) == 0;
}

} // namespace TestSupport

#endif
