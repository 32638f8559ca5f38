#pragma once

#include <string>
#include <utility>
#include <vector>

namespace velktest {

/** A configuration string, entry by entry; it starts with everything that is required. */
class ConfigText {
public:
    ConfigText() {
        for (auto const& [key, value] : std::vector<std::pair<std::string, std::string>>{{"uart", "com1"},
                                                                                         {"parity", "none"},
                                                                                         {"baudrate", "115200"},
                                                                                         {"stopbits", "1"},
                                                                                         {"protType", "Serial_RS232"},
                                                                                         {"BlockSize", "128"},
                                                                                         {"Timeout", "1000"},
                                                                                         {"repeat", "1"},
                                                                                         {"model", "Intel"},
                                                                                         {"RoutingLevels", "0"},
                                                                                         {"CouplerLV1", "0"},
                                                                                         {"ChannelLV1", "0"},
                                                                                         {"CouplerLV2", "0"},
                                                                                         {"ChannelLV2", "0"}}) {
            Set(key, value);
        }
    }

    ConfigText& Set(std::string const& key, std::string const& value) {
        for (auto& entry : entries_) {
            if (entry.first == key) {
                entry.second = value;
                return *this;
            }
        }
        entries_.emplace_back(key, value);
        return *this;
    }
    ConfigText& Node(int node, std::string const& key, std::string const& value) {
        return Set("Node" + std::to_string(node) + "::" + key, value);
    }
    ConfigText& Without(std::string const& key) {
        std::erase_if(entries_, [&](auto const& entry) { return entry.first == key; });
        return *this;
    }

    std::string Build() const {
        std::string text = "CfgVer=1";
        for (auto const& [key, value] : entries_) {
            text += ' ';
            text += key;
            text += '=';
            text += value;
        }
        return text;
    }

private:
    std::vector<std::pair<std::string, std::string>> entries_;
};

} // namespace velktest
