// Command queues and their ring: its five words after each operation, and random operations against a model.

#include "containers/command_queue.h"
#include "tests/support/records.h"

#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <random>
#include <sstream>
#include <string>
#include <utility>

namespace {

using TestSupport::HoldsRecord;
using TestSupport::MakeRecord;
using TestSupport::Record;

/// capacity/count/head/tail/skip
std::string WordsOf(const cmd* queue) {
    const Tessarin::RecordRing& ring = queue->ring;
    std::ostringstream words;
    words << ring.capacity << '/' << ring.count << '/' << ring.head << '/' << ring.tail << '/' << ring.skip;
    return words.str();
}

void PushRecord(cmd* queue, const Record& record) {
    void* room = cmd_push(queue, static_cast<std::uint32_t>(record.size()));
    ASSERT_NE(room, nullptr);
    std::memcpy(room, record.data(), record.size());
}

/// A capacity, then operations, each with the ring's words after it: +N pushes N bytes, - pops, c clears, a0 and a1
/// adapt with that result.
const std::pair<std::uint32_t, const char*> kSequences[] = {
    // A full ring, wrapped, grows.
    {16, "+8 16/1/0/8/0 +8 16/2/0/16/0 - 16/1/8/16/0 +8 16/2/8/8/0 a1 16/2/8/8/0 +8 48/3/0/24/0"},
    {16, "a0 16/0/0/0/0 +8 16/1/0/8/0 c 16/0/0/0/0 a0 16/0/0/0/0 - 16/0/0/0/0 +6 16/1/0/6/0 - 16/0/0/0/0"},
    // The buffer's end is skipped, and used again once the head has passed it.
    {16, "+6 16/1/0/6/0 +6 16/2/0/12/0 - 16/1/6/12/0 +6 16/2/6/6/4 - 16/1/0/6/0 +6 16/2/0/12/0 - 16/1/6/12/0 "
         "- 16/0/0/0/0 +16 16/1/0/16/0 +4 40/2/0/20/0"},
    // Growth and adapting make a wrapped ring linear, without the skipped end.
    {16, "+6 16/1/0/6/0 +6 16/2/0/12/0 - 16/1/6/12/0 +5 16/2/6/5/4 +4 40/3/0/15/0"},
    {16, "+6 16/1/0/6/0 +6 16/2/0/12/0 - 16/1/6/12/0 +5 16/2/6/5/4 a1 11/2/0/11/0 a1 11/2/0/11/0 +4 30/3/0/15/0 "
         "- 30/2/6/15/0 a1 9/2/0/9/0"},
    // A wrapped ring accepts what fits below its head.
    {24, "+12 24/1/0/12/0 +12 24/2/0/24/0 - 24/1/12/24/0 +8 24/2/12/8/0 +4 24/3/12/12/0 - 24/2/0/12/0 +12 24/3/0/24/0"},
    // Doubled below a request of 64 KiB; above, one and a half times, in floats.
    {32768, "+8 32768/1/0/8/0 +32767 131070/2/0/32775/0"},
    {32768, "+8 32768/1/0/8/0 +32768 98304/2/0/32776/0"},
    {16777219, "+4 16777219/1/0/4/0 +16777218 50331656/2/0/16777222/0"},
};

TEST(CommandQueue, RingWordsAfterEachOperation) {
    for (const auto& [capacity, sequence] : kSequences) {
        SCOPED_TRACE(sequence);
        cmd* queue = cmd_create(capacity);
        std::deque<Record> model;
        std::istringstream steps(sequence);
        for (std::string step, words; steps >> step >> words;) {
            SCOPED_TRACE(step);
            if (step[0] == '+') {
                const auto size = static_cast<std::uint32_t>(std::stoul(step));
                model.push_back(MakeRecord(size, static_cast<std::uint32_t>(model.size())));
                PushRecord(queue, model.back());
            } else if (step == "-") {
                cmd_pop(queue);
                if (!model.empty()) model.pop_front();
            } else if (step == "c") {
                cmd_clear(queue);
                model.clear();
            } else {
                EXPECT_EQ(cmd_adapt(queue), step == "a1" ? 1U : 0U);
            }
            EXPECT_EQ(WordsOf(queue), words);
            EXPECT_EQ(cmd_empty(queue), model.empty() ? 1U : 0U);
        }
        for (; !model.empty(); model.pop_front(), cmd_pop(queue))
            EXPECT_TRUE(HoldsRecord(cmd_front(queue), model.front()));
        EXPECT_EQ(cmd_front(queue), nullptr);
        cmd_destroy(queue);
    }
}

/// Small sizes and a small ring, so that it wraps and fills often; every byte that is read back is compared.
TEST(CommandQueue, AgreesWithADeque) {
    std::mt19937 engine(5);
    const auto random = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(engine() % limit); };
    cmd* queue = cmd_create(64);
    std::deque<Record> model;
    std::size_t wrapped = 0, grown = 0, shrunk = 0;
    for (std::uint32_t step = 0; step < 100000; ++step) {
        const std::uint32_t choice = random(1000), before = cmd_capacity(queue);
        if (choice < 490 && model.size() < 200) {
            model.push_back(MakeRecord(4 + random(40), step));
            if (choice % 2 == 0)
                PushRecord(queue, model.back());
            else
                cmd_push_element(queue, model.back().data());
        } else if (choice < 500 &&
                   !model.empty()) { // a record of the queue itself, which growth would move, or which was just popped
            model.push_back(model.front());
            const void* own = cmd_front(queue);
            if (choice % 2 == 0) {
                cmd_pop(queue);
                model.pop_front();
            }
            cmd_push_element(queue, own);
        } else if (choice == 999) {
            cmd_clear(queue);
            model.clear();
        } else if (choice > 980) {
            ASSERT_EQ(cmd_adapt(queue), model.empty() ? 0U : 1U);
        } else if (!model.empty()) {
            ASSERT_TRUE(HoldsRecord(cmd_front(queue), model.front())) << "step " << step;
            cmd_pop(queue);
            model.pop_front();
        }
        ASSERT_EQ(cmd_count(queue), model.size());
        if (queue->ring.count != 0 && queue->ring.tail <= queue->ring.head) ++wrapped;
        if (cmd_capacity(queue) > before) ++grown;
        if (cmd_capacity(queue) < before) ++shrunk;
    }
    EXPECT_GT(wrapped, 1000U);
    EXPECT_GT(grown, 300U);
    EXPECT_GT(shrunk, 300U);
    cmd_destroy(queue);
}

TEST(CommandQueue, RefusesBadHandlesAndSizes) {
    EXPECT_EQ(cmd_create(0), nullptr);
    std::array<std::uint32_t, 12> foreign = {24, 16, 1, 0, 8, 0};
    const auto before = foreign;
    const Record record = MakeRecord(8), none(8);
    for (cmd* bad : {static_cast<cmd*>(nullptr), reinterpret_cast<cmd*>(foreign.data())}) {
        EXPECT_EQ(cmd_count(bad) + cmd_capacity(bad) + cmd_empty(bad) + cmd_adapt(bad), 0U);
        EXPECT_EQ(cmd_push(bad, 8), nullptr);
        EXPECT_EQ(cmd_front(bad), nullptr);
        cmd_push_element(bad, record.data());
        cmd_pop(bad);
        cmd_clear(bad);
        cmd_destroy(bad);
    }
    EXPECT_EQ(foreign, before);
    cmd* queue = cmd_create(16);
    EXPECT_EQ(cmd_push(queue, 0), nullptr);
    cmd_push_element(queue, nullptr);
    cmd_push_element(queue, none.data());
    EXPECT_EQ(WordsOf(queue), "16/0/0/0/0");
    PushRecord(queue, record);
    EXPECT_EQ(cmd_push(queue, UINT32_MAX), nullptr); // 15 in 32 bits, which would fit
    EXPECT_EQ(cmd_push(queue, UINT32_MAX - 15), nullptr);
    EXPECT_EQ(WordsOf(queue), "16/1/0/8/0");
    cmd_destroy(queue);
}

/// Linear and wrapped; the sanitizers see a read outside the buffer.
TEST(CommandQueue, SurvivesADamagedSize) {
    for (const bool wrapped : {false, true}) {
        for (const std::uint32_t damaged : {0U, 5U, 9U, 14U, 16U, 17U, 22U, 4000U, UINT32_MAX}) {
            cmd* queue = cmd_create(24);
            for (int i = 0; i < 3; ++i) PushRecord(queue, MakeRecord(8));
            if (wrapped) {
                cmd_pop(queue);
                PushRecord(queue, MakeRecord(8));
            }
            std::memcpy(cmd_front(queue), &damaged, sizeof damaged);
            for (std::uint32_t left = 3; left != 0; --left) {
                cmd_pop(queue);
                EXPECT_LT(cmd_count(queue), left);
                EXPECT_LT(queue->ring.head, 24U);
            }
            PushRecord(queue, MakeRecord(24));
            EXPECT_EQ(WordsOf(queue), "24/1/0/24/0");
            cmd_destroy(queue);
        }
    }
}

} // namespace
