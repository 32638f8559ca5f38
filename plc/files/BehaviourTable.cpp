#include "plc/files/BehaviourTable.h"

#include <algorithm>
#include <array>
#include <utility>

namespace plc {

namespace {

constexpr std::int64_t kMost32 = 0xFFFFFFFF;
constexpr std::int64_t kMostMilliseconds = 86'400'000;

struct Named {
    std::string_view name;
    BehaviourKind kind;
};

constexpr std::array<Named, 6> kKinds{{{"constant", BehaviourKind::kConstant},
                                       {"counter", BehaviourKind::kCounter},
                                       {"ramp", BehaviourKind::kRamp},
                                       {"sine", BehaviourKind::kSine},
                                       {"random_walk", BehaviourKind::kRandomWalk},
                                       {"follow", BehaviourKind::kFollow}}};

std::optional<BehaviourKind> kindNamed(std::string_view name) {
    auto const* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [name](Named const& one) { return one.name == name; });
    return found == kKinds.end() ? std::nullopt : std::optional(found->kind);
}

Micros readTime(base::TomlSection& table, std::string_view key, std::int64_t least, Micros usual) {
    auto const milliseconds = table.number<std::int64_t>(key, least, kMostMilliseconds);
    return milliseconds ? std::chrono::milliseconds(*milliseconds) : usual;
}

void readBounds(base::TomlSection& table, BehaviourDescription& behaviour) {
    behaviour.low = table.real("low");
    behaviour.high = table.real("high");
}

void readPeriod(base::TomlSection& table, BehaviourDescription& behaviour) {
    readBounds(table, behaviour);
    behaviour.period = readTime(table, "period_ms", 1, behaviour.period);
    behaviour.phase = table.fraction("phase").value_or(behaviour.phase);
}

void readFollow(base::TomlSection& table, BehaviourDescription& behaviour) {
    behaviour.source = table.neededText("source");
    behaviour.factor = table.real("factor").value_or(behaviour.factor);
    behaviour.offset = table.real("offset").value_or(behaviour.offset);
    behaviour.lag = readTime(table, "lag_ms", 0, behaviour.lag);
}

void readKeysOfKind(base::TomlSection& table, BehaviourDescription& behaviour) {
    switch (behaviour.kind) {
    case BehaviourKind::kConstant:
        return;
    case BehaviourKind::kCounter:
        readBounds(table, behaviour);
        behaviour.step = table.real("step").value_or(behaviour.step);
        return;
    case BehaviourKind::kRamp:
    case BehaviourKind::kSine:
        return readPeriod(table, behaviour);
    case BehaviourKind::kRandomWalk:
        readBounds(table, behaviour);
        behaviour.step = table.real("step").value_or(behaviour.step);
        behaviour.seed = table.number<std::uint32_t>("seed", 0, kMost32).value_or(behaviour.seed);
        return;
    case BehaviourKind::kFollow:
        return readFollow(table, behaviour);
    }
}

} // namespace

BehaviourDescription readBehaviour(base::TomlSection& table, std::string variable) {
    BehaviourDescription behaviour;
    behaviour.variable = std::move(variable);
    behaviour.line = table.place().line;
    table.need("kind");
    auto const kind = table.named("kind", kindNamed, "constant, counter, ramp, sine, random_walk or follow");
    if (!kind) {
        table.acceptOtherKeys(); // which keys have a meaning depends on the kind
        return behaviour;
    }
    behaviour.kind = *kind;
    behaviour.every = readTime(table, "every_ms", 1, behaviour.every);
    readKeysOfKind(table, behaviour);
    return behaviour;
}

} // namespace plc
