// The record that the cmd_ functions work on: a first-in, first-out queue of commands.

#ifndef TESSARIN_CONTAINERS_COMMAND_QUEUE_H
#define TESSARIN_CONTAINERS_COMMAND_QUEUE_H

#include "containers/handle.h"
#include "containers/record_ring.h"
#include "tessarin/containers.h"

#include <cstdint>

/// A ring that has a buffer from the start and accepts records of any size but 0. The order of the fields is fixed.
/// Threads: one at a time per queue.
struct cmd {
    static constexpr std::uint32_t kSignature = Tessarin::kCommandQueueSignature;

    std::uint32_t signature;
    Tessarin::RecordRing ring;
    unsigned char* buffer; // the ring's bytes, owned by the queue; never null

    /// Null for a capacity of 0, or if memory runs out.
    [[nodiscard]] static cmd* Create(std::uint32_t capacity);
    static void Destroy(cmd* queue);
};

#endif
