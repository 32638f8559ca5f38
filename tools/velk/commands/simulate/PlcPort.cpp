#include "tools/velk/commands/simulate/PlcPort.h"

#include "host/ports/LineSettings.h"
#include "host/ports/PortDiagnosis.h"
#include "host/ports/PortNames.h"
#include "host/ports/PseudoTerminal.h"
#include "host/ports/Rs485.h"
#include "host/ports/TerminalSettings.h"
#include "plc/ports/TerminalSpeed.h"
#include "tools/velk/context/CommandError.h"

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
    wanted.c_cc[VMIN] = 1; // a read of 0 bytes means the end only
    bool const pseudoTerminal = host::isPseudoTerminal(descriptor);
    if (base::Outcome const set = host::applyTermios(descriptor, path, wanted, pseudoTerminal); !set.ok()) {
        refusePort(set.failure().text);
    }
    ::tcflush(descriptor, TCIOFLUSH); // bytes received with other settings are noise
}

[[noreturn]] void refuseLink(std::string const& path, std::string const& why) {
    throw CommandError(ExitCode::Usage, fmt::format("the link {} cannot be made: {}", path, why));
}

/** A closed pseudo-terminal loses its name, which something else may use by now. */
bool isLeftBehind(std::filesystem::path const& target, std::filesystem::file_type there) {
    return there == std::filesystem::file_type::not_found ||
           (target.parent_path() == "/dev/pts" && there != std::filesystem::file_type::character);
}

char const* stateOf(std::filesystem::file_type there) {
    switch (there) {
    case std::filesystem::file_type::character:
        return "which is in use, by another simulated PLC perhaps";
    case std::filesystem::file_type::none:
        return "which cannot be examined";
    default:
        return "which is there";
    }
}

/** Removes a link that an earlier run left; anything else stays. */
void makeRoom(std::string const& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::file_type const kind = fs::symlink_status(path, error).type();
    if (kind == fs::file_type::directory || kind == fs::file_type::regular) {
        refuseLink(path, kind == fs::file_type::directory ? "there is a folder of that name"
                                                          : "there is a file of that name");
    }
    if (kind != fs::file_type::symlink) {
        return; // missing, or a failure that the system reports itself
    }
    fs::path const target = fs::read_symlink(path, error);
    fs::file_type const there = fs::status(path, error).type();
    if (!isLeftBehind(target, there)) {
        refuseLink(path, fmt::format("there is a link of that name to {}, {}", target.string(), stateOf(there)));
    }
    fs::remove(path, error);
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

std::string PlcPort::wayToIt() const {
    if (link_.empty()) {
        return name_;
    }
    bool const takenForAName = link_.find('/') == std::string::npos; // such as com1
    return takenForAName ? "./" + link_ : link_;
}

void PlcPort::openTerminal(plc::LineSpeed const& speed) {
    try {
        terminal_ = std::make_unique<plc::PseudoTerminal>();
        if (speed.baud != 0) {
            plc::setSpeed(terminal_->master(), speed.baud); // for panels that do not set one
        }
    } catch (std::system_error const& error) {
        refusePort(fmt::format("cannot open a pseudo-terminal: {}", error.what()));
    }
    name_ = terminal_->slaveName();
}

void PlcPort::openSerial(std::string const& port, plc::LineSpeed const& speed, bool rs485) {
    std::optional<std::string> const path = host::PortNames().path(port);
    if (!path) {
        refusePort("there is no serial port called '" + port + "'");
    }
    serial_ = base::FileDescriptor(::open(path->c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!serial_.isOpen()) {
        refusePort(host::openFailure(*path, errno).text);
    }
    std::optional<host::PortLock> lock = host::PortLock::take(serial_.get(), !host::isPseudoTerminal(serial_.get()));
    if (!lock) {
        int const error = errno;
        serial_.close(); // or this program would be reported as the user of the port
        refusePort(error == EWOULDBLOCK ? host::busyPort(*path).text : host::settingFailure(*path, error).text);
    }
    lock_.emplace(std::move(*lock));
    applySettings(serial_.get(), *path, speed);
    if (base::Outcome const applied = host::applyRs485(serial_.get(), *path, rs485); !applied.ok()) {
        refusePort(applied.failure().text);
    }
    name_ = *path;
}

void PlcPort::makeLink(std::string const& path) {
    makeRoom(path);
    std::error_code error;
    std::filesystem::create_symlink(name_, path, error);
    if (error) {
        refuseLink(path, error.message());
    }
    link_ = path;
}

} // namespace velk::simulation
