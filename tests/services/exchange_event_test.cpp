// Exchange events and their lists: sizes, the two lists in turn, producers on several threads. The fuzzer compares
// their content with a model.

#include "services/event_list.h"
#include "tessarin/events.h"
#include "tests/support/failing_heap.h"
#include "tests/support/records.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace {

using Tessarin::CEventList;
using Tessarin::IExchangeEvent;
using TestSupport::FailingHeap;
using TestSupport::MakeRecord;

TEST(EventList, GrowsByItsRule) {
    struct {
        std::uint32_t first, second, capacity;
    } const cases[] = {{8, 8, 4104}, {16, 5000, 18224}, {55904, 5535, 131070}, {55904, 5536, 98304}};
    for (const auto& [first, second, capacity] : cases) {
        CEventList list;
        for (const std::uint32_t size : {first, second}) EXPECT_NE(list.Push(MakeRecord(size).data()), nullptr);
        EXPECT_EQ(list.GetCapacity(), capacity);
    }
}

TEST(EventList, RefusesWhatIsNoEvent) {
    CEventList list;
    EXPECT_EQ(list.Push(nullptr), nullptr);
    EXPECT_EQ(list.Push(MakeRecord(7).data()), nullptr);
    EXPECT_EQ(list.Reserve(7), nullptr);
    EXPECT_EQ(list.Reserve(UINT32_MAX), nullptr); // with the first slack it would be small in 32 bits
    EXPECT_EQ(list.GetCapacity(), 0U);
}

TEST(ExchangeEvent, HandsOutItsListsInTurn) {
    const FailingHeap heap;
    IExchangeEvent* exchange = CreateExchangeEvent();
    Tessarin::EventList* first = exchange->Exchange();
    exchange->Post(MakeRecord(8).data());
    Tessarin::EventList* second = exchange->Exchange();
    EXPECT_NE(first, second);
    EXPECT_EQ(exchange->Exchange(), first);
    EXPECT_EQ(second->GetCount(), 1U);
    exchange->Release();
    EXPECT_EQ(heap.Outstanding(), 0);
}

/// Three producers post events of many sizes while one consumer exchanges and reads: all of them arrive, whole and in
/// their producer's order.
TEST(ExchangeEvent, ThreadsLoseNoEvent) {
    constexpr std::uint32_t kProducers = 3, kEvents = 30000;
    IExchangeEvent* exchange = CreateExchangeEvent();
    std::atomic<std::uint32_t> posting = kProducers;
    std::vector<std::jthread> threads;
    for (std::uint32_t producer = 0; producer < kProducers; ++producer) {
        threads.emplace_back([&posting, exchange, producer] {
            for (std::uint32_t n = 0; n < kEvents; ++n) {
                std::uint32_t words[16] = {(3 + n % 14) * 4, producer, n};
                for (std::uint32_t i = 3; i < words[0] / 4; ++i) words[i] = n ^ i;
                exchange->Post(words);
            }
            --posting;
        });
    }
    std::array<std::uint32_t, kProducers> next{};
    std::uint32_t wrong = 0;
    for (bool last = false; !last;) {
        last = posting == 0; // this exchange returns everything that was posted until now
        Tessarin::EventList* list = exchange->Exchange();
        for (; const auto* words = static_cast<const std::uint32_t*>(list->Front()); list->Pop()) {
            const std::uint32_t n = words[2];
            if (words[1] >= kProducers || n != next[words[1]]++ || words[0] != (3 + n % 14) * 4) ++wrong;
            for (std::uint32_t i = 3; i < words[0] / 4; ++i) wrong += words[i] == (n ^ i) ? 0 : 1;
            if (wrong != 0) break;
        }
        if (wrong != 0) break;
    }
    threads.clear();
    EXPECT_EQ(wrong, 0U);
    for (const std::uint32_t count : next) EXPECT_EQ(count, kEvents);
    exchange->Release();
}

} // namespace
