// Files as objects. The object is made before its file is opened: opening for writing truncates the file, and that must
// not happen if the caller then gets no object. Only Release and Finish close the stream; the destructor does nothing.

#include "files/file_objects.h"

#include "files/stream.h"
#include "platform/host_file.h"

#include <new>

namespace Tessarin {

template <class Object>
Object* OpenFileObject(const char* path, const char* mode) {
    if (path == nullptr) return nullptr;
    auto* object = new (std::nothrow) Object;
    if (object == nullptr) return nullptr;
    object->stream = OpenFile(path, mode);
    if (object->stream != nullptr) return object;
    object->Release();
    return nullptr;
}

FileReader* FileReader::Open(const char* path) { return OpenFileObject<FileReader>(path, "rb"); }

std::uint32_t FileReader::Release() {
    if (stream != nullptr) static_cast<void>(std::fclose(stream));
    delete this;
    return 1;
}

std::int32_t FileReader::GetSize() { return StreamSize(stream); }

std::uint32_t FileReader::Read(void* buffer, std::uint32_t buffer_size, std::uint32_t count) {
    return ReadStream(stream, buffer, buffer_size, count);
}

FileWriter* FileWriter::Open(const char* path) { return OpenFileObject<FileWriter>(path, "wb"); }

std::uint32_t FileWriter::Release() {
    static_cast<void>(Finish());
    return 1;
}

bool FileWriter::Finish() {
    const bool reached = stream == nullptr || std::fclose(stream) == 0;
    delete this;
    return reached;
}

std::uint32_t FileWriter::Write(const void* buffer, std::uint32_t size) { return WriteStream(stream, buffer, size); }

} // namespace Tessarin

extern "C" {

Tessarin::IRead* CreateReadFile(const char* path) { return Tessarin::FileReader::Open(path); }

Tessarin::IWrite* CreateWriteFile(const char* path) { return Tessarin::FileWriter::Open(path); }
}
