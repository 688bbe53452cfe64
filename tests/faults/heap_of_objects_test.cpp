// Everything but tables without memory: configuration, tab files, events, containers, and what every factory makes.

#include "tests/faults/heap_rows.h"

#include "strings/string_table.h"
#include "tables/table_registry.h"
#include "tests/configure/tree_text.h"
#include "tests/support/records.h"
#include "tests/support/temporary_folder.h"

#include <cstring>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;
using Configure::ACCESS_EDIT;
using Configure::ACCESS_READ;
using Configure::FORMAT_AUTO;
using Configure::FORMAT_BINARY;
using Configure::FORMAT_TEXT;

constexpr std::uint32_t kItem = 5;

// ------------------------------------------------------------------------------------------------------- configuration

std::string FileState(Fixture& fixture) {
    EXPECT_EQ(fixture.files.handles, 0);
    return TextOf(fixture.file->GetRoot(), Order::kSorted);
}

// Both lists are as long as their first room, so that the next entry needs more.
const char kEditable[] = R"(a = 1 b = 2 c = 3 d = 4 e = 5 f = 6 g = 7 h = 8 i = "" j = 10 -- behind it
    l = { 1 2 3 4 5 6 7 8 9 10 11 12 } _default = { x = { 1 { } { { y = z } } "" } Path/To = { } })";

/// A text file, and the binary form of the same but for the value that is fresh.
void PrepareFiles(Fixture& fixture) {
    const auto text_with = [](const std::string& fresh) { // early, and in what is open at the end
        return "early = " + fresh + ' ' + kEditable + " open = { { { { v = " + fresh;
    };
    const std::string other = FreshText();
    fixture.files["text"] = text_with(other);
    fixture.file.reset(CreateRLFile(&fixture.files));
    fixture.file->Load("text", ACCESS_EDIT, FORMAT_TEXT);
    EXPECT_TRUE(fixture.file->SaveAs("binary", FORMAT_BINARY));
    fixture.file->Reset();
    std::string& binary = fixture.files["binary"];
    binary.replace(binary.find(other), other.size(), fixture.fresh);
    fixture.files["text"] = text_with(fixture.fresh);
    fixture.files[fixture.fresh] = kEditable;
    fixture.files["other"] = "z = 1";
}

template <Configure::FileAccess Access, Configure::FileFormat Format>
bool LoadConfiguration(Fixture& fixture) {
    const char* path = Format == FORMAT_BINARY ? "binary" : "text";
    Configure::ITable* root = fixture.file->Load(path, Access, Format);
    EXPECT_EQ(fixture.file->GetRoot(), root);
    return root != nullptr;
}

TEST(HeapFaults, EveryLoadOfAConfiguration) {
    const auto load_other = [](Fixture& f) { return f.file->Load("other", ACCESS_EDIT, FORMAT_TEXT) != nullptr; };
    Check({PrepareFiles, FileState, false, load_other},
          {{"text to read", LoadConfiguration<ACCESS_READ, FORMAT_TEXT>},
           {"text to edit", LoadConfiguration<ACCESS_EDIT, FORMAT_TEXT>},
           {"either form", LoadConfiguration<ACCESS_EDIT, FORMAT_AUTO>},
           {"binary", LoadConfiguration<ACCESS_READ, FORMAT_BINARY>},
           // Only the path can't be interned: the load returns a root, but the object doesn't know of it.
           {"new path", [](Fixture& f) {
                return f.file->Load(f.Fresh(), ACCESS_READ, FORMAT_TEXT) != nullptr && f.file->GetRoot() != nullptr;
            }}});
}

template <Configure::FileFormat Format>
bool SaveConfiguration(Fixture& fixture) {
    const bool saved = fixture.file->SaveAs("target", Format);
    const std::string& target = fixture.files["target"];
    const std::string& expected = fixture.files[Format == FORMAT_TEXT ? "as text" : "as binary"];
    const bool is_part = expected.compare(0, target.size(), target) == 0;
    EXPECT_TRUE(saved && fixture.files.struck ? Format == FORMAT_TEXT : saved ? target == expected : is_part);
    return saved;
}

TEST(HeapFaults, EverySaveOfAConfiguration) {
    for (auto load : {LoadConfiguration<ACCESS_READ, FORMAT_TEXT>, LoadConfiguration<ACCESS_EDIT, FORMAT_TEXT>,
                      LoadConfiguration<ACCESS_READ, FORMAT_BINARY>}) {
        const auto prepare = [load](Fixture& fixture) {
            PrepareFiles(fixture);
            EXPECT_TRUE(load(fixture) && fixture.file->SaveAs("as text", FORMAT_TEXT) &&
                        fixture.file->SaveAs("as binary", FORMAT_BINARY));
            const std::size_t room = fixture.files["as text"].size() + fixture.files["as binary"].size();
            for (const char* name : {"target", "text"}) fixture.files[name].reserve(room);
        };
        std::vector<Row> rows = {{"text", SaveConfiguration<FORMAT_TEXT>, true},
                                 {"binary", SaveConfiguration<FORMAT_BINARY>}};
        if (load == LoadConfiguration<ACCESS_EDIT, FORMAT_TEXT>) {
            rows.push_back({"back", [](Fixture& f) { return f.file->Save(); }, true});
        }
        Check({prepare, FileState}, rows);
    }
}

TEST(HeapFaults, EveryChangeOfAConfiguration) {
    const auto prepare = [](Fixture& fixture) {
        fixture.files["text"] = kEditable;
        fixture.file.reset(CreateRLFile(&fixture.files));
        fixture.file->Load("text", ACCESS_EDIT, FORMAT_TEXT);
    };
    Check({prepare, FileState},
          {{"string", [](Fixture& f) { return f.Root().AddString("new", f.Fresh()) != nullptr; }},
           {"string under a new key", [](Fixture& f) { return f.Root().AddString(f.Fresh(), "v") != nullptr; }},
           {"array", [](Fixture& f) { return f.Root().AddArray(f.Fresh()) != nullptr; }},
           {"table", [](Fixture& f) { return f.Root().AddTable(f.Fresh()) != nullptr; }},
           {"element", [](Fixture& f) { return f.Root().GetArray("l")->AddString(0, f.Fresh()) != nullptr; }},
           {"array in an array", [](Fixture& f) { return f.Root().GetArray("l")->AddArray(0) != nullptr; }},
           {"table in an array", [](Fixture& f) { return f.Root().GetArray("l")->AddTable(0) != nullptr; }},
           {"key", [](Fixture& f) { return f.Root().Begin()->SetKey(f.Fresh()); }},
           {"text", [](Fixture& f) { return f.Root().Begin()->SetString(f.Fresh()); }}});
}

// ------------------------------------------------------------------------- tab files, events, containers, factories

TEST(HeapFaults, TabFiles) {
    const auto prepare = [](Fixture& fixture) {
        fixture.files[fixture.fresh] = "h\ti\nx\ty\n\t2\n";
        fixture.files["other"] = "z";
        fixture.tab.reset(CreateTabFile(&fixture.files));
    };
    const auto state = [](Fixture& fixture) {
        std::string grid =
            std::to_string(fixture.tab->GetRowCount()) + 'x' + std::to_string(fixture.tab->GetColumnCount());
        for (std::uint32_t row = 0; row < fixture.tab->GetRowCount(); ++row) {
            for (std::uint32_t column = 0; column < 2; ++column) grid += Quoted(fixture.tab->GetCell(row, column));
        }
        EXPECT_EQ(fixture.files.handles, 0);
        return grid;
    };
    const auto open_other = [](Fixture& f) { return f.tab->Open("other", 0); };
    Check({prepare, state, false, open_other},
          {{"rows", [](Fixture& f) { return f.tab->Open(f.Fresh(), 0); }},
           {"rows and defaults",
            [](Fixture& f) { return f.tab->Open(f.Fresh(), TABFILE_DEFAULT_ROW | TABFILE_SKIP_FIRST_LINE); }}});
}

constexpr std::uintptr_t kMapEntries = 16; // as many as the first chunk of nodes has
const Record kSmall = MakeRecord(24, 1), kLarge = MakeRecord(5000, 2);

/// Whether there is room for a record, which is then written.
bool Written(void* room, const Record& record) {
    if (room != nullptr) std::memcpy(room, record.data(), record.size());
    return room != nullptr;
}

/// The list to read. Two exchanges, so the list to write remains the same.
Tessarin::EventList& ListToRead(Fixture& fixture) {
    fixture.exchange->Exchange();
    return *fixture.exchange->Exchange();
}

std::string EventState(Fixture& fixture) {
    std::string state;
    for (int list = 0; list < 2; ++list) {
        Tessarin::EventList* events = fixture.exchange->Exchange();
        state += std::to_string(events->GetCount()) + " in " + std::to_string(events->GetCapacity()) + ' ';
        if (!events->IsEmpty()) {
            EXPECT_TRUE(HoldsRecord(events->Front(), kSmall) || HoldsRecord(events->Front(), kLarge));
        }
    }
    return state;
}

TEST(HeapFaults, Events) {
    for (const bool begun : {false, true}) {
        const auto prepare = [begun](Fixture& fixture) {
            fixture.exchange.reset(CreateExchangeEvent());
            for (int list = 0; list < 2; ++list) {
                if (begun) fixture.exchange->Exchange()->Push(kSmall.data());
            }
        };
        Check({prepare, EventState},
              {{"push", [](Fixture& f) { return ListToRead(f).Push(kLarge.data()) != nullptr; }},
               {"reserve",
                [](Fixture& f) {
                    return Written(ListToRead(f).Reserve(static_cast<std::uint32_t>(kLarge.size())), kLarge);
                }},
               {"post", [](Fixture& f) {
                    EXPECT_EQ(f.exchange->Post(kLarge.data()), 1U) << "also for an event that is lost";
                    const bool taken = f.exchange->Exchange()->GetCapacity() >= kLarge.size();
                    f.exchange->Exchange();
                    return taken;
                }}});
    }
}

std::string ContainerState(Fixture& fixture) {
    std::string state = std::to_string(farr_count(fixture.arr.get())) + " of " +
                        std::to_string(farr_capacity(fixture.arr.get())) + ", " +
                        std::to_string(cmd_count(fixture.queue.get())) + " of " +
                        std::to_string(cmd_capacity(fixture.queue.get())) + ':';
    for (std::uint32_t i = 0; i < 4; ++i) {
        state += ' ' + std::to_string(*static_cast<std::uint32_t*>(farr_at(fixture.arr.get(), i)));
    }
    EXPECT_TRUE(HoldsRecord(cmd_front(fixture.queue.get()), kSmall));
    for (std::uintptr_t key = 0; key < 4096; ++key) {
        const void* value = i32hm_get(fixture.map.get(), key);
        if (value != nullptr) state += ' ' + std::to_string(*static_cast<const std::uint32_t*>(value));
    }
    return state;
}

/// Containers of four elements, of which all but the flat array and the queue are full when they are `full`.
template <bool Full>
void PrepareContainers(Fixture& fixture) {
    fixture.arr.reset(farr_create_capacity(4, Full ? 4 : 8));
    fixture.queue.reset(cmd_create(Full ? 24 : 4096));
    fixture.map.reset(i32hm_create(1, 4));
    fixture.blocks.reset(omem_create(16, 4));
    fixture.bytes.reset(imem_create(16));
    cmd_push_element(fixture.queue.get(), kSmall.data());
    for (std::uint32_t i = 0; i < 4; ++i) {
        farr_push_element(fixture.arr.get(), &i);
        omem_alloc(fixture.blocks.get());
        imem_alloc(fixture.bytes.get(), 4);
    }
    for (std::uint32_t i = 0; i < kMapEntries; ++i) i32hm_set(fixture.map.get(), i, &i);
}

/// Takes a block and fills it.
bool Filled(void* block, std::size_t size) {
    if (block != nullptr) std::memset(block, 0x5A, size);
    return block != nullptr;
}

TEST(HeapFaults, Containers) {
    Check({PrepareContainers<true>, ContainerState},
          {{"farr_push", [](Fixture& f) { return Filled(farr_push(f.arr.get()), 4); }},
           {"farr_push_element",
            [](Fixture& f) { return farr_push_element(f.arr.get(), farr_at(f.arr.get(), 2)) != nullptr; }},
           {"cmd_push",
            [](Fixture& f) {
                return Written(cmd_push(f.queue.get(), static_cast<std::uint32_t>(kLarge.size())), kLarge);
            }},
           {"cmd_push_element",
            [](Fixture& f) {
                cmd_push_element(f.queue.get(), cmd_front(f.queue.get()));
                return cmd_count(f.queue.get()) == 2;
            }},
           {"i32hm_set", [](Fixture& f) { return i32hm_set(f.map.get(), 4095, &kItem) == 1; }},
           {"omem_alloc", [](Fixture& f) { return Filled(omem_alloc(f.blocks.get()), 16); }},
           {"imem_alloc", [](Fixture& f) { return Filled(imem_alloc(f.bytes.get(), 16), 16); }}});
    Check({PrepareContainers<false>, ContainerState},
          {{"farr_resize", [](Fixture& f) { return farr_resize(f.arr.get(), 9, 1), farr_count(f.arr.get()) == 9; }},
           {"farr_adapt", [](Fixture& f) { return farr_adapt(f.arr.get()), farr_capacity(f.arr.get()) == 16; }},
           {"farr_copy", [](Fixture& f) { return Owned<farr>(farr_copy(f.arr.get())) != nullptr; }},
           {"cmd_adapt", [](Fixture& f) { return cmd_adapt(f.queue.get()) == 1; }}});
}

/// Destroys what a factory has made at once.
template <class Object>
bool Made(Object* made) {
    if (made != nullptr) End()(made);
    return made != nullptr;
}
template <auto Create, auto... Arguments>
bool Make(Fixture&) {
    return Made(Create(Arguments...));
}

template <auto Intern>
bool Interned(Fixture& fixture) {
    return Intern(fixture.Fresh()) != nullptr;
}

/// One of each object that lives until the library is unloaded.
struct Library {
    Tessarin::StringTable strings;
    Tessarin::TablePools pools;
    Tessarin::TableRegistry registry;
    Tessarin::ObjectPool blocks;
};

TEST(HeapFaults, TheLibraryStartsWithoutMemoryAndWorksLater) {
    alignas(Library) static unsigned char room[sizeof(Library)]; // static, so that only the library allocates
    static const std::string big(0x100000 - 9, 'b');             // fills an arena
    std::size_t attempts = 0;
    const std::size_t failures = FailEachAllocation([&attempts](FailingHeap& heap) {
        const bool has_buckets = attempts++ != 0; // the first allocation; without it no text is ever interned
        auto* library = new (room) Library;
        for (int n = 0; n < 6; ++n) { // one of each class, down to the heap
            std::uint32_t capacity = 0;
            Tessarin::Pair** entries = library->pools.keys.Acquire(4U << n, capacity);
            EXPECT_TRUE(entries != nullptr || heap.Failed());
            library->pools.keys.Release(entries, capacity);
        }
        const bool had_failed = heap.Failed();
        const bool came_up = library->blocks.Init(16, 4);
        EXPECT_EQ(came_up, heap.Failed() == had_failed);
        void* blocks[32];
        for (void*& block : blocks) {
            block = library->blocks.Alloc();
            if (block == nullptr) block = library->blocks.Alloc();
            EXPECT_TRUE(Filled(block, 16));
        }
        for (void* block : blocks) library->blocks.Free(block);
        // The two short texts have one hash, so their bucket needs a block.
        for (const char* text : {big.c_str(), "ab", "b\xDF"}) {
            cstr interned = library->strings.Intern(text);
            EXPECT_TRUE(interned != nullptr || heap.Failed());
            EXPECT_EQ(library->strings.Find(text), interned);
            if (interned == nullptr) interned = library->strings.Intern(text);
            EXPECT_EQ(interned != nullptr, has_buckets);
            EXPECT_TRUE(interned == nullptr || std::strcmp(interned, text) == 0);
        }
        library->registry.Set(room, 1);
        EXPECT_LE(library->registry.Get(room), 1U);
        library->~Library();
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_GT(failures, 40U);
}

TEST(HeapFaults, Factories) {
    static const TemporaryFolder folder;
    static const std::string path = folder.File("a", "");
    const auto interned = [](Fixture& f) { return std::string(cstr_find(f.Fresh()) == nullptr ? "" : "interned"); };
    Check({[](Fixture&) {}, interned},
          {{"cstr_string", Interned<cstr_string>},
           {"cstr_tolower", Interned<cstr_tolower>},
           {"cstr_path", Interned<cstr_path>},
           {"CreateTable", Make<CreateTable>},
           {"CreateRLFile", Make<CreateRLFile, nullptr>},
           {"CreateExchangeEvent", Make<CreateExchangeEvent>},
           {"CreateReadFile", [](Fixture&) { return Made(CreateReadFile(path.c_str())); }},
           {"CreateWriteFile", [](Fixture&) { return Made(CreateWriteFile(path.c_str())); }},
           {"CreateTabFile", // without its own file service there is an object, which opens nothing
            [](Fixture&) {
                const Owned<ITabFile> tab(CreateTabFile(nullptr));
                return tab != nullptr && tab->Open(path.c_str(), 0);
            }},
           {"farr_create", Make<farr_create, 8U>},
           {"cmd_create", Make<cmd_create, 8U>},
           {"i32hm_create", Make<i32hm_create, 8U, 8U>},
           {"omem_create", Make<omem_create, 8U, 8U>},
           {"imem_create", Make<imem_create, 8U>}});
}

} // namespace
