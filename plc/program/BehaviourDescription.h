#pragma once

#include "plc/frames/Bytes.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace plc {

/// The ways in which a variable of a program moves by itself.
enum class BehaviourKind : std::uint8_t {
    kConstant,   ///< always its initial value: what a panel writes is gone with the next tick
    kCounter,    ///< `step` more each time; beyond `high` it begins again at `low`, and the other way round
    kRamp,       ///< from `low` to `high` within the period, then at once back to `low`
    kSine,       ///< swings between `low` and `high`, once a period, from the middle upwards
    kRandomWalk, ///< up to `step` up or down each time, never beyond `low` and `high`
    kFollow      ///< the value of `source` times `factor` plus `offset`, after the time `lag` 63 % of the way
};

/**
 * What one variable, member or element does by itself. It has to be a number or a truth value; what it is told to do
 * beyond its type's range stops at the range's end.
 */
struct BehaviourDescription {
    std::string variable{};
    BehaviourKind kind = BehaviourKind::kConstant;
    Micros every{std::chrono::milliseconds(100)}; ///< between two ticks

    std::optional<double> low{};  ///< needed for ramp, sine and random walk; counters of whole numbers do without
    std::optional<double> high{}; ///< as low
    double step = 1;
    Micros period{std::chrono::minutes(1)};
    double phase = 0;       ///< ramp and sine: the part of a period that is over when the program starts
    std::uint32_t seed = 1; ///< of the random walk's generator
    std::string source{};
    double factor = 1;
    double offset = 0;
    Micros lag{0};

    int line = 0; ///< where the description file says so; 0 when written in code
};

} // namespace plc
