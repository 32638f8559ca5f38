#pragma once

#include <cxxabi.h>
#include <type_traits>
#include <utility>

namespace ProtUtilsN {

/**
 * The unwinding of a thread that the host cancels. It has no object, so a reference to it refers to nothing. It is
 * caught by its type beside the step: rethrown from a nested function it ends the process on ARM.
 */
using ForcedUnwind = abi::__forced_unwind;

/** How a contained step ended. */
enum class Outcome {
    Done,
    OutOfMemory,  ///< it threw std::bad_alloc
    HostException ///< it threw anything else, which only a host service does
};

inline constexpr char const* kOutOfMemoryText = "Out of memory";
inline constexpr char const* kHostExceptionText = "Exception in a host service";

/**
 * Returns the kind of exception that has just been caught; for the functions below.
 *
 * The unwinding of a cancelled thread must not end here: whoever catches lets it pass, as the functions below do.
 */
Outcome outcomeOfCaught();

/**
 * Runs @p step and returns how it ended.
 *
 * No exception may cross the module's boundary: every operation that the host can call and that allocates or calls a
 * service of the host runs its body through this.
 *
 * The unwinding of a cancelled thread passes through. So neither this nor any function around a call of a host's
 * service may be noexcept.
 */
template <typename Step>
__attribute__((no_sanitize("null"))) Outcome contain(Step&& step) {
    try {
        std::forward<Step>(step)();
        return Outcome::Done;
    } catch (ForcedUnwind const&) {
        throw;
    } catch (...) {
        return outcomeOfCaught();
    }
}

/** contain() for a step with a result: returns that, or @p fallback when the step throws. */
template <typename Step>
__attribute__((no_sanitize("null"))) std::invoke_result_t<Step> noThrow(Step&& step,
                                                                        std::invoke_result_t<Step> fallback) {
    try {
        return std::forward<Step>(step)();
    } catch (ForcedUnwind const&) {
        throw;
    } catch (...) {
        return fallback;
    }
}

/** contain() when only success matters: true when the step ran to its end. */
template <typename Step>
bool noThrow(Step&& step) {
    return contain(std::forward<Step>(step)) == Outcome::Done;
}

} // namespace ProtUtilsN
