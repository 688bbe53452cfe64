// Texts and numbers that the benchmarks share: made anew from fixed seeds, so that every run sees the same.

#ifndef TESSARIN_BENCH_TEXTS_H
#define TESSARIN_BENCH_TEXTS_H

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace Bench {

/// Distinct keys of 6 to 20 bytes, as people name things, in random order.
inline std::vector<std::string> Keys(std::size_t count, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < count; ++i) {
        std::string key;
        for (std::size_t length = 3 + random() % 10; key.size() < length;)
            key += static_cast<char>('a' + random() % 26);
        keys.push_back(key + "_" + std::to_string(seed * 10000000 + i).substr(std::to_string(seed).size()));
    }
    std::shuffle(keys.begin(), keys.end(), random);
    return keys;
}

/// Texts of 12 letters that no earlier call has returned.
inline std::vector<std::string> NewTexts(std::size_t count) {
    static std::mt19937_64 random(7);
    std::vector<std::string> texts(count, std::string(12, ' '));
    for (std::string& text : texts) {
        std::uint64_t bits = random();
        for (char& letter : text) {
            letter = static_cast<char>('a' + bits % 26);
            bits /= 26;
        }
    }
    return texts;
}

/// Keys like addresses: 47 bits, multiples of 8.
inline std::vector<std::uintptr_t> Addresses(std::size_t count) {
    std::mt19937_64 random(11);
    std::vector<std::uintptr_t> addresses(count);
    for (std::uintptr_t& address : addresses) address = static_cast<std::uintptr_t>(random() & 0x7FFFFFFFFFF8);
    return addresses;
}

/// Cycles through a list endlessly.
template <class T>
class Round {
public:
    explicit Round(const std::vector<T>& items) : items_(items) {}
    const T& Next() {
        if (at_ == items_.size()) at_ = 0;
        return items_[at_++];
    }

private:
    const std::vector<T>& items_;
    std::size_t at_ = 0;
};

} // namespace Bench

#endif
