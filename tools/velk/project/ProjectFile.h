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

/** A variable with a name given by the user. */
struct NamedTag {
    std::string name;
    std::string variable;    ///< in the PLC; the name itself unless it is given
    std::string type;        ///< the driver's data type with its conversions: "int(swap2)"; empty: from the symbol file
    std::optional<int> node; ///< without it the default station
    std::optional<std::string> area; ///< address space: "M", "IB" ...
    std::optional<std::string> offset;
};

/** The contents of a project file (velk.toml), with the driver's defaults for missing keys. */
struct Project {
    host::DriverConfig config; ///< the port is empty when the file names none
    std::vector<Station> stations;
    std::optional<int> defaultNode; ///< of the station used when none is named
    std::vector<NamedTag> tags;
    std::optional<std::filesystem::path> storage; ///< absolute
};

/** What is wrong with an address after a coupler, such as 192.168.0.1; nothing when it is valid. */
std::string addressFault(std::string_view address);

/** Why a name cannot be a port's, existing or not; nothing when it can. */
std::string portFault(std::string const& port);

/** What is wrong with the name of a station; nothing when it is valid or empty. */
std::string stationNameFault(std::string const& name);

/** Reads a project file; paths in it are relative to its folder. Throws base::FileError. */
Project readProjectFile(std::filesystem::path const& file);

/** The same from a text; @p name appears in the messages. */
Project readProjectText(std::string_view text, std::string const& name, std::filesystem::path const& folder = {});

} // namespace velk
