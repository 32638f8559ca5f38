#pragma once

#include <functional>
#include <pthread.h>

/** Threads that a host cancels while they are inside a call of the module. */
namespace velktest {

/** Cancels the calling thread, as a host may do: its stack is unwound from here. */
inline void CancelThisThread() {
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

/** Runs @p step on a thread of its own; true when that thread was cancelled before the step ended. */
inline bool IsCancelledIn(std::function<void()> step) {
    auto const run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread{};
    void* result = nullptr;
    return pthread_create(&thread, nullptr, run, &step) == 0 && pthread_join(thread, &result) == 0 &&
           result == PTHREAD_CANCELED;
}

} // namespace velktest
