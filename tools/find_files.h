// The files of a folder and of all folders in it.

#ifndef TESSARIN_TOOLS_FIND_FILES_H
#define TESSARIN_TOOLS_FIND_FILES_H

#include <filesystem>
#include <string>
#include <vector>

namespace Command {

struct FoundFiles {
    std::vector<std::filesystem::path> files; // relative to the folder, sorted
    std::vector<std::string> errors;          // a message for each folder that couldn't be listed
};

/// Finds the regular files whose names match a pattern, as MatchesGlob does. Hidden files and folders are left out.
/// Links to files are followed, links to folders are not: they may lead in cycles.
/// excluded  a folder that isn't searched; it needn't exist
FoundFiles FindFiles(const std::filesystem::path& folder, const std::filesystem::path& excluded,
                     const std::string& pattern);

} // namespace Command

#endif
