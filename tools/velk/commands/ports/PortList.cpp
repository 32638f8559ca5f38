#include "tools/velk/commands/ports/PortList.h"

#include "base/FileDescriptor.h"
#include "host/ports/PortDiagnosis.h"
#include "host/ports/PortHolder.h"
#include "tools/common/TextTable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <libserialport.h>
#include <linux/serial.h>
#include <memory>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace velk {
namespace {

std::string textOf(char const* text) {
    return text != nullptr ? text : "";
}

/** "/dev/serial/by-id/..." where udev keeps one for the port. */
std::string stableNameOf(std::string const& path) {
    std::error_code error;
    for (auto const& link : std::filesystem::directory_iterator("/dev/serial/by-id", error)) {
        if (std::filesystem::equivalent(link.path(), path, error)) {
            return link.path().string();
        }
    }
    return {};
}

std::string driverOf(std::string const& path) {
    std::error_code error;
    std::string const name = std::filesystem::path(path).filename().string();
    return std::filesystem::read_symlink("/sys/class/tty/" + name + "/device/driver", error).filename().string();
}

std::string holderOf(std::string const& path) {
    std::optional<host::PortHolder> const holder = host::findHolder(path);
    if (!holder) {
        return {};
    }
    std::string const process = "process " + std::to_string(holder->process);
    return holder->program.empty() ? process : holder->program + " (" + process + ")";
}

std::optional<bool> rs485Of(std::string const& path) {
    base::FileDescriptor const port(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    serial_rs485 settings{};
    if (!port.isOpen()) {
        return std::nullopt;
    }
    return ioctl(port.get(), TIOCGRS485, &settings) == 0;
}

PortInfo describe(sp_port* port) {
    PortInfo info;
    info.path = textOf(sp_get_port_name(port));
    info.stableName = stableNameOf(info.path);
    info.driver = driverOf(info.path);
    info.product = textOf(sp_get_port_usb_product(port));
    if (info.product.empty()) {
        info.product = textOf(sp_get_port_description(port));
    }
    info.serial = textOf(sp_get_port_usb_serial(port));
    info.heldBy = holderOf(info.path);
    if (access(info.path.c_str(), R_OK | W_OK) != 0) {
        info.mayNot = host::openFailure(info.path, errno).text;
    } else if (info.heldBy.empty()) {
        info.rs485 = rs485Of(info.path);
    }
    return info;
}

char const* rs485Text(std::optional<bool> able) {
    return !able ? "unknown" : *able ? "yes" : "no";
}

} // namespace

std::vector<PortInfo> listPorts() {
    sp_port** list = nullptr;
    if (sp_list_ports(&list) != SP_OK) {
        return {};
    }
    std::unique_ptr<sp_port*, decltype(&sp_free_port_list)> const owner(list, sp_free_port_list);
    std::vector<PortInfo> ports;
    for (sp_port** port = list; *port != nullptr; ++port) {
        ports.push_back(describe(*port));
    }
    std::sort(ports.begin(), ports.end(), [](PortInfo const& a, PortInfo const& b) { return a.path < b.path; });
    return ports;
}

std::string portsTable(std::vector<PortInfo> const& ports) {
    tools::TextTable table({"port", "driver", "adapter", "serial number", "RS-485", "may you open it", "stable name"});
    for (PortInfo const& port : ports) {
        std::string const usable = !port.mayNot.empty()   ? "no"
                                   : !port.heldBy.empty() ? "in use by " + port.heldBy
                                                          : "yes";
        table.add({port.path, port.driver, port.product, port.serial, rs485Text(port.rs485), usable, port.stableName});
    }
    return table.text();
}

std::string portsJson(std::vector<PortInfo> const& ports) {
    nlohmann::json list = nlohmann::json::array();
    for (PortInfo const& port : ports) {
        nlohmann::json one{{"port", port.path},
                           {"driver", port.driver},
                           {"adapter", port.product},
                           {"serial", port.serial},
                           {"held_by", port.heldBy},
                           {"stable_name", port.stableName},
                           {"usable", port.mayNot.empty() && port.heldBy.empty()},
                           {"reason", port.mayNot}};
        one["rs485"] = port.rs485 ? nlohmann::json(*port.rs485) : nlohmann::json();
        list.push_back(std::move(one));
    }
    return list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

} // namespace velk
