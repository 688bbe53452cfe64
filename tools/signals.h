// What happens when a signal ends the process: temporary files are removed, and work on several threads ends first.
//
// The handlers are installed by the first call that needs them. A signal that the process was started to ignore stays
// ignored.

#ifndef TESSARIN_TOOLS_SIGNALS_H
#define TESSARIN_TOOLS_SIGNALS_H

#include <atomic>
#include <string>

namespace Command {

/// Holds the path of a file that the signal handler removes. The side that exchanges the path for null owns it, so the
/// handler and the destructor of a file never both act on it.
using RemovalSlot = std::atomic<char*>;

/// Makes the signal handler remove a file when a signal ends the process.
/// returns  the slot that holds its path, for CancelRemoval; null if all slots are in use or memory runs out: then a
///          signal leaves the file behind
RemovalSlot* RemoveOnSignal(const std::string& path);
/// Frees a slot, so that its file stays. A null slot is ignored.
void CancelRemoval(RemovalSlot* slot);

/// While an object lives, the first signal that would end the process waits until the object ends; a second signal ends
/// the process at once. Threads that create files need this: they could create files after the handler has removed
/// them.
class SignalDelay {
public:
    SignalDelay();
    ~SignalDelay();
    SignalDelay(const SignalDelay&) = delete;
    SignalDelay& operator=(const SignalDelay&) = delete;

    /// Whether a signal is waiting, so that the work should stop.
    static bool IsSignalPending();
};

} // namespace Command

#endif
