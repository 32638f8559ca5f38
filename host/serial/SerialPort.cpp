#include "host/serial/SerialPort.h"

#include "base/FileDescriptor.h"
#include "host/ports/PortDiagnosis.h"
#include "host/ports/PortLock.h"
#include "host/ports/PseudoTerminal.h"
#include "host/ports/Rs485.h"
#include "host/ports/TerminalSettings.h"
#include "host/serial/DescriptorLine.h"
#include "host/serial/FrameReader.h"
#include "host/serial/PortReport.h"
#include "host/services/Clock.h"
#include "host/services/InterfaceNames.h"
#include "host/services/NoThrow.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <utility>

namespace host {

// Members are destroyed in reverse order: the exclusive mode must be turned off before the descriptor is closed.
struct SerialPort::Session {
    Session(base::FileDescriptor opened, PortLock taken, LineSettings const& settings, int interruption)
        : descriptor(std::move(opened)), lock(std::move(taken)), line(descriptor.get(), interruption),
          nanosecondsPerByte(settings.nanosecondsPerByte()) {}

    base::FileDescriptor descriptor;
    PortLock lock;
    DescriptorLine line;
    std::int64_t nanosecondsPerByte;
};

namespace {

base::Result<base::FileDescriptor> openTerminal(std::string const& path) {
    base::FileDescriptor descriptor(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        return openFailure(path, errno);
    }
    termios settings{};
    if (tcgetattr(descriptor.get(), &settings) != 0) {
        return errno == ENOTTY || errno == EINVAL ? notATerminal(path) : settingFailure(path, errno);
    }
    return descriptor;
}

/**
 * The exclusive mode of a pseudo-terminal would remain after the program was killed, because the other side keeps the
 * terminal open.
 */
bool wantsExclusiveMode(base::FileDescriptor const& descriptor) {
    return !isPseudoTerminal(descriptor.get());
}

base::Outcome applySettings(base::FileDescriptor const& descriptor, std::string const& path,
                            LineSettings const& settings) {
    termios current{};
    if (tcgetattr(descriptor.get(), &current) != 0) {
        return settingFailure(path, errno);
    }
    return applyTermios(descriptor.get(), path, rawTermios(current, settings), isPseudoTerminal(descriptor.get()));
}

std::int64_t toMicroseconds(int milliseconds) {
    return std::int64_t{std::max(0, milliseconds)} * 1000;
}

} // namespace

SerialPort::SerialPort(std::string path, PortReport& report, Clock& clock, int interruption)
    : path_(std::move(path)), report_(report), clock_(clock), interruption_(interruption) {}

SerialPort::~SerialPort() = default;

IInterface* SerialPort::ConvertTo(char const* name) {
    return isOneOf(name, {"SerialPort", "ISerialPort"}) ? this : nullptr;
}

char const* SerialPort::GetImpName() const {
    return "SerialPort";
}

int SerialPort::GetImpVersion() const {
    return 100;
}

int SerialPort::Open(int baud, int parity, int dataBits, int stopBits, int rs485) {
    return noThrow([&] { return open(baud, parity, dataBits, stopBits, rs485 != 0) ? 1 : 0; }, 0);
}

void SerialPort::Close() {
    session_.reset();
}

int SerialPort::Purge(unsigned char* buffer, int /*reserved1*/, int /*reserved2*/) {
    if (buffer == nullptr) {
        return 0;
    }
    return noThrow([&] { return purge({buffer, std::size_t{kPurgeRoom}}); }, 0);
}

int SerialPort::Write(unsigned char const* bytes, int length, int /*reserved*/) {
    if (bytes == nullptr || length <= 0) {
        return 0;
    }
    return noThrow([&] { return write({bytes, static_cast<std::size_t>(length)}); }, 0);
}

int SerialPort::Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
                     int /*reserved*/) {
    int ignored = 0;
    int& received = count != nullptr ? *count : ignored;
    received = 0;
    std::size_t const room = buffer != nullptr && maximum > 0 ? static_cast<std::size_t>(maximum) : 0;
    return noThrow([&] { return read({buffer, room}, firstByteTimeoutMs, interCharTimeoutMs, received) ? 1 : 0; }, 0);
}

bool SerialPort::open(int baud, int parity, int dataBits, int stopBits, bool rs485) {
    Close();
    auto const settings = lineSettings(baud, parity, dataBits, stopBits);
    if (!settings.ok()) {
        report_.lastError =
            settings.failure().withText("the serial port " + path_ + " is not opened: " + settings.failure().text);
        return false;
    }
    auto session = openSession(settings.value(), rs485);
    if (!session.ok()) {
        report_.lastError = session.failure();
        return false;
    }
    session_ = std::move(session.value());
    report_ = PortReport{};
    return true;
}

base::Result<std::unique_ptr<SerialPort::Session>> SerialPort::openSession(LineSettings const& settings, bool rs485) {
    auto opened = openTerminal(path_);
    if (!opened.ok()) {
        return opened.failure();
    }
    base::FileDescriptor& descriptor = opened.value();
    std::optional<PortLock> lock = PortLock::take(descriptor.get(), wantsExclusiveMode(descriptor));
    if (!lock) {
        int const error = errno;
        descriptor.close(); // otherwise this program itself would be reported as the holder
        return error == EWOULDBLOCK ? busyPort(path_) : settingFailure(path_, error);
    }
    auto session = std::make_unique<Session>(std::move(descriptor), std::move(*lock), settings, interruption_);
    if (base::Outcome const applied = applySettings(session->descriptor, path_, settings); !applied.ok()) {
        return applied.failure();
    }
    if (base::Outcome const applied = applyRs485(session->descriptor.get(), path_, rs485); !applied.ok()) {
        return applied.failure();
    }
    tcflush(session->descriptor.get(), TCIOFLUSH); // bytes received with other settings are noise
    return session;
}

int SerialPort::purge(std::span<unsigned char> room) {
    if (!session_) {
        return 0;
    }
    Transfer const transfer = session_->line.receive(room);
    if (transfer.fault) {
        die();
        return 0;
    }
    return static_cast<int>(transfer.count);
}

int SerialPort::write(std::span<unsigned char const> bytes) {
    if (!session_) {
        return 0;
    }
    switch (sendFrame(session_->line, clock_, bytes, session_->nanosecondsPerByte)) {
    case SendResult::Sent:
        return static_cast<int>(bytes.size());
    case SendResult::Stuck:
        report_.lastFault =
            base::Failure{base::FailureKind::PortDied, "the serial port " + path_ + " no longer sends bytes"};
        return 0;
    case SendResult::Fault:
        break;
    }
    die();
    return 0;
}

bool SerialPort::read(std::span<unsigned char> room, int firstByteMs, int interCharMs, int& count) {
    if (!session_) {
        return false;
    }
    ReceivedFrame const frame =
        readFrame(session_->line, clock_, room, {toMicroseconds(firstByteMs), toMicroseconds(interCharMs)});
    count = static_cast<int>(frame.count);
    report_.firstByteAt = frame.firstByteAt;
    report_.lastByteAt = frame.lastByteAt;
    if (frame.fault) {
        die();
    }
    return !frame.fault;
}

void SerialPort::die() {
    bool const interrupted = session_->line.isInterrupted();
    std::string const reason = session_->line.faultText();
    session_->line.dropUnsent(); // otherwise closing waits until a slow line has sent them
    session_.reset();
    report_.lastFault = interrupted ? base::Failure{base::FailureKind::Interrupted, reason}
                                    : base::Failure{base::FailureKind::PortDied,
                                                    "the serial port " + path_ + " has gone away (" + reason + ")"};
}

} // namespace host
