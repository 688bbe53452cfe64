// The compiled file is loaded again and compared with its source before it replaces an older file: a difference is
// something that a compiled file can't hold.

#include "tools/compile_file.h"

#include "tools/atomic_output_file.h"
#include "tools/config_diff.h"
#include "tools/config_file.h"
#include "tools/terminal_text.h"

namespace Command {

void CompileFile(const std::string& source, const std::string& target,
                 const std::function<void(const std::string&)>& warn) {
    AtomicOutputFile output(target); // first, as it may be the source, too
    const InputFile input(source);
    const ConfigFile file = OpenConfig(input);
    const ConfigFile saved = SaveAndReload(output, file, Configure::FORMAT_BINARY);
    CompareTrees(RootOf(file), RootOf(saved), [&](const Difference& found) {
        if (found.after) return;
        warn(Printable(input.Name() + ": warning: has " + found.path + " more than once; the last one counts"));
    });
    output.Commit();
}

} // namespace Command
