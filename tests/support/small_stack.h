// Runs work on a thread with a small stack, where recursion as deep as the data would crash the program.

#ifndef TESSARIN_TESTS_SUPPORT_SMALL_STACK_H
#define TESSARIN_TESTS_SUPPORT_SMALL_STACK_H

#include <cstddef>
#include <stdexcept>

#include <pthread.h>

namespace TestSupport {

template <class Work>
void RunOnSmallStack(Work work, std::size_t bytes = 256 * 1024) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread;
    auto run = [](void* argument) -> void* {
        (*static_cast<Work*>(argument))();
        return nullptr;
    };
    const bool started = pthread_create(&thread, &attributes, run, &work) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) throw std::runtime_error("no thread");
    pthread_join(thread, nullptr);
}

} // namespace TestSupport

#endif
