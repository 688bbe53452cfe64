/// Tells code that has called out to a host whether the object it works on is still there.

#ifndef TESSARIN_CORE_WATCH_H
#define TESSARIN_CORE_WATCH_H

namespace Tessarin {

/// A listener may end the entry, or the table, that it is told about, and the block may serve another object before the
/// listener returns; so no look at the object itself can tell. Whoever calls listeners watches from its own stack, and
/// whoever ends an object says so. One thread at a time works on a table, hence a list for each thread; it is as long
/// as notifications are nested.
class Watch {
public:
    explicit Watch(const void* object) : object_(object), outer_(innermost) { innermost = this; }
    ~Watch() { innermost = outer_; }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    [[nodiscard]] bool Gone() const { return object_ == nullptr; }

    /// REQUIRES: called before the object's block is given back
    static void Ended(const void* object) {
        for (Watch* watch = innermost; watch != nullptr; watch = watch->outer_) {
            if (watch->object_ == object) watch->object_ = nullptr;
        }
    }

private:
    static thread_local constinit Watch* innermost;

    const void* object_; // null once it has ended
    Watch* outer_;
};

} // namespace Tessarin

#endif
