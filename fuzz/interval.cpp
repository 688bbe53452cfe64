// Any bytes as a text with an interval in it, and as fields that a host has written. Load must read the same bounds as
// a plain reader with the C library's numbers; everything else follows from the fields alone, and is checked at the
// bounds and beside them, too.

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

constexpr float kTolerance = 1.1920929e-7F;

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
    const volatile float below = bounds.lower.real - kTolerance;
    if (below > bounds.upper.real) std::swap(bounds.lower, bounds.upper);
    return bounds;
}

bool Same(float one, float other) { return one == other || (std::isnan(one) && std::isnan(other)); }

void CheckLoaded(const Interval& interval, const Bounds& bounds) {
    const auto& [lower, upper] = bounds;
    Require(Same(interval.lower, lower.real) && Same(interval.upper, upper.real), "another real bound");
    Require(interval.lower_int == lower.integer && interval.upper_int == upper.integer, "another integer bound");
    const std::uint32_t flags =
        (lower.is_real ? Configure::INTERVAL_LOWER_REAL : 0U) | (upper.is_real ? Configure::INTERVAL_UPPER_REAL : 0U) |
        (lower.is_open ? Configure::INTERVAL_LOWER_OPEN : 0U) | (upper.is_open ? Configure::INTERVAL_UPPER_OPEN : 0U);
    Require(interval.flags == flags, "another mark");
}

/// In single precision, also where registers are wider.
float Rounded(std::int32_t number) {
    const volatile float rounded = static_cast<float>(number);
    return rounded;
}

template <class Number>
Number Clamped(Number value, Number lower, Number upper) {
    const Number raised = value > lower ? value : lower;
    return upper > raised ? raised : upper;
}

template <class Number>
bool InOrder(Number one, Number other, bool strictly) {
    return strictly ? one < other : one <= other;
}

/// The fields of an interval, as each operation uses them.
class Model {
public:
    explicit Model(Interval& interval) : it_(interval) {}

    void Check(std::int32_t value) const {
        const float real = Rounded(value);
        const bool over = Has(1) ? InOrder(it_.lower, real, Has(4)) : InOrder(it_.lower_int, value, Has(4));
        const bool under = Has(2) ? InOrder(real, it_.upper, Has(8)) : InOrder(value, it_.upper_int, Has(8));
        Require(it_.Hit(value) == (it_.flags < 16 && over && under ? 1 : 0), "another integer is inside");
        Require(it_.Clamp(value) == Clamped(value, it_.lower_int, it_.upper_int), "an integer is moved elsewhere");
    }

    void Check(float value) const {
        const volatile float above = value + kTolerance, below = value - kTolerance;
        const bool inside = (Has(4) ? below : above) > Lower() && Upper() > (Has(8) ? above : below);
        Require(it_.Hit(value) == (it_.flags < 16 && inside ? 1 : 0), "another real is inside");
        Require(Same(it_.Clamp(value), Clamped(value, it_.lower, it_.upper)), "a real is moved elsewhere");
    }

    void CheckBounds() const {
        float lower = 0, upper = 0;
        Require(it_.To(lower, upper) == 1 && Same(lower, Lower()) && Same(upper, Upper()), "other real bounds");
        std::int32_t lower_int = 0, upper_int = 0;
        Require(it_.To(lower_int, upper_int) == 1, "no bounds");
        Require(lower_int == Truncated(lower) && upper_int == Truncated(upper), "other integer bounds");
        const volatile float width = it_.upper - it_.lower;
        const float drawn = it_.Random();
        if (width >= 0 && std::isfinite(width)) {
            Require(it_.lower <= drawn && drawn <= it_.upper, "drawn from outside");
        }
    }

private:
    [[nodiscard]] bool Has(std::uint32_t flag) const { return (it_.flags & flag) != 0; }
    [[nodiscard]] float Lower() const { return Has(1) ? it_.lower : Rounded(it_.lower_int); }
    [[nodiscard]] float Upper() const { return Has(2) ? it_.upper : Rounded(it_.upper_int); }

    Interval& it_;
};

void Check(Interval& interval, std::int32_t integer, float real) {
    const Model model(interval);
    model.CheckBounds();
    for (const std::int32_t value : {integer, interval.lower_int, interval.upper_int}) {
        for (const std::uint32_t step : {0U, 1U, UINT32_MAX}) {
            model.Check(static_cast<std::int32_t>(static_cast<std::uint32_t>(value) + step));
        }
    }
    for (const float value : {real, interval.lower, interval.upper}) {
        for (const float step : {0.0F, kTolerance / 2, -kTolerance / 2, 0.5F, -0.5F}) model.Check(value + step);
    }
}

/// Loads a text and requires what a plain reader makes of it.
void CheckText(Interval& interval, std::string_view text, bool with_length) {
    const std::optional<Bounds> bounds = Read(text);
    const auto length = static_cast<std::uint32_t>(text.size());
    const unsigned char expected = bounds ? 1 : 0;
    Require((with_length ? interval.Load(text.data(), length) : interval.Load(text.data())) == expected,
            "wrongly refused, or wrongly accepted");
    Require((with_length ? Interval::CanToInterval(text.data(), length) : Interval::CanToInterval(text.data())) ==
                expected,
            "the test returns something else");
    CheckLoaded(interval, bounds.value_or(Bounds{}));
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
    Check(written, integer, real);

    const std::string text(source.Rest());
    CheckText(written, text.c_str(), false); // up to its NUL
    CheckText(written, text, true);
    Check(written, integer, real);
    return 0;
}
