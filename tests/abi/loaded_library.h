// The library as a host loads it by hand.

#ifndef TESSARIN_TESTS_ABI_LOADED_LIBRARY_H
#define TESSARIN_TESTS_ABI_LOADED_LIBRARY_H

#include <tessarin/tessarin.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include <dlfcn.h>

/// Ends the program with a message unless `holds`.
inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "failed: %s\n", what);
    std::exit(1);
}

class LoadedLibrary {
public:
    explicit LoadedLibrary(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        Require(handle_ != nullptr, "dlopen");
    }
    ~LoadedLibrary() { Require(dlclose(handle_) == 0, "dlclose"); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    /// The library's own function of that name, in the type of `like`.
    template <class Function>
    Function* Get(Function* /*like*/, const char* name) const {
        void* symbol = dlsym(handle_, name);
        Require(symbol != nullptr, name);
        return reinterpret_cast<Function*>(symbol);
    }

private:
    void* handle_;
};

/// A little of everything: tables, listeners, both documents' loads, saves, strings and containers.
inline void UseLibrary(const LoadedLibrary& library, const char* readable_path) {
    using namespace Tessarin;
    auto* create = library.Get<ITable*()>(nullptr, "CreateTable");
    auto* close = library.Get<std::uint32_t(ITable*)>(nullptr, "CloseTable");
    auto* validate = library.Get<std::uint32_t(ITable*)>(nullptr, "ValidateTable");
    auto* open_buffer = library.Get<ITable*(const void*, std::uint32_t)>(nullptr, "OpenTableBuffer");
    auto* open_readable = library.Get<ITable*(const char*)>(nullptr, "OpenTableReadableFile");
    auto* flat_set = library.Get<ITable*(ITable*, const char*)>(nullptr, "Set");
    auto* flat_clear = library.Get<std::uint32_t(ITable*)>(nullptr, "Clear");
    auto* map_create = library.Get<hm*(std::uint32_t, std::uint32_t)>(nullptr, "i32hm_create");
    auto* map_set = library.Get<std::uint32_t(hm*, std::uintptr_t, const void*)>(nullptr, "i32hm_set");
    auto* map_destroy = library.Get<void(hm*)>(nullptr, "ptrhm_destroy");
    Require(reinterpret_cast<void*>(library.Get<void(hm*)>(nullptr, "i32hm_destroy")) ==
                reinterpret_cast<void*>(map_destroy),
            "one address for both prefixes");

    ITable* table = create();
    *table->AddRecordListener() = Delegate{nullptr, reinterpret_cast<void (*)()>(+[](void*, TableEvent*) {})};
    for (int i = 0; i < 100; ++i) {
        char key[16];
        std::snprintf(key, sizeof key, "key %d", i);
        Require(table->SetInteger(key, i, 1) == 1, "SetInteger");
    }
    Require(flat_set(table, "child") == table && validate(table->GetTable("child")) == 2, "Set");
    Require(table->Rename("key 1", "renamed", 1) == 1 && table->Remove("key 2", 1) == 1, "Rename, Remove");
    Require(table->CreateArray(8) == 1 && table->SetArrayItem(3, "1234567", 1) != nullptr, "array part");
    void* text = nullptr;
    std::uint32_t size = 0;
    Require(table->SaveBuffer(&text, &size) == 1, "SaveBuffer");
    ITable* again = open_buffer(text, size);
    Require(again != nullptr && again->GetInteger("key 99") == 99, "OpenTableBuffer");
    std::free(text);
    ITable* readable = open_readable(readable_path);
    Require(readable != nullptr && readable->GetElementCount() != 0, "OpenTableReadableFile");
    Require(flat_clear(table) == 1 && table->GetElementCount() == 0, "Clear");
    for (ITable* each : {table, again, readable}) Require(close(each) == 1 && validate(each) == 0, "CloseTable");

    hm* map = map_create(1, sizeof(int));
    for (int i = 0; i < 1000; ++i) Require(map_set(map, static_cast<std::uintptr_t>(i), &i) == 1, "i32hm_set");
    map_destroy(map);
}

#endif
