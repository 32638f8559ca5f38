#pragma once

#include "host/Clock.h"
#include "host/ConfigText.h"
#include "host/DriverInstance.h"
#include "host/HostFactory.h"
#include "host/ModuleLoader.h"
#include "host/PermanentStorage.h"
#include "host/PortNames.h"
#include "host/Result.h"
#include "host/Scheduler.h"
#include "host/SerialFactory.h"

#include <filesystem>
#include <memory>
#include <string>

namespace tools {

struct PanelSettings {
    std::filesystem::path module;
    std::filesystem::path storage; ///< directory of the symbol files
    std::string ident;             ///< names the instance in the storage
    host::PortNames ports;
    host::DriverConfig config;
    int interruption = -1; ///< ends all waiting on the line, see host::SerialPort
};

/** What a panel is to the driver: the module, the host's services and one configured driver instance. */
class Panel {
public:
    /** @p clock and @p observer (null for none) must outlive the panel. */
    static host::Result<std::unique_ptr<Panel>> create(PanelSettings const& settings, host::Clock& clock,
                                                       host::PortObserver* observer);

    /** Opens the port. The failure tells why it cannot be had. */
    host::Outcome start();

    /** Makes the place for symbol files ready. Not before the port is open: one that is not there leaves no folder. */
    host::Outcome makeStorage();

    host::Outcome stop();

    host::DriverInstance& driver() { return *driver_; }
    host::SerialFactory& serial() { return serial_; }

    /** What is known of the driver's last failure: a dead port is told apart from silence. */
    host::Failure explain(host::Failure const& failure) const;

private:
    Panel(host::LoadedModule module, PanelSettings const& settings, host::Clock& clock, host::PortObserver* observer);

    // The order matters: the driver goes first, the module last.
    host::LoadedModule module_;
    host::Scheduler scheduler_;
    host::SerialFactory serial_;
    std::string ident_;
    host::PermanentStorage storage_;
    host::HostFactory services_;
    std::unique_ptr<host::DriverInstance> driver_;
};

} // namespace tools
