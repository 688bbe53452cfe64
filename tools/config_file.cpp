// Opens and saves configuration files. The library only says that a load or a save failed. The likely reason is derived
// here: for a load from the file's first bytes and its size, for a save from the form.

#include "tools/config_file.h"

#include "tools/failure.h"

#include <cstdio>
#include <cstring>

namespace Command {

namespace {

bool IsCompiled(const std::string& path) {
    char header[28] = {};
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    const bool is_read = file && std::fread(header, 1, sizeof header, file) == sizeof header;
    if (file) std::fclose(file);
    return is_read && std::memcmp(header, "NIBx", 4) == 0;
}

ConfigFile Load(const InputFile& input, Configure::FileAccess access) {
    ConfigFile file(CreateRLFile(nullptr));
    if (file && !file->Load(input.Path().c_str(), access, Configure::FORMAT_AUTO)) file.reset();
    return file;
}

[[noreturn]] void FailToLoad(const InputFile& input) {
    constexpr std::uintmax_t kTextLimit = 1U << 28;
    if (IsCompiled(input.Path())) throw Failure(input.Name(), "is a damaged compiled file");
    if (input.Size() >= kTextLimit) throw Failure(input.Name(), "is too large, as a text may have 256 MiB");
    throw Failure(input.Name(), "has an `=` without a key, or a key or a text that is too long");
}

} // namespace

ConfigFile OpenConfig(const InputFile& input) {
    const bool is_compiled = IsCompiled(input.Path());
    ConfigFile file = Load(input, is_compiled ? Configure::ACCESS_READ : Configure::ACCESS_EDIT);
    if (!file) FailToLoad(input);
    return file;
}

ConfigFile OpenConfigForEditing(const InputFile& input) {
    if (IsCompiled(input.Path())) {
        throw Failure(input.Name(), "is compiled; convert it with `tessarin config text` first");
    }
    return OpenConfig(input);
}

ConfigFile SaveAndReload(const AtomicOutputFile& output, const ConfigFile& file, Configure::FileFormat format) {
    const bool is_text = format == Configure::FORMAT_TEXT;
    if (!file->SaveAs(output.Path().c_str(), format)) {
        throw Failure(output.Name(), is_text ? "can't be written, or has a line that is too long for a text"
                                             : "can't be written, or a table or an array shares its key with another");
    }
    ConfigFile saved(CreateRLFile(nullptr));
    if (!saved || !saved->Load(output.Path().c_str(), Configure::ACCESS_READ, format)) {
        throw Failure(output.Name(), "can't be written so that it can be read again");
    }
    return saved;
}

} // namespace Command
