// A hash of texts that is keyed with a secret: SipHash-1-3, written anew from its definition.
//
// Why nobody can choose texts that collide: SipHash is made to be a pseudorandom function. Without its key of 128 bits,
// its results can't be distinguished from random numbers by any means that is known, so a guess is as good as any
// choice: of n texts about n * n / 2^65 pairs collide, whoever wrote them. That needs the key to stay secret; hence no
// result of the hash, and no order that follows from it, may be seen from outside. One round a word and three at the
// end are less than the cautious 2 and 4 of a message code; for a hash table, which shows no result, no attack on them
// is known.

#ifndef TESSARIN_STRINGS_KEYED_HASH_H
#define TESSARIN_STRINGS_KEYED_HASH_H

#include "platform/process_secret.h"
#include "strings/string_hash.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Tessarin {

/// SipHash with `kWordRounds` after each word of eight bytes and `kLastRounds` at the end.
template <unsigned kWordRounds, unsigned kLastRounds>
class SipHash {
public:
    explicit SipHash(TextKey key)
        : v0_(key.first ^ 0x736F6D6570736575U), v1_(key.second ^ 0x646F72616E646F6DU),
          v2_(key.first ^ 0x6C7967656E657261U), v3_(key.second ^ 0x7465646279746573U) {}

    void Take(std::uint64_t word) {
        v3_ ^= word;
        for (unsigned i = 0; i < kWordRounds; ++i) Round();
        v0_ ^= word;
    }

    std::uint64_t Finish() {
        v2_ ^= 0xFF;
        for (unsigned i = 0; i < kLastRounds; ++i) Round();
        return v0_ ^ v1_ ^ v2_ ^ v3_;
    }

private:
    void Round() {
        v0_ += v1_;
        v2_ += v3_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v1_;
        v0_ += v3_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ = std::rotl(v2_, 32);
    }

    std::uint64_t v0_, v1_, v2_, v3_;
};

/// The keyed hash of a text in `form`. Reads exactly `length` bytes.
template <TextForm form, class Hash = SipHash<1, 3>>
std::uint64_t KeyedHashOfText(TextKey key, const char* text, std::size_t length) {
    Hash hash(key);
    const std::size_t rest = length % 8;
    for (const char* const end = text + (length - rest); text != end; text += 8) {
        hash.Take(Fold<form>(LoadBytes<std::uint64_t>(text)));
    }
    const std::uint64_t last = rest == 0 ? 0 : Fold<form>(TopBytes(text, rest)) >> (64 - 8 * rest);
    hash.Take(last | std::uint64_t{length} << 56);
    return hash.Finish();
}

} // namespace Tessarin

#endif
