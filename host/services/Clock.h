#pragma once

#include <cstdint>

namespace host {

/** A clock that only goes forward. Its zero is arbitrary: use it for differences. */
class Clock {
public:
    virtual ~Clock() = default;
    virtual std::int64_t microseconds() = 0;

protected:
    Clock() = default;
    Clock(Clock const&) = default;
    Clock& operator=(Clock const&) = default;
};

/** The system's monotonic clock. */
class SteadyClock final : public Clock {
public:
    std::int64_t microseconds() override;
};

} // namespace host
