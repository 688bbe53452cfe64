// What is written on one target is read on the others, so every target writes the same bytes: sums of what the library
// makes of the samples, and of numbers from all over the range of floats, against the ones in this file. A sum that
// differs on one target alone is a fault of the library there; one that differs everywhere, a change of the form.

#include "tests/support/memory_files.h"
#include "tests/support/table_text.h"
#include "tests/support/temporary_folder.h"

#include <tessarin/tessarin.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

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

/// The sum over the pieces of a saved table between its brackets and commas, in any order: a larger table walks in the
/// order of its keys' addresses, which is that of their first use in the process.
std::uint64_t SumOfPieces(const std::string& json) {
    std::uint64_t sum = 0;
    std::string piece;
    for (const char byte : json) {
        if (std::strchr("{}[],", byte) == nullptr) {
            piece += byte;
        } else {
            sum += Sum(piece);
            piece.clear();
        }
    }
    return sum;
}

TEST(SameBytes, Tables) {
    EXPECT_EQ(SumOfPieces(SavedTable(OpenTableReadableFile(SAMPLES "/saltmarch.table"))), 0xEA403309FE831A8F);
    EXPECT_EQ(SumOfPieces(SavedTable(OpenTableFile(SAMPLES "/settings.json"))), 0xD2C88B045F3BDFD3);
}

// Every so many bit patterns of floats, and as many decimal numbers.
constexpr std::uint32_t kStep = 0x36AF7;

std::string Hex(float value) {
    char text[16];
    std::snprintf(text, sizeof text, "%08x ", static_cast<unsigned>(std::bit_cast<std::uint32_t>(value)));
    return text;
}

TEST(SameBytes, RealsInJsonComeBack) {
    std::string written;
    for (std::uint32_t bits = 0; bits < UINT32_MAX - kStep; bits += kStep) {
        const auto real = std::bit_cast<float>(bits);
        if (!std::isfinite(real)) continue;
        Tessarin::ITable* table = CreateTable();
        table->SetReal("x", real, 0);
        const std::string json = SavedTable(table);
        written += json;
        Tessarin::ITable* again = OpenTableBuffer(json.data(), static_cast<std::uint32_t>(json.size()));
        ASSERT_EQ(Hex(again->GetReal("x")), Hex(real)) << json;
        CloseTable(again);
    }
    EXPECT_EQ(Sum(written), 0x07CF8F9D88B65AC8);
}

/// A decimal number of up to twenty digits with a point and an exponent.
std::string Decimal(std::uint32_t bits) {
    const std::string digits = std::to_string(bits) + '.' + std::to_string(bits * 2654435761U);
    return digits.substr(0, 1 + bits % digits.size()) + 'e' + std::to_string(static_cast<int>(bits % 100) - 55);
}

TEST(SameBytes, NumbersInConfigurationTexts) {
    MemoryFiles files;
    files["in"] = "x = 0";
    Configure::IFile* file = CreateRLFile(&files);
    Configure::IIterator* x = file->Load("in", Configure::ACCESS_EDIT, Configure::FORMAT_TEXT)->Find("x");
    std::string read, written;
    for (std::uint32_t bits = 0; bits < UINT32_MAX - kStep; bits += kStep) {
        x->SetString(Decimal(bits).c_str());
        read += Hex(x->GetFloat());
        const auto real = std::bit_cast<float>(bits);
        x->SetFloat(std::isfinite(real) ? real : 0);
        written += x->GetString();
    }
    file->Release();
    EXPECT_EQ(Sum(read), 0xD183749E35BD9DA3);
    EXPECT_EQ(Sum(written), 0x81F9A0EC846377EE);
}

} // namespace
