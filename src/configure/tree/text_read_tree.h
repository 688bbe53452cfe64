/// The family of a text form that is only read.

#ifndef TESSARIN_CONFIGURE_TEXT_READERS_H
#define TESSARIN_CONFIGURE_TEXT_READERS_H

#include "configure/unit_runs.h"

namespace Configure {

/// Invariant: the Units stand in ascending order of their keys' addresses, which never change; equal keys are
/// neighbours, in the order of the file.
struct TxtTableReader final : TableReader<TxtTableReader> {
    static constexpr bool kKeepsLastColon = true;

    /// A key that isn't there is interned: whatever was asked for is a string from then on, as in an edited file.
    [[nodiscard]] Unit* Search(const char* key) const;

    /// Puts the Units in order.
    void Sort();
};

using TxtArrayReader = ArrayReader;
using TextTree = ReadTree<TxtTableReader>;

} // namespace Configure

#endif
