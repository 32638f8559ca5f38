#include "tools/velk/line/TagRequest.h"

#include "tools/velk/context/CommandError.h"
#include "tools/velk/project/DriverType.h"
#include "tools/velk/text/Names.h"

#include <algorithm>

namespace velk {
namespace {

/** A word split at its colons; conversions have none. */
struct Pieces {
    std::string station; ///< empty: none is named
    std::string name;
    std::string type; ///< empty: none is given
};

[[noreturn]] void refuse(std::string_view word, std::string const& why) {
    throw CommandError(ExitCode::Usage, "'" + std::string(word) + "': " + why);
}

std::vector<std::string> split(std::string_view word) {
    std::vector<std::string> parts;
    while (true) {
        std::size_t const colon = word.find(':');
        parts.emplace_back(word.substr(0, colon));
        if (colon == std::string_view::npos) {
            return parts;
        }
        word.remove_prefix(colon + 1);
    }
}

NamedTag const* findAlias(Settings const& settings, std::string const& name) {
    auto const found = std::find_if(settings.tags.begin(), settings.tags.end(),
                                    [&](NamedTag const& tag) { return sameName(tag.name, name); });
    return found == settings.tags.end() ? nullptr : &*found;
}

bool isType(std::string const& text) {
    return text == "bit" || parseDriverType(text).ok();
}

/** A mistyped station must not be reported as a wrong type. */
void requireTypeOrStation(std::string_view word, std::vector<std::string> const& parts, Settings const& settings) {
    bool const isNumber = parts[0].find_first_not_of("0123456789") == std::string::npos;
    bool const couldBeName =
        isNumber || findAlias(settings, parts[1]) != nullptr || parts[1].find('.') != std::string::npos;
    if (!isType(parts[1]) && couldBeName) {
        refuse(word, settings.noSuchStation(parts[0]));
    }
}

/** Two pieces are STATION:NAME when the first one is a station, else NAME:TYPE. */
Pieces takeApart(std::string_view word, Settings const& settings) {
    std::vector<std::string> parts = split(word);
    if (parts.size() > 3 ||
        std::any_of(parts.begin(), parts.end(), [](std::string const& each) { return each.empty(); })) {
        refuse(word, "a variable is given as [STATION:]NAME[:TYPE]");
    }
    if (parts.size() == 1) {
        return {"", parts[0], ""};
    }
    bool const stationFirst = settings.findStation(parts[0]).has_value();
    if (parts.size() == 2 && !stationFirst) {
        requireTypeOrStation(word, parts, settings);
        return {"", parts[0], parts[1]};
    }
    if (!stationFirst) {
        refuse(word, settings.noSuchStation(parts[0]));
    }
    return {parts[0], parts[1], parts.size() == 3 ? parts[2] : ""};
}

void applyAlias(TagRequest& request, NamedTag const& tag) {
    request.node = tag.node.value_or(request.node);
    request.variable = tag.variable;
    request.type = tag.type;
    request.area = tag.area.value_or("");
    request.offset = tag.offset.value_or("0");
    request.isPattern = false;
}

void checkType(std::string_view word, std::string const& type) {
    if (type == "bit") {
        return;
    }
    if (base::Result<DriverType> const parsed = parseDriverType(type); !parsed.ok()) {
        refuse(word, parsed.failure().text);
    }
}

} // namespace

TagRequest parseTagRequest(std::string_view word, Settings const& settings) {
    Pieces const pieces = takeApart(word, settings);
    TagRequest request;
    request.shown = pieces.name;
    request.node = settings.node;
    request.variable = pieces.name;
    request.isPattern = isPattern(pieces.name);
    if (NamedTag const* const alias = findAlias(settings, pieces.name)) {
        applyAlias(request, *alias);
    }
    if (!pieces.station.empty()) {
        request.node = settings.findStation(pieces.station).value();
    }
    if (!pieces.type.empty()) {
        checkType(word, pieces.type);
        request.type = pieces.type;
    }
    return request;
}

} // namespace velk
