#pragma once

#include "host/services/Clock.h"

namespace hosttest {

/** Time that passes only when a test says so. */
class FakeClock final : public host::Clock {
public:
    std::int64_t microseconds() override { return now; }

    std::int64_t now = 1'000'000; ///< not 0, so that a forgotten time is seen
};

} // namespace hosttest
