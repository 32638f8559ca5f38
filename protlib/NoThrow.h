#pragma once

#include <new>
#include <type_traits>
#include <utility>

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

namespace ProtUtilsN {

/** How a contained step ended. */
enum class Outcome {
    Done,
    OutOfMemory,  ///< it threw std::bad_alloc
    HostException ///< it threw anything else, which only a service of the host does
};

inline constexpr char const* kOutOfMemoryText = "Out of memory";
inline constexpr char const* kHostExceptionText = "Exception in a host service";

/**
 * Runs @p step and answers how it ended.
 *
 * Nothing may be thrown across the module's boundary: every operation that the host can call and that allocates or
 * calls a service of the host runs its body through this.
 *
 * A thread that the host cancels inside the step unwinds through here: swallowing that would abort the process. So
 * this is not noexcept, and no caller may be that has a service of the host called inside.
 */
template <typename Step>
Outcome contain(Step&& step) {
    try {
        std::forward<Step>(step)();
        return Outcome::Done;
    } catch (std::bad_alloc const&) {
        return Outcome::OutOfMemory;
#if defined(__GLIBCXX__)
    } catch (abi::__forced_unwind const&) {
        throw;
#endif
    } catch (...) {
        return Outcome::HostException;
    }
}

/** contain() for a step with a result: answers that, or @p fallback when the step throws. */
template <typename Step>
std::invoke_result_t<Step> noThrow(Step&& step, std::invoke_result_t<Step> fallback) {
    contain([&] { fallback = std::forward<Step>(step)(); });
    return fallback;
}

/** contain() when only success matters: true when the step ran to its end. */
template <typename Step>
bool noThrow(Step&& step) {
    return contain(std::forward<Step>(step)) == Outcome::Done;
}

} // namespace ProtUtilsN
