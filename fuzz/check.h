/// What every target stands on: a check that ends the program, so that a fuzzer keeps the input that broke it, and the
/// entry that the fuzzer and the replayer call.

#ifndef TESSARIN_FUZZ_CHECK_H
#define TESSARIN_FUZZ_CHECK_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Runs a target on one input. The bytes are the caller's; always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Fuzz {

/// The place of the call comes as the defaults of the last two.
inline void Require(bool holds, const char* otherwise, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: %s\n", file, line, otherwise);
    std::abort();
}

/// The text of a null pointer is a fault of its own.
inline std::string_view TextOf(const char* text) {
    Require(text != nullptr, "a text is null");
    return text;
}

} // namespace Fuzz

#endif
