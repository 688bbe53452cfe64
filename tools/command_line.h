/// What the commands share: how they are offered on the command line, and how they answer.

#ifndef TESSARIN_TOOLS_COMMAND_LINE_H
#define TESSARIN_TOOLS_COMMAND_LINE_H

#include "tools/key_path.h"
#include "tools/outline.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
#include <optional>
#include <string>

namespace Command {

/// The exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1; ///< the job failed, or what was asked for is missing, or differs
inline constexpr int kWrongUse = 2;

/// The job that the command line asks for. It runs once all of the line is understood, and answers an exit status.
using Job = std::function<int()>;

/// Adds the commands to `app`; the one that is asked for puts its work into `job`. They borrow both.
void OfferConfig(CLI::App& app, Job& job);
void OfferTable(CLI::App& app, Job& job);
void OfferTab(CLI::App& app, Job& job);

/// How a tree is shown.
struct Showing {
    bool as_json = false;
    std::string colour = "auto";
    std::size_t depth = kWhole;
};
void OfferShowing(CLI::App& command, Showing& showing);
/// Draws or writes a tree to standard output. Answers an exit status.
int Show(const Outline& rows, const Showing& showing);

/// How one value is asked for.
struct Asking {
    bool as_json = false;
    std::optional<std::string> fallback;
};
void OfferAsking(CLI::App& command, Asking& asking);
/// Prints a plain value, or in its stead the fallback; as JSON the tree. Throws Failure if there are neither, and for
/// a table or an array that should be plain.
/// rows  the tree of the value, none if it is missing
/// way   what was asked for, for messages
int Answer(const std::string& file, const std::string& way, const Outline& rows, const Asking& asking);

/// The pieces of a way. Throws CLI::ValidationError for one that can't be split.
KeyPath ParseWay(const std::string& way);

/// What is wrong, in one line that commands no terminal.
std::string MessageOf(const std::exception& failure);

/// Throws Failure unless all that was written to standard output has arrived there.
void FinishOutput();

} // namespace Command

#endif
