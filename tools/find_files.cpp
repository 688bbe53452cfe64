// The search keeps a list of the folders that are still to be listed, so depth costs no stack, and an error in one
// folder doesn't end the search.

#include "tools/find_files.h"

#include "tools/glob.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace Command {

namespace {

namespace fs = std::filesystem;

struct Search {
    const fs::path& excluded;
    const std::string& pattern;
    FoundFiles found;
    std::vector<fs::path> folders; // still to be listed, relative

    void Add(const fs::directory_entry& entry, const fs::path& relative) {
        const std::string name = entry.path().filename().string();
        std::error_code error;
        if (name.front() == '.') return;
        if (!entry.is_symlink(error) && entry.is_directory(error)) {
            if (!fs::equivalent(entry.path(), excluded, error)) folders.push_back(relative);
        } else if (MatchesGlob(name, pattern) && entry.is_regular_file(error)) {
            found.files.push_back(relative);
        }
    }
};

} // namespace

FoundFiles FindFiles(const fs::path& folder, const fs::path& excluded, const std::string& pattern) {
    Search search{excluded, pattern, {}, {fs::path()}};
    while (!search.folders.empty()) {
        const fs::path relative = std::move(search.folders.back());
        search.folders.pop_back();
        const fs::path listed = relative.empty() ? folder : folder / relative;
        std::error_code error;
        for (fs::directory_iterator it(listed, error), end; !error && it != end; it.increment(error)) {
            search.Add(*it, relative / it->path().filename());
        }
        if (error) search.found.errors.push_back(listed.string() + ": " + error.message());
    }
    std::sort(search.found.files.begin(), search.found.files.end());
    return std::move(search.found);
}

} // namespace Command
