// The implementation of Tessarin::EventList: a virtual wrapper of a ring of records. Threads: one at a time per list.

#ifndef TESSARIN_SERVICES_EVENT_LIST_H
#define TESSARIN_SERVICES_EVENT_LIST_H

#include "containers/record_ring.h"
#include "tessarin/events.h"

#include <cstdint>

namespace Tessarin {

/// The order of the fields is fixed.
class CEventList final : public EventList {
public:
    static constexpr std::uint32_t kLeastSize = 8;

    CEventList() = default;
    ~CEventList() override;
    CEventList(const CEventList&) = delete;
    CEventList& operator=(const CEventList&) = delete;

    std::uint32_t GetCount() override { return ring_.count; }
    std::uint32_t GetCapacity() override { return ring_.capacity; }
    bool IsEmpty() override { return ring_.count == 0; }
    void* Push(const void* event) override;
    void* Reserve(std::uint32_t size) override;
    void* Front() override { return ring_.Front(buffer_); }
    void Pop() override { ring_.Pop(buffer_); }
    void Clear() override { ring_.Clear(); }

    [[nodiscard]] const RecordRing& Ring() const { return ring_; }

private:
    RecordRing ring_{};
    unsigned char* buffer_ = nullptr; // the ring's bytes, null until the first event
    // The two lists of an exchange may be neighbours on the heap, and different threads write them: their words must
    // not share a cache line.
    [[maybe_unused]] unsigned char apart_[64]{};
};

} // namespace Tessarin

#endif
