// Opening and saving configuration files, with a reason where that fails.

#ifndef TESSARIN_TOOLS_CONFIG_FILE_H
#define TESSARIN_TOOLS_CONFIG_FILE_H

#include "tools/atomic_output_file.h"
#include "tools/input_file.h"

#include <tessarin/configure.h>

#include <memory>

namespace Command {

struct ConfigFileReleaser {
    void operator()(Configure::IFile* file) const { file->Release(); }
};
using ConfigFile = std::unique_ptr<Configure::IFile, ConfigFileReleaser>;

/// Loads a file of either form; a text keeps the order of its file. Throws Failure.
ConfigFile OpenConfig(const InputFile& input);
/// Loads a text file for editing. Throws Failure, for a compiled file too.
ConfigFile OpenConfigForEditing(const InputFile& input);

/// Saves a file into an output that isn't committed yet, and loads the output again, so that the caller can compare the
/// two. Throws Failure if the file can't be saved or loaded again.
ConfigFile SaveAndReload(const AtomicOutputFile& output, const ConfigFile& file, Configure::FileFormat format);

} // namespace Command

#endif
