#include "plc/station/Faults.h"

#include "base/Names.h"
#include "plc/frames/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace plc {

namespace {

constexpr std::size_t kFaultCount = static_cast<std::size_t>(FaultKind::kCount);

constexpr std::array<std::string_view, kFaultCount> kFaultNames{
    "silent",
    "ack_missing",
    "ack_too_short",
    "ack_wrong_header",
    "ack_wrong_code",
    "ack_wrong_number",
    "block_missing",
    "block_too_short",
    "block_wrong_protocol_id",
    "block_wrong_checksum",
    "block_wrong_number",
    "block_wrong_length",
    "response_too_long",
    "closing_missing",
    "closing_too_short",
    "closing_wrong_header",
    "closing_wrong_code",
    "closing_wrong_number",
    "routing_status",
    "status_word",
    "reply_too_short",
    "reply_too_long",
    "bad_quality",
    "file_data_count",
    "file_endless",
    "flipped_bits",
    "dropped_bytes",
    "garbage",
    "late",
    "pause",
};
static_assert(!kFaultNames.back().empty(), "every fault has a name");

constexpr std::array kServices{ServiceKind::kLogin,     ServiceKind::kLogout,   ServiceKind::kReadList,
                               ServiceKind::kFileOpen,  ServiceKind::kFileNext, ServiceKind::kWriteList,
                               ServiceKind::kLinkCheck, ServiceKind::kUnknown};

constexpr double kGeneratorRange = 4294967296.0;

} // namespace

bool isOpen(TimeWindow const& window, Micros now) {
    if (now < window.from) {
        return false;
    }
    Micros const since = now - window.from;
    return (window.every ? since % *window.every : since) < window.lasts;
}

std::string_view nameOf(FaultKind kind) {
    return kFaultNames[static_cast<std::size_t>(kind)];
}

std::optional<FaultKind> faultNamed(std::string_view name) {
    auto const* const found = std::find(kFaultNames.begin(), kFaultNames.end(), name);
    return found == kFaultNames.end() ? std::nullopt
                                      : std::optional(static_cast<FaultKind>(found - kFaultNames.begin()));
}

std::string faultNames() {
    return base::orList(std::vector<std::string>(kFaultNames.begin(), kFaultNames.end()));
}

std::string serviceNames() {
    std::vector<std::string> names;
    names.reserve(kServices.size());
    for (ServiceKind const service : kServices) {
        names.emplace_back(nameOf(service));
    }
    return base::orList(names);
}

std::optional<ServiceKind> serviceNamed(std::string_view name) {
    auto const* const found = std::find_if(kServices.begin(), kServices.end(),
                                           [name](ServiceKind service) { return nameOf(service) == name; });
    return found == kServices.end() ? std::nullopt : std::optional(*found);
}

FaultPlan::FaultPlan(std::uint32_t seed, std::vector<FaultRule> rules, StationReporter reporter)
    : generator_(seed), reporter_(reporter) {
    for (FaultRule& rule : rules) {
        add(std::move(rule));
    }
}

void FaultPlan::add(FaultRule rule) {
    rules_.push_back({.rule = std::move(rule)});
}

std::vector<FaultRule const*> FaultPlan::strikeAll(FaultKind kind) {
    std::vector<FaultRule const*> struck;
    for (CountedRule& counted : rules_) {
        FaultRule const& rule = counted.rule;
        if (rule.kind == kind && isChance(rule) && takes(counted)) {
            reporter_.report(Cause::kFaultInjected,
                             textOf(nameOf(kind), " at chance ", counted.chances, ", service ", nameOf(service_)));
            struck.push_back(&rule);
        }
    }
    return struck;
}

FaultRule const* FaultPlan::strike(FaultKind kind) {
    std::vector<FaultRule const*> const struck = strikeAll(kind);
    return struck.empty() ? nullptr : struck.front();
}

std::size_t FaultPlan::random(std::size_t limit) {
    return generator_() % limit;
}

bool FaultPlan::isChance(FaultRule const& rule) const {
    return rule.service.value_or(service_) == service_ &&
           (!rule.when.window || isOpen(*rule.when.window, reporter_.time()));
}

bool FaultPlan::takes(CountedRule& counted) {
    ++counted.chances;
    Trigger const& when = counted.rule.when;
    if (counted.chances < when.first || counted.chances - when.first >= when.count) {
        return false;
    }
    // Uses the generator's numbers directly: those of a distribution differ between libraries.
    return !when.probability || static_cast<double>(generator_()) < *when.probability * kGeneratorRange;
}

} // namespace plc
