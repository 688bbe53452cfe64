// The work that the long run repeats, one class for each subject, and the random values that the classes draw.
//
// Interned strings are never freed, so memory only stays constant if the texts repeat: all keys, texts and numbers are
// drawn from small fixed sets.

#ifndef TESSARIN_TESTS_SOAK_WORK_H
#define TESSARIN_TESTS_SOAK_WORK_H

#include "tessarin/tables.h"

#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

namespace Soak {

class Random {
public:
    explicit Random(std::uint32_t seed) : engine_(seed) {}

    /// REQUIRES: count != 0
    std::uint32_t Below(std::uint32_t count) { return static_cast<std::uint32_t>(engine_() % count); }

    std::string Key() { return "key_" + std::to_string(Below(48)); }

    /// Up to 400 bytes, without any that a form would have to quote or escape.
    std::string Text() {
        const std::uint32_t number = Below(2000);
        return "Text " + std::to_string(number) + std::string(number % 7 == 0 ? number / 5 : number % 30, 'x');
    }

    std::string Path() { return "Some//Folder\\" + std::to_string(Below(200)) + "/File.TXT"; }

    std::int32_t Integer() { return static_cast<std::int32_t>(Below(400)) - 200; }

    float Real() { return static_cast<float>(Integer()) / 8.0F; }

private:
    std::mt19937 engine_;
};

inline void Require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

class Work {
public:
    virtual ~Work() = default;
    virtual void Step(Random& random) = 0;

    /// Frees everything but the object itself, so that memory can be compared.
    virtual void Empty() = 0;
};

/// One tree of tables that lives as long as the run: every setter, removals, array parts, listeners; loads of its JSON
/// form and of readable texts, too. The files are in `folder`.
std::unique_ptr<Work> MakeTableWork(const std::string& folder);

/// One configuration file object: both accesses, edits, saves in both forms, loads of both saves.
std::unique_ptr<Work> MakeConfigureWork();

/// One tab file object, opened repeatedly.
std::unique_ptr<Work> MakeTabWork();

/// One exchange with two producers.
std::unique_ptr<Work> MakeExchangeWork();

/// All forms of interned strings.
std::unique_ptr<Work> MakeStringWork();

} // namespace Soak

#endif
