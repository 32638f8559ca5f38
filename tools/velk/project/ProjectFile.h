#pragma once

#include "base/Complaints.h"
#include "host/instance/ConfigText.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** A PLC on the line. */
struct Station {
    int node = 0;
    std::string name; ///< empty when it has none
};

/** A variable with a name of the user's own. */
struct NamedTag {
    std::string name;
    std::string variable;    ///< in the PLC; the name itself unless it is given
    std::string type;        ///< the driver's data type with its conversions: "int(swap2)"; empty: from the symbol file
    std::optional<int> node; ///< without it the station that is meant by default
    std::optional<std::string> area; ///< address space: "M", "IB" ...
    std::optional<std::string> offset;
};

/** What a project file (velk.toml) says, with the driver's own defaults for what it leaves out. */
struct Project {
    host::DriverConfig config; ///< the port is empty when the file names none
    std::vector<Station> stations;
    std::optional<int> defaultNode; ///< of the station that is meant when none is named
    std::vector<NamedTag> tags;
    std::optional<std::filesystem::path> storage; ///< absolute
};

/** What is wrong with the address behind a coupler, which is to be like 192.168.0.1; nothing when nothing is. */
std::string addressFault(std::string_view address);

/** What is wrong with a name that can be no port's, whether it is there now or not; nothing when nothing is. */
std::string portFault(std::string const& port);

/** What is wrong with the name of a station; nothing when nothing is, or when it is empty. */
std::string stationNameFault(std::string const& name);

/** Reads a project file; paths in it are relative to its folder. Throws base::FileError. */
Project readProjectFile(std::filesystem::path const& file);

/** The same from a text; @p name stands in the complaints. */
Project readProjectText(std::string_view text, std::string const& name, std::filesystem::path const& folder = {});

} // namespace velk
