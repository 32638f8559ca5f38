#include "tools/velk/plc/PlcPort.h"

#include "host/LineSettings.h"
#include "host/PortDiagnosis.h"
#include "host/PortNames.h"
#include "host/PseudoTerminal.h"
#include "host/Rs485.h"
#include "plc/Descriptor.h"
#include "plc/TerminalSpeed.h"
#include "tools/velk/CommandError.h"

#include <fmt/format.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <termios.h>
#include <utility>

namespace velk::simulation {
namespace {

[[noreturn]] void refusePort(std::string const& text) {
    throw CommandError(ExitCode::Port, text);
}

host::LineSettings settingsFor(plc::LineSpeed const& speed) {
    constexpr int kDataBits = 8;
    auto const settings =
        host::lineSettings(static_cast<int>(speed.baud), static_cast<int>(speed.parity), kDataBits, speed.stopBits);
    if (!settings.ok()) {
        throw CommandError(ExitCode::Usage, settings.failure().text);
    }
    return settings.value();
}

void applySettings(int descriptor, std::string const& path, plc::LineSpeed const& speed) {
    termios current{};
    if (::tcgetattr(descriptor, &current) != 0) {
        refusePort(errno == ENOTTY ? host::notATerminal(path).text : host::settingFailure(path, errno).text);
    }
    termios wanted = host::rawTermios(current, settingsFor(speed));
    wanted.c_cc[VMIN] = 1; // so that no byte is told apart from the end
    termios actual{};
    if (::tcsetattr(descriptor, TCSANOW, &wanted) != 0 || ::tcgetattr(descriptor, &actual) != 0) {
        refusePort(host::settingFailure(path, errno).text);
    }
    std::string const refused = host::refusedSetting(wanted, actual, host::isPseudoTerminal(descriptor));
    if (!refused.empty()) {
        refusePort("the serial port " + path + " does not take over " + refused);
    }
    ::tcflush(descriptor, TCIOFLUSH); // what came in at other settings is noise
}

} // namespace

PlcPort::PlcPort(PlcOptions const& options, plc::LineSpeed const& speed) {
    if (options.port) {
        openSerial(*options.port, speed, options.mode.value_or("RS-232") == "RS-485");
    } else {
        openTerminal(speed);
    }
    if (options.link) {
        makeLink(*options.link);
    }
}

PlcPort::~PlcPort() {
    std::error_code ignored;
    if (!link_.empty() && std::filesystem::read_symlink(link_, ignored) == name_) {
        std::filesystem::remove(link_, ignored);
    }
}

int PlcPort::descriptor() const {
    return terminal_ ? terminal_->master() : serial_.get();
}

void PlcPort::openTerminal(plc::LineSpeed const& speed) {
    try {
        terminal_ = std::make_unique<plc::PseudoTerminal>();
        if (speed.baud != 0) {
            plc::setSpeed(terminal_->master(), speed.baud); // for panels that do not set one
        }
    } catch (std::system_error const& error) {
        refusePort(fmt::format("no pseudo-terminal can be had: {}", error.what()));
    }
    name_ = terminal_->slaveName();
}

void PlcPort::openSerial(std::string const& port, plc::LineSpeed const& speed, bool rs485) {
    std::optional<std::string> const path = host::PortNames().path(port);
    if (!path) {
        refusePort("there is no serial port called '" + port + "'");
    }
    serial_ = host::FileDescriptor(::open(path->c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!serial_.isOpen()) {
        refusePort(host::openFailure(*path, errno).text);
    }
    std::optional<host::PortLock> lock = host::PortLock::take(serial_.get(), !host::isPseudoTerminal(serial_.get()));
    if (!lock) {
        int const error = errno;
        serial_.close(); // or this program would be found to be the holder
        refusePort(error == EWOULDBLOCK ? host::busyPort(*path).text : host::settingFailure(*path, error).text);
    }
    lock_.emplace(std::move(*lock));
    applySettings(serial_.get(), *path, speed);
    if (host::Outcome const applied = host::applyRs485(serial_.get(), *path, rs485); !applied.ok()) {
        refusePort(applied.failure().text);
    }
    name_ = *path;
}

/** A link that an earlier run left behind makes room; anything else stays. */
void PlcPort::makeLink(std::string const& path) {
    std::error_code error;
    if (std::filesystem::is_symlink(path, error)) {
        std::filesystem::remove(path, error);
    }
    std::filesystem::create_symlink(name_, path, error);
    if (error) {
        throw CommandError(ExitCode::Usage, fmt::format("the link {} cannot be made: {}", path, error.message()));
    }
    link_ = path;
}

} // namespace velk::simulation
