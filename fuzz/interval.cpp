// Any bytes as a text with an interval in it, and as fields that a host has written. Load must read the same bounds as
// a plain reader with the C library's numbers; everything else follows from the fields alone.

#include "tessarin/interval.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace Fuzz;
using Configure::Interval;

struct Bound {
    float real = 0;
    std::int32_t integer = 0;
    bool is_real = false;
    bool is_open = false;
};

struct Bounds {
    Bound lower;
    Bound upper;
};

std::int32_t Truncated(float real) {
    if (std::isnan(real)) return 0;
    const double held = std::fmin(std::fmax(std::trunc(static_cast<double>(real)), -2147483648.0), 2147483647.0);
    return static_cast<std::int32_t>(held);
}

Bound ReadBound(std::string_view text) {
    constexpr std::string_view kWhite = "\t\n\r ";
    const std::size_t start = text.find_first_not_of(kWhite);
    if (start == text.npos) return {};
    const std::string token(text.substr(start, text.find_first_of(kWhite, start + 1) - start));
    Bound bound;
    bound.is_real = token.find('.', 1) != token.npos;
    if (token.size() > 63) return bound;
    if (bound.is_real) {
        bound.real = static_cast<float>(std::strtod(token.c_str(), nullptr));
        bound.integer = Truncated(bound.real);
    } else {
        bound.integer = static_cast<std::int32_t>(std::strtoll(token.c_str(), nullptr, 10));
        bound.real = static_cast<float>(bound.integer);
    }
    return bound;
}

std::optional<Bounds> Read(std::string_view text) {
    const std::size_t open = text.find_first_of("([");
    if (open == text.npos) return std::nullopt;
    const std::size_t close = text.find_first_of(")]", open + 1);
    if (close == text.npos) return std::nullopt;
    const std::string_view inside = text.substr(open + 1, close - open - 1);
    const std::size_t comma = inside.find(',');
    if (comma == inside.npos) return std::nullopt;
    Bounds bounds{ReadBound(inside.substr(0, comma)), ReadBound(inside.substr(comma + 1))};
    bounds.lower.is_open = text[open] == '(';
    bounds.upper.is_open = text[close] == ')';
    const volatile float below = bounds.lower.real - 1.1920929e-7F;
    if (below > bounds.upper.real) std::swap(bounds.lower, bounds.upper);
    return bounds;
}

bool Same(float one, float other) { return one == other || (std::isnan(one) && std::isnan(other)); }

bool Same(const Interval& one, const Interval& other) {
    return Same(one.lower, other.lower) && Same(one.upper, other.upper) && one.lower_int == other.lower_int &&
           one.upper_int == other.upper_int && one.flags == other.flags;
}

void CheckFields(const Interval& interval, const Bounds& bounds) {
    const auto& [lower, upper] = bounds;
    Require(Same(interval.lower, lower.real) && Same(interval.upper, upper.real), "another real bound");
    Require(interval.lower_int == lower.integer && interval.upper_int == upper.integer, "another integer bound");
    const std::uint32_t flags =
        (lower.is_real ? Configure::INTERVAL_LOWER_REAL : 0U) | (upper.is_real ? Configure::INTERVAL_UPPER_REAL : 0U) |
        (lower.is_open ? Configure::INTERVAL_LOWER_OPEN : 0U) | (upper.is_open ? Configure::INTERVAL_UPPER_OPEN : 0U);
    Require(interval.flags == flags, "another mark");
}

void CheckIntegers(const Interval& interval, std::int32_t value) {
    const std::int32_t clamped = interval.Clamp(value);
    Require(interval.Clamp(clamped) == clamped, "clamped twice isn't clamped once");
    const bool by_integers = (interval.flags & 3U) == 0;
    if (by_integers && interval.Hit(value) != 0) Require(clamped == value, "a number inside is moved");
    if (by_integers && clamped == value && interval.flags == 0 && interval.lower_int <= interval.upper_int) {
        Require(interval.Hit(value) == 1, "a number that isn't moved is outside");
    }
}

void CheckReals(Interval& interval, float value) {
    const float clamped = interval.Clamp(value);
    if (interval.lower <= interval.upper) {
        Require(interval.lower <= clamped && clamped <= interval.upper, "clamped to what is outside");
        const bool within = interval.lower <= value && value <= interval.upper;
        if (within) Require(clamped == value, "a number inside is moved");
        const float width = interval.upper - interval.lower;
        const float drawn = interval.Random();
        if (std::isfinite(width)) Require(interval.lower <= drawn && drawn <= interval.upper, "drawn from outside");
    }
    float lower = 0, upper = 0;
    Require(interval.To(lower, upper) == 1, "no bounds");
    std::int32_t lower_int = 0, upper_int = 0;
    Require(interval.To(lower_int, upper_int) == 1, "no bounds");
    Require(lower_int == Truncated(lower) && upper_int == Truncated(upper), "the integers aren't those of the reals");
    if (interval.flags > 15) Require(interval.Hit(value) == 0 && interval.Hit(0) == 0, "a mark of another's");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    const auto integer = source.Plain<std::int32_t>();
    const auto real = source.Plain<float>();
    Interval written; // by a host
    written.flags = source.Below(20);
    written.lower = source.Plain<float>();
    written.upper = source.Plain<float>();
    written.lower_int = source.Plain<std::int32_t>();
    written.upper_int = source.Plain<std::int32_t>();
    CheckIntegers(written, integer);
    CheckReals(written, real);

    const std::string text(source.Rest());
    const auto length = static_cast<std::uint32_t>(text.size());
    const std::optional<Bounds> bounds = Read(text);
    Interval interval = written;
    Require((interval.Load(text.data(), length) == 1) == bounds.has_value(), "wrongly refused, or wrongly accepted");
    Require((Interval::CanToInterval(text.data(), length) == 1) == bounds.has_value(),
            "the test returns something else");
    CheckFields(interval, bounds.value_or(Bounds{}));
    CheckIntegers(interval, integer);
    CheckReals(interval, real);

    Interval up_to_nul;
    const std::optional<Bounds> shorter = Read(text.substr(0, text.find('\0')));
    Require((up_to_nul.Load(text.c_str()) == 1) == shorter.has_value(),
            "a text without a length isn't read to its NUL");
    CheckFields(up_to_nul, shorter.value_or(Bounds{}));
    if (text.find('\0') == text.npos) Require(Same(up_to_nul, interval), "the length makes a difference");
    return 0;
}
