// Every block pool of the library, for tests that count blocks.

#ifndef TESSARIN_TESTS_SUPPORT_LIBRARY_POOLS_H
#define TESSARIN_TESTS_SUPPORT_LIBRARY_POOLS_H

#include "memory/sizes.h"
#include "tables/table_pools.h"

#include <functional>
#include <utility>
#include <vector>

namespace TestSupport {

struct AnyPool {
    const char* name;
    std::size_t per_chunk; // blocks
    std::function<void*()> take;
};

inline std::vector<AnyPool> AllPools(Tessarin::TablePools& state, Tessarin::ListenerPools& listeners) {
    using Classes = std::pair<std::uint32_t, std::size_t>[]; // capacities and blocks per chunk
    std::vector<AnyPool> pools = {{"tables", 64, [&] { return state.tables.Alloc(); }},
                                  {"pairs", 256, [&] { return state.pairs.Alloc(); }},
                                  {"matrices", 64, [&] { return state.matrices.Alloc(); }},
                                  {"listener sets", 64, [&] { return listeners.sets.Alloc(); }}};
    for (auto [capacity, per_chunk] : Classes{{4, 128}, {8, 32}, {16, 32}, {32, 8}, {64, 8}}) {
        pools.push_back({"entries", per_chunk, [&state, wanted = capacity] {
                             std::uint32_t ignored = 0;
                             return static_cast<void*>(state.keys.Acquire(wanted, ignored));
                         }});
    }
    for (std::size_t kind = 0; kind < 3; ++kind) {
        for (auto [capacity, per_chunk] : Classes{{4, 128}, {16, 32}, {32, 8}, {64, 8}}) {
            auto take = [&row = listeners.delegates[kind], bytes = capacity * sizeof(Delegate)] {
                return row.Acquire(bytes);
            };
            pools.push_back({"delegates", per_chunk, take});
        }
    }
    for (AnyPool& pool : pools) pool.per_chunk = Tessarin::OrSmall<std::size_t>(pool.per_chunk, 1);
    return pools;
}

} // namespace TestSupport

#endif
