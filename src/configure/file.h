/// The object behind IFile.

#ifndef TESSARIN_CONFIGURE_FILE_H
#define TESSARIN_CONFIGURE_FILE_H

#include "configure/tree/binary_read_tree.h"
#include "configure/tree/edit_tree.h"
#include "configure/tree/text_read_tree.h"
#include "tessarin/configure.h"

#include <cstdint>

namespace Configure {

/// Invariant: at most one of the three trees holds anything, and `access` and `format` tell which. They are 0 also
/// after a load whose path couldn't be interned.
class File final : public IFile {
public:
    /// Null if memory runs out. A null `io` gives it a file service of its own.
    static File* Create(::IFileIO* io);

    void Release() override;
    ITable* Load(const char* its_path, std::uint32_t its_access, std::uint32_t its_format) override;
    bool Reset() override;
    ITable* GetRoot() override;
    bool Save() override;
    bool SaveAs(const char* target, std::uint32_t its_format) override;
    bool Exists(const char* its_path) override;

private:
    ~File() override;

    /// The root, once the named form is in its tree; null if that failed, the tree then in parts.
    ITable* LoadForm(char* bytes, std::uint32_t size, std::uint32_t its_access, std::uint32_t its_format);
    ITable* RootOf(std::uint32_t its_access, std::uint32_t its_format);

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
