// Runs a target over files, and over all files in folders: known inputs, without a fuzzer. A failure ends the program;
// the file's name is the last line before its message.

#include "fuzz/check.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Path = std::filesystem::path;

/// Sorted, so that two runs are alike.
std::vector<Path> FilesOf(const Path& path) {
    if (!std::filesystem::is_directory(path)) return {path};
    std::vector<Path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool Replay(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) return false;
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

} // namespace

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    for (int i = 1; i < count; ++i) {
        for (const Path& file : FilesOf(arguments[i])) {
            if (!Replay(file)) {
                std::fprintf(stderr, "%s can't be read\n", file.string().c_str());
                return 1;
            }
            ++replayed;
        }
    }
    std::printf("%zu inputs\n", replayed);
    return replayed == 0 ? 1 : 0;
}
