// Configuration files: from texts to edited trees, and both forms of those.

#include "tests/soak/work.h"
#include "tests/support/memory_files.h"

#include "tessarin/configure.h"

namespace Soak {
namespace {

using namespace Configure;

struct Releaser {
    void operator()(IFile* file) const { file->Release(); }
};

class ConfigureWork : public Work {
public:
    ConfigureWork() { Require(file_ != nullptr, "a file object is made"); }

    void Step(Random& random) override {
        files_["source"] = Table(random, 3);
        const bool edits = random.Below(2) == 0;
        ITable* root = file_->Load("source", edits ? ACCESS_EDIT : ACCESS_READ, FORMAT_AUTO);
        Require(root != nullptr, "a text is loaded");
        Look(*root, random);
        if (edits) {
            for (int i = 0; i < 100; ++i) Edit(*root, random);
            Require(file_->Save(), "an edited file is saved");
        }
        const std::uint32_t count = root->GetCount();
        Require(file_->SaveAs("text", FORMAT_TEXT) && file_->SaveAs("binary", FORMAT_BINARY), "a tree is saved");
        for (const char* path : {"text", "binary"}) {
            root = file_->Load(path, ACCESS_READ, FORMAT_AUTO);
            Require(root != nullptr && root->GetCount() == count, "a saved tree is loaded");
            Look(*root, random);
        }
        if (random.Below(8) == 0) file_->Reset();
    }

    void Empty() override {
        file_->Reset();
        for (const char* path : {"source", "text", "binary"}) std::string().swap(files_[path]);
    }

private:
    /// The entries of a table; no key occurs twice.
    static std::string Table(Random& random, std::uint32_t depth) {
        std::string text = "// a remark\n";
        for (std::uint32_t i = random.Below(12); i != 0; --i) {
            const std::string number = std::to_string(i);
            text += "scalar_" + number + " = " + std::to_string(random.Integer()) + ",\n";
            text += "text_" + number + " = \"" + random.Text() + "\",\n";
            text += "array_" + number + " = { 1, \"" + random.Text() + "\", { inner = " + number + " } },\n";
            if (depth != 0) text += "table_" + number + " = {\n" + Table(random, depth - 1) + "},\n";
        }
        return text + "last = [1, 5)\n";
    }

    static void Look(ITable& table, Random& random) {
        const int number = static_cast<int>(random.Below(12));
        static_cast<void>(table.GetInteger(("scalar_" + std::to_string(number)).c_str(), 0));
        static_cast<void>(table.GetIntegerFormat(0, "table_%d:scalar_%d", number, number));
        static_cast<void>(table.FindPath("table_1/array_2"));
        static_cast<void>(table.GetInterval("last"));
        for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
            if (ITable* child = unit->GetTable()) Look(*child, random);
        }
    }

    static void Edit(ITable& table, Random& random) {
        const std::string key = random.Key();
        IIterator* unit = table.Find(key.c_str());
        if (unit != nullptr && random.Below(3) == 0) {
            table.Remove(unit);
        } else if (unit != nullptr) {
            EditUnit(table, *unit, random);
        } else if (random.Below(3) == 0) {
            Require(table.AddTable(key.c_str()) != nullptr, "a table is added");
        } else if (random.Below(2) == 0) {
            IIterator* added = table.AddArray(key.c_str());
            Require(added != nullptr && added->GetArray()->AddString(0, "element") != nullptr, "an array is added");
        } else {
            Require(table.AddString(key.c_str(), random.Text().c_str()) != nullptr, "a text is added");
        }
    }

    static void EditUnit(ITable& table, IIterator& unit, Random& random) {
        if (IArray* array = unit.GetArray()) {
            if (random.Below(4) == 0 && array->GetCount() != 0) array->Remove(array->At(0));
            array->AddString(0, random.Text().c_str());
        } else if (ITable* child = unit.GetTable()) {
            Edit(*child, random);
        } else {
            Require(unit.SetInteger(random.Integer()) && unit.SetFloat(random.Real()), "a number is set");
            Require(unit.SetString(random.Text().c_str()), "a text is set");
        }
        const std::string key = random.Key();
        if (table.Find(key.c_str()) == nullptr) Require(unit.SetKey(key.c_str()), "a key is changed");
    }

    TestSupport::MemoryFiles files_;
    std::unique_ptr<IFile, Releaser> file_{CreateRLFile(&files_)};
};

} // namespace

std::unique_ptr<Work> MakeConfigureWork() { return std::make_unique<ConfigureWork>(); }

} // namespace Soak
