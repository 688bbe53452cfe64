// The value of an entry: 16 bytes whose meaning depends on the entry's kind. The kinds: ValueKind in
// tessarin/table_interface.h; what each stores: pair.h.

#ifndef TESSARIN_TABLES_VALUE_H
#define TESSARIN_TABLES_VALUE_H

#include <cstring>
#include <type_traits>

namespace Tessarin {

/// Getters read the first word whatever kind was stored, so every access copies bytes.
class Value {
public:
    template <class T>
    [[nodiscard]] T As() const {
        static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= kBytes);
        T value;
        std::memcpy(&value, bytes_, sizeof value);
        return value;
    }

    template <class T>
    void Put(const T& value) {
        static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= kBytes);
        std::memcpy(bytes_, &value, sizeof value);
    }

private:
    static constexpr std::size_t kBytes = 16;

    alignas(8) unsigned char bytes_[kBytes] = {};
};

} // namespace Tessarin

#endif
