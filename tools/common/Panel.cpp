#include "tools/common/Panel.h"

#include <utility>

namespace tools {

Panel::Panel(host::LoadedModule module, PanelSettings const& settings, host::Clock& clock, host::PortObserver* observer)
    : module_(std::move(module)), serial_(clock, settings.ports, observer, settings.interruption),
      ident_(settings.ident), storage_(settings.storage), services_(scheduler_, serial_, &storage_) {}

host::Result<std::unique_ptr<Panel>> Panel::create(PanelSettings const& settings, host::Clock& clock,
                                                   host::PortObserver* observer) {
    host::Result<host::LoadedModule> module = host::LoadedModule::load(settings.module);
    if (!module.ok()) {
        return module.failure();
    }
    std::unique_ptr<Panel> panel(new Panel(std::move(module.value()), settings, clock, observer));
    host::Result<host::DriverInstance> driver =
        host::DriverInstance::create(panel->module_.factory(), panel->services_);
    if (!driver.ok()) {
        return driver.failure();
    }
    panel->driver_ = std::make_unique<host::DriverInstance>(std::move(driver.value()));
    panel->driver_->setIdent(settings.ident);
    host::Result<std::string> const configuration = host::configText(settings.config);
    if (!configuration.ok()) {
        return configuration.failure();
    }
    if (host::Outcome const configured = panel->driver_->configure(configuration.value()); !configured.ok()) {
        return configured.failure();
    }
    return panel;
}

host::Outcome Panel::start() {
    host::Outcome const started = driver_->start();
    if (started.ok() || serial_.lastError().empty()) {
        return started;
    }
    return host::Failure{started.failure().code, serial_.lastError()};
}

host::Outcome Panel::makeStorage() {
    return storage_.prepare(ident_);
}

host::Outcome Panel::stop() {
    return driver_->stop();
}

host::Failure Panel::explain(host::Failure const& failure) const {
    std::string const fault = serial_.lastFault();
    return fault.empty() ? failure : host::Failure{failure.code, failure.text + " (" + fault + ")"};
}

} // namespace tools
