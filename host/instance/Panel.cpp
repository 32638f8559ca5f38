#include "host/instance/Panel.h"

#include <optional>
#include <utility>

namespace host {

Panel::Panel(LoadedModule module, PanelSettings const& settings, Clock& clock, PortObserver* observer)
    : module_(std::move(module)), serial_(clock, settings.ports, observer, settings.interruption),
      ident_(settings.ident), storage_(settings.storage), services_(scheduler_, serial_, &storage_) {}

base::Result<std::unique_ptr<Panel>> Panel::create(PanelSettings const& settings, Clock& clock,
                                                   PortObserver* observer) {
    base::Result<LoadedModule> module = LoadedModule::load(settings.module);
    if (!module.ok()) {
        return module.failure();
    }
    std::unique_ptr<Panel> panel(new Panel(std::move(module.value()), settings, clock, observer));
    base::Result<DriverInstance> driver = DriverInstance::create(panel->module_.factory(), panel->services_);
    if (!driver.ok()) {
        return driver.failure();
    }
    panel->driver_ = std::make_unique<DriverInstance>(std::move(driver.value()));
    panel->driver_->setIdent(settings.ident);
    base::Result<std::string> const configuration = configText(settings.config);
    if (!configuration.ok()) {
        return configuration.failure();
    }
    if (base::Outcome const configured = panel->driver_->configure(configuration.value()); !configured.ok()) {
        return configured.failure();
    }
    return panel;
}

base::Outcome Panel::start() {
    base::Outcome started = driver_->start();
    std::optional<base::Failure> reason = serial_.lastError();
    if (started.ok() || !reason) {
        return started;
    }
    reason->driverCode = started.failure().driverCode;
    return *std::move(reason);
}

base::Outcome Panel::makeStorage() {
    return storage_.prepare(ident_);
}

base::Outcome Panel::stop() {
    return driver_->stop();
}

} // namespace host
