#pragma once

#include <type_traits>
#include <utility>

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
 * Says what the exception in hand is; for the functions below.
 *
 * The unwinding of a thread that the host cancels is no exception: it goes on from here. Swallowing it would abort the
 * process.
 */
Outcome outcomeOfCaught();

/**
 * Runs @p step and answers how it ended.
 *
 * Nothing may be thrown across the module's boundary: every operation that the host can call and that allocates or
 * calls a service of the host runs its body through this.
 *
 * The unwinding of a cancelled thread passes through. So this is not noexcept, and no caller may be that has a service
 * of the host called inside.
 */
template <typename Step>
Outcome contain(Step&& step) {
    try {
        std::forward<Step>(step)();
        return Outcome::Done;
    } catch (...) {
        return outcomeOfCaught();
    }
}

/** contain() for a step with a result: answers that, or @p fallback when the step throws. */
template <typename Step>
std::invoke_result_t<Step> noThrow(Step&& step, std::invoke_result_t<Step> fallback) {
    try {
        return std::forward<Step>(step)();
    } catch (...) {
        outcomeOfCaught();
        return fallback;
    }
}

/** contain() when only success matters: true when the step ran to its end. */
template <typename Step>
bool noThrow(Step&& step) {
    return contain(std::forward<Step>(step)) == Outcome::Done;
}

} // namespace ProtUtilsN
