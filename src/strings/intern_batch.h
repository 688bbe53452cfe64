// Interning in groups. A loader adds each text that it finds to a batch; the table then interns up to kMaxBatch texts
// together, so that their cache misses overlap.

#ifndef TESSARIN_STRINGS_INTERN_BATCH_H
#define TESSARIN_STRINGS_INTERN_BATCH_H

#include "strings/string_table.h"

#include <cstdint>

namespace Tessarin {

/// The texts, and the variables that receive their cstrs, must exist until the texts are interned.
class InternBatch {
public:
    explicit InternBatch(StringTable& strings) : strings_(strings) {}

    /// False if the batch was full and one of its texts couldn't be interned.
    [[nodiscard]] bool Add(const PendingText& text) {
        if (count_ == StringTable::kMaxBatch && !InternAll()) return false;
        texts_[count_++] = text;
        return true;
    }

    /// Interns the texts that are waiting. False if one of them can't be interned.
    [[nodiscard]] bool InternAll() {
        const std::uint32_t count = count_;
        count_ = 0;
        return strings_.Intern(texts_, count);
    }

private:
    StringTable& strings_;
    std::uint32_t count_ = 0;
    PendingText texts_[StringTable::kMaxBatch];
};

} // namespace Tessarin

#endif
