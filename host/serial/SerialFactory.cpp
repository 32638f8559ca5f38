#include "host/serial/SerialFactory.h"

#include "host/ports/PortDiagnosis.h"
#include "host/serial/ObservedPort.h"
#include "host/serial/SerialPort.h"
#include "host/services/InterfaceNames.h"
#include "host/services/NoThrow.h"

#include <cerrno>
#include <optional>
#include <sys/stat.h>
#include <utility>

namespace host {

struct SerialFactory::Entry {
    Entry(std::string const& path, PortReport& report, Clock& clock, PortObserver* observer, int interruption)
        : port(path, report, clock, interruption) {
        if (observer != nullptr) {
            observed.emplace(port, *observer, clock, &report);
        }
    }

    ISerialPort* handedOut() { return observed ? static_cast<ISerialPort*>(&*observed) : &port; }

    SerialPort port;
    std::optional<ObservedPort> observed;
};

SerialFactory::SerialFactory(Clock& clock, PortNames names, PortObserver* observer, int interruption)
    : clock_(clock), names_(std::move(names)), observer_(observer), interruption_(interruption) {}

SerialFactory::~SerialFactory() = default;

IInterface* SerialFactory::ConvertTo(char const* name) {
    return isOneOf(name, {"SerialFactory", "ISerialFactory"}) ? this : nullptr;
}

char const* SerialFactory::GetImpName() const {
    return "SerialFactory";
}

int SerialFactory::GetImpVersion() const {
    return 100;
}

ISerialPort* SerialFactory::CreatePort(char const* name) {
    if (name == nullptr) {
        return nullptr;
    }
    return noThrow([&] { return create(name); }, nullptr);
}

ISerialPort* SerialFactory::create(std::string const& name) {
    lastName_ = name;
    PortReport& report = reports_[name];
    auto const path = names_.path(name);
    if (!path) {
        report.lastError = base::Failure{base::FailureKind::PortMissing,
                                         "no serial port is called '" + name +
                                             "': give com1 to com16 or the path of a device such as /dev/ttyUSB0"};
        return nullptr;
    }
    struct stat status {};
    if (stat(path->c_str(), &status) != 0) {
        report.lastError = openFailure(*path, errno);
        return nullptr;
    }
    ports_.push_back(std::make_unique<Entry>(*path, report, clock_, observer_, interruption_));
    report.lastError.reset();
    return ports_.back()->handedOut();
}

void SerialFactory::ReleasePort(ISerialPort* port) {
    std::erase_if(ports_, [port](auto const& entry) { return entry->handedOut() == port; });
}

std::optional<base::Failure> SerialFactory::lastError() const {
    PortReport const* const last = report(lastName_);
    return last != nullptr ? last->lastError : std::nullopt;
}

std::optional<base::Failure> SerialFactory::lastFault() const {
    PortReport const* const last = report(lastName_);
    return last != nullptr ? last->lastFault : std::nullopt;
}

PortReport const* SerialFactory::report(std::string const& name) const {
    auto const found = reports_.find(name);
    return found != reports_.end() ? &found->second : nullptr;
}

} // namespace host
