#pragma once

#include <functional>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif
#include <pthread.h>

/** Threads that a host cancels while they are inside a call of the module. */
namespace velktest {

/** On ARM the unwinding of a cancelled thread still ends the process in some calls. */
#if defined(__arm__)
inline constexpr bool kNotShownOnArm = true;
#else
inline constexpr bool kNotShownOnArm = false;
#endif

/** Cancels the calling thread, as a host may do: its stack is unwound from here. */
inline void CancelThisThread() {
#if defined(__SANITIZE_ADDRESS__)
    __asan_handle_no_return(); // the sanitizer does not notice that the frames above this one end without returning
#endif
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

/** Runs @p step on a separate thread; true when that thread was cancelled before the step ended. */
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
