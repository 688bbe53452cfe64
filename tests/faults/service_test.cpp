// A host's file service that fails at one of its calls: every load and save of configuration and tab files, each call
// in turn, in every way in which it can fail. Whatever the service does, each handle is closed once, the object is
// empty after a failed load and unchanged after a save, and the next try works.

#include "tests/configure/tree_text.h"
#include "tests/faults/heap_rows.h"

#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;
using namespace Configure;

enum class Fault { kNull, kNegative, kTooLarge, kNothing, kShort, kTooMuch };
constexpr Fault kFaults[] = {Fault::kNull,    Fault::kNegative, Fault::kTooLarge,
                             Fault::kNothing, Fault::kShort,    Fault::kTooMuch};

/// A file service with files in memory. One of its calls fails, if the fault is one of that call's kind.
class FaultyFiles : public MemoryFiles {
public:
    void FailAt(int call, Fault new_fault) { calls = 0, at = call, fault = new_fault, struck = false; }
    void Work() { FailAt(-1, Fault::kNull); }

    void* Open(const char* path, std::int32_t mode) override {
        return Strikes(Fault::kNull, Fault::kNull) ? nullptr : MemoryFiles::Open(path, mode);
    }
    std::int32_t GetSize(void* handle) override {
        const std::int32_t size = MemoryFiles::GetSize(handle);
        if (!Strikes(Fault::kNegative, Fault::kTooLarge)) return size;
        return fault == Fault::kNegative ? -1 : size + 1;
    }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        EXPECT_LE(count, buffer_size);
        if (!Strikes(Fault::kNothing, Fault::kTooMuch)) return MemoryFiles::Read(handle, buffer, buffer_size, count);
        return Lie(count, [&](std::uint32_t less) { return MemoryFiles::Read(handle, buffer, buffer_size, less); });
    }
    std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) override {
        if (!Strikes(Fault::kNothing, Fault::kTooMuch)) return MemoryFiles::Write(handle, buffer, size);
        return Lie(size, [&](std::uint32_t less) { return MemoryFiles::Write(handle, buffer, less); });
    }

    int calls = 0;
    bool struck = false; // the call has come, and failed

private:
    /// Whether this is the call, and the fault one of the range that it can have.
    bool Strikes(Fault first, Fault last) {
        const bool strikes = calls++ == at && fault >= first && fault <= last;
        struck = struck || strikes;
        return strikes;
    }

    template <class Transfer>
    std::uint32_t Lie(std::uint32_t count, Transfer transfer) const {
        if (fault == Fault::kNothing) return 0;
        return fault == Fault::kTooMuch ? transfer(count) + 1 : transfer(count == 0 ? 0 : count - 1);
    }

    int at = -1;
    Fault fault = Fault::kNull;
};

/// The files and what works on them, made anew for each fault.
struct Objects {
    FaultyFiles files;
    Owned<IFile> file{CreateRLFile(&files)};
    Owned<ITabFile> tab{CreateTabFile(&files)};

    Objects() {
        files["text"] = "a = 1 t = { x = { 1 2 { } } _default = { y = { z = 3 } } } s = \"some text\"";
        files["tab"] = "h\ti\nx\ty\n\t2\n";
        for (auto [path, format] : {std::pair("binary", FORMAT_BINARY), std::pair("written", FORMAT_TEXT)}) {
            file->Load("text", ACCESS_EDIT, FORMAT_TEXT);
            EXPECT_TRUE(file->SaveAs(path, format));
        }
        file->Reset();
    }

    std::string State() {
        const char* cell = tab->GetCell(0, 0);
        return TextOf(file->GetRoot(), Order::kSorted) + std::to_string(tab->GetRowCount()) + 'x' +
               std::to_string(tab->GetColumnCount()) + (cell == nullptr ? "" : cell);
    }
};

enum class Kind { kLoad, kSaveText, kSaveBinary };
struct Operation {
    const char* name;
    Kind kind;
    std::uint32_t access;
    const char* loaded;            // what is loaded beforehand, with that access; a save leaves it, a load drops it
    bool (*run)(Objects& objects); // returns whether it succeeded
};

template <FileAccess Access, FileFormat Format>
bool LoadIt(Objects& objects) {
    return objects.file->Load(Format == FORMAT_BINARY ? "binary" : "text", Access, Format) != nullptr;
}
bool SaveText(Objects& objects) { return objects.file->SaveAs("target", FORMAT_TEXT); }
bool SaveBinary(Objects& objects) { return objects.file->SaveAs("target", FORMAT_BINARY); }

const Operation kOperations[] = {
    {"text to read", Kind::kLoad, ACCESS_EDIT, "text", LoadIt<ACCESS_READ, FORMAT_TEXT>},
    {"text to edit", Kind::kLoad, ACCESS_READ, "binary", LoadIt<ACCESS_EDIT, FORMAT_TEXT>},
    {"binary", Kind::kLoad, ACCESS_READ, "text", LoadIt<ACCESS_READ, FORMAT_BINARY>},
    {"either", Kind::kLoad, ACCESS_READ, "text", LoadIt<ACCESS_READ, FORMAT_AUTO>},
    {"tab file", Kind::kLoad, ACCESS_READ, "", [](Objects& f) { return f.tab->Open("tab", TABFILE_DEFAULT_ROW); }},
    {"text from reading", Kind::kSaveText, ACCESS_READ, "text", SaveText},
    {"text from the binary form", Kind::kSaveText, ACCESS_READ, "binary", SaveText},
    {"binary from editing", Kind::kSaveBinary, ACCESS_EDIT, "text", SaveBinary},
    {"binary from itself", Kind::kSaveBinary, ACCESS_READ, "binary", SaveBinary},
    {"save", Kind::kSaveText, ACCESS_EDIT, "written", [](Objects& f) { return f.file->Save(); }},
};

/// Makes one call fail in one way. Returns whether the call can fail in that way.
bool Strike(const Operation& operation, int call, Fault fault, int& calls) {
    Objects objects;
    FaultyFiles& files = objects.files;
    const std::string empty = objects.State();
    if (*operation.loaded == '\0') {
        EXPECT_TRUE(objects.tab->Open("tab", 0));
    } else {
        EXPECT_NE(objects.file->Load(operation.loaded, operation.access, FORMAT_AUTO), nullptr);
    }
    const std::string loaded = objects.State();
    files["target"] = "old";
    files.FailAt(call, fault);
    const bool done = operation.run(objects);
    const bool struck = files.struck;
    // The results of the text form's writes are ignored.
    EXPECT_EQ(done, !struck || (operation.kind == Kind::kSaveText && call > 0));
    EXPECT_EQ(files.handles, 0);
    if (!done) {
        EXPECT_EQ(objects.State(), operation.kind == Kind::kLoad ? empty : loaded);
    }
    const std::string partial = files["target"];
    files.Work();
    EXPECT_TRUE(operation.run(objects)) << "with a service that works";
    EXPECT_EQ(files.handles, 0);
    if (operation.kind == Kind::kSaveBinary) {
        EXPECT_TRUE(files["target"] == files["binary"]);
        if (call > 0) {
            EXPECT_EQ(partial, files["target"].substr(0, partial.size())) << "as far as it was written";
        }
    }
    calls = files.calls;
    return struck;
}

TEST(ServiceFaults, EveryCallInEveryWay) {
    for (const Operation& operation : kOperations) {
        int calls = 1;
        for (int call = 0; call < calls; ++call) {
            SCOPED_TRACE(testing::Message() << operation.name << ", call " << call);
            int ways = 0;
            for (const Fault fault : kFaults) {
                SCOPED_TRACE(static_cast<int>(fault));
                ways += Strike(operation, call, fault, calls) ? 1 : 0;
            }
            EXPECT_GE(ways, 1);
        }
        EXPECT_GE(calls, 3) << operation.name;
    }
}

} // namespace
