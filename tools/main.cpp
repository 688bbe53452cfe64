// The command `tessarin`: shows, changes and converts the library's files from a shell. It is a host like any other and
// uses only the public headers.

#include "tools/command_line.h"
#include "tools/terminal_text.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

int Run(int count, char** arguments) {
    using namespace Command;
    CLI::App app("Show, change and compile configuration files, tables and tab files.", "tessarin");
    app.set_version_flag("--version", "tessarin " TESSARIN_VERSION);
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    Job job;
    AddConfigCommands(app, job);
    AddTableCommands(app, job);
    AddTabCommands(app, job);
    try {
        app.parse(count, arguments);
        const int status = job();
        FlushOutput();
        return status;
    } catch (const CLI::Success& request) {
        return app.exit(request); // --help and --version
    } catch (const CLI::Error& misuse) {
        // The parser reports a missing command before it reports the unknown word in its place.
        const std::vector<std::string> unknown = app.remaining(true);
        const std::string message = unknown.empty() ? misuse.what() : "unknown argument: " + unknown.front();
        std::fprintf(stderr, "tessarin: %s\nTry `tessarin --help`.\n", Printable(message).c_str());
        return kUsageError;
    }
}

} // namespace

int main(int count, char** arguments) {
    try {
        return Run(count, arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tessarin: %s\n", Command::MessageOf(failure).c_str());
        return Command::kFailed;
    }
}
