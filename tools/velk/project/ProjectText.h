#pragma once

#include "host/instance/ConfigText.h"

#include <string>

namespace velk {

/** The contents of a new project file. */
struct NewProject {
    host::DriverConfig config;
    int node = 0;
    std::string stationName; ///< may be empty
    std::string storage;     ///< folder of the symbol files as written in the file; empty for the usual one
};

/** A text between the quotes of TOML. */
std::string tomlText(std::string const& text);

/** A commented project file: the line, one station, and how to go on. */
std::string projectText(NewProject const& project);

} // namespace velk
