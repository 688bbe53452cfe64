// The order of so many entries that a tree keeps it. The model of fuzz/tables has the rest, with few keys.

#include "tables/entry_store.h"
#include "tables/table_factory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <random>

namespace {

using namespace Tessarin;

/// Enough keys for a tree of three levels, which are but addresses here. Every step looks at the links that it changes.
TEST(ManyEntries, AreInOrderWhateverTheOrderOfChanges) {
    static const char addresses[20000] = {};
    constexpr std::size_t kKeys = sizeof addresses;
    std::mt19937 random(1);
    std::size_t at = 0;
    const std::function<std::size_t()> orders[] = {
        [&] { return at++ % kKeys; }, [&] { return kKeys - 1 - at++ % kKeys; }, [&] { return random() % kKeys; },
        [&] { return at++ * 7919 % kKeys; }};
    EntryStore store;
    std::map<cstr, Pair*, std::less<>> model;
    const auto expect_links = [&](std::map<cstr, Pair*, std::less<>>::iterator after) {
        Pair* const before = after == model.begin() ? nullptr : std::prev(after)->second;
        Pair* const linked = before == nullptr ? store.First() : before->next;
        return linked == (after == model.end() ? nullptr : after->second);
    };
    for (const auto& adding : orders) {
        for (const auto& removing : orders) {
            while (model.size() < kKeys * 3 / 4) {
                bool existed = false;
                Pair* const pair = store.FindOrAdd(addresses + adding(), existed);
                const auto place = model.insert({pair->key, pair}).first;
                ASSERT_TRUE(model.size() < 10 || (expect_links(place) && expect_links(std::next(place))));
            }
            ASSERT_TRUE(store.IsValid());
            const std::size_t kept = random() % 2 == 0 ? 20 : 700; // back in the array, or still in the tree
            while (model.size() > kept) {
                Pair* const pair = store.Take(addresses + removing());
                if (pair == nullptr) continue;
                ASSERT_TRUE(expect_links(model.erase(model.find(pair->key))));
                pair->next = nullptr;
                DestroyEntries(pair);
            }
            ASSERT_TRUE(store.IsValid());
        }
    }
    DestroyEntries(store.Dissolve(nullptr));
}

} // namespace
