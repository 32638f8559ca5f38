#include "tools/velk/cli/Version.h"

#include "host/instance/DriverInstance.h"
#include "host/instance/ModuleFile.h"
#include "host/instance/ModuleLoader.h"
#include "host/serial/SerialFactory.h"
#include "host/services/Clock.h"
#include "host/services/HostFactory.h"
#include "host/services/Scheduler.h"
#include "interfaces/IProtocol.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <array>

namespace velk {
namespace {

base::Result<std::string> bannerOf(std::filesystem::path const& file) {
    base::Result<host::LoadedModule> const module = host::LoadedModule::load(file);
    if (!module.ok()) {
        return module.failure();
    }
    host::SteadyClock clock;
    host::Scheduler scheduler;
    host::SerialFactory serial(clock);
    host::HostFactory services(scheduler, serial, nullptr);
    base::Result<host::DriverInstance> const driver = host::DriverInstance::create(module.value().factory(), services);
    if (!driver.ok()) {
        return driver.failure();
    }
    std::array<char, 1024> text{};
    int const count = driver.value().protocol().GetInfo(text.data(), static_cast<int>(text.size()));
    std::size_t const length = static_cast<std::size_t>(std::clamp(count, 0, static_cast<int>(text.size())));
    return std::string(text.data(), length);
}

} // namespace

std::string versionText() {
    std::string text = "velk " VELK_VERSION "\n";
    base::Result<std::filesystem::path> const file = host::findModule();
    if (!file.ok()) {
        return text + file.failure().text;
    }
    base::Result<std::string> banner = bannerOf(file.value());
    if (!banner.ok()) {
        return text + banner.failure().text;
    }
    banner.value().erase(banner.value().find_last_not_of("\r\n") + 1);
    return text + banner.value() + "\n" + file.value().string();
}

} // namespace velk
