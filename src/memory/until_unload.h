// The type of every process-wide object: one that lives as long as the library is loaded.

#ifndef TESSARIN_MEMORY_UNTIL_UNLOAD_H
#define TESSARIN_MEMORY_UNTIL_UNLOAD_H

#include <memory>

namespace Tessarin {

/// An object of static storage duration that isn't destroyed in the ordinary way. At the end of a process that would be
/// too early: a host that has loaded the library at run time may have objects of its own that are destroyed later.
///
/// Each layer declares its own objects; library_lifetime.cpp defines all of them, in the order of their construction.
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
