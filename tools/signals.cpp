// The slots are a fixed array of atomics, as a signal handler may neither lock nor allocate. Paths are on the C heap; a
// path that the handler has taken is never freed, because the process is ending.

#include "tools/signals.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Command {

namespace {

RemovalSlot removal_slots[256];

std::atomic<bool> is_delayed{false};
std::atomic<int> pending_signal{0};

extern "C" void HandleSignal(int signal) {
    if (is_delayed.exchange(false)) { // a second signal ends the process at once
        pending_signal = signal;
        std::signal(signal, HandleSignal); // some systems reset it on delivery
        return;
    }
    for (RemovalSlot& slot : removal_slots) {
        if (char* const path = slot.exchange(nullptr)) std::remove(path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void SetHandlers() {
    constexpr int kSignals[] = {
        SIGINT,
        SIGTERM,
#ifdef SIGHUP
        SIGHUP,
        SIGPIPE,
#endif
    };
    for (const int signal : kSignals) {
        if (std::signal(signal, HandleSignal) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is a failed write, like a full disk
#endif
}

void InstallHandlersOnce() {
    static const bool is_installed = (SetHandlers(), true);
    static_cast<void>(is_installed);
}

} // namespace

RemovalSlot* RemoveOnSignal(const std::string& path) {
    InstallHandlersOnce();
    char* const copy = static_cast<char*>(std::malloc(path.size() + 1));
    if (!copy) return nullptr;
    std::memcpy(copy, path.c_str(), path.size() + 1);
    for (RemovalSlot& slot : removal_slots) {
        char* empty = nullptr;
        if (slot.compare_exchange_strong(empty, copy)) return &slot;
    }
    std::free(copy);
    return nullptr;
}

void CancelRemoval(RemovalSlot* slot) {
    if (slot) std::free(slot->exchange(nullptr));
}

SignalDelay::SignalDelay() {
    InstallHandlersOnce();
    is_delayed = true;
}

SignalDelay::~SignalDelay() {
    is_delayed = false;
    if (IsSignalPending()) std::raise(pending_signal);
}

bool SignalDelay::IsSignalPending() { return pending_signal != 0; }

} // namespace Command
