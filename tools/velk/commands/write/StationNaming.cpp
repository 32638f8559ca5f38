#include "tools/velk/commands/write/StationNaming.h"

#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <utility>

namespace velk {
namespace {

bool areNamed(Settings const& settings, std::span<TagRequest const> requests) {
    return settings.stations.size() > 1 || std::any_of(requests.begin(), requests.end(), [&](TagRequest const& each) {
               return each.node != settings.node;
           });
}

} // namespace

StationNaming::StationNaming(Settings const& settings, std::span<TagRequest const> requests)
    : shown_(areNamed(settings, requests)) {}

std::string StationNaming::name(Tag const& tag) const {
    return displayable(shown_ ? tag.station + ":" + tag.name : tag.name);
}

std::string StationNaming::place(Tag const& tag) const {
    bool const hasName = tag.station != std::to_string(tag.node);
    return displayable(!shown_ ? "the PLC" : hasName ? tag.station : "station " + tag.station);
}

std::vector<std::string> StationNaming::withStation(std::string station, std::vector<std::string> cells) const {
    if (shown_) {
        cells.insert(cells.begin(), std::move(station));
    }
    return cells;
}

std::string StationNaming::places(std::span<Tag const> tags) const {
    std::vector<std::string> all;
    for (Tag const& tag : tags) {
        std::string one = place(tag);
        if (std::find(all.begin(), all.end(), one) == all.end()) {
            all.push_back(std::move(one));
        }
    }
    return andList(all);
}

} // namespace velk
