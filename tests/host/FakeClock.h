#pragma once

#include "host/services/Clock.h"

namespace hosttest {

/** A clock that advances only when a test sets it. */
class FakeClock final : public host::Clock {
public:
    std::int64_t microseconds() override { return now; }

    std::int64_t now = 1'000'000; ///< not 0, so that a forgotten time is noticed
};

} // namespace hosttest
