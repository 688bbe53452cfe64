// Numbers in documents and in memory are the same bits whatever floating-point environment the host has set; nothing
// traps, and the environment is afterwards as it was.

#include "platform/float_environment.h"

#include "tessarin/configure.h"
#include "tessarin/documents.h"
#include "tessarin/interval.h"
#include "tessarin/tab_files.h"
#include "tessarin/tables.h"
#include "tests/support/memory_files.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#if __has_include(<xmmintrin.h>) // whose register also has the flushing of denormals
#include <xmmintrin.h>
#endif

namespace {

using TestSupport::MemoryFiles;
using Numbers = std::vector<std::uint32_t>; // floats as their bits, or results of calls

constexpr std::uint32_t kTiny = 71362; // 1e-40 / 2^-149, to nearest

std::uint32_t Bits(float number) { return std::bit_cast<std::uint32_t>(number); }
float Float(std::uint32_t bits) { return std::bit_cast<float>(bits); }

void Documents(Numbers& numbers) {
    for (const char* text : {R"({"a":1e-40,"b":1e39,"c":0.1,"d":[1e-40,16777217],"e":16777219})"}) {
        Tessarin::ITable* table = OpenTableBuffer(text, static_cast<std::uint32_t>(std::strlen(text)));
        Float2 pair{};
        table->GetFloat2("d", &pair);
        for (const char* key : {"a", "b", "c", "e"}) numbers.push_back(Bits(table->GetReal(key)));
        numbers.insert(numbers.end(), {Bits(pair.x), Bits(pair.y)});
        void* saved = nullptr;
        std::uint32_t size = 0;
        table->SaveBuffer(&saved, &size);
        for (std::uint32_t i = 0; i < size; ++i) numbers.push_back(static_cast<unsigned char*>(saved)[i]);
        std::free(saved);
        CloseTable(table);
    }
}

void Comparisons(Numbers& numbers) {
    Tessarin::ITable* table = CreateTable();
    table->SetReal("real", Float(1), 0);
    table->SetReal("real", Float(2), 0);
    Float2 vector{3e38F, Float(5)};
    table->SetFloat2("vector", &vector, 0);
    vector.x = -3e38F;
    table->SetFloat2("vector", &vector, 0);
    vector = {-3e38F, 1e-30F}; // the same within the bound, so the first stays
    table->SetFloat2("vector", &vector, 0);
    table->GetFloat2("vector", &vector);
    numbers.insert(numbers.end(), {Bits(table->GetReal("real")), Bits(vector.x), Bits(vector.y)});
    CloseTable(table);
}

void Configurations(Numbers& numbers) {
    MemoryFiles files;
    files["a"] = "a = 1e-40\r\nb = 1e39\r\nc = 0.1\r\n";
    Configure::IFile* file = CreateRLFile(&files);
    Configure::ITable* root = file->Load("a", Configure::ACCESS_EDIT, Configure::FORMAT_TEXT);
    for (const char* key : {"a", "b", "c"}) numbers.push_back(Bits(root->GetFloat(key, 7.0F)));
    Configure::IIterator* unit = root->Begin();
    for (const float number : {0.0000015F, 123456.7890625F, Float(kTiny)}) {
        unit->SetFloat(number);
        for (const char* text = unit->GetString(); *text != '\0'; ++text) {
            numbers.push_back(static_cast<unsigned char>(*text));
        }
    }
    file->Release();

    files["b"] = "1e-40\t16777217\r\n";
    ITabFile* tab = CreateTabFile(&files);
    tab->Open("b", 0);
    for (const std::uint32_t column : {0U, 1U}) numbers.push_back(Bits(tab->GetReal(0, column, 7.0F)));
    tab->Release();
}

void Intervals(Numbers& numbers) {
    Configure::Interval interval;
    interval.Load("[1.0e-40,16777217]");
    numbers.insert(numbers.end(), {Bits(interval.lower), Bits(interval.upper)});
    interval.Load("[0.0,0.0]");
    interval.lower = Float(1);
    interval.upper = Float(3);
    for (const float value : {Float(0), Float(2), Float(4), 0.1F, std::numeric_limits<float>::quiet_NaN()}) {
        numbers.insert(numbers.end(), {interval.Hit(value), Bits(interval.Clamp(value))});
    }
    interval.Load("[0.1,33554433]");
    for (const std::int32_t value : {0, 1, 33554433, 33554435}) numbers.push_back(interval.Hit(value));
    for (const float lower : {-2.5F, 1e30F, Float(kTiny)}) {
        std::int32_t from = 0, to = 0;
        interval.lower = lower;
        static_cast<void>(interval.To(from, to));
        numbers.insert(numbers.end(), {static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to)});
    }
}

Numbers AllNumbers() {
    Numbers numbers;
    for (const auto each : {Documents, Comparisons, Configurations, Intervals}) each(numbers);
    return numbers;
}

/// What a host may set: a rounding, and the bits of the processor's register where it is known.
struct Environment {
    const char* name;
    int rounding;
    std::uint32_t register_bits;
};

std::vector<Environment> Environments() {
    std::vector<Environment> all = {{"upward", FE_UPWARD, 0}, {"downward", FE_DOWNWARD, 0}, {"zero", FE_TOWARDZERO, 0}};
#if __has_include(<xmmintrin.h>)
    all.insert(all.end(),
               {{"denormals are flushed", FE_TONEAREST, 0x8040}, {"everything traps", FE_TONEAREST, 0x1F80}});
#endif
    return all;
}

/// The settings and the sticky flags.
std::uint32_t State() {
#if __has_include(<xmmintrin.h>)
    return _mm_getcsr();
#else
    return static_cast<std::uint32_t>(std::fegetround() << 16 | std::fetestexcept(FE_ALL_EXCEPT));
#endif
}

TEST(FloatEnvironment, HostsChangeNoNumberAndNoticeNothing) {
    const std::uint32_t before = State();
    const Numbers expected = AllNumbers();
    EXPECT_EQ(State(), before);
    ASSERT_EQ(expected[0], kTiny);
    ASSERT_EQ(expected[1], Bits(std::numeric_limits<float>::infinity()));
    for (const Environment& environment : Environments()) {
        SCOPED_TRACE(environment.name);
        std::fenv_t usual;
        std::feholdexcept(&usual);
        std::fesetround(environment.rounding);
#if __has_include(<xmmintrin.h>)
        _mm_setcsr(_mm_getcsr() ^ environment.register_bits);
#endif
        const std::uint32_t set = State();
        const Numbers numbers = AllNumbers();
        const std::uint32_t left = State();
        std::fesetenv(&usual);
        EXPECT_EQ(numbers, expected);
        EXPECT_EQ(left, set);
    }
}

} // namespace
