// A host's own file service: its files are in an archive in memory. Configuration and tab files use it as they would
// use the disk.
//
// Before you copy from here:
//  - The library ends every handle that Open returns with Close, after a failure too.
//  - The service must outlive the objects that were made with it.
//  - A tab file opens its path in path form: lower case, with `\` between the names.

#include <tessarin/tessarin.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace {

class Archive final : public IFileIO {
public:
    std::map<std::string, std::string> files;

    void* Open(const char* path, std::int32_t mode) override {
        auto found = files.find(path);
        if (mode == 1) found = files.insert_or_assign(path, "").first;
        return found == files.end() ? nullptr : new OpenFile{&found->second, 0};
    }
    void Close(void* handle) override { delete static_cast<OpenFile*>(handle); }
    std::int32_t GetSize(void* handle) override {
        auto* file = static_cast<OpenFile*>(handle);
        file->offset = 0;
        return static_cast<std::int32_t>(file->bytes->size());
    }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        auto* file = static_cast<OpenFile*>(handle);
        if (buffer_size < count) return 0;
        const std::size_t taken = std::min<std::size_t>(count, file->bytes->size() - file->offset);
        std::memcpy(buffer, file->bytes->data() + file->offset, taken);
        file->offset += taken;
        return static_cast<std::uint32_t>(taken);
    }
    std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) override {
        static_cast<OpenFile*>(handle)->bytes->append(static_cast<const char*>(buffer), size);
        return size;
    }
    bool Exists(const char* path) override { return files.count(path) != 0; }

private:
    struct OpenFile {
        std::string* bytes;
        std::size_t offset;
    };
};

template <class Object>
struct Releaser {
    void operator()(Object* object) const { object->Release(); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Releaser<Object>>;

} // namespace

int main() {
    Archive archive;
    archive.files["items.txt"] = "_default = { weight = 1.5 }\n"
                                 "lamp = { name = \"Brass lamp\" damage = [1,4] }\n"
                                 "rope = { name = Rope  weight = 0.6 }\n";
    archive.files["prices.tab"] = "item\tprice\nlamp\t12\nrope\t3\n";

    // Compiled into the archive, and read from there in binary form.
    const Owned<Configure::IFile> items(CreateRLFile(&archive));
    Configure::ITable* root = items->Load("items.txt", Configure::ACCESS_READ, Configure::FORMAT_AUTO);
    if (root == nullptr || !items->SaveAs("items.bin", Configure::FORMAT_BINARY)) return 1;
    root = items->Load("items.bin", Configure::ACCESS_READ, Configure::FORMAT_AUTO);

    const Owned<ITabFile> prices(CreateTabFile(&archive));
    if (root == nullptr || !prices->Open("Prices.TAB", TABFILE_SKIP_FIRST_LINE)) return 1;

    for (std::uint32_t row = 0; row < prices->GetRowCount(); ++row) {
        Configure::ITable* item = root->GetTable(prices->GetCell(row, 0));
        if (item == nullptr) return 1;
        std::printf("%s weighs %.1f and costs %d\n", item->GetString("name"),
                    static_cast<double>(item->GetFloat("weight", 0)), prices->GetInteger(row, 1, 0));
    }
    return 0;
}
