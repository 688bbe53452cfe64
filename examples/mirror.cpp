// A table that mirrors another: a listener repeats each change in the other table, as an editor's view of a game's data
// does.
//
// Before you copy from here:
//  - A listener runs inside the change, on its thread, before and after it; the code says which.
//  - The listener is removed before its object ends.

#include <tessarin/tessarin.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

using Tessarin::ITable;

struct TableCloser {
    void operator()(ITable* table) const { CloseTable(table); }
};
using Owned = std::unique_ptr<ITable, TableCloser>;

class Mirror {
public:
    Mirror(ITable& original, ITable& copy)
        : original_(original), copy_(copy), listener_(ArgumentDelegate<&Mirror::OnChange>(this)) {
        if (Delegate* slot = original_.AddArgumentListener()) *slot = listener_;
    }
    ~Mirror() { original_.RemoveArgumentListener(&listener_); }
    Mirror(const Mirror&) = delete;
    Mirror& operator=(const Mirror&) = delete;

    void OnChange(std::uint32_t code, ITable* table, cstr key) {
        switch (code) {
        case Tessarin::EVENT_ADDED:
        case Tessarin::EVENT_CHANGED:
            CopyValue(*table->Find(key), key);
            break;
        case Tessarin::EVENT_REMOVED:
            copy_.Remove(key, 1);
            break;
        case Tessarin::EVENT_CLEARED:
            copy_.Clear(1);
            break;
        case Tessarin::EVENT_RENAMING:
            old_key_ = key;
            break;
        case Tessarin::EVENT_RENAMED:
            copy_.Rename(old_key_, key, 1);
            break;
        default:
            break;
        }
    }

private:
    void CopyValue(Tessarin::IIterator& entry, cstr key) {
        if (entry.GetType() == Tessarin::VALUE_INTEGER) copy_.SetInteger(key, entry.GetInteger(), 1);
        if (entry.GetType() == Tessarin::VALUE_REAL) copy_.SetReal(key, entry.GetReal(), 1);
        if (entry.GetType() == Tessarin::VALUE_STRING) copy_.SetString(key, entry.GetString(), 1);
    }

    ITable& original_;
    ITable& copy_;
    Delegate listener_;
    cstr old_key_ = nullptr;
};

std::string Text(ITable& table) {
    std::string text;
    for (const char* key : {"name", "hull", "speed", "crew", "hands"}) {
        if (Tessarin::IIterator* entry = table.Find(key)) {
            text += std::string(key) + '=';
            text += entry->GetType() == Tessarin::VALUE_STRING    ? entry->GetString()
                    : entry->GetType() == Tessarin::VALUE_INTEGER ? std::to_string(entry->GetInteger())
                                                                  : std::to_string(entry->GetReal());
            text += ' ';
        }
    }
    return text;
}

} // namespace

int main() {
    const Owned ship(CreateTable()), view(CreateTable());
    const Mirror mirror(*ship, *view);
    SetString(ship.get(), "name", "Heron");
    SetInteger(ship.get(), "hull", 80);
    SetReal(ship.get(), "speed", 4.5F);
    SetInteger(ship.get(), "crew", 7);
    SetInteger(ship.get(), "hull", 75);
    Remove(ship.get(), "speed");
    ship->Rename("crew", "hands", 1);
    std::printf("the ship: %s\nthe view: %s\n", Text(*ship).c_str(), Text(*view).c_str());
    return Text(*ship) == Text(*view) && view->GetInteger("hands") == 7 ? 0 : 1;
}
