// Compiling the configuration files of a whole folder, on all cores.

#ifndef TESSARIN_TOOLS_COMPILE_FOLDER_H
#define TESSARIN_TOOLS_COMPILE_FOLDER_H

#include <string>

namespace Command {

struct CompileFolderOptions {
    bool is_requested = false;
    bool is_forced = false;    // compile unchanged files, too
    std::string pattern = "*"; // of file names, as MatchesGlob takes it
};

/// Compiles each file that FindFiles finds in the folder `from` to the same relative path in the folder `to`. `to` is
/// created if it is missing, and isn't searched if it is inside `from`. A target gets its source's time of change; a
/// target that already has that time counts as unchanged and stays. Files and folders that fail are reported and don't
/// stop the others. Throws Failure if both folders are the same. Returns an exit status.
int CompileFolder(const std::string& from, const std::string& to, const CompileFolderOptions& options);

} // namespace Command

#endif
