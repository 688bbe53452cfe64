// Events between two threads: one posts events, the other reads them whenever it likes.
//
// Before you copy from here:
//  - An event begins with its own size. Sizes that are multiples of 8 keep every event at a multiple of 8.
//  - Reading takes no lock: the list is the reader's until the next Exchange. The reader empties it before that.

#include <tessarin/tessarin.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <thread>

namespace {

struct Step {
    std::uint32_t size;
    std::uint32_t number;
};

struct Message {
    std::uint32_t size;
    char text[28];
};

constexpr std::uint32_t kSteps = 1000;

void Walk(Tessarin::IExchangeEvent& exchange, std::atomic<bool>& done) {
    for (std::uint32_t number = 1; number <= kSteps; ++number) {
        const Step step = {sizeof(Step), number};
        exchange.Post(&step);
    }
    const Message message = {sizeof(Message), "here I am"};
    exchange.Post(&message);
    done = true;
}

// Takes all events of a list. Returns how many steps have been read in order; one that is out of order isn't counted.
std::uint32_t TakeAll(Tessarin::EventList& events, std::uint32_t steps) {
    for (; void* event = events.Front(); events.Pop()) {
        Step step;
        std::memcpy(&step, event, sizeof step);
        if (step.size == sizeof(Step)) {
            steps += step.number == steps + 1 ? 1U : 0U;
            continue;
        }
        Message message;
        std::memcpy(&message, event, sizeof message);
        std::printf("after %u steps: %s\n", steps, message.text);
    }
    return steps;
}

} // namespace

int main() {
    Tessarin::IExchangeEvent* exchange = CreateExchangeEvent();
    if (exchange == nullptr) return 1;
    std::atomic<bool> done = false;
    std::thread walker(Walk, std::ref(*exchange), std::ref(done));

    std::uint32_t steps = 0;
    bool last = false;
    while (!last) {
        last = done; // read before the exchange: events posted by then are in this list or in the one before
        steps = TakeAll(*exchange->Exchange(), steps);
    }
    walker.join();
    steps = TakeAll(*exchange->Exchange(), steps);
    exchange->Release();
    return steps == kSteps ? 0 : 1;
}
