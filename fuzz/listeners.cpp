// Listeners that change the notifying table and other tables during the notification: they add and remove entries and
// listeners, rename, clear, and end the table itself. No model predicts which listeners are then notified of what.
// Whatever happens, no freed memory is touched (which the sanitizers see), and every remaining table can be walked.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/table_tree.h"

#include <array>
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
    ITable*& slot = tables_[source_.Below(4) == 0 ? 1 : 0];
    ITable& table = *slot;
    const char* key = Key();
    switch (source_.Below(16)) {
    case 0:
    case 1:
    case 2:
        Listen(table, key);
        break;
    case 3:
        Unlisten(table, key);
        break;
    case 4:
        table.Remove(key, source_.Below(4));
        break;
    case 5:
        table.Clear(source_.Below(4));
        break;
    case 6:
    case 7:
        table.Rename(key, Key(), 1);
        break;
    case 8:
        HandOver(table, key);
        break;
    case 9:
        table.CreateArray(1 + source_.Below(9));
        break;
    case 10:
        table.DestroyArray();
        break;
    case 11:
        table.SetArrayItem(source_.Below(20), "an item of bytes", 1);
        break;
    case 12: {
        // The slot gets another table before this one ends, for the listeners that run in between.
        ITable* old = slot;
        if (source_.Below(3) != 0) break;
        slot = CreateTable();
        CloseTable(old);
        break;
    }
    default:
        Set(table, key);
    }
}

void Program::Set(ITable& table, const char* key) {
    const Float4x4 matrix{};
    switch (source_.Below(6)) {
    case 0:
        table.SetString(key, Key(), 1);
        break;
    case 1:
        table.Set(key, 1);
        break;
    case 2:
        table.SetFloat4x4(key, &matrix, 1);
        break;
    case 3:
        table.SetReal(key, static_cast<float>(source_.Byte()), 1);
        break;
    default:
        table.SetInteger(key, source_.Byte(), 1);
    }
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
