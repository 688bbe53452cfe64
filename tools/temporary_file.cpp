// The removal is cancelled before the file is given up, as its name may belong to another process from then on.

#include "tools/temporary_file.h"

#include <filesystem>
#include <utility>

namespace Command {

void TemporaryFile::CreatePrivate(const std::string& name) {
    Manage(CreatePrivateFile((std::filesystem::temp_directory_path() / "tessarin").string(), name));
}

void TemporaryFile::Manage(CreatedFile created) {
    created_ = std::move(created);
    removal_ = RemoveOnSignal(created_.path);
}

void TemporaryFile::Release() {
    CancelRemoval(removal_);
    removal_ = nullptr;
    created_.path.clear();
}

TemporaryFile::~TemporaryFile() {
    CancelRemoval(removal_);
    if (!created_.path.empty()) Remove(created_);
}

} // namespace Command
