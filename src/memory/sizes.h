// Sizes that no host can observe, in two builds: the usual one, and one for the tests, in which they are so small that
// each chunk, batch and list is soon full. What happens then is tested by every test, not only by those that fill them,
// and AddressSanitizer notices a write beyond a block if each block is an allocation of its own.
//
// A size stays where it is used, and says both values there. Sizes that a host can see, in an order, in a capacity or
// as a limit, have only one.

#ifndef TESSARIN_MEMORY_SIZES_H
#define TESSARIN_MEMORY_SIZES_H

namespace Tessarin {

#if defined(TESSARIN_SMALL_SIZES)
inline constexpr bool kSmallSizes = true;
#else
inline constexpr bool kSmallSizes = false;
#endif

/// `usual`, or `small` in the build for tests.
template <class Number>
[[nodiscard]] constexpr Number OrSmall(Number usual, Number small) {
    return kSmallSizes ? small : usual;
}

} // namespace Tessarin

#endif
