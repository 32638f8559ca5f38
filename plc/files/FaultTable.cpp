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

std::optional<Micros> readMilliseconds(base::TomlSection& table, std::string_view key, std::int64_t least,
                                       std::int64_t most) {
    auto const milliseconds = table.number<std::int64_t>(key, least, most);
    return milliseconds ? std::optional<Micros>(std::chrono::milliseconds(*milliseconds)) : std::nullopt;
}

std::optional<TimeWindow> readWindow(base::TomlSection& table) {
    auto const from = readMilliseconds(table, "from_ms", 0, kMostWindowMilliseconds);
    auto const lasts = readMilliseconds(table, "lasts_ms", 1, kMostWindowMilliseconds);
    auto const every = readMilliseconds(table, "every_ms", 1, kMostWindowMilliseconds);
    if (!lasts) {
        if (from || every) {
            std::string_view const key = from ? "from_ms" : "every_ms";
            table.complain(key, textOf("'", key, "' also needs 'lasts_ms'"));
        }
        return std::nullopt;
    }
    return TimeWindow{.from = from.value_or(Micros{0}), .lasts = *lasts, .every = every};
}

Trigger readTrigger(base::TomlSection& table) {
    Trigger trigger;
    if (auto const nth = table.number<std::uint64_t>("nth", 1, kMostChances)) {
        trigger = Trigger::nth(*nth);
    }
    if (auto const count = table.number<std::uint64_t>("count", 1, kMostChances)) {
        trigger.count = *count;
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

/// A rule that could never take effect is a mistake.
void refuseWhatCannotApply(base::TomlSection& table, FaultRule const& rule) {
    if (rule.service && !canHappenAt(rule.kind, *rule.service)) {
        table.complain("service", textOf(nameOf(rule.kind), " cannot happen at the service ", nameOf(*rule.service)));
    }
    for (std::string_view const key : {"item", "variable"}) {
        if (rule.kind != FaultKind::kBadQuality && table.has(key)) {
            table.complain(key, textOf("'", key, "' has no meaning for ", nameOf(rule.kind), ", only for bad_quality"));
        }
    }
}

} // namespace

FaultRule readFault(base::TomlSection& table) {
    FaultRule rule;
    table.need("kind");
    auto const kind = table.named("kind", faultNamed, faultNames());
    rule.kind = kind.value_or(rule.kind);
    rule.when = readTrigger(table);
    rule.service = table.named("service", serviceNamed, serviceNames());
    rule.value = table.number<std::uint32_t>("value", 0, kMostSurplus);
    rule.item = table.number<std::uint32_t>("item", 0, kHighestItem);
    rule.variable = table.text("variable").value_or("");
    rule.delay = readMilliseconds(table, "delay_ms", 0, kLongestFault).value_or(rule.delay);
    if (kind) {
        refuseWhatCannotApply(table, rule);
    }
    return rule;
}

} // namespace plc
