#include "host/serial/ObservedPort.h"

#include "host/serial/PortObserver.h"
#include "host/serial/PortReport.h"
#include "host/services/Clock.h"
#include "host/services/InterfaceNames.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace host {

namespace {

/** The used bytes of a buffer of @p room bytes, of which the other port says it used @p count. */
std::span<unsigned char const> used(unsigned char const* buffer, int count, int room) {
    int const bounded = buffer != nullptr ? std::clamp(count, 0, std::max(0, room)) : 0;
    return {buffer, static_cast<std::size_t>(bounded)};
}

} // namespace

ObservedPort::ObservedPort(ISerialPort& port, PortObserver& observer, Clock& clock, PortReport const* report)
    : port_(port), observer_(observer), clock_(clock), report_(report) {}

IInterface* ObservedPort::ConvertTo(char const* name) {
    return isOneOf(name, {"ObservedPort", "ISerialPort"}) ? this : nullptr;
}

char const* ObservedPort::GetImpName() const {
    return "ObservedPort";
}

int ObservedPort::GetImpVersion() const {
    return 100;
}

int ObservedPort::Open(int baud, int parity, int dataBits, int stopBits, int rs485) {
    return port_.Open(baud, parity, dataBits, stopBits, rs485);
}

void ObservedPort::Close() {
    port_.Close();
}

int ObservedPort::Purge(unsigned char* buffer, int reserved1, int reserved2) {
    constexpr int kRoom = 1460; // the least size of the buffer for a purge
    int const removed = port_.Purge(buffer, reserved1, reserved2);
    auto const bytes = used(buffer, removed, kRoom);
    if (!bytes.empty()) {
        tell([&] { observer_.onDropped(bytes, clock_.microseconds()); });
    }
    return removed;
}

int ObservedPort::Write(unsigned char const* bytes, int length, int reserved) {
    std::int64_t const began = clock_.microseconds();
    int const written = port_.Write(bytes, length, reserved);
    std::int64_t const ended = clock_.microseconds();
    auto const frame = used(bytes, length, length);
    if (written != 0) {
        tell([&] { observer_.onFrame({FrameDirection::Sent, frame, began, ended}); });
    } else if (!frame.empty()) {
        tell([&] { observer_.onUnsent(frame); });
        tellFault(ended);
    }
    return written;
}

int ObservedPort::Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
                       int reserved) {
    int ignored = 0;
    int& received = count != nullptr ? *count : ignored;
    std::int64_t const began = clock_.microseconds();
    int const good = port_.Read(buffer, maximum, firstByteTimeoutMs, interCharTimeoutMs, &received, reserved);
    std::int64_t const ended = clock_.microseconds();
    tellReceived(used(buffer, received, maximum), began, ended);
    if (good == 0) {
        tellFault(ended);
    } else if (received == 0) {
        tell([&] { observer_.onTimeout(ended); });
    }
    return good;
}

void ObservedPort::tellReceived(std::span<unsigned char const> bytes, std::int64_t began, std::int64_t ended) noexcept {
    if (bytes.empty()) {
        return;
    }
    if (report_ != nullptr) {
        began = report_->firstByteAt;
        ended = report_->lastByteAt;
    }
    tell([&] { observer_.onFrame({FrameDirection::Received, bytes, began, ended}); });
}

void ObservedPort::tellFault(std::int64_t at) noexcept {
    bool const known = report_ != nullptr && report_->lastFault.has_value();
    std::string_view const reason = known ? std::string_view(report_->lastFault->text) : std::string_view();
    tell([&] { observer_.onFault(reason, at); });
}

template <typename Report>
void ObservedPort::tell(Report&& report) noexcept {
    try {
        std::forward<Report>(report)();
    } catch (...) { // NOLINT(bugprone-empty-catch): nothing may be thrown into the module, least of all by a trace
    }
}

} // namespace host
