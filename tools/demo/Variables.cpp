#include "tools/demo/Variables.h"

#include "host/values/TagAddress.h"
#include "host/values/TagReader.h"
#include "host/values/ValueText.h"
#include "interfaces/ITag.h"
#include "tools/common/TextTable.h"

#include <algorithm>
#include <stdexcept>

namespace demo {
namespace {

constexpr std::size_t kWidestValue = 60;

std::string shortened(std::string const& text) {
    return text.size() <= kWidestValue ? text : text.substr(0, kWidestValue - 3) + "...";
}

std::string valueText(ITag const& tag, host::ValueBytes const& bytes) {
    base::Result<std::string> const text = host::formatValue(tag.GetVarType(), bytes);
    if (!text.ok()) {
        return text.failure().text;
    }
    return tag.GetVarType() == ICU_STRING ? '"' + text.value() + '"' : text.value();
}

void addRow(tools::TextTable& table, Variable const& variable, host::TagResult const& result) {
    bool const hasValue = result.good && !result.value.empty();
    table.add({variable.name, variable.space, variable.dataType,
               hasValue ? shortened(valueText(*variable.tag, result.value)) : "-", std::to_string(result.status),
               result.good ? "good" : result.failure.text});
}

} // namespace

std::vector<Variable> demonstrationVariables() {
    return {
        {"PLC_PRG.Running", "M", "boolean"},
        {"PLC_PRG.Offset", "M", "byte"},
        {"PLC_PRG.Level", "M", "short"},
        {"PLC_PRG.Counter", "M", "int"},
        {"PLC_PRG.Mode", "M", "unsignedByte"},
        {"PLC_PRG.Speed", "M", "unsignedShort"},
        {"PLC_PRG.Pieces", "M", "unsignedInt"},
        {"PLC_PRG.Temperature", "M", "float"},
        {"PLC_PRG.Energy", "M", "double"},
        {"PLC_PRG.Recipe", "M", "string-24"},
        {"PLC_PRG.Serial", "M", "unsignedShort(bcd)"},
        {"PLC_PRG.Lamps", "M", "boolean-8"},
        {"PLC_PRG.Trim", "M", "byte-4"},
        {"PLC_PRG.Levels", "M", "short-6"},
        {"PLC_PRG.Positions", "M", "int-3"},
        {"PLC_PRG.Stations", "M", "unsignedByte-5"},
        {"PLC_PRG.Speeds", "M", "unsignedShort-3"},
        {"PLC_PRG.Totals", "M", "unsignedInt-2"},
        {"PLC_PRG.Curve", "M", "float-4"},
        {"PLC_PRG.Consumption", "M", "double-2"},
        {"PLC_PRG.Pump.Speed", "M", "int"},
        {"PLC_PRG.Pump.Name", "M", "string-16"},
        {"Retained.Hours", "3", "unsignedInt"},
        {"EmergencyStop", "I", "boolean"},
        {"Valve", "Q", "unsignedByte"},
        {"Door", "IB", "boolean"},
        {"Horn", "MB", "boolean"},
        {"PLC_PRG.Forgotten", "M", "int"},
    };
}

base::Outcome createTags(host::Panel& panel, int node, std::span<Variable> variables) {
    for (Variable& variable : variables) {
        base::Result<std::string> const address =
            host::tagAddress({node, variable.name, variable.space, "0", variable.dataType});
        if (!address.ok()) {
            return address.failure();
        }
        base::Result<ITag*> const tag = panel.driver().createTag(address.value());
        if (!tag.ok()) {
            return tag.failure();
        }
        variable.tag = tag.value();
    }
    return {};
}

Reading readAll(host::Panel& panel, std::span<Variable const> variables) {
    std::vector<ITag*> tags(variables.size());
    std::transform(variables.begin(), variables.end(), tags.begin(), [](Variable const& each) { return each.tag; });
    // A failed datagram is not split to find the cause: the demonstration shows the failure.
    host::TagReader reader(panel.driver().protocol(), {.findBadTags = false});
    std::vector<host::TagResult> const results = reader.read(tags);

    Reading reading;
    tools::TextTable table({"name", "area", "type", "value", "status", ""});
    for (std::size_t i = 0; i < results.size(); ++i) {
        addRow(table, variables[i], results[i]);
        reading.good += results[i].good ? 1 : 0;
        reading.missing += results[i].status == kItemNotInSymbolFile ? 1 : 0;
        bool const failed = !results[i].good && results[i].status != kItemNotInSymbolFile;
        reading.failed += failed ? 1 : 0;
        if (failed && reading.failure.empty()) {
            reading.failure = results[i].failure.text;
        }
    }
    reading.table = table.text("  ");
    return reading;
}

base::Result<std::string> readOne(host::Panel& panel, Variable const& variable) {
    host::TagReader reader(panel.driver().protocol());
    std::vector<host::TagResult> const results = reader.read(std::vector<ITag*>{variable.tag});
    if (!results.front().good) {
        return results.front().failure;
    }
    return valueText(*variable.tag, results.front().value);
}

base::Outcome writeOne(host::Panel& panel, Variable const& variable, std::string const& value) {
    base::Result<host::ValueBytes> bytes =
        host::parseValue(value, variable.tag->GetVarType(), static_cast<std::size_t>(variable.tag->GetVarLength()));
    if (!bytes.ok()) {
        return bytes.failure();
    }
    host::TagReader writer(panel.driver().protocol());
    host::TagWrite const write{variable.tag, std::move(bytes.value())};
    std::vector<host::TagResult> const results = writer.write(std::span(&write, 1));
    return results.front().good ? base::Outcome() : base::Outcome(results.front().failure);
}

Variable const& find(std::span<Variable const> variables, std::string const& name) {
    auto const found =
        std::find_if(variables.begin(), variables.end(), [&](Variable const& each) { return each.name == name; });
    if (found == variables.end()) {
        throw std::logic_error("the demonstration has no variable " + name);
    }
    return *found;
}

} // namespace demo
