// Command queues: a handle around one RecordRing, which does all of the work. The exported functions check that the
// handle is live and that the size isn't 0, as the ring requires.

#include "containers/command_queue.h"

#include <cstddef>
#include <cstdlib>
#include <type_traits>

static_assert(std::is_standard_layout_v<cmd> && offsetof(cmd, buffer) == 24, "seven fields, without a gap");

/// Allocates the record, then its buffer; if there is no memory for the buffer, the record is freed again.
cmd* cmd::Create(std::uint32_t capacity) {
    if (capacity == 0) return nullptr;
    auto* queue = static_cast<cmd*>(std::malloc(sizeof(cmd)));
    if (queue == nullptr) return nullptr;
    *queue = cmd{kSignature, {capacity, 0, 0, 0, 0}, static_cast<unsigned char*>(std::malloc(capacity))};
    if (queue->buffer != nullptr) return queue;
    std::free(queue);
    return nullptr;
}

void cmd::Destroy(cmd* queue) {
    std::free(queue->buffer);
    std::free(queue);
}

// ---------------------------------------------------------------------------------------- the exported functions
// Each checks the handle, then calls the ring's function. Nothing in the library calls these.

using Tessarin::IsLive;

cmd* cmd_create(uint32_t capacity) { return cmd::Create(capacity); }

void cmd_destroy(cmd* queue) {
    if (IsLive(queue)) cmd::Destroy(queue);
}

uint32_t cmd_count(cmd* queue) { return IsLive(queue) ? queue->ring.count : 0; }

uint32_t cmd_capacity(cmd* queue) { return IsLive(queue) ? queue->ring.capacity : 0; }

uint32_t cmd_empty(cmd* queue) { return IsLive(queue) && queue->ring.count == 0 ? 1 : 0; }

void* cmd_push(cmd* queue, uint32_t size) {
    return IsLive(queue) && size != 0 ? queue->ring.Reserve(queue->buffer, size) : nullptr;
}

void cmd_push_element(cmd* queue, const void* command) {
    if (!IsLive(queue) || command == nullptr) return;
    const uint32_t size = Tessarin::RecordRing::FirstWord(command);
    if (size != 0) queue->ring.Push(queue->buffer, command, size);
}

void* cmd_front(cmd* queue) { return IsLive(queue) ? queue->ring.Front(queue->buffer) : nullptr; }

void cmd_pop(cmd* queue) {
    if (IsLive(queue)) queue->ring.Pop(queue->buffer);
}

void cmd_clear(cmd* queue) {
    if (IsLive(queue)) queue->ring.Clear();
}

uint32_t cmd_adapt(cmd* queue) { return IsLive(queue) && queue->ring.Adapt(queue->buffer) ? 1 : 0; }
