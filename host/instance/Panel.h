#pragma once

#include "base/Result.h"
#include "host/instance/ConfigText.h"
#include "host/instance/DriverInstance.h"
#include "host/instance/ModuleLoader.h"
#include "host/ports/PortNames.h"
#include "host/serial/SerialFactory.h"
#include "host/services/Clock.h"
#include "host/services/HostFactory.h"
#include "host/services/PermanentStorage.h"
#include "host/services/Scheduler.h"

#include <filesystem>
#include <memory>
#include <string>

namespace host {

struct PanelSettings {
    std::filesystem::path module;
    std::filesystem::path storage; ///< directory of the symbol files
    std::string ident;             ///< names the instance in the storage
    PortNames ports;
    DriverConfig config;
    int interruption = -1; ///< ends all waiting on the line, see SerialPort
};

/** Everything the driver needs from a panel: the module, the host's services and one configured driver instance. */
class Panel {
public:
    /** @p clock and @p observer (null for none) must outlive the panel. */
    static base::Result<std::unique_ptr<Panel>> create(PanelSettings const& settings, Clock& clock,
                                                       PortObserver* observer);

    /** Opens the port. The failure says why it cannot be opened. */
    base::Outcome start();

    /**
     * Creates the folder for symbol files. Call it after the port was opened, so that a missing port leaves no folder
     * behind.
     */
    base::Outcome makeStorage();

    base::Outcome stop();

    DriverInstance& driver() { return *driver_; }
    SerialFactory& serial() { return serial_; }

private:
    Panel(LoadedModule module, PanelSettings const& settings, Clock& clock, PortObserver* observer);

    // The order matters: the driver is destroyed first, the module last.
    LoadedModule module_;
    Scheduler scheduler_;
    SerialFactory serial_;
    std::string ident_;
    PermanentStorage storage_;
    HostFactory services_;
    std::unique_ptr<DriverInstance> driver_;
};

} // namespace host
