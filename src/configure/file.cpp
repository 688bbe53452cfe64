// The file object. A load first drops what was loaded before, even if it then fails. It reads the whole file, chooses
// the loader, and keeps none of the bytes.
// FORMAT_AUTO means binary if HasBinaryHead in binary/format.h says so, else text.

#include "configure/file.h"

#include "configure/binary/format.h"
#include "configure/binary/loader.h"
#include "configure/binary/writer.h"
#include "configure/text/characters.h"
#include "configure/text/edit_loader.h"
#include "configure/text/read_loader.h"
#include "configure/text/writer.h"
#include "files/file_io.h"
#include "files/whole_file.h"
#include "strings/normal_forms.h"
#include "strings/string_table.h"

#include <new>

namespace Configure {
namespace {

std::uint32_t FormatOf(const Tessarin::WholeFile& file) {
    return HasBinaryHead(file.bytes.get(), file.size) ? FORMAT_BINARY : FORMAT_TEXT;
}

bool FinishOwn(::IFileIO&, void* handle) { return Tessarin::FileIO::Finish(handle); }

} // namespace

File* File::Create(::IFileIO* io) {
    auto* file = new (std::nothrow) File;
    if (file == nullptr) return nullptr;
    file->owns_fileio_ = io == nullptr;
    file->fileio_ = io != nullptr ? io : new (std::nothrow) Tessarin::FileIO;
    if (file->fileio_ != nullptr) return file;
    file->Release();
    return nullptr;
}

File::~File() {
    if (owns_fileio_) delete fileio_;
}

void File::Release() { delete this; }

ITable* File::Load(const char* path, std::uint32_t access, std::uint32_t format) {
    Reset();
    Tessarin::WholeFile file;
    if (Tessarin::IsEmpty(path) || !file.Read(*fileio_, path, 1)) return nullptr;
    file.bytes[file.size] = kEndMark;
    if (format == FORMAT_AUTO) format = FormatOf(file);
    ITable* root = LoadForm(file.bytes.get(), file.size, access, format);
    if (root == nullptr) {
        Reset();
        return nullptr;
    }
    const cstr interned = Tessarin::string_table->Intern(path);
    if (interned != nullptr) {
        path_ = interned;
        access_ = access;
        format_ = format;
    }
    return root;
}

ITable* File::LoadForm(char* bytes, std::uint32_t size, std::uint32_t access, std::uint32_t format) {
    bool loaded = false;
    if (format == FORMAT_TEXT && access == ACCESS_READ) {
        loaded = LoadTextForReading(bytes, size, text_);
    } else if (format == FORMAT_TEXT && access == ACCESS_EDIT) {
        loaded = LoadTextForEditing(bytes, size, edit_);
    } else if (format == FORMAT_BINARY && access == ACCESS_READ) {
        loaded = LoadBinary(reinterpret_cast<const unsigned char*>(bytes), size, binary_);
    }
    return loaded ? RootOf(access, format) : nullptr;
}

ITable* File::RootOf(std::uint32_t access, std::uint32_t format) {
    if (format == FORMAT_BINARY) return binary_.tables.begin();
    if (format != FORMAT_TEXT) return nullptr;
    if (access == ACCESS_EDIT) return edit_.tables.first;
    return text_.tables.begin();
}

bool File::Reset() {
    edit_.Clear();
    text_.Clear();
    binary_.Clear();
    access_ = 0;
    format_ = 0;
    return true;
}

ITable* File::GetRoot() { return RootOf(access_, format_); }

bool File::Save() { return access_ == ACCESS_EDIT && WriteText(*fileio_, path_, GetRoot()); }

bool File::SaveAs(const char* path, std::uint32_t format) {
    if (Tessarin::IsEmpty(path)) return false;
    if (format == FORMAT_BINARY)
        return WriteBinary(*fileio_, path, GetRoot(), owns_fileio_ ? FinishOwn : CloseByService);
    return format == FORMAT_TEXT && WriteText(*fileio_, path, GetRoot());
}

bool File::Exists(const char* path) { return fileio_->Exists(path); }

} // namespace Configure

extern "C" Configure::IFile* CreateRLFile(IFileIO* io) { return Configure::File::Create(io); }
