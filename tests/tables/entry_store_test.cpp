// The entry store against a model that follows the rules of order and growth literally.

#include "strings/string_table.h"
#include "tables/entry_store.h"
#include "tables/table_factory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Tessarin;

/// Keys in the order of their addresses.
const std::vector<cstr>& Keys() {
    static const std::vector<cstr> keys = [] {
        std::vector<cstr> made;
        for (int n = 0; n < 900; ++n) made.push_back(string_table->Intern(("key" + std::to_string(n)).c_str()));
        std::sort(made.begin(), made.end(), std::less<>());
        return made;
    }();
    return keys;
}

struct Model {
    std::vector<cstr> keys;
    std::map<cstr, Pair*> pairs;
    std::uint32_t capacity = 0;

    void Add(cstr key) {
        if (keys.size() == capacity) {
            const std::uint32_t wanted = capacity <= 128 ? capacity * 2 : capacity + 128;
            capacity = std::max(wanted, 4U);
        }
        Place(key);
    }

    void Place(cstr key) {
        if (keys.size() <= 8) {
            keys.push_back(key);
            if (keys.size() == 9) std::sort(keys.begin(), keys.end(), std::less<>());
        } else {
            keys.insert(std::lower_bound(keys.begin(), keys.end(), key, std::less<>()), key);
        }
    }

    void Drop(cstr key) { keys.erase(std::find(keys.begin(), keys.end(), key)); }
    [[nodiscard]] bool Has(cstr key) const { return std::find(keys.begin(), keys.end(), key) != keys.end(); }
};

/// A store and its model: every step changes both and compares them.
class EntryStoreModel : public testing::Test {
protected:
    ~EntryStoreModel() override {
        DestroyEntries(store.TakeAll(nullptr));
        store.ReleaseArray();
    }

    void Add(cstr key) {
        bool existed = false;
        Pair* pair = store.FindOrAdd(key, existed);
        ASSERT_NE(pair, nullptr);
        ASSERT_EQ(existed, model.Has(key));
        if (!existed) {
            ASSERT_EQ(pair->kind, VALUE_EMPTY);
            ASSERT_EQ(pair->listeners, nullptr);
            model.Add(key);
            model.pairs[key] = pair;
        }
        Compare();
    }

    void Remove(cstr key) {
        Pair* pair = store.Take(key);
        ASSERT_EQ(pair != nullptr, model.Has(key));
        if (pair == nullptr) return;
        ASSERT_EQ(pair, model.pairs[key]);
        pair->next = nullptr;
        DestroyEntries(pair);
        model.Drop(key);
        model.pairs.erase(key);
        Compare();
    }

    void Rename(cstr old_key, cstr new_key) {
        const bool allowed = model.Has(old_key) && !model.Has(new_key);
        ASSERT_EQ(store.Rename(old_key, new_key), allowed);
        if (allowed) {
            model.Drop(old_key);
            model.Place(new_key);
            auto node = model.pairs.extract(old_key);
            node.key() = new_key;
            model.pairs.insert(std::move(node));
        }
        Compare();
    }

    void Clear() {
        DestroyEntries(store.TakeAll(nullptr));
        model.keys.clear();
        model.pairs.clear();
        Compare();
    }

    void Compare() {
        std::vector<cstr> walk;
        for (Pair* pair = store.First(); pair != nullptr; pair = pair->next) {
            ASSERT_EQ(pair, model.pairs[pair->key]); // an entry keeps its address
            walk.push_back(pair->key);
        }
        ASSERT_EQ(walk, model.keys);
        ASSERT_EQ(store.Count(), model.keys.size());
        ASSERT_EQ(store.Capacity(), model.capacity);
        ASSERT_TRUE(store.IsValid());
    }

    EntryStore store;
    Model model;
};

TEST_F(EntryStoreModel, SortsBetweenEightAndNineAndStaysSoOnTheWayBack) {
    const int order[] = {5, 1, 8, 2, 7, 3, 6, 0, 4};
    for (const int n : order) Add(Keys()[static_cast<std::size_t>(n)]);
    EXPECT_EQ(model.keys, std::vector<cstr>(Keys().begin(), Keys().begin() + 9));
    Remove(Keys()[0]);
    Remove(Keys()[3]);
    Add(Keys()[0]); // the eighth: at the end of the sorted ones
    EXPECT_EQ(model.keys.back(), Keys()[0]);
    Add(Keys()[3]); // the ninth sorts all of it again
    EXPECT_EQ(model.keys, std::vector<cstr>(Keys().begin(), Keys().begin() + 9));
    Rename(Keys()[8], Keys()[20]); // falls to 8 and crosses again
    Remove(Keys()[4]);
    Rename(Keys()[0], Keys()[30]); // of 8 entries the renamed one becomes the last
    EXPECT_EQ(model.keys.back(), Keys()[30]);
}

TEST_F(EntryStoreModel, GrowsByItsRule) {
    for (cstr key : Keys()) ASSERT_NO_FATAL_FAILURE(Add(key));
    Clear();
    for (std::size_t n = Keys().size(); n-- > 0;) ASSERT_NO_FATAL_FAILURE(Add(Keys()[n])); // each new one at the front
    EXPECT_EQ(store.Capacity(), 1024U);
    for (std::size_t n = 0; n < Keys().size(); n += 3) ASSERT_NO_FATAL_FAILURE(Remove(Keys()[n]));
}

TEST_F(EntryStoreModel, AgreesOverRandomSteps) {
    std::mt19937 random(20);
    for (std::size_t keys : {7U, 12U, 40U, 300U}) { // below the crossing, around it, in the classes, on the heap
        auto any = [&] { return Keys()[random() % keys]; };
        for (int step = 0; step < 1500 && !HasFatalFailure(); ++step) {
            auto choice = random() % 100;
            if (choice < (step % 400 < 200 ? 65U : 30U)) { // fills and empties by turns
                Add(any());
            } else if (choice < 80) {
                Remove(any());
            } else {
                Rename(any(), any());
            }
        }
        Clear();
    }
}

TEST_F(EntryStoreModel, ABulkLoadEndsInTheSameOrder) {
    std::mt19937 random(5);
    for (const std::size_t size : {0U, 1U, 8U, 9U, 10U, 70U, 600U}) {
        std::vector<cstr> keys(Keys().begin(), Keys().begin() + static_cast<std::ptrdiff_t>(size));
        std::shuffle(keys.begin(), keys.end(), random);
        for (cstr key : keys) {
            for (const bool again : {false, true}) {
                bool existed = !again;
                Pair* pair = store.FindOrAppend(key, existed);
                ASSERT_NE(pair, nullptr);
                ASSERT_EQ(existed, again);
                ASSERT_EQ(store.Find(key), pair);
                model.pairs[key] = pair;
            }
            model.Add(key);
        }
        store.FinishBulkLoad();
        Compare();
        if (size != 0) Rename(keys[0], Keys().back());
        Clear();
    }
}

TEST_F(EntryStoreModel, NullIsNoKeyAndAnEmptyTextIsOne) {
    bool existed = true;
    EXPECT_EQ(store.FindOrAdd(nullptr, existed), nullptr);
    EXPECT_EQ(store.Find(nullptr), nullptr);
    EXPECT_EQ(store.Capacity(), 0U) << "no array is acquired for it";
    Add(string_table->Intern(""));
    EXPECT_EQ(store.Capacity(), 4U);
    EXPECT_FALSE(store.Rename(string_table->Intern(""), nullptr));
    EXPECT_FALSE(store.Rename(nullptr, Keys()[0]));
    EXPECT_EQ(store.Take(nullptr), nullptr);
    Compare();
}

} // namespace
