#pragma once

#include "plc/frames/Bytes.h"
#include "plc/frames/EventReporter.h"
#include "plc/station/ServiceKind.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace plc {

/**
 * The faults that a station can show. A rule counts "chances": occasions at which its fault can happen; `value` and
 * `delay` are fields of the rule.
 */
enum class FaultKind : std::uint8_t {
    kSilent, ///< a frame from the panel is ignored as if not received. One chance per good frame.

    // Acknowledges of request blocks. One chance per acknowledge.
    kAckMissing,
    kAckTooShort,    ///< only `value` bytes of the frame, routing header included; default: all but one
    kAckWrongHeader, ///< first byte `value`, default 0x56
    kAckWrongCode,   ///< code `value`, default 11
    kAckWrongNumber, ///< number `value`, default: one too high

    // Response blocks. One chance per block.
    kBlockMissing,
    kBlockTooShort,        ///< only `value` bytes of the frame, routing header included; default: 7 of the block
    kBlockWrongProtocolId, ///< first byte `value`, default 0xAB
    kBlockWrongChecksum,   ///< checksum off by `value`, default 1
    kBlockWrongNumber,     ///< number `value` with a correct checksum, default: one too high
    kBlockWrongLength,     ///< length field `value` with all bytes and a correct checksum, default: one too high
    kResponseTooLong,      ///< the response is filled up to `value` bytes, default 75,001. One chance per response.

    // The closing acknowledge. One chance each.
    kClosingMissing,
    kClosingTooShort,    ///< as kAckTooShort
    kClosingWrongHeader, ///< as kAckWrongHeader
    kClosingWrongCode,   ///< as kAckWrongCode
    kClosingWrongNumber, ///< number `value`, default 1

    kRoutingStatus, ///< byte 17 of the routing header is `value`, default 1. One chance per frame to the panel.

    // Replies. One chance per request of the service.
    kStatusWord,    ///< nothing is done, the reply is the status word `value`, default 1
    kReplyTooShort, ///< `value` bytes are cut from the reply's end, default 1
    kReplyTooLong,  ///< `value` zero bytes are added to the reply's end, default 1
    kBadQuality,    ///< quality byte `value`, default 0, for `item` or `variable` of a read list, or for all items
    kFileDataCount, ///< the data count of a file piece is too high by `value`, default 1
    kFileEndless,   ///< the file never ends: its last byte is followed by its first

    // The line. One chance per frame to the panel.
    kFlippedBits,  ///< `value` bits are flipped, default 1
    kDroppedBytes, ///< `value` bytes are lost, default 1
    kGarbage,      ///< `value` random bytes come before the frame, default 5
    kLate,         ///< the frame comes `delay` later
    kPause,        ///< `delay` passes in the middle of the frame
    kCount
};

/// Converts between faults and their names in description files ("ack_missing").
[[nodiscard]] std::string_view nameOf(FaultKind kind);
[[nodiscard]] std::optional<FaultKind> faultNamed(std::string_view name);
/// All names that faultNamed() knows: "silent, ack_missing ... or pause".
[[nodiscard]] std::string faultNames();

/// The same for services, and the list of their names.
[[nodiscard]] std::optional<ServiceKind> serviceNamed(std::string_view name);
[[nodiscard]] std::string serviceNames();

/// A window in the line's time.
struct TimeWindow {
    Micros from{0};                ///< it opens after this time ...
    Micros lasts{0};               ///< ... and closes after this further time
    std::optional<Micros> every{}; ///< it opens again after each such interval; without it only once
};

/// Whether the window is open.
[[nodiscard]] bool isOpen(TimeWindow const& window, Micros now);

/// At which of its chances a rule acts.
struct Trigger {
    std::uint64_t first = 1;             ///< the first chance, counted from 1 ...
    std::uint64_t count = UINT64_MAX;    ///< ... and how many from there on
    std::optional<double> probability{}; ///< of those, each with this probability; without it all of them
    std::optional<TimeWindow> window{};  ///< only while it is open; other times do not count

    [[nodiscard]] static Trigger always() { return {}; }
    [[nodiscard]] static Trigger nth(std::uint64_t n) { return {.first = n, .count = 1}; }
    [[nodiscard]] static Trigger with(double probability) { return {.probability = probability}; }
};

struct FaultRule {
    FaultKind kind = FaultKind::kSilent;
    Trigger when{};
    std::optional<ServiceKind> service{}; ///< only during a request of this service; other occasions do not count
    std::optional<std::uint32_t> value{}; ///< see FaultKind
    Micros delay{std::chrono::milliseconds(100)};
    std::optional<std::uint32_t> item{}; ///< kBadQuality: position in the list, counted from 0
    std::string variable{};              ///< kBadQuality: items within this variable
};

/**
 * A station's rules with their counts and their common random generator. The same seed and the same conversation give
 * the same faults.
 */
class FaultPlan {
public:
    FaultPlan(std::uint32_t seed, std::vector<FaultRule> rules, StationReporter reporter);

    void add(FaultRule rule);
    void clear() { rules_.clear(); }

    /// Sets the service whose request is processed from now on.
    void setService(ServiceKind service) { service_ = service; }

    /// Counts one chance for every rule of the kind and returns those that act. The pointers are valid until the next
    /// add() or clear().
    [[nodiscard]] std::vector<FaultRule const*> strikeAll(FaultKind kind);
    /// The same when one is enough: the first rule that acts, or null.
    [[nodiscard]] FaultRule const* strike(FaultKind kind);

    /// A number below `limit`, which must not be 0.
    [[nodiscard]] std::size_t random(std::size_t limit);

private:
    struct CountedRule {
        FaultRule rule;
        std::uint64_t chances = 0;
    };

    [[nodiscard]] bool isChance(FaultRule const& rule) const;
    [[nodiscard]] bool takes(CountedRule& counted);

    std::mt19937 generator_;
    std::vector<CountedRule> rules_;
    ServiceKind service_ = ServiceKind::kUnknown;
    StationReporter reporter_;
};

} // namespace plc
