// Makes arithmetic on floats independent of the host's floating-point environment: its rounding, whether it flushes
// denormals to zero, which exceptions it traps, and the sticky flags of exceptions that have occurred.
//
// Games flush denormals and change the rounding, and debug builds trap exceptions. A document must give the same values
// all the same, and the host must not be trapped by a number in it, nor find flags set that it didn't cause.
//
// Compilers don't know that arithmetic depends on the environment, and move it. Therefore the operands and the results
// of arithmetic next to such an object are volatile; arithmetic that is done in functions called meanwhile stays there.

#ifndef TESSARIN_PLATFORM_FLOAT_ENVIRONMENT_H
#define TESSARIN_PLATFORM_FLOAT_ENVIRONMENT_H

#include <cstdint>

#if defined(__x86_64__)
#include <xmmintrin.h>
#elif !defined(__aarch64__)
#include <cfenv>
#endif

namespace Tessarin {

// FloatRegisters is what a host can change, and how it is read and written. kFlags are the sticky flags in it, the rest
// are settings; where these can't be distinguished cheaply, the environment is always replaced and put back.
#if defined(__x86_64__)

struct FloatRegisters {
    static constexpr std::uint32_t kFlags = 0x3F;
    static constexpr std::uint32_t kDefaultSettings = 0x1F80; // nothing traps, denormals are kept, to nearest

    std::uint32_t control = _mm_getcsr();

    void UseDefaults() const {
        if ((control & ~kFlags) != kDefaultSettings) _mm_setcsr(kDefaultSettings | (control & kFlags));
    }
    void Restore() const {
        if (_mm_getcsr() != control) _mm_setcsr(control);
    }
};

#elif defined(__aarch64__)

struct FloatRegisters {
    std::uint64_t control, flags;

    FloatRegisters() { asm volatile("mrs %0, fpcr\n\tmrs %1, fpsr" : "=r"(control), "=r"(flags)); }
    void UseDefaults() const {
        if (control != 0) Write(0, flags);
    }
    void Restore() const {
        const FloatRegisters now;
        if (now.control != control || now.flags != flags) Write(control, flags);
    }

private:
    static void Write(std::uint64_t control, std::uint64_t flags) {
        asm volatile("msr fpcr, %0\n\tmsr fpsr, %1" : : "r"(control), "r"(flags));
    }
};

#else

struct FloatRegisters {
    std::fenv_t all;

    FloatRegisters() { std::fegetenv(&all); }
    void UseDefaults() const { std::fesetenv(FE_DFL_ENV); }
    void Restore() const { std::fesetenv(&all); }
};

#endif

/// While it lives, this thread calculates in the default environment: it rounds to nearest, keeps denormals, and traps
/// nothing. Afterwards the host's environment is as it was, its flags included. Usual hosts have the default settings,
/// and then only the registers are read.
class DefaultFloatEnvironment {
public:
    DefaultFloatEnvironment() { host_.UseDefaults(); }
    ~DefaultFloatEnvironment() { host_.Restore(); }
    DefaultFloatEnvironment(const DefaultFloatEnvironment&) = delete;
    DefaultFloatEnvironment& operator=(const DefaultFloatEnvironment&) = delete;

private:
    const FloatRegisters host_;
};

/// The nearest float to an integer.
inline float NearestFloat(std::int32_t number) {
    constexpr std::int32_t kExact = 1 << 24; // every integer up to it is a float, and converting it sets no flag
    if (number >= -kExact && number <= kExact) return static_cast<float>(number);
    const DefaultFloatEnvironment environment;
    const volatile std::int32_t operand = number;
    const volatile float nearest = static_cast<float>(operand);
    return nearest;
}

} // namespace Tessarin

#endif
