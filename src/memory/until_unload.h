// What lives as long as the library is loaded: the type of every process-wide object.

#ifndef TESSARIN_MEMORY_UNTIL_UNLOAD_H
#define TESSARIN_MEMORY_UNTIL_UNLOAD_H

#include <memory>

namespace Tessarin {

/// An object of static storage duration that ordinary destruction leaves alone. At the end of a process that would come
/// too soon: a host that has loaded the library by hand may have objects of its own that are destroyed later.
///
/// Each layer declares its own; library_lifetime.cpp defines all of them, in the order in which they are made.
template <class T>
class UntilUnload {
public:
    UntilUnload() : object_() {}
    ~UntilUnload() {}
    UntilUnload(const UntilUnload&) = delete;
    UntilUnload& operator=(const UntilUnload&) = delete;

    T& operator*() { return object_; }
    T* operator->() { return &object_; }
    void TearDown() { std::destroy_at(&object_); }

private:
    union {
        T object_;
    };
};

} // namespace Tessarin

#endif
