/// Compiling configuration files: one, or whole folders side by side.

#ifndef TESSARIN_TOOLS_COMPILE_TREE_H
#define TESSARIN_TOOLS_COMPILE_TREE_H

#include "tools/config_tree.h"

#include <functional>
#include <string>

namespace Command {

/// Saves a file into a draft, and answers what the draft then reads as. Throws Failure if it can't be written and read.
ConfigFile SaveInto(const Draft& draft, const ConfigFile& file, Configure::FileFormat format);

/// Takes a line for people.
using Warn = std::function<void(const std::string&)>;

/// Compiles a file of either form into the place of another. What a compiled file can't hold, the first of several
/// values under one key, is told as a warning. Throws Failure.
void CompileFile(const std::string& from, const std::string& to, const Warn& warn);

struct TreeJob {
    bool is_asked = false;
    bool is_forced = false;
    std::string pattern = "*"; ///< of file names: `*` is any text, `?` any byte
};

/// Compiles each file of a folder and of those in it into the same place of another folder, which is made if need be.
/// Hidden files and folders are left out, and so is the target when it lies inside. A target gets its source's time of
/// change: one that has that time already counts as unchanged and stays. Files and folders that fail are told, and
/// don't stop the rest. Throws Failure for folders that are one. Answers an exit status.
int CompileTree(const std::string& from, const std::string& to, const TreeJob& job);

} // namespace Command

#endif
