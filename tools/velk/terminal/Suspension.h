#pragma once

#include <cstdint>

namespace velk {

/**
 * How long the program was stopped with Ctrl-Z, so that this is not taken for time that the line needed.
 *
 * One object at a time; it takes over the signal while it lives.
 */
class Suspension {
public:
    Suspension();
    ~Suspension();
    Suspension(Suspension const&) = delete;
    Suspension& operator=(Suspension const&) = delete;

    /** In all, since the start of the program. */
    [[nodiscard]] static std::int64_t microseconds();
};

} // namespace velk
