#include "tools/velk/commands/write/WriteResult.h"

#include "tools/common/TextTable.h"
#include "tools/velk/text/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace velk {
namespace {

nlohmann::ordered_json jsonOf(Change const& change) {
    Tag const& tag = *change.tag;
    host::TagResult const& before = change.before.result;
    std::optional<bool> const isWritten = change.isWritten();
    nlohmann::ordered_json one;
    one["station"] = toUtf8(tag.station);
    one["node"] = tag.node;
    one["name"] = toUtf8(tag.name);
    one["variable"] = toUtf8(tag.variable);
    one["type"] = toUtf8(tag.typeText());
    one["before"] = before.good ? tag.json(before.value) : nlohmann::json();
    one["to_write"] = tag.json(change.wanted);
    one["after"] = change.isReadBack() ? tag.json(change.after.result.value) : nlohmann::json();
    one["written"] = isWritten ? nlohmann::json(*isWritten) : nlohmann::json();
    one["took"] = change.took();
    one["result"] = toUtf8(change.text());
    return one;
}

std::string complaintOf(Change const& change, StationNaming const& naming) {
    std::string const place = naming.place(*change.tag);
    if (change.programReplaced) {
        return "the program of " + place + " was replaced: run the command again; variables and types may have changed";
    }
    if (change.took() || change.advice.empty()) {
        return "";
    }
    return naming.shown() ? place + ": " + change.advice : change.advice;
}

} // namespace

std::vector<std::string> complaintsOf(std::span<Change const> changes, StationNaming const& naming) {
    std::vector<std::string> complaints;
    for (Change const& change : changes) {
        std::string complaint = complaintOf(change, naming);
        if (!complaint.empty() && std::find(complaints.begin(), complaints.end(), complaint) == complaints.end()) {
            complaints.push_back(std::move(complaint));
        }
    }
    return complaints;
}

std::string resultText(std::span<Change const> changes, StationNaming const& naming) {
    tools::TextTable table(naming.withStation("station", {"name", "type", "before", "to write", "after", "result"}));
    for (Change const& change : changes) {
        Tag const& tag = *change.tag;
        host::TagResult const& before = change.before.result;
        std::string const after = change.isReadBack() ? tag.text(change.after.result.value) : "-";
        table.add(
            naming.withStation(displayable(tag.station), {displayable(tag.name), displayable(tag.typeText()),
                                                          before.good ? tag.text(before.value) : "-",
                                                          tag.text(change.wanted), after, displayable(change.text())}));
    }
    return table.text();
}

std::string resultJson(std::span<Change const> changes) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (Change const& change : changes) {
        list.push_back(jsonOf(change));
    }
    constexpr int kIndent = 2;
    return list.dump(kIndent) + "\n";
}

} // namespace velk
