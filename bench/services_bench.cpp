// The command queue, and events from several threads to one, compared with what a host would write instead.

#include <tessarin/containers.h>
#include <tessarin/events.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <concurrentqueue/concurrentqueue.h>

namespace {

/// A record as a host would declare it: first the size word, then its own 60 bytes.
struct Message {
    std::uint32_t size;
    std::uint32_t words[15];
};

/// 16 to 64 bytes.
std::uint32_t SizeOf(std::uint32_t n) { return 16 + n % 7 * 8; }

Message MakeMessage(std::uint32_t n, std::uint32_t size) {
    Message message{size, {}};
    message.words[0] = n;
    return message;
}

// ----------------------------------------------------------------------------------- one thread, a queue in motion
// The argument is the number of waiting records; each round pushes one, reads the oldest, and pops it.

struct CommandQueue {
    CommandQueue() : queue(cmd_create(4096)) {}
    ~CommandQueue() { cmd_destroy(queue); }
    CommandQueue(const CommandQueue&) = delete;
    CommandQueue& operator=(const CommandQueue&) = delete;
    void Push(const Message& message) { std::memcpy(cmd_push(queue, message.size), &message, message.size); }
    std::uint32_t Take() {
        std::uint32_t word = static_cast<const Message*>(cmd_front(queue))->words[0];
        cmd_pop(queue);
        return word;
    }
    cmd* queue;
};

struct CopyingCommandQueue : CommandQueue {
    void Push(const Message& message) { cmd_push_element(queue, &message); }
};

/// Every record takes 64 bytes, whatever its size.
struct DequeOfStructs {
    void Push(const Message& message) { queue.push_back(message); }
    std::uint32_t Take() {
        std::uint32_t word = queue.front().words[0];
        queue.pop_front();
        return word;
    }
    std::deque<Message> queue;
};

struct DequeOfVectors {
    void Push(const Message& message) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&message);
        queue.emplace_back(bytes, bytes + message.size);
    }
    std::uint32_t Take() {
        std::uint32_t word;
        std::memcpy(&word, queue.front().data() + 4, sizeof word);
        queue.pop_front();
        return word;
    }
    std::deque<std::vector<unsigned char>> queue;
};

/// The compiler inlines the peers; ours is a function of a library. Behind calls they are equal in that.
template <class Queue>
struct Called : Queue {
    [[gnu::noinline]] void Push(const Message& message) { Queue::Push(message); }
    [[gnu::noinline]] std::uint32_t Take() { return Queue::Take(); }
};

template <class Queue, bool OneSize>
void PushPop(benchmark::State& state) {
    Queue queue;
    std::array<Message, 64> messages;
    for (std::uint32_t n = 0; n < messages.size(); ++n) messages[n] = MakeMessage(n, OneSize ? 64 : SizeOf(n));
    for (std::int64_t n = 0; n < state.range(0); ++n) queue.Push(messages[static_cast<std::size_t>(n) % 64]);
    std::size_t next = 0;
    for (auto _ : state) {
        queue.Push(messages[next++ % 64]);
        benchmark::DoNotOptimize(queue.Take());
    }
}

// ------------------------------------------------------------------------------------------ producers, one consumer
// Each producer posts a fixed number of records of 16 to 64 bytes as fast as it can; the consumer wakes once a
// millisecond and takes all that have arrived. The time is from the start of the producers to the arrival of the last
// record.

constexpr std::uint32_t kPerProducer = 200000;

struct Exchanged {
    Exchanged() : exchange(CreateExchangeEvent()) {}
    ~Exchanged() { exchange->Release(); }
    Exchanged(const Exchanged&) = delete;
    Exchanged& operator=(const Exchanged&) = delete;
    struct Producer {
        explicit Producer(Exchanged& channel) : exchange(channel.exchange) {}
        void Post(const Message& message) { exchange->Post(&message); }
        Tessarin::IExchangeEvent* exchange;
    };
    template <class Visit>
    void Drain(Visit visit) {
        Tessarin::EventList* list = exchange->Exchange();
        for (; const void* event = list->Front(); list->Pop()) visit(static_cast<const Message*>(event)->words[0]);
    }
    Tessarin::IExchangeEvent* exchange;
};

/// Bytes back to back in two vectors that are swapped, as one would write by hand for records of any size.
struct SwappedVectors {
    struct Producer {
        explicit Producer(SwappedVectors& where) : channel(where) {}
        void Post(const Message& message) {
            const auto* bytes = reinterpret_cast<const unsigned char*>(&message);
            const std::lock_guard guard(channel.lock);
            channel.written.insert(channel.written.end(), bytes, bytes + message.size);
        }
        SwappedVectors& channel;
    };
    template <class Visit>
    void Drain(Visit visit) {
        read.clear();
        {
            const std::lock_guard guard(lock);
            read.swap(written);
        }
        for (std::size_t at = 0; at < read.size();) {
            Message head;
            std::memcpy(&head, read.data() + at, 8);
            visit(head.words[0]);
            at += head.size;
        }
    }
    std::mutex lock;
    std::vector<unsigned char> written, read;
};

/// Elements of one size: 64 bytes each.
struct ConcurrentQueue {
    struct Producer {
        explicit Producer(ConcurrentQueue& channel) : queue(channel.queue), token(channel.queue) {}
        void Post(const Message& message) { queue.enqueue(token, message); }
        moodycamel::ConcurrentQueue<Message>& queue;
        moodycamel::ProducerToken token;
    };
    template <class Visit>
    void Drain(Visit visit) {
        for (std::size_t taken; (taken = queue.try_dequeue_bulk(token, read.data(), read.size())) != 0;) {
            for (std::size_t i = 0; i < taken; ++i) visit(read[i].words[0]);
        }
    }
    moodycamel::ConcurrentQueue<Message> queue;
    moodycamel::ConsumerToken token{queue};
    std::vector<Message> read{1024};
};

template <class Channel>
void Deliver(benchmark::State& state) {
    auto producers = static_cast<std::uint32_t>(state.range(0));
    Channel channel;
    for (auto _ : state) {
        std::vector<std::thread> threads;
        for (std::uint32_t n = 0; n < producers; ++n) {
            threads.emplace_back([&channel] {
                typename Channel::Producer producer(channel);
                for (std::uint32_t i = 0; i < kPerProducer; ++i) producer.Post(MakeMessage(i, SizeOf(i)));
            });
        }
        std::uint32_t arrived = 0;
        std::uint64_t sum = 0;
        while (arrived < producers * kPerProducer) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            channel.Drain([&](std::uint32_t word) {
                sum += word;
                ++arrived;
            });
        }
        for (std::thread& thread : threads) thread.join();
        if (sum != producers * (std::uint64_t{kPerProducer} * (kPerProducer - 1) / 2)) state.SkipWithError("lost");
    }
    state.SetItemsProcessed(state.iterations() * producers * kPerProducer);
}

BENCHMARK(PushPop<CommandQueue, true>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(PushPop<CopyingCommandQueue, true>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(PushPop<Called<DequeOfStructs>, true>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(PushPop<DequeOfStructs, true>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(PushPop<CommandQueue, false>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(PushPop<CopyingCommandQueue, false>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(PushPop<DequeOfVectors, false>)->Arg(0)->Arg(100)->Arg(10000);
BENCHMARK(Deliver<Exchanged>)->Arg(1)->Arg(2)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Deliver<SwappedVectors>)->Arg(1)->Arg(2)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Deliver<ConcurrentQueue>)->Arg(1)->Arg(2)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
