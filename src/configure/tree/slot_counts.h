// How many slots of a long list are taken: for a list that leaves a gap where an item was removed. The slots are
// counted in blocks of 16, and the counts are kept as a Fenwick tree, so that each operation takes a step for each bit
// of the number of blocks:
//
//     blocks          0   1   2   3   4   5   6   7
//     sums_[1..8]     0  0+1  2  2+3  4  4+5  6  all      sums_[i] is for the last blocks before i, as many as the
//                                                         lowest bit of i says

#ifndef TESSARIN_CONFIGURE_TREE_SLOT_COUNTS_H
#define TESSARIN_CONFIGURE_TREE_SLOT_COUNTS_H

#include "memory/list.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace Configure {

class SlotCounts {
public:
    static constexpr std::uint32_t kBlockSlots = 16;

    /// Counts the first `taken` of `slots` slots as taken. False if memory runs out. REQUIRES: nothing is counted yet
    [[nodiscard]] bool Make(std::uint32_t slots, std::uint32_t taken) {
        const std::uint32_t blocks = (slots - 1) / kBlockSlots + 1;
        if (!sums_.Make(std::bit_ceil(blocks) + 1)) return false;
        for (std::uint32_t end = 1; end < sums_.Count(); ++end) {
            sums_[end] = TakenBefore(end, taken) - TakenBefore(end - LowestBit(end), taken);
        }
        slots_ = slots;
        total_ = taken;
        return true;
    }

    [[nodiscard]] std::uint32_t Slots() const { return slots_; }
    [[nodiscard]] std::uint32_t Total() const { return total_; }

    /// REQUIRES, here and below: the slot is one of those that are counted
    void Add(std::uint32_t slot) { Change(slot, 1); }
    void Subtract(std::uint32_t slot) { Change(slot, UINT32_MAX); }

    /// The number of taken slots up to the end of a slot's block.
    [[nodiscard]] std::uint32_t ThroughBlockOf(std::uint32_t slot) const {
        std::uint32_t taken = 0;
        for (std::uint32_t end = slot / kBlockSlots + 1; end != 0; end -= LowestBit(end)) taken += sums_[end];
        return taken;
    }

    /// The first slot of the block that has the taken slot with a number. `number` becomes its number in that block.
    /// REQUIRES: number < Total()
    [[nodiscard]] std::uint32_t BlockWith(std::uint32_t& number) const {
        std::uint32_t block = 0;
        // Without branches, as which half has the slot can't be predicted.
        for (std::uint32_t step = (sums_.Count() - 1) / 2; step != 0; step /= 2) {
            const std::uint32_t sum = sums_[block + step];
            const bool is_later = sum <= number;
            block += is_later ? step : 0;
            number -= is_later ? sum : 0;
        }
        return block * kBlockSlots;
    }

private:
    static std::uint32_t LowestBit(std::uint32_t number) { return number & (0 - number); }
    static std::uint32_t TakenBefore(std::uint32_t block, std::uint32_t taken) {
        return static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{block} * kBlockSlots, taken));
    }

    void Change(std::uint32_t slot, std::uint32_t difference) {
        total_ += difference;
        for (std::uint32_t end = slot / kBlockSlots + 1; end < sums_.Count(); end += LowestBit(end)) {
            sums_[end] += difference;
        }
    }

    Tessarin::List<std::uint32_t> sums_; // for a power of two of blocks; the first isn't used
    std::uint32_t slots_ = 0;
    std::uint32_t total_ = 0;
};

} // namespace Configure

#endif
