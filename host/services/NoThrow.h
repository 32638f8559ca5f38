#pragma once

#include <type_traits>
#include <utility>

namespace host {

/**
 * Runs @p step and returns its result, or @p fallback when it throws.
 *
 * No exception may reach the module: every operation that the module can call runs its body through this.
 */
template <typename Step>
std::invoke_result_t<Step> noThrow(Step&& step, std::invoke_result_t<Step> fallback) noexcept {
    try {
        return std::forward<Step>(step)();
    } catch (...) {
        return fallback;
    }
}

} // namespace host
