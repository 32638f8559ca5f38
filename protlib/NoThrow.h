#pragma once

#include <type_traits>
#include <utility>

namespace ProtUtilsN {

/**
 * Runs @p step and answers its result, or @p fallback when it throws.
 *
 * Nothing may be thrown across the module's boundary. Every operation that the host can call and that allocates,
 * and so may meet std::bad_alloc, runs its body through this.
 */
template <typename Step>
std::invoke_result_t<Step> noThrow(Step&& step, std::invoke_result_t<Step> fallback) noexcept {
    try {
        return std::forward<Step>(step)();
    } catch (...) {
        return fallback;
    }
}

/** The same for a step without a result: true when it ran to its end. */
template <typename Step>
bool noThrow(Step&& step) noexcept {
    try {
        std::forward<Step>(step)();
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace ProtUtilsN
