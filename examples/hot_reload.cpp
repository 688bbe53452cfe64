// A configuration file that is loaded again while the program runs: the new content replaces the old only if it loads.
//
// Before you copy from here:
//  - A load drops the old content of its object even if it fails. So the new file is loaded into another object, which
//    then replaces the old one.
//  - Tables and arrays end with their file's content; texts stay.

#include <tessarin/tessarin.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace {

struct Releaser {
    void operator()(Configure::IFile* file) const { file->Release(); }
};
using File = std::unique_ptr<Configure::IFile, Releaser>;

class Settings {
public:
    explicit Settings(std::string path) : path_(std::move(path)) {}

    // Returns false, and keeps the old settings, if the file can't be loaded.
    bool Reload() {
        File fresh(CreateRLFile(nullptr));
        if (fresh == nullptr) return false;
        if (fresh->Load(path_.c_str(), Configure::ACCESS_READ, Configure::FORMAT_AUTO) == nullptr) return false;
        file_ = std::move(fresh);
        return true;
    }

    [[nodiscard]] Configure::ITable& Root() const { return *file_->GetRoot(); }

private:
    std::string path_;
    File file_;
};

bool Write(const std::string& path, const char* text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fputs(text, file) >= 0;
    return std::fclose(file) == 0 && written;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: hot_reload FILE\n", stderr);
        return 2;
    }
    const std::string path = argv[1];
    Settings settings(path);
    if (!Write(path, "volume = 80  language = en\n") || !settings.Reload()) return 1;
    std::printf("volume %d\n", settings.Root().GetInteger("volume", 0));
    if (!Write(path, "= nobody's value\n") || settings.Reload()) return 1; // an entry without a key fails the load
    std::printf("volume %d, as before\n", settings.Root().GetInteger("volume", 0));
    if (!Write(path, "volume = 35\n") || !settings.Reload()) return 1;
    std::printf("volume %d\n", settings.Root().GetInteger("volume", 0));
    return settings.Root().GetInteger("volume", 0) == 35 ? 0 : 1;
}
