// The documents of tests/golden/, a folder for each form. A document's name begins with y_ if it must load, n_ if
// loading must fail, i_ if a result is this library's choice. Beside `y_name` is `y_name.expected`: the tree, or the
// rule and the place of the failure, as the form's test prints it.

#ifndef TESSARIN_TESTS_SUPPORT_GOLDEN_H
#define TESSARIN_TESTS_SUPPORT_GOLDEN_H

#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

struct GoldenDocument {
    std::string name; // with what comes before the extension, as gtest shows it
    std::string text;
    std::string expected;
};

inline void PrintTo(const GoldenDocument& document, std::ostream* output) { *output << document.name; }

/// All documents of a form, by name. Throws if there are none, so that a wrong path doesn't pass for a test.
inline std::vector<GoldenDocument> GoldenDocuments(const std::string& form) {
    std::vector<GoldenDocument> documents;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(TESSARIN_GOLDEN "/") + form)) {
        const std::filesystem::path path = entry.path();
        if (path.extension() == ".expected") continue;
        documents.push_back({path.stem().string(), ReadWhole(path.string()), ReadWhole(path.string() + ".expected")});
    }
    if (documents.empty()) throw std::runtime_error("no golden documents of " + form);
    std::sort(documents.begin(), documents.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return documents;
}

} // namespace TestSupport

#endif
