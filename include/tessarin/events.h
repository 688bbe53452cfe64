/// \file
/// Events of any size from producers on any thread to one consumer, through two lists that are exchanged. C++ only.
///
/// An event is a sequence of bytes whose first word, a uint32_t, is its size in bytes, that word included: at least 8.
/// The library reads only that word. The consumer gets events in the order in which they were posted. Each is
/// contiguous but not aligned: sizes that are multiples of 8 keep every event at a multiple of 8.

#ifndef TESSARIN_EVENTS_H
#define TESSARIN_EVENTS_H

#include "tessarin/types.h"

#include <cstdint>

namespace Tessarin {

/// A first-in, first-out list of events in one ring buffer of bytes, which is allocated with the first event, grows
/// when necessary and never shrinks. Event pointers are borrowed: they are valid until the list grows or ends; pointers
/// to a popped event are valid until the next Push or Reserve.
///
/// Threads: one at a time; nothing is locked.
struct EventList {
    /// Events in the list.
    virtual std::uint32_t GetCount() = 0;

    /// Size of the buffer in bytes; 0 until the first event.
    virtual std::uint32_t GetCapacity() = 0;

    /// Whether there is no event in the list.
    virtual bool IsEmpty() = 0;

    /// Appends a copy of an event, of as many bytes as its first word says.
    /// The first buffer has 4096 bytes more than the first event. If no contiguous room is left the buffer is replaced.
    /// The new one has twice the sum of the old capacity and the event's size if that sum is below 65536 bytes, else
    /// one and a half times the sum.
    /// returns  the stored copy, borrowed; null, the list unchanged, for a null event, a size below 8, when memory runs
    ///          out or if the sum exceeds 4 GiB
    virtual void* Push(const void* event) = 0;

    /// Reserves room for one event at the end and counts it; the caller fills it. Growth and failure as in Push.
    /// size     bytes, the size word included
    /// returns  the room, its bytes unset, borrowed; null as in Push
    /// REQUIRES: the first word equals `size` before Pop reaches the event
    virtual void* Reserve(std::uint32_t size) = 0;

    /// The oldest event, in place, borrowed, or null if there is none.
    virtual void* Front() = 0;

    /// Removes the oldest event, if there is one. If its first word points beyond the bytes in use, the list becomes
    /// empty, since no event after it can be found; any other wrong size shifts the events after it.
    virtual void Pop() = 0;

    /// Empties the list; the buffer stays.
    virtual void Clear() = 0;

protected:
    virtual ~EventList() = default;
};

/// Two lists of events: producers write to one while the consumer reads the other.
///
///     Tessarin::EventList* events = exchange->Exchange();
///     for (; void* event = events->Front(); events->Pop()) Handle(event);
///
/// The consumer should empty the list before it calls Exchange again: events that it leaves are returned again later.
struct IExchangeEvent {
    /// Ends the object with both lists. Always 1.
    /// REQUIRES: no other call is running
    virtual std::uint32_t Release() = 0;

    /// Appends a copy of an event to the list that is being written, as EventList::Push does. Always 1, even for an
    /// event that is rejected or for which memory runs out: such an event is lost.
    /// Threads: any number at once. A lock, held for the copy and for a growth, serialises them; it spins and, after a
    /// while, sleeps.
    virtual std::uint32_t Post(const void* event) = 0;

    /// Exchanges the two lists: the one that was being written becomes the consumer's.
    /// returns  that list, with all events posted to it, and before them those that were left in it when it was last
    ///          read. Borrowed: the caller may use it until the next Exchange; from then on it is written again.
    /// Threads: one consumer, at the same time as any number of producers
    virtual EventList* Exchange() = 0;

protected:
    virtual ~IExchangeEvent() = default;
};

} // namespace Tessarin

extern "C" {

/// Makes an exchange with two empty lists.
/// returns  an object that the caller owns and ends with Release; null when memory runs out
/// Threads: any, at once
TESSARIN_API Tessarin::IExchangeEvent* CreateExchangeEvent();

} // extern "C"

#endif
