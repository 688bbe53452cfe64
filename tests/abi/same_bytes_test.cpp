// What is written on one target is read on the others, so every target writes the same bytes: sums of what the library
// makes of the samples, and of numbers from all over the range of floats, against the ones in this file. A sum that
// differs on one target alone is a fault of the library there; one that differs everywhere, a change of the form.

#include "tests/support/memory_files.h"
#include "tests/support/table_text.h"
#include "tests/support/temporary_folder.h"

#include <tessarin/tessarin.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;

/// FNV-1a.
std::uint64_t Sum(std::string_view bytes) {
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return sum;
}

std::string Sample(const std::string& name) { return ReadWhole(SAMPLES "/" + name); }

/// A configuration file loaded and saved as `format`.
std::string Saved(const std::string& bytes, std::uint32_t access, std::uint32_t format) {
    MemoryFiles files;
    files["in"] = bytes;
    Configure::IFile* file = CreateRLFile(&files);
    EXPECT_NE(file->Load("in", access, Configure::FORMAT_AUTO), nullptr);
    EXPECT_TRUE(file->SaveAs("out", format));
    file->Release();
    return files["out"];
}

struct Form {
    std::uint64_t compiled, text;
};

TEST(SameBytes, ConfigurationFiles) {
    using namespace Configure;
    const std::pair<const char*, Form> samples[] = {
        {"creatures.txt", {0xDD684BF884FB78EE, 0x6CAAC294FC92D7DE}},
        {"dialogue.txt", {0x986E82ADCA71AA3A, 0xF29233B49D505A2E}},
        {"items.txt", {0x416DA13C93E7B3A0, 0xED06120F48126D51}},
        {"level_saltmarch.txt", {0xA7AE405A9EB9D03E, 0x7B1E55B8C5F582C4}},
        {"loot.txt", {0x7F401CFCFA22136D, 0xB941C09CD6183E88}},
        {"shops.txt", {0x1F211B18690EC34F, 0xF3C8483C37376626}},
    };
    for (const auto& [name, sums] : samples) {
        const std::string source = Sample(std::string("config/") + name);
        ASSERT_FALSE(source.empty()) << name;
        const std::string compiled = Saved(source, ACCESS_READ, FORMAT_BINARY);
        EXPECT_EQ(Sum(compiled), sums.compiled) << name;
        EXPECT_EQ(Sum(Saved(source, ACCESS_EDIT, FORMAT_TEXT)), sums.text) << name;
        // Bytes that have the sum are those of every other target: they load here, and say the same when they are
        // saved again.
        EXPECT_EQ(Sum(Saved(compiled, ACCESS_READ, FORMAT_BINARY)), sums.compiled) << name;
    }
}

std::string SavedTable(Tessarin::ITable* table) {
    std::string json = SavedJson(table);
    CloseTable(table);
    return json;
}

/// The pieces of a saved table between its brackets and commas, sorted: a larger table walks in the order of its keys'
/// addresses, which is that of their first use in the process.
std::string Pieces(const std::string& json) {
    std::vector<std::string> pieces(1);
    for (const char byte : json) {
        if (std::strchr("{}[],", byte) != nullptr) {
            pieces.emplace_back();
        } else {
            pieces.back() += byte;
        }
    }
    std::sort(pieces.begin(), pieces.end());
    std::string sorted;
    for (const std::string& piece : pieces) sorted += piece + '\n';
    return sorted;
}

TEST(SameBytes, Tables) {
    EXPECT_EQ(Sum(Pieces(SavedTable(OpenTableReadableFile(SAMPLES "/saltmarch.table")))), 0xA4E08DADD9CEEAF8);
    EXPECT_EQ(Sum(Pieces(SavedTable(OpenTableFile(SAMPLES "/settings.json")))), 0xD0E00CC2FA54BA97);
}

/// Numbers without a pattern, the same everywhere.
class Draws {
public:
    std::uint32_t Next() {
        state_ = state_ * 6364136223846793005 + 1442695040888963407;
        return static_cast<std::uint32_t>(state_ >> 32);
    }

private:
    std::uint64_t state_ = 1;
};

constexpr int kDraws = 20000;

float FromBits(std::uint32_t bits) {
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string Hex(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    char text[16];
    std::snprintf(text, sizeof text, "%08x ", static_cast<unsigned>(bits));
    return text;
}

bool IsFinite(std::uint32_t bits) { return (bits & 0x7F800000) != 0x7F800000; }

TEST(SameBytes, RealsInJsonComeBack) {
    Draws draws;
    std::string written;
    for (int i = 0; i < kDraws; ++i) {
        const std::uint32_t bits = draws.Next();
        if (!IsFinite(bits)) continue;
        Tessarin::ITable* table = CreateTable();
        table->SetReal("x", FromBits(bits), 0);
        const std::string json = SavedTable(table);
        written += json;
        Tessarin::ITable* again = OpenTableBuffer(json.data(), static_cast<std::uint32_t>(json.size()));
        ASSERT_EQ(Hex(again->GetReal("x")), Hex(FromBits(bits))) << json;
        CloseTable(again);
    }
    EXPECT_EQ(Sum(written), 0x4CF2235451F60DC4);
}

/// A decimal number of up to twenty digits with a point and an exponent.
std::string Decimal(Draws& draws) {
    std::string text = std::to_string(draws.Next()) + ".";
    text += std::to_string(draws.Next());
    text.resize(1 + draws.Next() % text.size());
    return text + "e" + std::to_string(static_cast<int>(draws.Next() % 100) - 55);
}

TEST(SameBytes, NumbersInConfigurationTexts) {
    MemoryFiles files;
    files["in"] = "x = 0";
    Configure::IFile* file = CreateRLFile(&files);
    Configure::IIterator* x = file->Load("in", Configure::ACCESS_EDIT, Configure::FORMAT_TEXT)->Find("x");
    Draws draws;
    std::string read, written;
    for (int i = 0; i < kDraws; ++i) {
        x->SetString(Decimal(draws).c_str());
        read += Hex(x->GetFloat());
        const std::uint32_t bits = draws.Next();
        x->SetFloat(IsFinite(bits) ? FromBits(bits) : 0);
        written += x->GetString();
    }
    file->Release();
    EXPECT_EQ(Sum(read), 0x8BFF13924B41E84F);
    EXPECT_EQ(Sum(written), 0xC5882FC2ABD19127);
}

} // namespace
