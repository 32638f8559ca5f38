#include "host/services/Clock.h"

#include <chrono>

namespace host {

std::int64_t SteadyClock::microseconds() {
    auto const now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

} // namespace host
