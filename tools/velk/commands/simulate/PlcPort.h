#pragma once

#include "base/FileDescriptor.h"
#include "host/ports/PortLock.h"
#include "plc/line/LineSpeed.h"
#include "plc/ports/PseudoTerminal.h"
#include "tools/velk/commands/simulate/PlcOptions.h"

#include <memory>
#include <optional>
#include <string>

namespace velk::simulation {

/** The port of the simulated stations: a pseudo-terminal or a serial port, optionally with a link to it. */
class PlcPort {
public:
    /** Throws CommandError: port failure when the port cannot be opened, usage when the link cannot be made. */
    PlcPort(PlcOptions const& options, plc::LineSpeed const& speed);
    ~PlcPort();
    PlcPort(PlcPort const&) = delete;
    PlcPort& operator=(PlcPort const&) = delete;

    [[nodiscard]] int descriptor() const;
    /** The name that a panel opens: the pseudo-terminal's, or the serial port's own. */
    [[nodiscard]] std::string const& name() const { return name_; }
    /** The port for other commands: the link when there is one. */
    [[nodiscard]] std::string wayToIt() const;
    [[nodiscard]] bool isPseudoTerminal() const { return terminal_ != nullptr; }

private:
    void openTerminal(plc::LineSpeed const& speed);
    void openSerial(std::string const& port, plc::LineSpeed const& speed, bool rs485);
    void makeLink(std::string const& path);

    std::unique_ptr<plc::PseudoTerminal> terminal_;
    base::FileDescriptor serial_;
    std::optional<host::PortLock> lock_;
    std::string name_;
    std::string link_;
};

} // namespace velk::simulation
