/// Events of any size from producers on any thread to one consumer, through two lists that change places. C++ only.
///
/// An event is a run of bytes whose first word, a u32, is its size in bytes, that word included: at least 8. Nothing
/// else of it is read. Events come out in the order in which they were posted; each is contiguous, and none is aligned:
/// sizes that are multiples of 8 keep every event at a multiple of 8.

#ifndef TESSARIN_EVENTS_H
#define TESSARIN_EVENTS_H

#include "tessarin/types.h"

#include <cstdint>

namespace Tessarin {

/// A first-in, first-out list of events in one ring of bytes, which is taken with the first event, grows as it must and
/// never shrinks. Event pointers are borrowed: they are valid until the list grows or ends; what a popped one points
/// at, until the next Push or Reserve.
/// Threads: one at a time; nothing is locked.
struct EventList {
    /// Events in the list.
    virtual std::uint32_t GetCount() = 0;

    /// Size of the buffer in bytes; 0 until the first event.
    virtual std::uint32_t GetCapacity() = 0;

    /// Whether there is no event in the list.
    virtual bool IsEmpty() = 0;

    /// Appends a copy of an event, of as many bytes as its first word says.
    /// The first buffer has 4096 bytes more than the first event. Where no contiguous room is left it is replaced: by
    /// twice the old capacity plus the event's size if that sum is below 65536 bytes, else by one and a half times it.
    /// returns  the stored copy; null for a null event, a size below 8, when memory runs out or the sum passes 4 GiB,
    ///          the list unchanged
    virtual void* Push(const void* event) = 0;

    /// Makes room for an event of `size` bytes and counts it in; the caller fills it. Growth and failure as in Push.
    /// REQUIRES: the first word equals `size` before Pop gets to the event
    virtual void* Reserve(std::uint32_t size) = 0;

    /// The oldest event, in place, or null if there is none.
    virtual void* Front() = 0;

    /// Removes the oldest event, if there is one. An event whose first word leads out of the bytes in use empties the
    /// list, since nothing behind it can be found; any other wrong size shifts the events behind it.
    virtual void Pop() = 0;

    /// Empties the list; the buffer stays.
    virtual void Clear() = 0;

protected:
    virtual ~EventList() = default;
};

/// The two lists: producers write to one while the consumer reads the other.
///
///     Tessarin::EventList* events = exchange->Exchange();
///     for (; void* event = events->Front(); events->Pop()) Handle(event);
///
/// The consumer empties the list it was given before it asks for the next: what it leaves comes again later.
struct IExchangeEvent {
    /// Ends the object with both lists. Always 1.
    /// REQUIRES: no other call is under way
    virtual std::uint32_t Release() = 0;

    /// Appends a copy of an event to the list that is being written, as EventList::Push does. Always 1, also for an
    /// event that is refused or for which memory runs out: that one is lost.
    /// Threads: any number at once. They take turns by a lock, held for the copy and for a growth, that spins and, if
    /// that takes long, naps.
    virtual std::uint32_t Post(const void* event) = 0;

    /// Lets the two lists change places.
    /// returns  the list that was being written, with all events posted to it, and before them those that were left in
    ///          it when it was read last. Borrowed: it is the caller's until the next Exchange, from when on it is
    ///          written again.
    /// Threads: one consumer, beside any number of producers.
    virtual EventList* Exchange() = 0;

protected:
    virtual ~IExchangeEvent() = default;
};

} // namespace Tessarin

extern "C" {

/// Makes an exchange with two empty lists.
/// returns  the caller's object, ended with Release; null when memory runs out
TESSARIN_API Tessarin::IExchangeEvent* CreateExchangeEvent();

} // extern "C"

#endif
