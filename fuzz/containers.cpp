// A random program for one of the containers, compared with a plain model of it at each step. The first byte selects
// the container, the next ones its sizes; then each byte selects an operation, followed by the bytes that it needs.

#include "tessarin/containers.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "tessarin/events.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Fuzz;
using Bytes = std::vector<unsigned char>;

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
          array_(farr_create_capacity(element_size, room)) {
        Require(array_ != nullptr, "no array");
    }
    ~FlatArray() { farr_destroy(array_); }
    FlatArray(const FlatArray&) = delete;
    FlatArray& operator=(const FlatArray&) = delete;

    void Step() {
        switch (source_.Below(15)) {
        case 0:
            return Fill(farr_push(array_), Grown());
        case 1:
            return PushCopy(Pattern(size_, source_.Byte()));
        case 2:
            return model_.empty() ? void() : PushOwn(source_.Below(Count()));
        case 3:
            return Resize(source_.Byte() * 3U, source_.Byte() & 1U);
        case 4:
            return Erase(source_.Byte());
        case 5:
            return FastErase(source_.Byte());
        case 6:
            farr_popback(array_);
            return model_.empty() ? void() : model_.pop_back();
        case 7:
            farr_clear(array_);
            return model_.clear();
        case 8:
            farr_adapt(array_);
            capacity_ = Count() * size_;
            return;
        case 9:
            size_ = 1 + source_.Below(64);
            farr_reset(array_, size_);
            return model_.clear();
        case 10:
            threshold_ = std::max<std::uint32_t>(source_.Byte() * 16U, size_);
            return farr_reset_threshold(array_, threshold_);
        case 11:
            return Sort(source_.Byte(), source_.Byte());
        case 12:
            return SwapWithCopy();
        default:
            return PushCopy(Pattern(size_, source_.Byte()));
        }
    }

    void Check() const {
        Require(farr_count(array_) == Count() && (farr_empty(array_) != 0) == model_.empty(), "another count");
        Require(farr_capacity(array_) == capacity_ && farr_threshold(array_) == threshold_, "another capacity");
        void* element = farr_begin(array_);
        for (std::uint32_t i = 0; i < Count(); ++i, element = farr_next(array_, element)) {
            Require(element == farr_at(array_, i) && Holds(element, model_[i]), "an element is another");
        }
        Require(element == farr_end(array_) && farr_at(array_, Count()) == nullptr, "an element too many");
    }

private:
    [[nodiscard]] std::uint32_t Count() const { return static_cast<std::uint32_t>(model_.size()); }

    /// Lets the model's capacity grow for one more element. Returns the bytes of a new element.
    Bytes Grown() {
        const std::uint32_t need = (Count() + 1) * size_;
        if (need > capacity_) {
            capacity_ = need > threshold_ ? need + threshold_ : need < 65535 ? need * 2 : need + need / 2;
        }
        return Pattern(size_, source_.Byte());
    }

    void Fill(void* element, const Bytes& bytes) {
        Require(element != nullptr, "no element");
        std::memcpy(element, bytes.data(), bytes.size());
        model_.push_back(bytes);
    }

    void PushCopy(const Bytes& bytes) {
        Grown();
        Require(Holds(farr_push_element(array_, bytes.data()), bytes), "a copy is another");
        model_.push_back(bytes);
    }

    void PushOwn(std::uint32_t index) {
        Grown();
        const Bytes bytes = model_[index];
        Require(Holds(farr_push_element(array_, farr_at(array_, index)), bytes), "a copy of its own is another");
        model_.push_back(bytes);
    }

    void Resize(std::uint32_t count, std::uint32_t zero_fill) {
        const std::uint32_t before = Count();
        farr_resize(array_, count, zero_fill);
        if (count == 0) return;
        capacity_ = std::max(capacity_, count * size_);
        model_.resize(count, Bytes(size_));
        for (std::uint32_t i = before; zero_fill == 0 && i < count; ++i) {
            model_[i] = Pattern(size_, static_cast<std::uint8_t>(i));
            std::memcpy(farr_at(array_, i), model_[i].data(), size_);
        }
    }

    void Erase(std::uint32_t index) {
        farr_erase(array_, index);
        if (index < Count()) model_.erase(Place(index));
    }

    void FastErase(std::uint32_t index) {
        farr_fast_erase(array_, index);
        if (index >= Count()) return;
        std::swap(model_[index], model_.back());
        model_.pop_back();
    }

    void Sort(std::uint32_t first, std::uint32_t last) {
        compared_size = size_;
        if (first == last) {
            farr_sort(array_, CompareBytes);
            std::sort(model_.begin(), model_.end(), IsLess);
            return;
        }
        farr_sort_particular(array_, first, last, CompareBytes);
        if (first < last && last <= Count()) std::sort(Place(first), Place(last), IsLess);
    }

    void SwapWithCopy() {
        farr* copy = farr_copy(array_);
        Require(copy != nullptr, "no copy");
        farr_destroy(array_);
        array_ = copy;
    }

    std::vector<Bytes>::iterator Place(std::uint32_t index) {
        return model_.begin() + static_cast<std::ptrdiff_t>(index);
    }

    ByteSource& source_;
    std::uint32_t size_;
    std::uint32_t capacity_;
    std::uint32_t threshold_ = 8U << 20;
    farr* array_;
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

/// The command queue with the interface of the event list.
class Commands {
public:
    static constexpr std::uint32_t kLeast = 4;

    explicit Commands(ByteSource& source) : queue_(cmd_create(1U + source.Byte())) {}
    ~Commands() { cmd_destroy(queue_); }
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    std::uint32_t GetCount() { return cmd_count(queue_); }
    std::uint32_t GetCapacity() { return cmd_capacity(queue_); }
    bool IsEmpty() { return cmd_empty(queue_) != 0; }
    void* Reserve(std::uint32_t size) { return cmd_push(queue_, size); }
    void Push(const void* record) { cmd_push_element(queue_, record); }
    void* Front() { return cmd_front(queue_); }
    void Pop() { cmd_pop(queue_); }
    void Clear() { cmd_clear(queue_); }

    void Adapt(std::size_t used) {
        Require(cmd_adapt(queue_) == (used == 0 ? 0U : 1U), "an adapt returns something else");
        if (used != 0) Require(GetCapacity() == used, "adapted to another size");
    }

private:
    cmd* queue_;
};

/// The list that an exchange's consumer holds; the consumer itself pushes to it.
class Events {
public:
    static constexpr std::uint32_t kLeast = 8;

    explicit Events(ByteSource&) : exchange_(CreateExchangeEvent()), list_(exchange_->Exchange()) {}
    ~Events() { exchange_->Release(); }
    Events(const Events&) = delete;
    Events& operator=(const Events&) = delete;

    std::uint32_t GetCount() { return list_->GetCount(); }
    std::uint32_t GetCapacity() { return list_->GetCapacity(); }
    bool IsEmpty() { return list_->IsEmpty(); }
    void* Reserve(std::uint32_t size) { return list_->Reserve(size); }
    void Push(const void* record) { list_->Push(record); }
    void* Front() { return list_->Front(); }
    void Pop() { list_->Pop(); }
    void Clear() { list_->Clear(); }
    void Adapt(std::size_t) {} // an event list never shrinks

private:
    Tessarin::IExchangeEvent* exchange_;
    Tessarin::EventList* list_;
};

template <class Queue>
class QueueDriver {
public:
    explicit QueueDriver(ByteSource& source) : source_(source), queue_(source) {}

    void Run() {
        while (!source_.AtEnd()) {
            const std::uint32_t capacity = queue_.GetCapacity();
            const bool may_shrink = Step();
            Require(may_shrink || queue_.GetCapacity() >= capacity, "a queue shrinks by itself");
            Require(queue_.GetCount() == model_.size() && queue_.IsEmpty() == model_.empty(), "another count");
            Require(model_.empty() ? queue_.Front() == nullptr : Holds(queue_.Front(), model_.front()),
                    "another front");
        }
        for (; !model_.empty(); Pop()) Require(Holds(queue_.Front(), model_.front()), "a record is another");
    }

private:
    bool Step() {
        switch (source_.Below(10)) {
        case 0:
            Reserve(Record(Size(), source_.Byte()));
            break;
        case 1:
            PushOwn();
            break;
        case 2:
        case 3:
        case 4:
            if (!model_.empty()) Pop();
            break;
        case 5:
            queue_.Clear();
            model_.clear();
            break;
        case 6:
            queue_.Adapt(Used());
            return true;
        case 7:
            Damage();
            break;
        default:
            Push(Record(Size(), source_.Byte()));
        }
        return false;
    }

    /// Mostly small, rarely more than a page.
    std::uint32_t Size() {
        const std::uint32_t size = source_.Byte();
        return Queue::kLeast + (size < 250 ? size : size * 40);
    }

    [[nodiscard]] std::size_t Used() const {
        std::size_t used = 0;
        for (const Bytes& record : model_) used += record.size();
        return used;
    }

    void Push(const Bytes& record) {
        queue_.Push(record.data());
        model_.push_back(record);
    }

    void Reserve(const Bytes& record) {
        void* room = queue_.Reserve(static_cast<std::uint32_t>(record.size()));
        Require(room != nullptr, "no room");
        std::memcpy(room, record.data(), record.size());
        model_.push_back(record);
    }

    /// Pushes a copy of the front, sometimes of a front that has just been popped.
    void PushOwn() {
        if (model_.empty()) return;
        const void* front = queue_.Front();
        const Bytes record = model_.front();
        if ((source_.Byte() & 1U) != 0) Pop();
        queue_.Push(front);
        model_.push_back(record);
    }

    void Pop() {
        queue_.Pop();
        model_.pop_front();
    }

    /// A wrong first word may lose the records after it and has no other effect.
    void Damage() {
        if (model_.empty()) return;
        const auto word = source_.Plain<std::uint32_t>();
        std::memcpy(queue_.Front(), &word, sizeof word);
        for (std::uint32_t i = source_.Below(8); i != 0; --i) {
            const Bytes record = Record(Size(), source_.Byte());
            queue_.Push(record.data());
            queue_.Pop();
        }
        while (!queue_.IsEmpty()) queue_.Pop();
        Require(queue_.Front() == nullptr, "an empty queue has a front");
        model_.clear();
    }

    ByteSource& source_;
    Queue queue_;
    std::deque<Bytes> model_;
};

/// Two lists that are swapped: what the consumer leaves in one is there again when the list is handed out next.
void DriveExchange(ByteSource& source) {
    Tessarin::IExchangeEvent* exchange = CreateExchangeEvent();
    std::deque<Bytes> written, read;
    Tessarin::EventList* list = nullptr;
    while (!source.AtEnd()) {
        switch (source.Below(4)) {
        case 0:
            list = exchange->Exchange();
            std::swap(written, read);
            break;
        case 1:
            if (list == nullptr || read.empty()) break;
            list->Pop();
            read.pop_front();
            break;
        default:
            const std::uint32_t size = source.Byte();
            const Bytes event = Record(std::max(size, 4U), source.Byte());
            exchange->Post(size < 4 ? nullptr : event.data());
            if (size >= 8) written.push_back(event); // a smaller one is refused
        }
        if (list == nullptr) continue;
        Require(list->GetCount() == read.size(), "another count");
        if (!read.empty()) Require(Holds(list->Front(), read.front()), "another event");
    }
    exchange->Release();
}

// ------------------------------------------------------------------------------------------------------ hash maps

/// A map and its model: the buckets in the order of the walk, and each entry's node, which never moves.
class HashMap {
public:
    HashMap(ByteSource& source, std::uint32_t buckets, std::uint32_t value_size)
        : source_(source), value_size_(value_size), chains_(buckets), map_(i32hm_create(buckets, value_size)) {}
    ~HashMap() { ptrhm_destroy(map_); }
    HashMap(const HashMap&) = delete;
    HashMap& operator=(const HashMap&) = delete;

    void Step() {
        const std::uint32_t operation = source_.Below(16);
        const std::uintptr_t key = Key();
        if (operation < 2) {
            i32hm_erase_key(map_, key);
            Forget(key);
        } else if (operation == 2) {
            ptrhm_erase_ptr(map_, i32hm_find(map_, key));
            Forget(key);
        } else if (operation == 3) {
            i32hm_clear(map_);
            entries_.clear();
            for (auto& chain : chains_) chain.clear();
        } else {
            Set(key, Pattern(value_size_, source_.Byte()));
        }
        Require((i32hm_get(map_, key) != nullptr) == (entries_.count(key) != 0), "an entry is there, or isn't");
    }

    /// The walk visits bucket after bucket and, in each, the newest entry first.
    void Check() {
        Require((i32hm_empty(map_) != 0) == entries_.empty(), "empty, or not");
        hm_node* node = i32hm_begin(map_);
        for (const auto& chain : chains_) {
            for (const std::uintptr_t key : chain) {
                const auto& [expected, value] = entries_.at(key);
                Require(node == expected && i32hm_find(map_, key) == node, "the walk reaches another node");
                Require(Holds(i32hm_ptr2value(node), value) && ptrhm_get(map_, key) == i32hm_ptr2value(node),
                        "a value");
                node = i32hm_next(map_, node);
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
        Require(i32hm_set(map_, key, value.data()) == 1, "not set");
        auto [entry, is_new] = entries_.try_emplace(key, i32hm_find(map_, key), Bytes());
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
    hm* map_;
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

void DriveObjectPool(ByteSource& source) {
    const std::uint32_t block_size = 1 + source.Below(64);
    omem* pool = omem_create(block_size, 1 + source.Below(20));
    std::vector<Block> out;
    std::vector<void*> given_back; // the last one is allocated first
    while (!source.AtEnd()) {
        const std::uint32_t operation = source.Below(16);
        if (operation == 0) {
            omem_clear(pool);
            out.clear();
            given_back.clear();
        } else if (operation < 7 && !out.empty()) {
            std::swap(out[source.Byte() % out.size()], out.back());
            out.back().Check();
            omem_free(pool, out.back().place);
            given_back.push_back(out.back().place);
            out.pop_back();
        } else {
            out.emplace_back(omem_alloc(pool), Pattern(block_size, source.Byte()));
            if (given_back.empty()) continue;
            Require(out.back().place == given_back.back(), "not the block given back last");
            given_back.pop_back();
        }
    }
    for (const Block& block : out) block.Check();
    Require(omem_destroy(pool) == static_cast<std::int32_t>(out.size()), "another number of blocks is out");
}

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
        const bool fits = size <= chunk_size - used;
        if (fits && !out.empty()) Require(place == out.back().place + out.back().bytes.size(), "not back to back");
        used = fits ? used + size : size;
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
        QueueDriver<Commands>(source).Run();
        break;
    case 2:
        QueueDriver<Events>(source).Run();
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
