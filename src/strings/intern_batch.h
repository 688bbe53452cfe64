/// Texts that are interned in groups, as a loader comes by them.

#ifndef TESSARIN_STRINGS_INTERN_BATCH_H
#define TESSARIN_STRINGS_INTERN_BATCH_H

#include "strings/string_table.h"

#include <cstdint>

namespace Tessarin {

/// The texts and the places that their cstrs go to must stay until they are interned.
class InternBatch {
public:
    explicit InternBatch(StringTable& strings) : strings_(strings) {}

    /// False if texts had to be interned to make room and couldn't be.
    [[nodiscard]] bool Add(const PendingText& text) {
        if (count_ == StringTable::kMostPending && !InternAll()) return false;
        texts_[count_++] = text;
        return true;
    }

    /// Interns those that are waiting.
    [[nodiscard]] bool InternAll() {
        const std::uint32_t count = count_;
        count_ = 0;
        return strings_.Intern(texts_, count);
    }

private:
    StringTable& strings_;
    std::uint32_t count_ = 0;
    PendingText texts_[StringTable::kMostPending];
};

} // namespace Tessarin

#endif
