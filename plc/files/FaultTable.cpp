#include "plc/files/FaultTable.h"

#include "plc/frames/Text.h"

#include <limits>

namespace plc {

namespace {

constexpr std::int64_t kHighestItem = 0xFFFFFFFF;
constexpr std::int64_t kLongestFault = 3'600'000;
constexpr std::int64_t kMostWindowMilliseconds = 86'400'000;
constexpr std::int64_t kMostChances = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMostSurplus = 1'000'000;

std::optional<Micros> readMilliseconds(TomlTable& table, std::string_view key, std::int64_t least, std::int64_t most) {
    auto const milliseconds = table.number(key, least, most);
    return milliseconds ? std::optional<Micros>(std::chrono::milliseconds(*milliseconds)) : std::nullopt;
}

std::optional<TimeWindow> readWindow(TomlTable& table) {
    auto const from = readMilliseconds(table, "from_ms", 0, kMostWindowMilliseconds);
    auto const lasts = readMilliseconds(table, "lasts_ms", 1, kMostWindowMilliseconds);
    auto const every = readMilliseconds(table, "every_ms", 1, kMostWindowMilliseconds);
    if (!lasts) {
        if (from || every) {
            table.refuseKey(from ? "from_ms" : "every_ms", "needs \"lasts_ms\" beside it");
        }
        return std::nullopt;
    }
    return TimeWindow{.from = from.value_or(Micros{0}), .lasts = *lasts, .every = every};
}

Trigger readTrigger(TomlTable& table) {
    Trigger trigger;
    if (auto const nth = table.number("nth", 1, kMostChances)) {
        trigger = Trigger::nth(static_cast<std::uint64_t>(*nth));
    }
    if (auto const count = table.number("count", 1, kMostChances)) {
        trigger.count = static_cast<std::uint64_t>(*count);
    }
    trigger.probability = table.fraction("probability");
    trigger.window = readWindow(table);
    return trigger;
}

bool canHappenAt(FaultKind kind, ServiceKind service) {
    switch (kind) {
    case FaultKind::kBadQuality:
        return service == ServiceKind::kReadList;
    case FaultKind::kFileDataCount:
    case FaultKind::kFileEndless:
        return service == ServiceKind::kFileOpen || service == ServiceKind::kFileNext;
    default:
        return true;
    }
}

/// A rule that could never do what it says is a mistake.
void refuseWhatCannotApply(TomlTable const& table, FaultRule const& rule) {
    if (rule.service && !canHappenAt(rule.kind, *rule.service)) {
        table.refuseKey("service", textOf("is none at which ", nameOf(rule.kind), " can happen"));
    }
    for (std::string_view const key : {"item", "variable"}) {
        if (rule.kind != FaultKind::kBadQuality && table.has(key)) {
            table.refuseKey(key, textOf("means nothing to ", nameOf(rule.kind), ", only to bad_quality"));
        }
    }
}

} // namespace

FaultRule readFault(TomlTable& table) {
    FaultRule rule;
    auto const kind = faultNamed(table.neededText("kind"));
    if (!kind) {
        table.refuseKey("kind", textOf("names no fault; it can be ", faultNames()));
    }
    rule.kind = *kind;
    rule.when = readTrigger(table);
    if (auto const service = table.text("service")) {
        rule.service = serviceNamed(*service);
        if (!rule.service) {
            table.refuseKey("service", "names no service");
        }
    }
    if (auto const value = table.number("value", 0, kMostSurplus)) {
        rule.value = static_cast<std::uint32_t>(*value);
    }
    if (auto const item = table.number("item", 0, kHighestItem)) {
        rule.item = static_cast<std::uint32_t>(*item);
    }
    rule.variable = table.text("variable").value_or("");
    rule.delay = readMilliseconds(table, "delay_ms", 0, kLongestFault).value_or(rule.delay);
    refuseWhatCannotApply(table, rule);
    return rule;
}

} // namespace plc
