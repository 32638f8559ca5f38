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

/** The port at which stations are played: a pseudo-terminal or a serial port, with a link to it if one is wanted. */
class PlcPort {
public:
    /** Throws CommandError: a port that cannot be had is port trouble, a link that cannot be made is wrong usage. */
    PlcPort(PlcOptions const& options, plc::LineSpeed const& speed);
    ~PlcPort();
    PlcPort(PlcPort const&) = delete;
    PlcPort& operator=(PlcPort const&) = delete;

    [[nodiscard]] int descriptor() const;
    /** What a panel opens: the pseudo-terminal's name. Of a serial port its own. */
    [[nodiscard]] std::string const& name() const { return name_; }
    /** What to give other commands as their port: the link when there is one. */
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
