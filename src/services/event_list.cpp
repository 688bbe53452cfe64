// Event lists: a ring of records. An event must have at least 8 bytes, which is more than the ring requires. The buffer
// is allocated with the first event.
// An event that the ring can't grow for is refused by NextCapacity in containers/record_ring.cpp; Post in
// exchange_event.cpp doesn't report it.

#include "services/event_list.h"

#include <cstdlib>

namespace Tessarin {

CEventList::~CEventList() { std::free(buffer_); }

void* CEventList::Push(const void* event) {
    if (event == nullptr) return nullptr;
    const std::uint32_t size = RecordRing::FirstWord(event);
    return size < kLeastSize ? nullptr : ring_.Push(buffer_, event, size);
}

void* CEventList::Reserve(std::uint32_t size) { return size < kLeastSize ? nullptr : ring_.Reserve(buffer_, size); }

} // namespace Tessarin
