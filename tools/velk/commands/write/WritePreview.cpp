#include "tools/velk/commands/write/WritePreview.h"

#include "interfaces/ITag.h"
#include "tools/common/TextTable.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace velk {
namespace {

bool cannotBeShown(Reading const& reading) {
    return reading.tag->tag != nullptr && !reading.result.good &&
           reading.result.failure.kind == base::FailureKind::Conversion;
}

/** The bytes to write for a text; the failure says why there are none. */
base::Result<host::ValueBytes> parseValue(Tag const& tag, std::string const& text) {
    base::Result<host::ValueBytes> bytes = tag.parse(text);
    if (!bytes.ok() || bytes.value().empty()) {
        return bytes;
    }
    constexpr std::size_t kMargin = 8; // a conversion reverses whole elements
    host::ValueBytes image(static_cast<std::size_t>(std::max(0, tag.tag->PackedLen())) + kMargin);
    if (!tag.tag->ConvertVariable(bytes.value().data(), image.data(), true)) {
        return base::Failure{base::FailureKind::Value,
                             fmt::format("'{}' cannot be converted to {}", text, tag.access.dataType)};
    }
    return bytes;
}

std::string pitfallOf(Change const& change, StationNaming const& naming) {
    Tag const& tag = *change.tag;
    std::string const name = naming.name(tag);
    if (!change.before.result.good) {
        return fmt::format("{}: the present value cannot be shown as {} ({})", name, displayable(tag.typeText()),
                           displayable(change.before.result.failure.text));
    }
    // In the symbol file a BOOL that is a byte looks like one that is a single bit.
    if (tag.plcType == "BOOL") {
        return fmt::format(
            "{0} is written as a whole byte; if it is a single bit, the neighbouring bits are overwritten: use "
            "{0}:bit",
            name);
    }
    return "";
}

} // namespace

void requireWritable(std::span<Reading const> before, StationNaming const& naming, Session const& session,
                     Terminal& terminal) {
    ExitCode worst = ExitCode::Good;
    for (Reading const& reading : before) {
        if (!reading.result.good && !cannotBeShown(reading)) {
            terminal.complain(naming.name(*reading.tag) + ": " + displayable(reasonText(reading)));
            worst = worse(worst, session.exitCode(reading.result));
        }
    }
    if (worst != ExitCode::Good) {
        throw CommandError(worst, kNothingWritten);
    }
}

std::vector<Change> parseChanges(std::span<Reading const> before, std::span<std::string const> values,
                                 StationNaming const& naming, Terminal& terminal) {
    std::vector<Change> changes;
    for (std::size_t i = 0; i < before.size(); ++i) {
        Tag const& tag = *before[i].tag;
        base::Result<host::ValueBytes> bytes = parseValue(tag, values[i]);
        if (bytes.ok()) {
            changes.push_back({.tag = &tag, .wanted = std::move(bytes.value()), .before = before[i]});
        } else {
            terminal.complain(naming.name(tag) + ": " + displayable(bytes.failure().text));
        }
    }
    if (changes.size() != before.size()) {
        throw CommandError(ExitCode::Usage, kNothingWritten);
    }
    return changes;
}

void tellOfPitfalls(std::span<Change const> changes, StationNaming const& naming, bool asking, Terminal& terminal) {
    for (Change const& change : changes) {
        if (std::string const text = pitfallOf(change, naming); !text.empty()) {
            asking ? terminal.error(text) : terminal.note(text); // needed to answer the question
        }
    }
}

std::string previewText(std::span<Change const> changes, StationNaming const& naming) {
    tools::TextTable table(naming.withStation("station", {"name", "type", "now", "to write"}));
    for (Change const& change : changes) {
        Tag const& tag = *change.tag;
        host::TagResult const& now = change.before.result;
        table.add(naming.withStation(displayable(tag.station),
                                     {displayable(tag.name), displayable(tag.typeText()),
                                      now.good ? tag.text(now.value) : "-", tag.text(change.wanted)}));
    }
    return table.text();
}

std::string questionText(std::span<Tag const> tags, StationNaming const& naming) {
    std::string const what = tags.size() == 1 ? "this value" : fmt::format("these {} values", tags.size());
    return fmt::format("Write {} to {}? [y/N] ", what, naming.places(tags));
}

} // namespace velk
