// The system's generator is asked once, while the library is loaded, and must not be waited for: a machine that has
// just been switched on may have no random numbers yet.

#include "platform/process_secret.h"

#include <chrono>
#include <cstddef>

#if defined(_WIN32)
#include <windows.h> // ntsecapi.h needs it in front

#include <ntsecapi.h>
#elif defined(__linux__)
#include <sys/random.h>
#else
#include <sys/random.h>
#include <unistd.h>
#endif

namespace Tessarin {
namespace {

constexpr std::size_t kNumbers = 4;

/// False if the system has no random numbers.
bool AskSystem(std::uint64_t (&numbers)[kNumbers]) {
#if defined(_WIN32)
    return RtlGenRandom(numbers, sizeof numbers) != 0;
#elif defined(__linux__)
    return getrandom(numbers, sizeof numbers, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof numbers);
#else
    return getentropy(numbers, sizeof numbers) == 0;
#endif
}

/// Spreads every bit of a number over all bits of the result; different numbers have different results.
std::uint64_t Spread(std::uint64_t number) {
    number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9U;
    number = (number ^ number >> 27) * 0x94D049BB133111EBU;
    return number ^ number >> 31;
}

/// Hard to guess from outside, though not as hard as the system's numbers: the time to the clock's last digit, and
/// where the system has placed the library and the stack.
void AskTimeAndAddresses(std::uint64_t (&numbers)[kNumbers]) {
    std::uint64_t state = 0;
    for (std::uint64_t& number : numbers) {
        const std::uint64_t sources[] = {
            static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count()),
            static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()),
            reinterpret_cast<std::uintptr_t>(&number), reinterpret_cast<std::uintptr_t>(&process_secret)};
        for (const std::uint64_t source : sources) state = Spread(state + source + 0x9E3779B97F4A7C15U);
        number = state;
    }
}

} // namespace

ProcessSecret MakeProcessSecret() {
    std::uint64_t numbers[kNumbers];
    if (!AskSystem(numbers)) AskTimeAndAddresses(numbers); // GCOVR_EXCL_LINE: the hosts that run the tests have some
    return {{numbers[0], numbers[1]}, {numbers[2] | 1, numbers[3] | 1}};
}

} // namespace Tessarin
