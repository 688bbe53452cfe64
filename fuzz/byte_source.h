// An input that is read as a program: small numbers and texts are taken off its front. An exhausted input gives zeros,
// so that every input is a program, and a longer input begins like the shorter one.

#ifndef TESSARIN_FUZZ_BYTE_SOURCE_H
#define TESSARIN_FUZZ_BYTE_SOURCE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Fuzz {

class ByteSource {
public:
    ByteSource(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool AtEnd() const { return rest_.empty(); }

    std::uint8_t Byte() { return Plain<std::uint8_t>(); }

    /// A number below `count`.
    /// REQUIRES: 0 < count <= 256
    std::uint32_t Below(std::uint32_t count) { return Byte() % count; }

    /// The bytes of a number or of a record of numbers.
    template <class T>
    T Plain() {
        T value{};
        const std::size_t size = std::min(sizeof value, rest_.size());
        std::memcpy(&value, rest_.data(), size);
        rest_.remove_prefix(size);
        return value;
    }

    /// A length of one byte, then that many bytes, cut at the first NUL.
    std::string Text() {
        const std::string text(Run(Byte()));
        return text.substr(0, text.find('\0'));
    }

    std::string_view Run(std::size_t size) {
        const std::string_view run = rest_.substr(0, size);
        rest_.remove_prefix(run.size());
        return run;
    }

    std::string_view Rest() { return Run(rest_.size()); }

private:
    std::string_view rest_;
};

} // namespace Fuzz

#endif
