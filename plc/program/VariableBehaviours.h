#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/program/BehaviourDescription.h"
#include "plc/program/Memory.h"
#include "plc/program/Program.h"

#include <cstddef>
#include <optional>
#include <random>
#include <vector>

namespace plc {

/**
 * Changes the variables of a program in the line's time.
 *
 * The time of the first advance() is the start; at the start ramps, sines and variables that follow without a lag get
 * their first values, the others keep their initial ones. A counter, a random walk or a following variable that is
 * written from outside continues from the written value.
 */
class VariableBehaviours {
public:
    /// Throws DescriptionError with the behaviour's line when one of them is invalid.
    VariableBehaviours(std::vector<BehaviourDescription> const& descriptions, Program const& program, ByteOrder order);

    void advance(Memory& memory, Micros now);
    /// The next tick; nothing before the start, or when no variable changes.
    [[nodiscard]] std::optional<Micros> deadline() const;

private:
    /// One variable with its state.
    struct Mover {
        BehaviourDescription description;
        Place place;
        Place source; ///< kFollow
        double low = 0;
        double high = 0;
        Value initial{false};       ///< kConstant
        double exact = 0;           ///< the value before it was fitted to the type
        std::optional<Value> put{}; ///< the value written last
        std::mt19937 generator;
        Micros next{0};
    };

    [[nodiscard]] Mover makeMover(BehaviourDescription const& description, Program const& program) const;
    void start(Memory& memory, Micros now);
    void tick(Mover& mover, Memory& memory) const;
    void adopt(Mover& mover, Memory const& memory) const;
    void put(Mover& mover, Memory& memory, double value) const;
    [[nodiscard]] double target(Mover const& mover, Memory const& memory) const;
    [[nodiscard]] double phaseOf(Mover const& mover) const;

    ByteOrder order_;
    std::vector<Mover> movers_;
    std::optional<Micros> start_;
};

} // namespace plc
