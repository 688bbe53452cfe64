// Listeners that change the notifying table and other tables during the notification: they add and remove entries and
// listeners, rename, clear, and end the table itself. No model predicts which listeners are then notified of what.
// Whatever happens, no freed memory is touched (which the sanitizers see), and every remaining table can be walked.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/table_tree.h"

#include <array>
#include <iterator>
#include <string>

namespace {

using namespace Fuzz;
using namespace Tessarin;

/// Every listener runs the next steps of the one program, so that notifications nest, up to a limit.
class Program {
public:
    explicit Program(ByteSource& source) : source_(source) {
        for (ITable*& table : tables_) table = CreateTable();
    }
    ~Program() {
        for (ITable* table : tables_) CloseTable(table);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Run() {
        while (!source_.AtEnd()) {
            Step();
            for (ITable* table : tables_) TreeOf(*table);
        }
    }

private:
    void OnRecord(TableEvent* event) {
        Require(event->key == cstr_find(event->key), "an event's key isn't interned");
        Act();
    }
    void OnArgument(std::uint32_t, ITable*, cstr key) {
        Require(key == cstr_find(key), "an event's key isn't interned");
        Act();
    }
    void OnArray(std::uint32_t, ITable*, std::uint32_t) { Act(); }

    void Act() {
        if (depth_ == kDeepest) return;
        ++depth_;
        for (std::uint32_t steps = source_.Below(4); steps != 0; --steps) Step();
        --depth_;
    }

    void Step();
    void Set(ITable& table, const char* key);
    void Replace(ITable*& slot);
    void Listen(ITable& table, const char* key);
    void Unlisten(ITable& table, const char* key);
    void HandOver(ITable& table, const char* key);

    const char* Key() {
        static const char* const kKeys[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"};
        return kKeys[source_.Below(source_.Byte() % 2 == 0 ? 3 : 12)]; // the first ones often
    }

    Delegate Record() { return RecordDelegate<&Program::OnRecord>(this); }
    Delegate Argument() { return ArgumentDelegate<&Program::OnArgument>(this); }
    Delegate Array() { return ArrayDelegate<&Program::OnArray>(this); }

    static constexpr int kDeepest = 5;

    ByteSource& source_;
    std::array<ITable*, 2> tables_{};
    int depth_ = 0;
};

void Program::Step() {
    using Action = void (*)(Program & self, ITable * &slot, const char* key);
    constexpr Action set = [](Program& self, ITable*& slot, const char* key) { self.Set(*slot, key); };
    constexpr Action listen = [](Program& self, ITable*& slot, const char* key) { self.Listen(*slot, key); };
    constexpr Action rename = [](Program& self, ITable*& slot, const char* key) { slot->Rename(key, self.Key(), 1); };
    static constexpr Action kActions[] = {
        listen,
        listen,
        listen,
        [](Program& self, ITable*& slot, const char* key) { self.Unlisten(*slot, key); },
        [](Program& self, ITable*& slot, const char* key) { slot->Remove(key, self.source_.Below(4)); },
        [](Program& self, ITable*& slot, const char*) { slot->Clear(self.source_.Below(4)); },
        rename,
        rename,
        [](Program& self, ITable*& slot, const char* key) { self.HandOver(*slot, key); },
        [](Program& self, ITable*& slot, const char*) { slot->CreateArray(1 + self.source_.Below(9)); },
        [](Program&, ITable*& slot, const char*) { slot->DestroyArray(); },
        [](Program& self, ITable*& slot, const char*) {
            slot->SetArrayItem(self.source_.Below(20), "an item of bytes", 1);
        },
        [](Program& self, ITable*& slot, const char*) { self.Replace(slot); },
        set,
        set,
        set};
    ITable*& slot = tables_[source_.Below(4) == 0 ? 1 : 0];
    const char* key = Key();
    kActions[source_.Below(std::size(kActions))](*this, slot, key);
}

/// The slot gets another table before the old one ends, for the listeners that run in between.
void Program::Replace(ITable*& slot) {
    ITable* old = slot;
    if (source_.Below(3) != 0) return;
    slot = CreateTable();
    CloseTable(old);
}

void Program::Set(ITable& table, const char* key) {
    const Float4x4 matrix{};
    const std::uint32_t kind = source_.Below(6);
    if (kind == 0) table.SetString(key, Key(), 1);
    if (kind == 1) table.Set(key, 1);
    if (kind == 2) table.SetFloat4x4(key, &matrix, 1);
    if (kind == 3) table.SetReal(key, static_cast<float>(source_.Byte()), 1);
    if (kind > 3) table.SetInteger(key, source_.Byte(), 1);
}

void Program::Listen(ITable& table, const char* key) {
    const std::uint32_t kind = source_.Below(5);
    Delegate* added = kind == 0   ? table.AddRecordListener()
                      : kind == 1 ? table.AddRecordListener(key)
                      : kind == 2 ? table.AddArgumentListener()
                      : kind == 3 ? table.AddArgumentListener(key)
                                  : table.AddArrayListener();
    if (added != nullptr) *added = kind < 2 ? Record() : kind < 4 ? Argument() : Array();
}

void Program::Unlisten(ITable& table, const char* key) {
    const Delegate record = Record(), argument = Argument(), array = Array();
    const std::uint32_t kind = source_.Below(5);
    if (kind == 0) table.RemoveRecordListener(&record);
    if (kind == 1) table.RemoveRecordListener(key, &record);
    if (kind == 2) table.RemoveArgumentListener(&argument);
    if (kind == 3) table.RemoveArgumentListener(key, &argument);
    if (kind == 4) table.RemoveArrayListener(&array);
}

/// A table that isn't taken over still belongs to the host, whatever happened to the table that refused it.
void Program::HandOver(ITable& table, const char* key) {
    ITable* child = CreateTable();
    child->SetInteger(key, 1, 0);
    if (table.SetTable(key, child, 1) != 0) return;
    Require(ValidateTable(child) == 1, "a table that was refused is gone");
    CloseTable(child);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteSource source(data, size);
    Program(source).Run();
    return 0;
}
