// Exchange events and their lists: sizes, the two lists in turn, memory that runs out, producers on several threads.

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
using Tessarin::EventList;
using Tessarin::IExchangeEvent;
using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;
using TestSupport::HoldsRecord;
using TestSupport::MakeRecord;
using TestSupport::Record;

/// Removes all events from the list and compares them.
void ExpectEvents(EventList* list, const std::vector<Record>& expected) {
    EXPECT_EQ(list->GetCount(), expected.size());
    for (const Record& record : expected) {
        EXPECT_TRUE(HoldsRecord(list->Front(), record));
        list->Pop();
    }
    EXPECT_TRUE(list->IsEmpty());
    EXPECT_EQ(list->Front(), nullptr);
}

TEST(EventList, GrowsFromItsFirstEvent) {
    struct Case {
        std::vector<std::uint32_t> sizes;
        std::uint32_t capacity;
    };
    for (const Case& c : {Case{{}, 0}, Case{{7}, 0}, Case{{8}, 4104}, Case{{16}, 4112}, Case{{16, 4096}, 4112},
                          Case{{16, 5000}, 18224}, Case{{55904, 5536}, 98304}, Case{{55904, 5535}, 131070}}) {
        CEventList list;
        std::vector<Record> stored;
        for (const std::uint32_t size : c.sizes) {
            Record record = MakeRecord(size, size);
            const void* place = list.Push(record.data());
            EXPECT_EQ(place != nullptr, size >= 8);
            if (place != nullptr) stored.push_back(record);
        }
        EXPECT_EQ(list.GetCapacity(), c.capacity);
        ExpectEvents(&list, stored);
        EXPECT_EQ(list.GetCapacity(), c.capacity);
    }
}

TEST(EventList, RefusesWhatIsNoEvent) {
    CEventList list;
    EXPECT_EQ(list.Push(nullptr), nullptr);
    EXPECT_EQ(list.Reserve(7), nullptr);
    EXPECT_EQ(list.Reserve(UINT32_MAX), nullptr); // with the first slack it would be small in 32 bits
    list.Pop();
    list.Clear();
    EXPECT_EQ(list.GetCapacity(), 0U);
    EXPECT_NE(list.Reserve(8), nullptr);
    EXPECT_EQ(list.GetCapacity(), 4104U);
}

/// The second event fills the buffer to its last byte; the third wraps, the fourth makes the ring grow.
TEST(EventList, KeepsTheOrderAcrossAWrapAndAGrowth) {
    CEventList list;
    const std::array events = {MakeRecord(16, 1), MakeRecord(4096, 2), MakeRecord(16, 3), MakeRecord(4000, 4)};
    const void* stored = list.Push(events[0].data());
    EXPECT_EQ(stored, list.Front());
    list.Push(events[1].data());
    EXPECT_EQ(list.Ring().tail, 4112U);
    void* start = list.Front();
    list.Pop();
    void* room = list.Reserve(16);
    EXPECT_EQ(room, start);
    std::memcpy(room, events[2].data(), 16);
    EXPECT_EQ(list.Ring().skip, 0U);
    EXPECT_EQ(list.Ring().tail, list.Ring().head);
    list.Push(events[3].data());
    EXPECT_EQ(list.GetCapacity(), 16224U);
    ExpectEvents(&list, {events[1], events[2], events[3]});
    list.Push(events[0].data());
    list.Clear();
    EXPECT_EQ(list.GetCapacity(), 16224U);
    ExpectEvents(&list, {});
}

TEST(ExchangeEvent, HandsOutItsListsInTurn) {
    IExchangeEvent* exchange = CreateExchangeEvent();
    EventList* first = exchange->Exchange();
    EXPECT_EQ(first->GetCapacity(), 0U);
    ExpectEvents(first, {});
    const std::array events = {MakeRecord(8, 1), MakeRecord(9, 2), MakeRecord(7, 3), MakeRecord(40, 4)};
    for (const Record& event : events) EXPECT_EQ(exchange->Post(event.data()), 1U);
    EXPECT_EQ(exchange->Post(nullptr), 1U);
    EventList* second = exchange->Exchange();
    EXPECT_NE(first, second);
    EXPECT_EQ(second->GetCount(), 3U);
    second->Pop(); // the rest is left for the next time
    EXPECT_EQ(exchange->Exchange(), first);
    exchange->Post(events[0].data());
    EXPECT_EQ(exchange->Exchange(), second);
    ExpectEvents(second, {events[1], events[3], events[0]});
    ExpectEvents(first, {});
    EXPECT_EQ(exchange->Release(), 1U);
}

TEST(ExchangeEvent, LosesOneEventWhenMemoryRunsOut) {
    const std::array events = {MakeRecord(24, 1), MakeRecord(5000, 2), MakeRecord(32, 3)};
    const std::size_t failures = FailEachAllocation([&](FailingHeap& heap) {
        IExchangeEvent* exchange = CreateExchangeEvent();
        EXPECT_TRUE(exchange != nullptr || heap.Failed());
        if (exchange == nullptr) return;
        for (const Record& event : events) EXPECT_EQ(exchange->Post(event.data()), 1U);
        EventList* list = exchange->Exchange();
        std::uint32_t lost = 0;
        for (const Record& event : events) {
            if (HoldsRecord(list->Front(), event))
                list->Pop();
            else
                ++lost;
        }
        EXPECT_TRUE(list->IsEmpty());
        EXPECT_EQ(lost, heap.Failed() ? 1U : 0U);
        EXPECT_EQ(exchange->Release(), 1U);
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_EQ(failures, 5U); // the object, two lists, the first buffer, its growth
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
        EventList* list = exchange->Exchange();
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
