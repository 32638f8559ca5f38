#pragma once

#include "tools/velk/project/ProjectFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velk {

struct Context;
struct LineOptions;

/** The settings of a command: the project file, overridden by the flags. */
struct Settings {
    host::DriverConfig config;
    std::vector<Station> stations; ///< at least the default one
    bool onlyThese = false;        ///< the project file lists its stations: there are no others
    std::vector<NamedTag> tags;
    int node = 0;                                     ///< of the station used when none is named
    std::filesystem::path storage;                    ///< empty when none is named and there is no home directory
    std::string instance;                             ///< names the line in the storage
    std::optional<std::filesystem::path> projectFile; ///< the one that was read

    /** The node of a station given by its name or number, or nothing. Without stations in the file any number is one.
     */
    [[nodiscard]] std::optional<int> findStation(std::string const& text) const;

    /** The message about a station that findStation() does not find. */
    [[nodiscard]] std::string noSuchStation(std::string const& text) const;

    /** The name of a node's station, or else its number. */
    [[nodiscard]] std::string stationName(int node) const;

    /** Whether the route to any station passes couplers. */
    [[nodiscard]] bool passesCouplers() const;

    /** The settings of a node: its own override those for every node. */
    [[nodiscard]] host::NodeSettings nodeSettings(int node) const;
};

/** Where the module keeps the symbol file of a node. */
std::filesystem::path storedSymbolFile(Settings const& settings, int node);

/** The settings from the project file, if there is one, and the flags. Throws CommandError and base::FileError. */
Settings loadSettings(LineOptions const& options);

/** The same for a command that uses a line: a port and a storage are required. */
Settings readSettings(Context const& context);

/** The same from a project and the flags, without looking for a file; the storage may stay empty. */
Settings mergeSettings(Project const& project, LineOptions const& options);

/** The lines of echoSettings(). */
std::vector<std::string> settingsText(Settings const& settings);

/** Prints the command's settings on standard error, unless it is quiet. */
void echoSettings(Settings const& settings, Context& context);

} // namespace velk
