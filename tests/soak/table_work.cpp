// Tables and their two document forms.

#include "tests/soak/work.h"
#include "tests/support/table_text.h"

#include "tessarin/documents.h"

#include <array>
#include <cstring>
#include <fstream>
#include <iterator>

namespace Soak {
namespace {

using Tessarin::ITable;

constexpr std::uint32_t kDeepest = 4;
constexpr std::uint32_t kItems = 100;

void Count(void* calls) { ++*static_cast<std::uint64_t*>(calls); }
void OnRecord(void* calls, TableEvent*) { Count(calls); }
void OnArgument(void* calls, std::uint32_t, ITable*, cstr) { Count(calls); }
void OnArray(void* calls, std::uint32_t, ITable*, std::uint32_t) { Count(calls); }

template <class Function>
Delegate Listener(std::uint64_t* calls, Function* function) {
    return {calls, reinterpret_cast<void (*)()>(function)};
}

class TableWork : public Work {
public:
    explicit TableWork(std::string folder) : folder_(std::move(folder)) {
        Require(root_ != nullptr && other_ != nullptr, "a table is made");
        other_->SetInteger("lasting", 1, 0);
    }
    ~TableWork() override {
        CloseTable(root_);
        CloseTable(other_);
    }
    TableWork(const TableWork&) = delete;
    TableWork& operator=(const TableWork&) = delete;

    void Step(Random& random) override {
        for (int i = 0; i < 500; ++i) Change(*SomeTable(random), random);
        (this->*kDocuments[random.Below(std::size(kDocuments))])(random);
    }

    void Empty() override {
        root_->Clear(1);
        root_->DestroyArray();
        Unlisten(*root_, "");
    }

private:
    using Operation = void (TableWork::*)(ITable&, const char* key, Random&);
    using Document = void (TableWork::*)(Random&);

    /// A table at a random depth below the root.
    ITable* SomeTable(Random& random) {
        ITable* table = root_;
        for (std::uint32_t depth = random.Below(kDeepest); depth != 0; --depth) {
            ITable* child = table->GetTable(random.Key().c_str());
            if (child != nullptr && child != other_) table = child;
        }
        return table;
    }

    void Change(ITable& table, Random& random) {
        (this->*kOperations[random.Below(std::size(kOperations))])(table, random.Key().c_str(), random);
    }

    void SetScalar(ITable& table, const char* key, Random& random) {
        const Handle handle = random.Below(9);
        const std::uint32_t notify = random.Below(2);
        table.SetInteger(key, random.Integer(), notify);
        table.SetReal(random.Key().c_str(), random.Real(), notify);
        table.SetHandle(random.Key().c_str(), &handle, notify);
        table.SetPtr(random.Key().c_str(), this, notify);
    }

    void SetText(ITable& table, const char* key, Random& random) {
        table.SetString(key, random.Text().c_str(), 1);
        table.SetPath(random.Key().c_str(), random.Path().c_str(), 1);
    }

    void SetVector(ITable& table, const char* key, Random& random) {
        Float4x4 matrix{};
        matrix.m[random.Below(16)] = random.Real();
        const Float4 vector{random.Real(), 0, 1, 2};
        const Float3 shorter{random.Real(), 0, 1};
        const Float2 shortest{random.Real(), 0};
        table.SetFloat4x4(key, &matrix, 1);
        table.SetFloat4(random.Key().c_str(), &vector, 1);
        table.SetFloat3(random.Key().c_str(), &shorter, 1);
        table.SetFloat2(random.Key().c_str(), &shortest, 1);
    }

    void SetChild(ITable& table, const char* key, Random& random) {
        table.Set(key, 1);
        table.SetExternalTable(random.Key().c_str(), other_, 1);
        table.SetReferenceTable(random.Key().c_str(), nullptr, 1);
        ITable* child = CreateTable();
        child->SetInteger(key, 5, 0);
        if (table.SetTable(random.Key().c_str(), child, 1) == 0) CloseTable(child);
    }

    /// A child is removed with everything below it.
    void Remove(ITable& table, const char* key, Random& random) {
        table.Remove(key, random.Below(2));
        table.Remove(random.Key().c_str(), random.Below(2));
    }

    void Rename(ITable& table, const char* key, Random& random) { table.Rename(key, random.Key().c_str(), 1); }

    void Clear(ITable& table, const char*, Random& random) {
        if (&table != root_ || random.Below(20) == 0) table.Clear(1);
    }

    void SetItems(ITable& table, const char*, Random& random) {
        if (random.Below(4) == 0) table.CreateArray(8);
        const std::uint64_t item = random.Below(1000);
        const std::uint32_t index = random.Below(kItems);
        const void* stored = table.SetArrayItem(index, &item, 1);
        Require(stored == table.GetArrayItem(stored == nullptr ? kItems : index), "an item is where it was put");
        if (random.Below(4) == 0) table.DestroyArray();
    }

    void Listen(ITable& table, const char* key, Random&) {
        *table.AddRecordListener() = Listener(&calls_, OnRecord);
        *table.AddArgumentListener() = Listener(&calls_, OnArgument);
        *table.AddArrayListener() = Listener(&calls_, OnArray);
        if (Delegate* added = table.AddRecordListener(key)) *added = Listener(&calls_, OnRecord);
        if (Delegate* added = table.AddArgumentListener(key)) *added = Listener(&calls_, OnArgument);
    }

    void UnlistenAny(ITable& table, const char* key, Random&) { Unlisten(table, key); }

    /// Removes all listeners of each kind, because they are all equal.
    void Unlisten(ITable& table, const char* key) {
        const std::array delegates{Listener(&calls_, OnRecord), Listener(&calls_, OnArgument),
                                   Listener(&calls_, OnArray)};
        table.RemoveRecordListener(delegates.data());
        table.RemoveArgumentListener(&delegates[1]);
        table.RemoveArrayListener(&delegates[2]);
        table.RemoveRecordListener(key, delegates.data());
        table.RemoveArgumentListener(key, &delegates[1]);
    }

    void JsonInMemory(Random& random) {
        const std::string text = TestSupport::SavedJson(root_);
        Expect(OpenTableBuffer(text.data(), static_cast<std::uint32_t>(text.size())), 1);
        const std::uint32_t cut = random.Below(static_cast<std::uint32_t>(text.size() - 1)) + 1;
        ITable* broken = OpenTableBuffer(text.data(), cut);
        Require(broken != nullptr && broken->GetElementCount() == 0, "a broken text is an empty table");
        CloseTable(broken);
    }

    void JsonFile(Random&) {
        const std::string path = folder_ + "/saved.json";
        Require(root_->SaveFile(path.c_str()) == 1, "a table is saved");
        Expect(OpenTableFile(path.c_str()), 1);
    }

    void ReadableFile(Random& random) {
        const std::string path = folder_ + "/readable.table";
        std::ofstream(path) << "first = 1 -- a remark\n" << ReadableBlock(random, kDeepest);
        Expect(OpenTableReadableFile(path.c_str()), 1);
    }

    static std::string ReadableBlock(Random& random, std::uint32_t depth) {
        std::string text;
        for (std::uint32_t i = random.Below(6); i != 0; --i) {
            text += random.Key() + " = \"" + random.Text() + "\"\n" + random.Key() + " [1.5, 2, 3]\n";
            if (depth != 0) text += "block_" + std::to_string(i) + " {\n" + ReadableBlock(random, depth - 1) + "}\n";
        }
        return text;
    }

    static void Expect(ITable* table, std::uint32_t fewest) {
        Require(table != nullptr && table->GetElementCount() >= fewest, "a document is loaded");
        Require(ValidateTable(table) == 1, "a loaded table is known");
        CloseTable(table);
        Require(ValidateTable(table) == 0, "a closed table isn't");
    }

    static constexpr Operation kOperations[] = {&TableWork::SetScalar, &TableWork::SetText, &TableWork::SetVector,
                                                &TableWork::SetChild,  &TableWork::Remove,  &TableWork::Remove,
                                                &TableWork::Remove,    &TableWork::Rename,  &TableWork::Clear,
                                                &TableWork::SetItems,  &TableWork::Listen,  &TableWork::UnlistenAny};
    static constexpr Document kDocuments[] = {&TableWork::JsonInMemory, &TableWork::JsonFile, &TableWork::ReadableFile};

    const std::string folder_;
    std::uint64_t calls_ = 0;
    ITable* const root_ = CreateTable();
    ITable* const other_ = CreateTable();
};

} // namespace

std::unique_ptr<Work> MakeTableWork(const std::string& folder) { return std::make_unique<TableWork>(folder); }

} // namespace Soak
