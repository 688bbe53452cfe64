// The folder's name ends with a random number. Creating the folder decides whether the name is free; if it isn't,
// another number is drawn.

#include "tests/support/temporary_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace TestSupport {

// Test programs run side by side, so each name must be unique: the program that creates the folder owns the name.
TemporaryFolder::TemporaryFolder() {
    const auto all = std::filesystem::temp_directory_path();
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const auto folder = all / ("tessarin-" + std::to_string(random()));
        path_ = folder.generic_string();
        if (std::filesystem::create_directory(folder)) return;
    }
    throw std::runtime_error("no temporary folder");
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
