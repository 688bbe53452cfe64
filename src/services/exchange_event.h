// The implementation of Tessarin::IExchangeEvent: two lists, and the lock of the one that is being written.

#ifndef TESSARIN_SERVICES_EXCHANGE_EVENT_H
#define TESSARIN_SERVICES_EXCHANGE_EVENT_H

#include "platform/critical_section.h"
#include "services/event_list.h"
#include "tessarin/events.h"

#include <cstdint>

namespace Tessarin {

/// The order of the fields is fixed.
class ExchangeEvent final : public IExchangeEvent {
public:
    /// Null if memory runs out for the object or for a list.
    [[nodiscard]] static ExchangeEvent* Create();

    std::uint32_t Release() override;
    std::uint32_t Post(const void* event) override;
    EventList* Exchange() override;

private:
    ExchangeEvent();
    ~ExchangeEvent() override;
    ExchangeEvent(const ExchangeEvent&) = delete;
    ExchangeEvent& operator=(const ExchangeEvent&) = delete;

    CEventList* lists_[2]; // owned
    CriticalSection lock_;
    std::uint32_t write_index_ = 0; // the index of the list that gets new events
};

} // namespace Tessarin

#endif
