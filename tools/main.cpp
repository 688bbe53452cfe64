// The command `tessarin`: what the library's files hold, for the shell. A host like any other, on the public headers.

#include "tools/command_line.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

int Run(int count, char** arguments) {
    using namespace Command;
    CLI::App app("Look into, change and compile configuration files, tables and tab files.", "tessarin");
    app.set_version_flag("--version", "tessarin " TESSARIN_VERSION);
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    Job job;
    OfferConfig(app, job);
    OfferTable(app, job);
    OfferTab(app, job);
    try {
        app.parse(count, arguments);
        const int status = job();
        FinishOutput();
        return status;
    } catch (const CLI::Success& asked) {
        return app.exit(asked); // --help and --version
    } catch (const CLI::Error& misuse) {
        // A missing command is noticed before the word that stands in its place.
        const std::vector<std::string> unknown = app.remaining(true);
        const std::string what = unknown.empty() ? misuse.what() : "unknown argument: " + unknown.front();
        std::fprintf(stderr, "tessarin: %s\nTry `tessarin --help`.\n", Printable(what).c_str());
        return kWrongUse;
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
