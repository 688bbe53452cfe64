// Command queues: growth of large rings, and refusals. The fuzzer compares the ring's words after random operations.

#include "containers/command_queue.h"
#include "tests/support/records.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using TestSupport::MakeRecord;
using TestSupport::Record;

TEST(CommandQueue, GrowsByItsRule) {
    struct {
        std::uint32_t capacity, size, grown;
    } const cases[] = {
        {16, 16, 64},
        {32768, 32767, 131070}, // the last request that doubles
        {32768, 32768, 98304},
        {16777219, 16777218, 50331656}, // no 32-bit float equals the request
    };
    for (const auto& [capacity, size, grown] : cases) {
        cmd* queue = cmd_create(capacity);
        const Record record = MakeRecord(8);
        cmd_push_element(queue, record.data());
        EXPECT_NE(cmd_push(queue, size), nullptr);
        EXPECT_EQ(cmd_capacity(queue), grown);
        EXPECT_TRUE(TestSupport::HoldsRecord(cmd_front(queue), record));
        cmd_destroy(queue);
    }
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
    cmd_push_element(queue, record.data());
    for (const std::uint32_t size : {0U, UINT32_MAX, UINT32_MAX - 15}) { // with the capacity, 15 and 0 in 32 bits
        EXPECT_EQ(cmd_push(queue, size), nullptr);
    }
    cmd_push_element(queue, nullptr);
    cmd_push_element(queue, none.data());
    EXPECT_EQ(cmd_count(queue), 1U);
    EXPECT_EQ(cmd_capacity(queue), 16U);
    cmd_destroy(queue);
}

} // namespace
