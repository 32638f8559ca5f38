#pragma once

#include "plc/program/Behaviour.h"
#include "plc/program/LoadedProgram.h"
#include "plc/program/Value.h"
#include "plc/station/Faults.h"
#include "plc/station/LinkStation.h"
#include "plc/station/Services.h"
#include "plc/station/StationDescription.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace plc {

/// One PLC: a program with its memory, its services, and the station's end of the link.
class Station {
public:
    /// Throws DescriptionError.
    Station(StationDescription const& description, Framing framing, FrameSink& sink, StationReporter reporter);
    Station(Station const&) = delete;
    Station& operator=(Station const&) = delete;
    ~Station();

    [[nodiscard]] std::string const& name() const { return name_; }

    /**
     * Sets a variable by name, not case-sensitive; members and elements are named as in `PLC_PRG.Pumps[1].Speed`.
     * std::invalid_argument when there is no such variable, when it is not of an elementary type, or when the value
     * does not fit its type.
     */
    void setValue(std::string_view variable, Value const& value);
    [[nodiscard]] Value getValue(std::string_view variable) const;
    /// The same, converted: a number for numbers, std::string for STRING.
    template <typename T>
    [[nodiscard]] T get(std::string_view variable) const;

    [[nodiscard]] Memory& memory() { return program_.memory; }
    [[nodiscard]] LoadedProgram const& program() const { return program_; }
    [[nodiscard]] FaultPlan& faults() { return faults_; }
    [[nodiscard]] bool loggedIn() const { return services_.loggedIn(); }

    /// Replaces the program: new variables with their initial values, new project identifier, new symbol file. A
    /// running file transfer ends, a login stays. Throws DescriptionError and then keeps the old program.
    void replaceProgram(ProgramDescription const& description);

    /// Power off and on: login, file transfer and exchange are lost, the variables keep their values.
    void restart();

    /// Sets the program's own activity, called every `interval` from the line's present time on. Null ends it.
    void setBehaviour(std::unique_ptr<Behaviour> behaviour, Micros interval);

    /// For the line.
    void onBlock(BlockReceived const& block, Micros now) { link_.onBlock(block, now); }
    void onAck(AckReceived const& ack, Micros now) { link_.onAck(ack, now); }
    void advance(Micros now);
    [[nodiscard]] std::optional<Micros> deadline() const;

private:
    std::string name_;
    ByteOrder order_;
    StationReporter reporter_;
    LoadedProgram program_;
    FaultPlan faults_;
    Services services_;
    LinkStation link_;
    std::unique_ptr<Behaviour> behaviour_;
    Micros interval_{};
    std::optional<Micros> nextTick_;
};

template <typename T>
T Station::get(std::string_view variable) const {
    return std::visit(
        [](auto const& content) -> T {
            if constexpr (std::is_convertible_v<decltype(content), T>) {
                return static_cast<T>(content);
            } else {
                throw std::invalid_argument("the variable is of another kind");
            }
        },
        getValue(variable).content());
}

} // namespace plc
