// What every target needs: a check that ends the program, so that a fuzzer keeps the input that failed, and the
// function that the fuzzer and the replayer call.

#ifndef TESSARIN_FUZZ_CHECK_H
#define TESSARIN_FUZZ_CHECK_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Runs a target on one input. The caller owns the bytes. Always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Fuzz {

/// Ends the program with a message unless `holds`. The defaults of `file` and `line` are the place of the call.
inline void Require(bool holds, const char* otherwise, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: %s\n", file, line, otherwise);
    std::abort();
}

/// A text from the library, where a null pointer is a failure.
inline std::string_view TextOf(const char* text) {
    Require(text != nullptr, "a text is null");
    return text;
}

} // namespace Fuzz

#endif
