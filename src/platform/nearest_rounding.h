// Makes arithmetic on floats round to nearest, whatever rounding the host has set.

#ifndef TESSARIN_PLATFORM_NEAREST_ROUNDING_H
#define TESSARIN_PLATFORM_NEAREST_ROUNDING_H

#include <cfenv>

namespace Tessarin {

/// While it lives, this thread rounds to nearest. Conversions of numbers and text calculate in floats, and so does the
/// narrowing of a double: a document must give the same values whatever the host's rounding is.
class NearestRounding {
public:
    NearestRounding() : host_(std::fegetround()) {
        if (host_ != FE_TONEAREST) std::fesetround(FE_TONEAREST);
    }
    ~NearestRounding() {
        if (host_ != FE_TONEAREST) std::fesetround(host_);
    }
    NearestRounding(const NearestRounding&) = delete;
    NearestRounding& operator=(const NearestRounding&) = delete;

private:
    int host_;
};

} // namespace Tessarin

#endif
