#pragma once

#include "tools/velk/line/Tag.h"
#include "tools/velk/line/TagRequest.h"
#include "tools/velk/project/Settings.h"

#include <span>
#include <string>
#include <vector>

namespace velk {

/** Whether stations are named, and how: a project with one station does not need it. */
class StationNaming {
public:
    StationNaming(Settings const& settings, std::span<TagRequest const> requests);

    [[nodiscard]] bool shown() const { return shown_; }

    /** The tag's name for a message: "PLC_PRG.Setpoint", or with its station "oven:PLC_PRG.Setpoint". */
    [[nodiscard]] std::string name(Tag const& tag) const;

    /** "the PLC", or the tag's station: "oven", "station 3". */
    [[nodiscard]] std::string place(Tag const& tag) const;

    /** The same for the stations of all tags: "the PLC", "oven and press". */
    [[nodiscard]] std::string places(std::span<Tag const> tags) const;

    /** Cells of a table, after one for the station when stations are named. */
    [[nodiscard]] std::vector<std::string> withStation(std::string station, std::vector<std::string> cells) const;

private:
    bool shown_;
};

} // namespace velk
