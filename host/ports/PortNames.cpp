#include "host/ports/PortNames.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace host {

namespace {

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/** Follows links. */
bool isDevice(std::string const& path) {
    std::error_code ignored;
    return std::filesystem::is_character_file(path, ignored);
}

/** "ttyUSB0" */
bool isTerminalName(std::string const& name) {
    constexpr char const* kLettersAndDigits = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    return name.starts_with("tty") && name.find_first_not_of(kLettersAndDigits) == std::string::npos;
}

std::optional<std::string> deviceCalled(std::string const& name) {
    for (char const* const folder : {"/dev/", "./"}) {
        if (isDevice(folder + name)) {
            return folder + name;
        }
    }
    return isTerminalName(name) ? std::optional("/dev/" + name) : std::nullopt;
}

} // namespace

PortNames::PortNames() {
    constexpr int kPorts = 16;
    for (int port = 1; port <= kPorts; ++port) {
        set("com" + std::to_string(port), "/dev/ttyS" + std::to_string(port - 1));
    }
}

void PortNames::set(std::string const& name, std::string path) {
    paths_[lowerCase(name)] = std::move(path);
}

std::optional<std::string> PortNames::path(std::string const& name) const {
    if (name.find('/') != std::string::npos) {
        return name;
    }
    auto const found = paths_.find(lowerCase(name));
    return found != paths_.end() ? std::optional(found->second) : deviceCalled(name);
}

} // namespace host
