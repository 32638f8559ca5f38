#pragma once

#include "base/Result.h"
#include "host/ports/PortNames.h"
#include "host/serial/PortReport.h"
#include "interfaces/HostServices.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

class Clock;
class PortObserver;

/**
 * Creates the serial ports of this machine by their configured names.
 *
 * The binary contract only returns null or 0 when a port cannot be opened: the reason is kept here, also after the port
 * was released. For one thread at a time.
 */
class SerialFactory final : public ISerialFactory {
public:
    /**
     * @p clock and @p observer (null for none) must outlive the factory; the observer sees every port.
     *
     * @param interruption ends all waiting, see SerialPort
     */
    explicit SerialFactory(Clock& clock, PortNames names = {}, PortObserver* observer = nullptr, int interruption = -1);
    ~SerialFactory() override;
    SerialFactory(SerialFactory const&) = delete;
    SerialFactory& operator=(SerialFactory const&) = delete;

    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override;
    [[nodiscard]] int GetImpVersion() const override;

    /** Null when no device has this name; it is opened, and its rights are checked, by ISerialPort::Open(). */
    ISerialPort* CreatePort(char const* name) override;

    /** Anything but a port of this factory is ignored. */
    void ReleasePort(ISerialPort* port) override;

    /** Why the last requested port could not be created or opened; nothing when it could. */
    [[nodiscard]] std::optional<base::Failure> lastError() const;

    /** Why the last requested port failed while it was open ("adapter pulled out"); nothing when it did not. */
    [[nodiscard]] std::optional<base::Failure> lastFault() const;

    /** The report of the port called @p name; null when it was never requested. */
    [[nodiscard]] PortReport const* report(std::string const& name) const;

private:
    struct Entry;

    ISerialPort* create(std::string const& name);

    Clock& clock_;
    PortNames names_;
    PortObserver* observer_;
    int interruption_;
    std::map<std::string, PortReport> reports_; ///< by name; kept when a port is released
    std::string lastName_;
    std::vector<std::unique_ptr<Entry>> ports_;
};

} // namespace host
