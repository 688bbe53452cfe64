// The configuration file object, which implements IFile: it loads a file of either form and owns the loaded tree.

#ifndef TESSARIN_CONFIGURE_FILE_H
#define TESSARIN_CONFIGURE_FILE_H

#include "configure/tree/binary_read_tree.h"
#include "configure/tree/edit_tree.h"
#include "configure/tree/text_read_tree.h"
#include "tessarin/configure.h"

#include <cstdint>

namespace Configure {

/// Invariant: at most one of the three trees isn't empty, and `access_` and `format_` say which. They are also 0 after
/// a load whose path couldn't be interned.
class File final : public IFile {
public:
    /// Null if memory runs out. If `io` is null, the object gets a file service of its own.
    static File* Create(::IFileIO* io);

    void Release() override;
    ITable* Load(const char* path, std::uint32_t access, std::uint32_t format) override;
    bool Reset() override;
    ITable* GetRoot() override;
    bool Save() override;
    bool SaveAs(const char* path, std::uint32_t format) override;
    bool Exists(const char* path) override;

private:
    ~File() override;

    /// Loads one form into its tree. Returns the root; null if that fails, and then the tree may hold parts.
    ITable* LoadForm(char* bytes, std::uint32_t size, std::uint32_t access, std::uint32_t format);
    ITable* RootOf(std::uint32_t access, std::uint32_t format);

    ::IFileIO* fileio_ = nullptr;
    bool owns_fileio_ = false;
    std::uint32_t access_ = 0; // 0 when empty
    std::uint32_t format_ = 0; // likewise; never FORMAT_AUTO
    cstr path_ = nullptr;      // of the last load that succeeded, as it was given
    EditTree edit_;
    TextTree text_;
    BinTree binary_;
};

} // namespace Configure

#endif
