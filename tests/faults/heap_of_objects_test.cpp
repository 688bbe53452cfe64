// Everything but tables without memory: configuration, tab files, events, containers, and what every factory makes.

#include "tests/faults/heap_rows.h"

#include "tests/configure/tree_text.h"
#include "tests/support/records.h"
#include "tests/support/temporary_folder.h"

#include <cstring>
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

std::string FileState(World& world) {
    EXPECT_EQ(world.files.handles, 0);
    return TextOf(world.file->GetRoot(), Order::kSorted);
}

// Both lists are as long as their first room, so that the next entry needs more.
const char kEditable[] = R"(a = 1 b = 2 c = 3 d = 4 e = 5 f = 6 g = 7 h = 8 i = "" j = 10 -- behind it
    l = { 1 2 3 4 5 6 7 8 9 10 11 12 } _default = { x = { 1 { } { { y = z } } "" } Path/To = { } })";

/// A text file, and the binary form of the same but for the value that is fresh.
void PrepareFiles(World& world) {
    const auto text_with = [](const std::string& fresh) { // early, and in what is open at the end
        return "early = " + fresh + ' ' + kEditable + " open = { { { { v = " + fresh;
    };
    const std::string other = FreshText();
    world.files["text"] = text_with(other);
    world.file.reset(CreateRLFile(&world.files));
    world.file->Load("text", ACCESS_EDIT, FORMAT_TEXT);
    EXPECT_TRUE(world.file->SaveAs("binary", FORMAT_BINARY));
    world.file->Reset();
    std::string& binary = world.files["binary"];
    binary.replace(binary.find(other), other.size(), world.fresh);
    world.files["text"] = text_with(world.fresh);
    world.files[world.fresh] = kEditable;
}

template <Configure::FileAccess Access, Configure::FileFormat Format>
bool LoadConfiguration(World& world) {
    const char* path = Format == FORMAT_BINARY ? "binary" : "text";
    Configure::ITable* root = world.file->Load(path, Access, Format);
    EXPECT_EQ(world.file->GetRoot(), root);
    return root != nullptr;
}

TEST(HeapFaults, EveryLoadOfAConfiguration) {
    Check({PrepareFiles, FileState},
          {{"text to read", LoadConfiguration<ACCESS_READ, FORMAT_TEXT>},
           {"text to edit", LoadConfiguration<ACCESS_EDIT, FORMAT_TEXT>},
           {"either form", LoadConfiguration<ACCESS_EDIT, FORMAT_AUTO>},
           {"binary", LoadConfiguration<ACCESS_READ, FORMAT_BINARY>},
           // The path is what can't be interned: there is a root all the same, but the object doesn't know of it.
           {"new path", [](World& w) {
                return w.file->Load(w.Fresh(), ACCESS_READ, FORMAT_TEXT) != nullptr && w.file->GetRoot() != nullptr;
            }}});
}

template <Configure::FileFormat Format>
bool SaveConfiguration(World& world) {
    const bool saved = world.file->SaveAs("target", Format);
    EXPECT_TRUE(!saved || world.files["target"] == world.files[Format == FORMAT_TEXT ? "as text" : "as binary"]);
    return saved;
}

TEST(HeapFaults, EverySaveOfAConfiguration) {
    for (auto load : {LoadConfiguration<ACCESS_READ, FORMAT_TEXT>, LoadConfiguration<ACCESS_EDIT, FORMAT_TEXT>,
                      LoadConfiguration<ACCESS_READ, FORMAT_BINARY>}) {
        const auto prepare = [load](World& world) {
            PrepareFiles(world);
            EXPECT_TRUE(load(world) && world.file->SaveAs("as text", FORMAT_TEXT) &&
                        world.file->SaveAs("as binary", FORMAT_BINARY));
            const std::size_t room = world.files["as text"].size() + world.files["as binary"].size();
            for (const char* name : {"target", "text"}) world.files[name].reserve(room);
        };
        std::vector<Row> rows = {{"text", SaveConfiguration<FORMAT_TEXT>},
                                 {"binary", SaveConfiguration<FORMAT_BINARY>}};
        if (load == LoadConfiguration<ACCESS_EDIT, FORMAT_TEXT>) {
            rows.push_back({"back", [](World& w) { return w.file->Save(); }});
        }
        Check({prepare, FileState}, rows);
    }
}

TEST(HeapFaults, EveryChangeOfAConfiguration) {
    const auto prepare = [](World& world) {
        world.files["text"] = kEditable;
        world.file.reset(CreateRLFile(&world.files));
        world.file->Load("text", ACCESS_EDIT, FORMAT_TEXT);
    };
    Check({prepare, FileState},
          {{"string", [](World& w) { return w.Root().AddString("new", w.Fresh()) != nullptr; }},
           {"string under a new key", [](World& w) { return w.Root().AddString(w.Fresh(), "v") != nullptr; }},
           {"array", [](World& w) { return w.Root().AddArray(w.Fresh()) != nullptr; }},
           {"table", [](World& w) { return w.Root().AddTable(w.Fresh()) != nullptr; }},
           {"element", [](World& w) { return w.Root().GetArray("l")->AddString(0, w.Fresh()) != nullptr; }},
           {"array in an array", [](World& w) { return w.Root().GetArray("l")->AddArray(0) != nullptr; }},
           {"table in an array", [](World& w) { return w.Root().GetArray("l")->AddTable(0) != nullptr; }},
           {"key", [](World& w) { return w.Root().Begin()->SetKey(w.Fresh()); }},
           {"text", [](World& w) { return w.Root().Begin()->SetString(w.Fresh()); }}});
}

// ------------------------------------------------------------------------------- tab files, events, containers,
// factories

TEST(HeapFaults, TabFiles) {
    const auto prepare = [](World& world) {
        world.files[world.fresh] = "h\ti\nx\ty\n\t2\n";
        world.tab.reset(CreateTabFile(&world.files));
    };
    const auto state = [](World& world) {
        std::string grid = std::to_string(world.tab->GetRowCount()) + 'x' + std::to_string(world.tab->GetColumnCount());
        for (std::uint32_t row = 0; row < world.tab->GetRowCount(); ++row) {
            for (std::uint32_t column = 0; column < 2; ++column) grid += Quoted(world.tab->GetCell(row, column));
        }
        EXPECT_EQ(world.files.handles, 0);
        return grid;
    };
    Check({prepare, state}, {{"rows", [](World& w) { return w.tab->Open(w.Fresh(), 0); }},
                             {"rows and defaults", [](World& w) {
                                  return w.tab->Open(w.Fresh(), TABFILE_DEFAULT_ROW | TABFILE_SKIP_FIRST_LINE);
                              }}});
}

constexpr std::uintptr_t kMapEntries = 16; // as many as the first chunk of nodes has
const Record kSmall = MakeRecord(24, 1), kLarge = MakeRecord(5000, 2);

/// The list that is read; the one that is written stays that.
Tessarin::EventList& ListToRead(World& world) {
    world.exchange->Exchange();
    return *world.exchange->Exchange();
}

std::string EventState(World& world) {
    std::string state;
    for (int list = 0; list < 2; ++list) {
        Tessarin::EventList* events = world.exchange->Exchange();
        state += std::to_string(events->GetCount()) + " in " + std::to_string(events->GetCapacity()) + ' ';
        if (!events->IsEmpty()) {
            EXPECT_TRUE(HoldsRecord(events->Front(), kSmall) || HoldsRecord(events->Front(), kLarge));
        }
    }
    return state;
}

TEST(HeapFaults, Events) {
    for (bool begun : {false, true}) {
        const auto prepare = [begun](World& world) {
            world.exchange.reset(CreateExchangeEvent());
            for (int list = 0; list < 2; ++list) {
                if (begun) world.exchange->Exchange()->Push(kSmall.data());
            }
        };
        Check({prepare, EventState},
              {{"push", [](World& w) { return ListToRead(w).Push(kLarge.data()) != nullptr; }},
               {"reserve",
                [](World& w) {
                    void* room = ListToRead(w).Reserve(static_cast<std::uint32_t>(kLarge.size()));
                    if (room != nullptr) std::memcpy(room, kLarge.data(), kLarge.size());
                    return room != nullptr;
                }},
               {"post", [](World& w) {
                    EXPECT_EQ(w.exchange->Post(kLarge.data()), 1U) << "also for an event that is lost";
                    const bool taken = w.exchange->Exchange()->GetCapacity() >= kLarge.size();
                    w.exchange->Exchange();
                    return taken;
                }}});
    }
}

std::string ContainerState(World& world) {
    std::string state =
        std::to_string(farr_count(world.arr.get())) + " of " + std::to_string(farr_capacity(world.arr.get())) + ", " +
        std::to_string(cmd_count(world.queue.get())) + " of " + std::to_string(cmd_capacity(world.queue.get())) + ':';
    for (std::uint32_t i = 0; i < 4; ++i) {
        state += ' ' + std::to_string(*static_cast<std::uint32_t*>(farr_at(world.arr.get(), i)));
    }
    EXPECT_TRUE(HoldsRecord(cmd_front(world.queue.get()), kSmall));
    for (std::uintptr_t key = 0; key < 4096; ++key) {
        const void* value = i32hm_get(world.map.get(), key);
        if (value != nullptr) state += ' ' + std::to_string(*static_cast<const std::uint32_t*>(value));
    }
    return state;
}

/// Containers of four elements, of which all but the flat array and the queue are full when they are `full`.
template <bool Full>
void PrepareContainers(World& world) {
    world.arr.reset(farr_create_capacity(4, Full ? 4 : 8));
    world.queue.reset(cmd_create(Full ? 24 : 4096));
    world.map.reset(i32hm_create(1, 4));
    world.blocks.reset(omem_create(16, 4));
    world.bytes.reset(imem_create(16));
    cmd_push_element(world.queue.get(), kSmall.data());
    for (std::uint32_t i = 0; i < 4; ++i) {
        farr_push_element(world.arr.get(), &i);
        omem_alloc(world.blocks.get());
        imem_alloc(world.bytes.get(), 4);
    }
    for (std::uint32_t i = 0; i < kMapEntries; ++i) i32hm_set(world.map.get(), i, &i);
}

/// Takes a block and fills it.
bool Filled(void* block, std::size_t size) {
    if (block != nullptr) std::memset(block, 0x5A, size);
    return block != nullptr;
}

TEST(HeapFaults, Containers) {
    Check({PrepareContainers<true>, ContainerState},
          {{"farr_push", [](World& w) { return Filled(farr_push(w.arr.get()), 4); }},
           {"farr_push_element",
            [](World& w) { return farr_push_element(w.arr.get(), farr_at(w.arr.get(), 2)) != nullptr; }},
           {"cmd_push",
            [](World& w) {
                void* room = cmd_push(w.queue.get(), static_cast<std::uint32_t>(kLarge.size()));
                if (room != nullptr) std::memcpy(room, kLarge.data(), kLarge.size());
                return room != nullptr;
            }},
           {"cmd_push_element",
            [](World& w) {
                cmd_push_element(w.queue.get(), cmd_front(w.queue.get()));
                return cmd_count(w.queue.get()) == 2;
            }},
           {"i32hm_set", [](World& w) { return i32hm_set(w.map.get(), 4095, &kItem) == 1; }},
           {"omem_alloc", [](World& w) { return Filled(omem_alloc(w.blocks.get()), 16); }},
           {"imem_alloc", [](World& w) { return Filled(imem_alloc(w.bytes.get(), 16), 16); }}});
    Check({PrepareContainers<false>, ContainerState},
          {{"farr_resize", [](World& w) { return farr_resize(w.arr.get(), 9, 1), farr_count(w.arr.get()) == 9; }},
           {"farr_adapt", [](World& w) { return farr_adapt(w.arr.get()), farr_capacity(w.arr.get()) == 16; }},
           {"farr_copy", [](World& w) { return Owned<farr>(farr_copy(w.arr.get())) != nullptr; }},
           {"cmd_adapt", [](World& w) { return cmd_adapt(w.queue.get()) == 1; }}});
}

/// What a factory makes is ended at once.
template <auto Create, auto... Arguments>
bool Make(World&) {
    auto* made = Create(Arguments...);
    if (made != nullptr) End()(made);
    return made != nullptr;
}

TEST(HeapFaults, Factories) {
    static const TemporaryFolder folder;
    static const std::string path = folder.File("a", "");
    const Group nothing = {[](World&) {}, [](World&) { return std::string(); }};
    Check(nothing, {{"CreateTable", Make<CreateTable>},
                    {"CreateRLFile", Make<CreateRLFile, nullptr>},
                    {"CreateExchangeEvent", Make<CreateExchangeEvent>},
                    {"CreateReadFile",
                     [](World&) {
                         Tessarin::IRead* file = CreateReadFile(path.c_str());
                         return file != nullptr && file->Release() == 1;
                     }},
                    {"CreateWriteFile",
                     [](World&) {
                         Tessarin::IWrite* file = CreateWriteFile(path.c_str());
                         return file != nullptr && file->Release() == 1;
                     }},
                    {"CreateTabFile", // without its own file service there is an object, which opens nothing
                     [](World&) {
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
