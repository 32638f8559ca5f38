#include "plc/frames/LineObserver.h"

namespace plc {

namespace {

constexpr std::array<std::string_view, kCauseCount> kCauseNames{
    "exchange done",
    "link checked",
    "logged in",
    "logged out",
    "list read",
    "list written",
    "file opened",
    "file piece read",
    "program changed",
    "restarted",
    "project mismatch",
    "exchange abandoned",
    "exchange timed out",
    "fault injected",
    "garbage",
    "truncated frame",
    "wrong length field",
    "block too long",
    "block not full",
    "wrong checksum",
    "wrong last-block flag",
    "wrong acknowledge code",
    "wrong routing header",
    "wrong block size in routing header",
    "unknown station",
    "spoke too early",
    "wrong block number",
    "wrong acknowledge number",
    "unexpected acknowledge",
    "request too long",
    "unknown service",
    "wrong link check",
    "wrong logout request",
    "wrong login request",
    "wrong list request",
    "wrong file request",
    "not logged in",
    "reply too long",
    "no such memory",
    "no such file",
    "no open file",
};
static_assert(!kCauseNames.back().empty(), "every cause has a name");

} // namespace

std::string_view nameOf(Cause cause) {
    return kCauseNames[static_cast<std::size_t>(cause)];
}

bool isComplaint(Cause cause) {
    return cause > Cause::kFaultInjected && cause < Cause::kCount;
}

std::uint64_t EventCounters::complaints() const {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < kCauseCount; ++i) {
        sum += isComplaint(static_cast<Cause>(i)) ? counts_[i] : 0;
    }
    return sum;
}

} // namespace plc
