// Random numbers that only this process knows. Hashes of what comes from outside, and of addresses, are keyed with
// them, so that nobody can choose keys that meet in one place of a hash table: such a file would load in a time that
// grows with the square of its size.
//
// Nothing that a host can see may depend on the secret: the order of a walk, a stored byte, a capacity.

#ifndef TESSARIN_PLATFORM_PROCESS_SECRET_H
#define TESSARIN_PLATFORM_PROCESS_SECRET_H

#include <cstdint>

namespace Tessarin {

/// The key of a keyed hash of texts.
struct TextKey {
    std::uint64_t first, second;
};

struct ProcessSecret {
    TextKey text_key;
    std::uint64_t pointer_factors[2]; // odd, so that no bit of an address is lost when they multiply it
};

/// A new secret: from the system's random generator, or from the time and from addresses if that has nothing to give.
ProcessSecret MakeProcessSecret();

/// Set before anything that hashes is made. A test may assign another one while no table and no loaded file exists.
extern ProcessSecret process_secret;

} // namespace Tessarin

#endif
