#pragma once

#include <cstdint>
#include <map>

namespace velk {

/**
 * When each station is asked again. One that does not answer is asked after growing pauses, so that it does not slow
 * down the others: half a second longer after each failure, up to ten seconds.
 *
 * Uses no clock: the caller gives all times, in microseconds.
 */
class StationPacing {
public:
    [[nodiscard]] bool isDue(int node, std::int64_t now) const;

    void answered(int node) { stations_.erase(node); }
    void failed(int node, std::int64_t now);

    /** Failures in a row. */
    [[nodiscard]] int failures(int node) const;

private:
    struct Station {
        int failures = 0;
        std::int64_t dueAt = 0;
    };
    std::map<int, Station> stations_; ///< those that failed
};

} // namespace velk
