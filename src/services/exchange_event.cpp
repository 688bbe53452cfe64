// Exchange events: producers append to one list while the consumer reads the other; an exchange swaps their roles.
//
//     producers --lock--> lists_[write_index_]      lists_[1 - write_index_] --no lock--> consumer
//
// Invariants:
// 1. The list at write_index_ is used only under the lock. Only the consumer uses the other one, without the lock.
// 2. Only the consumer changes write_index_, under the lock. So the consumer can read it without the lock.
// 3. If a Post has stored an event before an Exchange takes the lock, this Exchange returns the list with that event.
//    The release and acquire of the lock make the event's bytes visible.
//
// The lock sleeps after it has spun without success. If it only spun, all producers would waste a whole time slice
// whenever the system suspends the holder, which happens if there are more threads than processors.

#include "services/exchange_event.h"

#include <mutex>
#include <new>

namespace Tessarin {

ExchangeEvent::ExchangeEvent() {
    for (CEventList*& list : lists_) list = new (std::nothrow) CEventList;
}

ExchangeEvent::~ExchangeEvent() {
    for (CEventList* list : lists_) delete list;
}

ExchangeEvent* ExchangeEvent::Create() {
    auto* exchange = new (std::nothrow) ExchangeEvent;
    if (exchange == nullptr || (exchange->lists_[0] != nullptr && exchange->lists_[1] != nullptr)) return exchange;
    delete exchange;
    return nullptr;
}

std::uint32_t ExchangeEvent::Release() {
    delete this;
    return 1;
}

/// A lost event isn't reported: producers don't wait for memory.
std::uint32_t ExchangeEvent::Post(const void* event) {
    const std::lock_guard guard(lock_);
    lists_[write_index_]->Push(event);
    return 1;
}

EventList* ExchangeEvent::Exchange() {
    const std::uint32_t written = write_index_;
    const std::lock_guard guard(lock_);
    write_index_ = 1 - written;
    return lists_[written];
}

} // namespace Tessarin

extern "C" {

Tessarin::IExchangeEvent* CreateExchangeEvent() { return Tessarin::ExchangeEvent::Create(); }
}
