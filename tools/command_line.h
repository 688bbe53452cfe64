// What the groups of commands share: exit statuses, options, and how a tree or one value is printed.

#ifndef TESSARIN_TOOLS_COMMAND_LINE_H
#define TESSARIN_TOOLS_COMMAND_LINE_H

#include "tools/key_path.h"
#include "tools/row_list.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Command {

/// The exit statuses.
inline constexpr int kSucceeded = 0;
inline constexpr int kFailed = 1; // an error, a requested value that is missing, or files that differ
inline constexpr int kUsageError = 2;

/// The work of the command that the user chose; returns an exit status. It runs when the whole command line has been
/// parsed.
using Job = std::function<int()>;

/// Each of these adds a group of commands to `app`. The command that the user chooses stores its work in `job`. Both
/// are borrowed.
void AddConfigCommands(CLI::App& app, Job& job);
void AddTableCommands(CLI::App& app, Job& job);
void AddTabCommands(CLI::App& app, Job& job);

/// Adds a command to a group. Its arguments live until its work has run.
/// Returns the command and its arguments, for adding the options.
template <class Arguments>
std::pair<CLI::App*, std::shared_ptr<Arguments>> AddCommand(CLI::App& group, Job& job, const char* name,
                                                            const char* description, int (*run)(const Arguments&)) {
    CLI::App* const command = group.add_subcommand(name, description);
    auto arguments = std::make_shared<Arguments>();
    command->callback([&job, arguments, run] { job = [arguments, run] { return run(*arguments); }; });
    return {command, arguments};
}

/// How a tree is printed.
struct TreeOptions {
    bool as_json = false;
    std::string colour = "auto";
    std::size_t depth = kUnlimitedDepth;
};
void AddTreeOptions(CLI::App& command, TreeOptions& options);
/// Draws a tree on standard output, or writes it as JSON. Returns an exit status.
int PrintTree(const RowList& rows, const TreeOptions& options);

/// How one value is printed.
struct ValueOptions {
    bool as_json = false;
    std::optional<std::string> fallback;
};
void AddValueOptions(CLI::App& command, ValueOptions& options);
/// Prints a plain value, or the fallback if the value is missing; as JSON, a table or an array, too. Throws Failure if
/// there is neither a value nor a fallback, and for a table or an array that isn't printed as JSON. Returns an exit
/// status.
/// rows  the tree of the value, empty if it is missing
/// path  where the value was looked for, for messages
int PrintValue(const std::string& file, const std::string& path, const RowList& rows, const ValueOptions& options);

/// The keys of a path. Throws CLI::ValidationError for one that can't be split.
KeyPath ParseKeyPath(const std::string& path);

/// An error's message, safe to print on a terminal.
std::string MessageOf(const std::exception& failure);

/// Flushes standard output. Throws Failure if something that was printed couldn't be written.
void FlushOutput();

} // namespace Command

#endif
