#include "tests/support/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TestSupport {

TemporaryFolder::TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "tessarin-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::Path(std::string_view name) const { return path_ + "/" + std::string(name); }

std::string TemporaryFolder::File(std::string_view name, std::string_view bytes) const {
    std::string path = Path(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::string ReadWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace TestSupport
