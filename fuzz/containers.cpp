// A random program for one of the containers, compared with a plain model of it at each step. The first byte selects
// the container, the next ones its sizes; then each byte selects an operation, followed by the bytes that it needs.
// The operations are those of the interface; what they leave in a record's fields is compared, too.

#include "containers/command_queue.h"
#include "containers/hash_map.h"
#include "containers/incremental_pool.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "services/event_list.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace {

using namespace Fuzz;
using Tessarin::RecordRing;
using Bytes = std::vector<unsigned char>;

template <auto Destroy>
struct Ending {
    template <class Record>
    void operator()(Record* record) const {
        Destroy(record);
    }
};
template <class Record, auto Destroy>
using Owned = std::unique_ptr<Record, Ending<Destroy>>;

Bytes Pattern(std::size_t size, std::uint8_t seed) {
    Bytes bytes(size);
    for (unsigned char& byte : bytes) byte = seed = static_cast<std::uint8_t>(seed * 5 + 37);
    return bytes;
}

bool Holds(const void* place, const Bytes& bytes) {
    return place != nullptr && std::memcmp(place, bytes.data(), bytes.size()) == 0;
}

// ---------------------------------------------------------------------------------------------------- flat arrays

std::size_t compared_size = 0; // of the elements that are sorted now: qsort passes no context on

int CompareBytes(const void* one, const void* other) { return std::memcmp(one, other, compared_size); }
bool IsLess(const Bytes& one, const Bytes& other) { return CompareBytes(one.data(), other.data()) < 0; }

/// An array and its model, which also computes the capacity by the documented rules.
class FlatArray {
public:
    FlatArray(ByteSource& source, std::uint32_t element_size, std::uint32_t room)
        : source_(source), size_(element_size), capacity_(element_size * room),
          owned_(farr_create_capacity(element_size, room)) {}

    void Step() {
        farr* array = owned_.get();
        switch (source_.Below(15)) {
        case 0:
            return Push(nullptr, Pattern(size_, source_.Byte()));
        case 2:
            return model_.empty() ? void() : PushOwn(source_.Below(Count()));
        case 3:
            return Resize(source_.Byte(), source_.Byte() & 1U);
        case 4:
            return Erase(source_.Byte());
        case 5:
            return FastErase(source_.Byte());
        case 6:
            farr_popback(array);
            return model_.empty() ? void() : model_.pop_back();
        case 7:
            farr_clear(array);
            return model_.clear();
        case 8:
            farr_adapt(array);
            capacity_ = Count() * size_;
            return;
        case 9:
            size_ = 1 + source_.Below(64);
            farr_reset(array, size_);
            return model_.clear();
        case 10:
            threshold_ = source_.Byte() * 16U;
            farr_reset_threshold(array, threshold_);
            threshold_ = std::max(threshold_, size_);
            return;
        case 11:
            return Sort(source_.Byte(), source_.Byte());
        case 12:
            return owned_.reset(farr_copy(array));
        default:
            const Bytes bytes = Pattern(size_, source_.Byte());
            return Push(bytes.data(), bytes);
        }
    }

    void Check() const {
        farr* array = owned_.get();
        Require(array != nullptr, "no array");
        Require(farr_count(array) == Count() && (farr_empty(array) != 0) == model_.empty(), "another count");
        Require(farr_capacity(array) == capacity_ && farr_threshold(array) == threshold_, "another capacity");
        void* element = farr_begin(array);
        for (std::uint32_t i = 0; i < Count(); ++i, element = farr_next(array, element)) {
            Require(element == farr_at(array, i) && Holds(element, model_[i]), "an element is another");
        }
        Require(element == farr_end(array) && farr_at(array, Count()) == nullptr, "an element too many");
    }

private:
    [[nodiscard]] std::uint32_t Count() const { return static_cast<std::uint32_t>(model_.size()); }

    /// Without a source the element is filled afterwards.
    void Push(const void* from, const Bytes& bytes) {
        const std::uint32_t need = (Count() + 1) * size_;
        if (need > capacity_) {
            capacity_ = need > threshold_ ? need + threshold_ : need < 65535 ? need * 2 : need + need / 2;
        }
        void* element = from == nullptr ? farr_push(owned_.get()) : farr_push_element(owned_.get(), from);
        if (from == nullptr && element != nullptr) std::memcpy(element, bytes.data(), bytes.size());
        Require(Holds(element, bytes), "a copy is another");
        model_.push_back(bytes);
    }

    void PushOwn(std::uint32_t index) {
        const Bytes bytes = model_[index];
        Push(farr_at(owned_.get(), index), bytes);
    }

    /// Sometimes beyond the size from which a buffer grows by realloc.
    void Resize(std::uint32_t number, std::uint32_t zero_fill) {
        const std::uint32_t before = Count(), count = number < 240 ? number * 3 : number * 9;
        farr_resize(owned_.get(), count, zero_fill);
        if (count == 0) return;
        capacity_ = std::max(capacity_, count * size_);
        model_.resize(count, Bytes(size_));
        for (std::uint32_t i = before; zero_fill == 0 && i < count; ++i) {
            model_[i] = Pattern(size_, static_cast<std::uint8_t>(i));
            std::memcpy(farr_at(owned_.get(), i), model_[i].data(), size_);
        }
    }

    void Erase(std::uint32_t index) {
        farr_erase(owned_.get(), index);
        if (index < Count()) model_.erase(Place(index));
    }

    void FastErase(std::uint32_t index) {
        farr_fast_erase(owned_.get(), index);
        if (index >= Count()) return;
        std::swap(model_[index], model_.back());
        model_.pop_back();
    }

    void Sort(std::uint32_t first, std::uint32_t last) {
        compared_size = size_;
        if (first == last) {
            farr_sort(owned_.get(), CompareBytes);
            std::sort(model_.begin(), model_.end(), IsLess);
            return;
        }
        farr_sort_particular(owned_.get(), first, last, CompareBytes);
        if (first < last && last <= Count()) std::sort(Place(first), Place(last), IsLess);
    }

    std::vector<Bytes>::iterator Place(std::uint32_t index) {
        return model_.begin() + static_cast<std::ptrdiff_t>(index);
    }

    ByteSource& source_;
    std::uint32_t size_;
    std::uint32_t capacity_;
    std::uint32_t threshold_ = 8U << 20;
    Owned<farr, farr_destroy> owned_;
    std::vector<Bytes> model_;
};

void DriveFlatArray(ByteSource& source) {
    FlatArray array(source, 1 + source.Below(64), 1 + source.Byte());
    for (array.Check(); !source.AtEnd(); array.Check()) array.Step();
}

// ------------------------------------------------------------------------------- queues of records, and events

/// A record of the queues: its size in bytes, then a pattern.
Bytes Record(std::uint32_t size, std::uint8_t seed) {
    Bytes record = Pattern(size, seed);
    std::memcpy(record.data(), &size, sizeof size);
    return record;
}

/// A command queue with the interface of an event list.
class Commands final : public Tessarin::EventList {
public:
    explicit Commands(cmd* queue) : queue_(queue) {}

    std::uint32_t GetCount() override { return cmd_count(queue_); }
    std::uint32_t GetCapacity() override { return cmd_capacity(queue_); }
    bool IsEmpty() override { return cmd_empty(queue_) != 0; }
    void* Reserve(std::uint32_t size) override { return cmd_push(queue_, size); }
    void* Front() override { return cmd_front(queue_); }
    void Pop() override { cmd_pop(queue_); }
    void Clear() override { cmd_clear(queue_); }
    void* Push(const void* record) override {
        cmd_push_element(queue_, record);
        return nullptr;
    }

private:
    cmd* queue_;
};

/// A queue and its model: the records with their offsets in the ring, whose words follow from these.
class QueueDriver {
public:
    /// `adaptable` is null for an event list, which never shrinks.
    QueueDriver(ByteSource& source, Tessarin::EventList& queue, const RecordRing& ring, cmd* adaptable)
        : source_(source), queue_(queue), ring_(ring), adaptable_(adaptable), capacity_(ring.capacity) {}

    void Run() {
        for (Check(); !source_.AtEnd(); Check()) Step();
        for (; !model_.empty(); Check()) Pop();
    }

private:
    struct Placed {
        Bytes bytes;
        std::uint32_t at;

        [[nodiscard]] std::uint32_t End() const { return at + static_cast<std::uint32_t>(bytes.size()); }
    };

    void Step() {
        const std::uint32_t operation = source_.Below(64);
        if (operation >= 34) {
            const Bytes record = Record(Size(), source_.Byte());
            operation < 44 ? Reserve(record) : Push(record.data(), record);
        } else if (operation >= 5) {
            Pop();
        } else if (operation >= 3) {
            PushOwn();
        } else if (operation == 2) {
            Adapt();
        } else if (operation == 1) {
            Damage();
        } else {
            queue_.Clear();
            model_.clear();
        }
    }

    void Check() {
        const bool wrapped = IsWrapped();
        std::uint32_t last = 0; // the end of the records from the head on
        for (const Placed& record : model_) last = std::max(last, record.End());
        const RecordRing words = {capacity_, static_cast<std::uint32_t>(model_.size()), Head(), Tail(),
                                  wrapped ? capacity_ - last : 0};
        Require(std::memcmp(&words, &ring_, sizeof words) == 0, "another word of the ring");
        Require(queue_.GetCount() == words.count && queue_.IsEmpty() == model_.empty(), "another count");
        Require(model_.empty() ? queue_.Front() == nullptr : Holds(queue_.Front(), model_.front().bytes),
                "another front");
    }

    [[nodiscard]] std::uint32_t Head() const { return model_.empty() ? 0 : model_.front().at; }
    [[nodiscard]] std::uint32_t Tail() const { return model_.empty() ? 0 : model_.back().End(); }
    [[nodiscard]] bool IsWrapped() const { return !model_.empty() && Tail() <= Head(); }

    /// Mostly small, rarely more than a page.
    std::uint32_t Size() {
        const std::uint32_t size = source_.Byte();
        return (adaptable_ == nullptr ? 8 : 4) + (size < 250 ? size : size * 40);
    }

    /// Adds a record where it belongs: at the tail, else at the start, else at the end of the next larger buffer.
    void Add(const Bytes& bytes) {
        const auto size = static_cast<std::uint32_t>(bytes.size());
        std::uint32_t at = Tail();
        if ((IsWrapped() ? Head() : capacity_) - at < size) {
            if (!IsWrapped() && Head() >= size) {
                at = 0;
            } else {
                const std::uint32_t need = size + (capacity_ == 0 ? 4096 : capacity_);
                capacity_ = capacity_ == 0 ? need : need < 65536 ? need * 2 : need + need / 2;
                at = Straighten();
            }
        }
        model_.push_back({bytes, at});
    }

    /// Returns the end of the records, which then lie at the buffer's start.
    std::uint32_t Straighten() {
        std::uint32_t end = 0;
        for (Placed& record : model_) record.at = std::exchange(end, end + record.End() - record.at);
        return end;
    }

    void Push(const void* from, const Bytes& record) {
        const void* copy = queue_.Push(from);
        Require(adaptable_ != nullptr || Holds(copy, record), "a copy is another"); // commands don't return it
        Add(record);
    }

    void Reserve(const Bytes& record) {
        void* room = queue_.Reserve(static_cast<std::uint32_t>(record.size()));
        Require(room != nullptr, "no room");
        std::memcpy(room, record.data(), record.size());
        Add(record);
    }

    /// Pushes a copy of the front, sometimes of a front that has just been popped.
    void PushOwn() {
        if (model_.empty()) return;
        const void* front = queue_.Front();
        const Bytes record = model_.front().bytes;
        if ((source_.Byte() & 1U) != 0) Pop();
        Push(front, record);
    }

    void Pop() {
        queue_.Pop();
        if (!model_.empty()) model_.pop_front();
    }

    void Adapt() {
        if (adaptable_ == nullptr) return;
        Require(cmd_adapt(adaptable_) == (model_.empty() ? 0U : 1U), "an adapt returns something else");
        std::uint32_t used = 0;
        for (const Placed& record : model_) used += record.End() - record.at;
        if (used == 0 || used == capacity_) return;
        capacity_ = used;
        Straighten();
    }

    /// A wrong first word may lose the records after it and has no other effect.
    void Damage() {
        if (model_.empty()) return;
        const auto word = source_.Below(2) == 0 ? source_.Byte() : source_.Plain<std::uint32_t>();
        std::memcpy(queue_.Front(), &word, sizeof word);
        for (std::uint32_t i = source_.Below(8); i != 0; --i) {
            queue_.Push(Record(Size(), source_.Byte()).data());
            queue_.Pop();
        }
        for (std::uint32_t left = queue_.GetCount(); left != 0; left = queue_.GetCount()) {
            Require(ring_.head < queue_.GetCapacity(), "a head beyond the buffer");
            queue_.Pop();
            Require(queue_.GetCount() < left, "a pop that removes nothing");
        }
        Require(queue_.GetCapacity() >= capacity_, "a queue shrinks by itself");
        capacity_ = queue_.GetCapacity();
        model_.clear();
    }

    ByteSource& source_;
    Tessarin::EventList& queue_;
    const RecordRing& ring_;
    cmd* adaptable_;
    std::uint32_t capacity_;
    std::deque<Placed> model_;
};

void DriveCommands(ByteSource& source) {
    const Owned<cmd, cmd_destroy> queue(cmd_create(1U + source.Byte()));
    Commands commands(queue.get());
    QueueDriver(source, commands, queue->ring, queue.get()).Run();
}

void DriveEvents(ByteSource& source) {
    Tessarin::CEventList events;
    QueueDriver(source, events, events.Ring(), nullptr).Run();
}

/// Two lists that are swapped: what the consumer leaves in one is there again when the list is handed out next.
void DriveExchange(ByteSource& source) {
    Tessarin::IExchangeEvent* exchange = CreateExchangeEvent();
    std::deque<Bytes> written, read;
    for (Tessarin::EventList* list = exchange->Exchange(); !source.AtEnd();) {
        const std::uint32_t operation = source.Below(4);
        if (operation == 0) {
            list = exchange->Exchange();
            std::swap(written, read);
        } else if (operation == 1) {
            list->Pop();
            if (!read.empty()) read.pop_front();
        } else {
            const std::uint32_t size = source.Byte();
            const Bytes event = Record(std::max(size, 4U), source.Byte());
            Require(exchange->Post(size < 4 ? nullptr : event.data()) == 1, "a post that isn't 1");
            if (size >= 8) written.push_back(event); // a smaller one is refused
        }
        Require(list->GetCount() == read.size(), "another count");
        Require(read.empty() ? list->Front() == nullptr : Holds(list->Front(), read.front()), "another event");
    }
    Require(exchange->Release() == 1, "a release that isn't 1");
}

// ------------------------------------------------------------------------------------------------------ hash maps

/// A map and its model: the buckets in the order of the walk, and each entry's node, which never moves.
class HashMap {
public:
    HashMap(ByteSource& source, std::uint32_t buckets, std::uint32_t value_size)
        : source_(source), value_size_(value_size), chains_(buckets), owned_(i32hm_create(buckets, value_size)) {}

    void Step() {
        const std::uint32_t operation = source_.Below(16);
        const std::uintptr_t key = Key();
        if (operation < 2) {
            i32hm_erase_key(owned_.get(), key);
            Forget(key);
        } else if (operation == 2) {
            hm_node node = {key, nullptr, nullptr}; // the entry is found by the key, not by the address
            ptrhm_erase_ptr(owned_.get(), &node);
            Forget(key);
        } else if (operation == 3) {
            i32hm_clear(owned_.get());
            entries_.clear();
            for (auto& chain : chains_) chain.clear();
        } else {
            Set(key, Pattern(value_size_, source_.Byte()));
        }
        Require((i32hm_get(owned_.get(), key) != nullptr) == (entries_.count(key) != 0), "an entry is there, or isn't");
    }

    /// The walk visits bucket after bucket and, in each, the newest entry first. A bucket without entries must have a
    /// clear filter, or lookups in it would get slower with each key that has ever been there.
    void Check() {
        hm* map = owned_.get();
        Require((i32hm_empty(map) != 0) == entries_.empty() && map->count == entries_.size(), "another count");
        Require(map->bucket_count == chains_.size(), "another number of buckets");
        hm_node* node = i32hm_begin(map);
        for (std::size_t i = 0; i < chains_.size(); ++i) {
            Require(!chains_[i].empty() || map->filters[i] == 0, "a filter is kept");
            for (const std::uintptr_t key : chains_[i]) {
                const auto& [expected, value] = entries_.at(key);
                Require(node == expected && i32hm_find(map, key) == node, "the walk reaches another node");
                Require(reinterpret_cast<std::uintptr_t>(node) % alignof(hm_node) == 0, "a node isn't aligned");
                Require(i32hm_ptr2value(node) == node + 1 && ptrhm_get(map, key) == node + 1, "another place");
                Require(Holds(node + 1, value), "another value");
                node = i32hm_next(map, node);
            }
        }
        Require(node == nullptr, "the walk goes on");
    }

private:
    using Chains = std::vector<std::deque<std::uintptr_t>>;

    /// Few enough that keys repeat, and a few that need 32 bits, up to which the bucket of a key is documented.
    std::uintptr_t Key() {
        const std::uint32_t key = source_.Byte();
        return key < 250 ? key : key * std::uintptr_t{0x00FEDCBA};
    }

    static std::deque<std::uintptr_t>& ChainOf(Chains& chains, std::uintptr_t key) {
        const std::uint32_t hash = static_cast<std::uint32_t>(key >> 3) * 0x9E3779B1U;
        return chains[hash % chains.size()];
    }

    void Double() {
        Chains doubled(chains_.size() * 2);
        for (const auto& chain : chains_) {
            for (const std::uintptr_t key : chain) ChainOf(doubled, key).push_front(key);
        }
        chains_ = std::move(doubled);
    }

    void Set(std::uintptr_t key, Bytes value) {
        if (entries_.size() > chains_.size()) Double();
        Require(i32hm_set(owned_.get(), key, value.data()) == 1, "not set");
        auto [entry, is_new] = entries_.try_emplace(key, i32hm_find(owned_.get(), key), Bytes());
        if (is_new) ChainOf(chains_, key).push_front(key);
        entry->second.second = std::move(value);
    }

    void Forget(std::uintptr_t key) {
        if (entries_.erase(key) == 0) return;
        auto& chain = ChainOf(chains_, key);
        chain.erase(std::find(chain.begin(), chain.end(), key));
    }

    ByteSource& source_;
    std::uint32_t value_size_;
    Chains chains_;
    std::map<std::uintptr_t, std::pair<hm_node*, Bytes>> entries_;
    Owned<hm, ptrhm_destroy> owned_;
};

void DriveHashMap(ByteSource& source) {
    HashMap map(source, 1 + source.Below(20), 1 + source.Below(40));
    for (map.Check(); !source.AtEnd(); map.Check()) map.Step();
}

// ----------------------------------------------------------------------------------------------------------- pools

/// A block that is allocated, with what was written to it: two blocks that share a byte would be detected.
struct Block {
    unsigned char* place;
    Bytes bytes;

    Block(void* allocated, Bytes content) : place(static_cast<unsigned char*>(allocated)), bytes(std::move(content)) {
        Require(place != nullptr, "no block");
        std::memcpy(place, bytes.data(), bytes.size());
    }
    void Check() const { Require(Holds(place, bytes), "a block was written to"); }
};

/// Chunks are found by their first block, the highest. Free blocks are a stack, and so every block is predicted.
void DriveObjectPool(ByteSource& source) {
    const std::uint32_t block_size = 1 + source.Below(64), per_chunk = 1 + source.Below(20);
    omem* pool = omem_create(block_size, per_chunk);
    std::vector<Block> out;
    std::vector<unsigned char*> chunks, free;
    const auto free_all_of = [&](unsigned char* chunk) {
        for (std::uint32_t i = 0; i < per_chunk; ++i) free.push_back(chunk + std::size_t{i} * block_size);
    };
    while (!source.AtEnd()) {
        const std::uint32_t operation = source.Below(16);
        if (operation == 0) {
            omem_clear(pool);
            out.clear();
            free.clear();
            for (unsigned char* chunk : chunks) free_all_of(chunk);
        } else if (operation < 7 && !out.empty()) {
            std::swap(out[source.Byte() % out.size()], out.back());
            out.back().Check();
            omem_free(pool, out.back().place);
            free.push_back(out.back().place);
            out.pop_back();
        } else {
            out.emplace_back(omem_alloc(pool), Pattern(block_size, source.Byte()));
            if (free.empty()) free_all_of(chunks.emplace_back(out.back().place - (per_chunk - 1) * block_size));
            Require(out.back().place == free.back(), "another block");
            free.pop_back();
        }
    }
    for (const Block& block : out) block.Check();
    Require(omem_destroy(pool) == static_cast<std::int32_t>(out.size()), "another number of blocks is out");
}

/// Blocks lie back to back, from the newest chunk's first byte on.
void DriveIncrementalPool(ByteSource& source) {
    const std::uint32_t chunk_size = 1U + source.Byte();
    imem* pool = imem_create(chunk_size);
    std::vector<Block> out;
    std::uint32_t used = 0;
    while (!source.AtEnd()) {
        const std::uint32_t size = source.Byte();
        void* place = imem_alloc(pool, size);
        if (size == 0 || size > chunk_size) {
            Require(place == nullptr, "a block of an impossible size");
            continue;
        }
        if (size > chunk_size - used) used = 0;
        Require(place == reinterpret_cast<unsigned char*>(pool->current + 1) + used, "not back to back");
        used += size;
        Require(pool->current->used == used, "a chunk that is used otherwise");
        out.emplace_back(place, Pattern(size, source.Byte()));
    }
    for (const Block& block : out) block.Check();
    imem_destroy(pool);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    switch (source.Below(7)) {
    case 0:
        DriveFlatArray(source);
        break;
    case 1:
        DriveCommands(source);
        break;
    case 2:
        DriveEvents(source);
        break;
    case 3:
        DriveExchange(source);
        break;
    case 4:
        DriveHashMap(source);
        break;
    case 5:
        DriveObjectPool(source);
        break;
    default:
        DriveIncrementalPool(source);
    }
    return 0;
}
