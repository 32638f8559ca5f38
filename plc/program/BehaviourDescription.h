#pragma once

#include "plc/frames/Bytes.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace plc {

/// How a variable of a program changes by itself.
enum class BehaviourKind : std::uint8_t {
    kConstant,   ///< always its initial value: the next tick overwrites what a panel wrote
    kCounter,    ///< `step` more each time; beyond `high` it starts again at `low`, and vice versa
    kRamp,       ///< from `low` to `high` within the period, then at once back to `low`
    kSine,       ///< oscillates between `low` and `high` once a period, starting upwards from the middle
    kRandomWalk, ///< up to `step` up or down each time, never beyond `low` and `high`
    kFollow      ///< `source` times `factor` plus `offset`; after the time `lag` it has made 63 % of a change
};

/**
 * How one variable, member or element changes by itself. It must be a number or a truth value; values beyond its type's
 * range stop at the end of the range.
 */
struct BehaviourDescription {
    std::string variable{};
    BehaviourKind kind = BehaviourKind::kConstant;
    Micros every{std::chrono::milliseconds(100)}; ///< between two ticks

    std::optional<double> low{};  ///< needed for ramp, sine and random walk; not needed for counters of whole numbers
    std::optional<double> high{}; ///< as low
    double step = 1;
    Micros period{std::chrono::minutes(1)};
    double phase = 0;       ///< ramp and sine: the part of a period that has passed when the program starts
    std::uint32_t seed = 1; ///< of the random walk's generator
    std::string source{};
    double factor = 1;
    double offset = 0;
    Micros lag{0};

    int line = 0; ///< its line in the description file; 0 when written in code
};

} // namespace plc
