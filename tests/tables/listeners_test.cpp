// Which listeners are notified of what, in which order, and what they may do meanwhile to the table that notifies them.

#include "tables/listener_dispatch.h"
#include "tables/table.h"
#include "tests/tables/recorder.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace Tessarin;
using namespace TestSupport;

/// A table with the entries k = 1 and m = 2, and listeners that share a log: T and A (record, argument) on the table,
/// R and E on the entry k, I on the array part.
struct Listeners : testing::Test {
    TableHolder holder;
    ITable* table = nullptr;
    std::string log;
    std::array<Listener, 5> listeners{{{"T", &log}, {"A", &log}, {"R", &log}, {"E", &log}, {"I", &log}}};
    Listener extra{"X", &log};

    Listeners() { Renew(); }

    void Renew() {
        holder = NewTable();
        table = holder.get();
        table->SetInteger("k", 1, 0);
        table->SetInteger("m", 2, 0);
    }
};

TEST_F(Listeners, SeeTheEntryAsItIsAtThatMoment) {
    std::string seen;
    extra.act = [&seen](std::uint32_t code, ITable* t, cstr key) {
        IIterator* pair = t->Find(key);
        seen += std::to_string(code) + "=";
        seen += pair == nullptr ? "gone "
                                : std::to_string(pair->GetType()) + "/" + std::to_string(pair->GetInteger()) + " ";
    };
    *table->AddRecordListener() = extra.Record();
    table->SetInteger("n", 3, 1);
    table->SetInteger("n", 4, 1);
    table->Rename("n", "o", 1);
    table->Remove("o", 1);
    EXPECT_EQ(seen, "9=0/0 0=5/3 10=5/3 1=5/4 13=5/4 4=5/4 11=5/4 2=gone ");
}

// --------------------------------------------------------------------------------------------------------- the lists

TEST(DelegateVector, GrowsByItsClassesAndKeepsItsDelegates) {
    Listener listener{"", nullptr};
    for (const ListenerKind kind : {kRecordListener, kArgumentListener, kArrayListener}) {
        DelegateVector vector{};
        for (std::uint32_t n = 0; n < 130; ++n) {
            Delegate* slot = vector.Append(kind);
            ASSERT_NE(slot, nullptr);
            EXPECT_TRUE(slot->object == nullptr && slot->function == nullptr);
            *slot = {&listener + n, listener.Record().function};
            const std::uint32_t expected = n < 4 ? 4 : n < 16 ? 16 : n < 32 ? 32 : n < 64 ? 64 : n < 128 ? 128 : 256;
            ASSERT_EQ(vector.capacity, expected) << n;
        }
        for (std::uint32_t n = 0; n < 130; ++n) EXPECT_EQ(vector.data[n].object, &listener + n);
        vector.Release(kind);
    }
}

TEST_F(Listeners, RemovalTakesASlotForItsDelegateAndNoOtherKind) {
    for (const char* key : {static_cast<const char*>(nullptr), "k"}) {
        const auto add = [&](Listener& listener) {
            Delegate* slot = key == nullptr ? table->AddRecordListener() : table->AddRecordListener(key);
            *slot = listener.Record();
            return slot;
        };
        const auto remove = [&](const Delegate* delegate) {
            key == nullptr ? table->RemoveRecordListener(delegate) : table->RemoveRecordListener(key, delegate);
        };
        Delegate* first = add(listeners[0]);
        add(listeners[1]);
        remove(first); // passed as its own slot, which the last one then fills
        const Delegate last = listeners[1].Record(), other_kind = listeners[1].Argument();
        remove(&other_kind);
        table->RemoveArgumentListener(&other_kind);
        table->RemoveRecordListener(key == nullptr ? "k" : "x", &last);
        table->RemoveRecordListener(static_cast<const char*>(nullptr), &last);
        table->SetInteger("k", table->GetInteger("k") + 1, 1);
        EXPECT_EQ(TakeLog(log), "A10:k A1:k ");
        remove(&last);
    }
    EXPECT_EQ(table->AddArgumentListener(nullptr), nullptr) << "no key is not the whole table";
    for (int n = 0; n < 2; ++n) table->RemoveRecordListener("k", table->AddRecordListener("k")); // an empty one
}

// -------------------------------------------------------------------------------------------------- while dispatching

TEST_F(Listeners, RequestsWaitForTheEndOfTheirNotification) {
    Delegate leaver = listeners[1].Record();
    listeners[0].act = [&](std::uint32_t code, ITable* t, cstr) {
        if (code != EVENT_CHANGING) return;
        for (int n = 0; n < 6; ++n) *t->AddRecordListener() = listeners[2].Record(); // more than the queue begins with
        *t->AddArgumentListener("k") = listeners[3].Argument();
        *t->AddArrayListener() = listeners[4].Array();
        *t->AddRecordListener("never there") = extra.Record();
        *t->AddArgumentListener() = extra.Argument();
        const Delegate taken_back = extra.Argument();
        t->RemoveArgumentListener(&taken_back);
        t->RemoveRecordListener(&leaver);
    };
    *table->AddRecordListener() = listeners[0].Record();
    *table->AddRecordListener() = leaver;
    table->SetInteger("k", 2, 1);
    EXPECT_EQ(TakeLog(log), "T10:k A10:k T1:k R1:k R1:k R1:k R1:k R1:k R1:k E1:k ")
        << "in time for the second half of the same call";
    table->CreateArray(1);
    EXPECT_EQ(TakeLog(log), "I14:0 I5:0 ");
}

// The end of the inner notification clears the flag and applies the queue, even if it has no listener. Later requests
// take effect at once, and the outer notification, which reads count and data at each step, includes their results.
TEST_F(Listeners, AnInnerNotificationAppliesTheRequestsOfTheOuterOne) {
    for (bool on_entry : {false, true}) {
        Renew();
        const Delegate actor = listeners[0].Record();
        listeners[0].act = [&](std::uint32_t code, ITable* t, cstr key) {
            if (code != EVENT_CHANGING || key != cstr_string("k")) return;
            auto add = [&] { return on_entry ? t->AddRecordListener("k") : t->AddRecordListener(); };
            *add() = listeners[1].Record(); // waits for the inner one's end
            t->SetInteger("m", t->GetInteger("m") + 1, 1);
            for (int n = 0; n < 5; ++n) *add() = listeners[2].Record(); // at once: the vector moves during the dispatch
            const Delegate self = listeners[0].Record();
            on_entry ? t->RemoveRecordListener("k", &self) : t->RemoveRecordListener(&self);
        };
        *(on_entry ? table->AddRecordListener("k") : table->AddRecordListener()) = actor;
        table->SetInteger("k", table->GetInteger("k") + 1, 1);
        // The actor's gap is filled by the last R, and its place has been passed: one A, four R.
        const std::string rest = "A10:k R10:k R10:k R10:k R10:k ";
        const std::string after = "R1:k A1:k R1:k R1:k R1:k R1:k ";
        const std::string inner = on_entry ? "" : "T10:m T1:m A1:m ";
        EXPECT_EQ(TakeLog(log), "T10:k " + inner + rest + after) << on_entry;
    }
}

// ---------------------------------------------------------------------- listeners that end what their call is about

enum Blow { kRemove, kClear, kClose };

/// Ends the entry or the table. If the table lives on, another entry takes the block that has just become free: nothing
/// may be stored there.
void Strike(Blow blow, TableHolder& table, cstr key) {
    if (blow == kClose) return table.reset();
    blow == kRemove ? table->Remove(key, 1) : table->Clear(1);
    table->SetInteger("other", 77, 0);
}

std::uint32_t HandOver(ITable* table) {
    ITable* child = CreateTable();
    const std::uint32_t taken = table->SetTable("n", child, 1);
    if (taken != 0) return taken;
    EXPECT_EQ(ValidateTable(child), 1U) << "refused, it is still the host's";
    CloseTable(child);
    return taken;
}

struct Operation {
    const char* name;
    std::uint32_t before, after; // the codes at which the blow falls
    std::uint32_t (*run)(ITable* table);
    std::uint32_t result_before, result_after;
};

const Operation kOperations[] = {
    {"change", EVENT_CHANGING, EVENT_CHANGED, [](ITable* t) { return t->SetInteger("k", 5, 1); }, 0, 1},
    {"add", EVENT_ADDING, EVENT_ADDED, [](ITable* t) { return t->SetReal("n", 5, 1); }, 0, 1},
    {"add text", EVENT_ADDING, EVENT_ADDED, [](ITable* t) { return t->SetString("n", "text", 1); }, 0, 1},
    {"child", EVENT_ADDING, EVENT_ADDED, [](ITable* t) { return t->Set("n", 1) == nullptr ? 0U : 1U; }, 0, 0},
    {"hand over", EVENT_ADDING, EVENT_ADDED, HandOver, 0, 1},
    {"remove", EVENT_REMOVING, EVENT_REMOVED, [](ITable* t) { return t->Remove("k", 1); }, 0, 1},
    {"rename", EVENT_RENAMING, EVENT_RENAMED, [](ITable* t) { return t->Rename("k", "l", 1); }, 0, 1},
    {"clear", EVENT_CLEARING, EVENT_CLEARED, [](ITable* t) { return t->Clear(1); }, 1, 1},
};

TEST_F(Listeners, EndingTheEntryOrTheTableIsSafe) {
    for (const Operation& operation : kOperations) {
        for (Blow blow : {kRemove, kClear, kClose}) {
            for (unsigned round = 0; round < 4; ++round) {
                const bool late = (round & 1) != 0;
                const bool by_entry = (round & 2) != 0;
                const std::uint32_t code = late ? operation.after : operation.before;
                SCOPED_TRACE(std::string(operation.name) + ", blow " + std::to_string(blow) + " at " +
                             std::to_string(code));
                Renew();
                bool struck = false;
                Listener striker{"S", &log};
                striker.act = [&](std::uint32_t current, ITable*, cstr key) {
                    if (current != code || std::exchange(struck, true)) return;
                    Strike(blow, holder, key);
                    log.clear();
                };
                *(by_entry ? table->AddRecordListener("k") : table->AddRecordListener()) = striker.Record();
                *table->AddRecordListener() = extra.Record();
                *table->AddRecordListener("k") = listeners[2].Record();
                *table->AddArgumentListener("k") = listeners[3].Argument();
                const std::uint32_t result = operation.run(table);
                if (!std::exchange(struck, true)) continue; // an entry's listeners aren't notified of this
                EXPECT_EQ(result, late ? operation.result_after : operation.result_before);
                EXPECT_EQ(TakeLog(log).find_first_of("RE"), std::string::npos) << "the entry's others aren't called";
                if (holder == nullptr) continue;
                const bool cleared_again = operation.before == EVENT_CLEARING && !late;
                EXPECT_EQ(table->GetInteger("other"), cleared_again ? 0 : 77);
                EXPECT_TRUE(static_cast<Table*>(table)->Entries().IsValid());
                EXPECT_EQ(table->SetInteger("next", 1, 1), 1U);
                EXPECT_EQ(TakeLog(log), by_entry ? "X9:next X0:next " : "S9:next X9:next S0:next X0:next ");
            }
        }
    }
}

TEST_F(Listeners, AListenersOwnChangeOfTheEntryHolds) {
    ITable* child = nullptr;
    extra.act = [&](std::uint32_t code, ITable* t, cstr key) {
        if (code == EVENT_ADDING) child = t->Set(key, 0);
        if (code == EVENT_CHANGING) t->Rename(key, "renamed", 0);
    };
    *table->AddRecordListener() = extra.Record();
    *table->AddArgumentListener() = listeners[1].Argument();
    ITable* handed = CreateTable();
    for (const char* key : {"n", "o", "p"}) {
        const bool taken = *key == 'n'   ? table->SetInteger(key, 3, 1) != 0
                           : *key == 'o' ? table->Set(key, 1) != nullptr
                                         : table->SetTable(key, handed, 1) != 0;
        EXPECT_FALSE(taken) << "the kind that the entry has got meanwhile stays";
        EXPECT_EQ(table->GetTable(key), child);
        EXPECT_EQ(ValidateTable(child), 2U);
    }
    CloseTable(handed);
    log.clear();
    EXPECT_EQ(table->SetInteger("k", 5, 1), 1U);
    EXPECT_EQ(TakeLog(log), "X10:k A10:renamed X1:renamed A1:renamed ");
    EXPECT_EQ(table->GetInteger("renamed"), 5);
    extra.act = [&](std::uint32_t code, ITable* t, cstr key) {
        if (code == EVENT_ADDED) t->Find(key)->SetInteger(9); // the child that has just been made ends by that
        if (code == EVENT_CHANGING) t->Rename("p", "q", 0);   // not the entry of the notification
    };
    EXPECT_EQ(table->Set("late", 1), nullptr);
    EXPECT_EQ(table->GetInteger("late"), 9);
    log.clear();
    EXPECT_EQ(table->SetInteger("m", 5, 1), 1U);
    EXPECT_EQ(TakeLog(log), "X10:m A10:m X1:m A1:m ");
    *table->AddArgumentListener("m") = listeners[3].Argument();
    const Delegate of_entry = listeners[3].Argument();
    table->RemoveArgumentListener("m", &of_entry);
    EXPECT_EQ(table->SetInteger("m", 6, 1), 1U);
    EXPECT_EQ(TakeLog(log), "X10:m A10:m X1:m A1:m ");
}

TEST_F(Listeners, AnArrayPartThatIsMadeAnewTakesNoItemOfTheOldSize) {
    extra.act = [](std::uint32_t code, ITable* t, cstr) {
        if (code == EVENT_ITEM_SETTING) t->CreateArray(2);
    };
    table->CreateArray(4);
    *table->AddArrayListener() = extra.Array();
    const int item = 1;
    EXPECT_EQ(table->SetArrayItem(3, &item, 1), nullptr);
    EXPECT_EQ(table->GetArrayCount(), 0U);
    EXPECT_NE(table->SetArrayItem(3, &item, 0), nullptr);
}

TEST_F(Listeners, EndingTheArrayPartOrItsTableIsSafe) {
    const struct {
        std::uint32_t code;
        bool result_closed, result_destroyed;
    } cases[] = {{EVENT_ARRAY_CREATING, false, true},  {EVENT_ARRAY_CREATED, true, true},
                 {EVENT_ITEM_SETTING, false, false},   {EVENT_ITEM_SET, false, false},
                 {EVENT_ARRAY_DESTROYING, true, true}, {EVENT_ARRAY_DESTROYED, true, true}};
    for (const auto& row : cases) {
        for (bool close : {true, false}) {
            Renew();
            table->CreateArray(4);
            bool struck = false;
            extra.act = [&](std::uint32_t code, ITable* t, cstr) {
                if (code != row.code || std::exchange(struck, true)) return;
                close ? holder.reset() : static_cast<void>(t->DestroyArray());
            };
            *table->AddArrayListener() = extra.Array();
            int item = 1;
            const std::uint32_t after = row.code % 9;
            const bool result = after == EVENT_ARRAY_CREATED ? table->CreateArray(4) != 0
                                : after == EVENT_ITEM_SET    ? table->SetArrayItem(1, &item, 1) != nullptr
                                                             : table->DestroyArray() != 0;
            EXPECT_TRUE(struck);
            EXPECT_EQ(result, close ? row.result_closed : row.result_destroyed) << row.code;
        }
    }
}

} // namespace
