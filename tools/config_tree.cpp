// No walk in here recurses, and none takes more than the steps of both trees' sizes: files come from anybody.

#include "tools/config_tree.h"

#include "tools/failure.h"

#include <tessarin/interned_strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace Command {

namespace {

using Configure::IArray;
using Configure::IIterator;
using Configure::ITable;

// ------------------------------------------------------------------------------------------------------------- opening

bool IsCompiled(const std::string& path) {
    char mark[28] = {};
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    const bool is_read = file && std::fread(mark, 1, sizeof mark, file) == sizeof mark;
    if (file) std::fclose(file);
    return is_read && std::memcmp(mark, "NIBx", 4) == 0;
}

ConfigFile Load(const Input& input, Configure::FileAccess access) {
    ConfigFile file(CreateRLFile(nullptr));
    if (file && !file->Load(input.Path().c_str(), access, Configure::FORMAT_AUTO)) file.reset();
    return file;
}

[[noreturn]] void FailToLoad(const Input& input) {
    constexpr std::uintmax_t kTextLimit = 1U << 28;
    if (IsCompiled(input.Path())) throw Failure(input.Name(), "is a damaged compiled file");
    if (input.Size() >= kTextLimit) throw Failure(input.Name(), "is too large, as a text may have 256 MiB");
    throw Failure(input.Name(), "has an `=` without a key, or a key or a text that is too long");
}

// ------------------------------------------------------------------------------------------------------------- walking

template <class Container>
std::pair<IIterator*, IIterator*> UnitsOf(Container* container) {
    return {container->Begin(), container->End()};
}

// What is left of the Units of a table or an array, or of neither.
class Units {
public:
    explicit Units(const Place& place) : table_(place.table), array_(place.array) {
        if (table_) std::tie(unit_, end_) = UnitsOf(table_);
        if (array_) std::tie(unit_, end_) = UnitsOf(array_);
    }

    [[nodiscard]] bool IsEmpty() const { return unit_ == end_; }

    IIterator* Take() {
        IIterator* const unit = unit_;
        if (table_) unit_ = table_->Next(unit);
        if (array_) unit_ = array_->Next(unit);
        ++taken_;
        return unit;
    }

    Units Take(Row& row);

private:
    ITable* table_;
    IArray* array_;
    IIterator* unit_ = nullptr;
    IIterator* end_ = nullptr;
    std::size_t taken_ = 0;
};

void Describe(const Place& place, Row& row) {
    row.shape = place.table ? Shape::Table : place.array ? Shape::Array : place.text ? Shape::Text : Shape::Literal;
    if (place.table) row.count = place.table->GetCount();
    if (place.array) row.count = place.array->GetCount();
    if (place.text) row.value = place.text;
    if (place) return;
    row.value = "null";
    row.kind = "no value";
}

Units Units::Take(Row& row) {
    row.is_in_array = array_ != nullptr;
    if (array_) row.key = std::to_string(taken_);
    IIterator* const unit = Take();
    if (table_) row.key = unit->GetKey();
    const Place place = PlaceOf(unit);
    Describe(place, row);
    return Units(place);
}

// ----------------------------------------------------------------------------------------------------------- comparing

// What stands under one key, or at one position, in either tree; null in the one that has nothing there.
struct Match {
    std::string piece;
    IIterator* before;
    IIterator* after;
};

struct Keyed {
    std::string_view key;
    IIterator* unit;
};

std::vector<Keyed> SortedUnits(ITable* table) {
    std::vector<Keyed> units;
    for (Units left(Place{table}); !left.IsEmpty();) {
        IIterator* const unit = left.Take();
        units.push_back({unit->GetKey(), unit});
    }
    std::stable_sort(units.begin(), units.end(), [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
    return units;
}

std::vector<Match> MatchTables(ITable* first, ITable* second) {
    const std::vector<Keyed> before = SortedUnits(first);
    const std::vector<Keyed> after = SortedUnits(second);
    std::vector<Match> matches;
    for (auto left = before.begin(), right = after.begin(); left != before.end() || right != after.end();) {
        const bool has_left = right == after.end() || (left != before.end() && left->key <= right->key);
        const bool has_right = left == before.end() || (right != after.end() && right->key <= left->key);
        std::string piece = SpellKey(has_left ? left->key : right->key);
        IIterator* const unit = has_left ? (left++)->unit : nullptr;
        matches.push_back({std::move(piece), unit, has_right ? (right++)->unit : nullptr});
    }
    return matches;
}

std::vector<Match> MatchArrays(const Place& first, const Place& second) {
    Units before(first);
    Units after(second);
    std::vector<Match> matches;
    while (!before.IsEmpty() || !after.IsEmpty()) {
        IIterator* const unit = before.IsEmpty() ? nullptr : before.Take();
        matches.push_back({std::to_string(matches.size()), unit, after.IsEmpty() ? nullptr : after.Take()});
    }
    return matches;
}

// The way down to where the comparison is: a level's matches, and which one of them is looked at.
class Comparison {
public:
    explicit Comparison(const std::function<void(const Difference&)>& tell) : tell_(tell) {}

    void Run(const Place& before, const Place& after) {
        Enter(before, after);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next == level.matches.size()) {
                levels_.pop_back();
            } else {
                Look(level.matches[level.next++]);
            }
        }
    }

private:
    struct Level {
        std::vector<Match> matches;
        std::size_t next;
    };

    void Enter(const Place& before, const Place& after) {
        levels_.push_back({before.table ? MatchTables(before.table, after.table) : MatchArrays(before, after), 0});
    }

    void Look(const Match& match) {
        const Place before = match.before ? PlaceOf(match.before) : Place{};
        const Place after = match.after ? PlaceOf(match.after) : Place{};
        if (match.before && match.after && Kind(before) == Kind(after)) {
            if (Kind(before) != 0) return Enter(before, after);
            if (Text(before) == Text(after)) return;
        }
        Tell(match);
    }

    static int Kind(const Place& place) { return place.table ? 2 : place.array ? 1 : 0; }
    static std::string_view Text(const Place& place) { return place.text ? place.text : ""; }

    void Tell(const Match& match) {
        Row rows[2];
        if (match.before) Describe(PlaceOf(match.before), rows[0]);
        if (match.after) Describe(PlaceOf(match.after), rows[1]);
        std::string way;
        for (const Level& level : levels_) (way += way.empty() ? "" : "/") += level.matches[level.next - 1].piece;
        tell_({way, match.before ? &rows[0] : nullptr, match.after ? &rows[1] : nullptr});
    }

    const std::function<void(const Difference&)>& tell_;
    std::vector<Level> levels_;
};

bool HasSeparator(const std::string& piece) { return piece.find_first_of("/\\") != std::string::npos; }

// What a table's getters answer for a key that it doesn't have itself.
Place AskDefault(ITable* table, const char* key) {
    Place place;
    if (!key) return place;
    place.table = table->GetTable(key);
    if (!place.table) place.array = table->GetArray(key);
    if (!place) place.text = table->GetString(key);
    return place;
}

} // namespace

Place PlaceOf(IIterator* unit) { return {unit->GetTable(), unit->GetArray(), unit->GetString()}; }

Place RootOf(const ConfigFile& file) { return {file->GetRoot(), nullptr, nullptr}; }

ConfigFile OpenConfig(const Input& input) {
    const bool is_compiled = IsCompiled(input.Path());
    ConfigFile file = Load(input, is_compiled ? Configure::ACCESS_READ : Configure::ACCESS_EDIT);
    if (!file) FailToLoad(input);
    return file;
}

ConfigFile EditConfig(const Input& input) {
    if (IsCompiled(input.Path())) throw Failure(input.Name(), "is compiled; `tessarin config text` makes it a text");
    return OpenConfig(input);
}

IIterator* FindUnit(const Place& place, const std::string& piece) {
    if (place.array) {
        const std::optional<std::uint32_t> position = PositionOf(piece);
        return position ? place.array->At(*position) : nullptr;
    }
    if (!place.table) return nullptr;
    IIterator* const unit = place.table->Find(piece.c_str());
    return unit || !HasSeparator(piece) ? unit : place.table->FindPath(piece.c_str());
}

Place Find(Place place, const KeyPath& way) {
    for (const std::string& piece : way) {
        IIterator* const unit = FindUnit(place, piece);
        place = unit ? PlaceOf(unit) : Place{};
    }
    return place;
}

Place Ask(Place place, const KeyPath& way) {
    for (const std::string& piece : way) {
        IIterator* const unit = FindUnit(place, piece);
        Place next = unit ? PlaceOf(unit) : Place{};
        if (!unit && place.table) next = AskDefault(place.table, piece.c_str());
        if (!next && !unit && place.table && HasSeparator(piece))
            next = AskDefault(place.table, cstr_path(piece.c_str()));
        place = next;
    }
    return place;
}

Outline OutlineOf(const Place& place, const std::string& key, std::size_t limit) {
    Row root;
    root.key = key;
    Describe(place, root);
    return MakeOutline(std::move(root), Units(place), limit);
}

void Compare(const Place& before, const Place& after, const std::function<void(const Difference&)>& tell) {
    Comparison(tell).Run(before, after);
}

} // namespace Command
