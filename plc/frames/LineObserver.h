#pragma once

#include "plc/frames/Bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace plc {

/// What happened on the line or in a station. Everything up to kFaultInjected is normal operation.
enum class Cause : std::uint8_t {
    kExchangeDone,  ///< the closing acknowledge of an exchange was sent
    kLinkChecked,   ///< a valid link check request came
    kLoggedIn,      ///< login accepted
    kLoggedOut,     ///< logout accepted
    kListRead,      ///< a variable list was read
    kListWritten,   ///< a variable list was written
    kFileOpened,    ///< a file was opened and its first piece read
    kFilePieceRead, ///< a further piece of the open file was read
    kProgramChanged,
    kRestarted,
    kProjectMismatch,   ///< a list was refused because it carries another project identifier
    kExchangeAbandoned, ///< a new request began before the exchange was over, as after a fault of the station
    kExchangeTimeout,   ///< the panel stopped sending in the middle of an exchange, for the same reason
    kFaultInjected,     ///< the station showed a configured fault

    // Bytes that are not a frame. None of them is answered.
    kGarbage,        ///< bytes that do not begin a frame, alone or before a good frame
    kTruncatedFrame, ///< a frame that stops before its end
    kLengthField,    ///< the length field differs from the number of payload bytes received
    kBlockTooLong,   ///< a length field beyond the station's block size
    kBlockNotFull,   ///< a block without payload, or one that is not full although it is not the last
    kChecksum,
    kLastFlag, ///< a last-block flag that is neither 0 nor 1
    kAckCode,  ///< an acknowledge whose code is not 10
    kRoutingHeader,
    kRoutingBlockSize, ///< a routing header whose block size is not the station's
    kUnknownStation,   ///< a routing header with the route of no station

    kSpokeTooEarly, ///< bytes from the panel while bytes to it were due and not taken; they are processed nevertheless

    // Frames at the wrong point of an exchange. None of them is answered.
    kBlockNumber,
    kAckNumber,
    kUnexpectedAck,
    kRequestTooLong,

    // Wrong payloads. Refused with a status word; a wrong link check is not answered at all.
    kUnknownService,
    kLinkCheckBytes,
    kLogoutRequest,
    kLoginRequest,
    kListRequest, ///< the reserved byte, or a length that does not fit the item count
    kFileRequest, ///< the reserved byte, the name length, the terminator or surplus bytes
    kNotLoggedIn,
    kReplyTooLong, ///< a list whose reply would be longer than 75,000 bytes
    kNoSuchMemory, ///< an item beyond its area's end, or in no area
    kNoSuchFile,   ///< an unknown file name
    kNoOpenFile,   ///< a next piece requested while no file is open, or after its last piece
    kCount
};

inline constexpr std::size_t kCauseCount = static_cast<std::size_t>(Cause::kCount);

/// The cause in a few words, for logs.
[[nodiscard]] std::string_view nameOf(Cause cause);

/// Whether the cause is something that a correct panel never does, whatever the station does. Two can still happen to
/// it: kNotLoggedIn after a restart, and kSpokeTooEarly after a frame that it no longer expected and that came late.
[[nodiscard]] bool isComplaint(Cause cause);

/// The station number of an event without a station.
inline constexpr int kNoStation = -1;

struct LineEvent {
    Micros time{};
    int station = kNoStation; ///< position in the line's description
    Cause cause = Cause::kExchangeDone;
    std::string text{}; ///< what exactly happened, in one sentence
};

enum class Direction : std::uint8_t { kFromPanel, kToPanel };

/// Notified of everything that happens. Called while the line works, so it must not call the line.
class LineObserver {
public:
    LineObserver() = default;
    LineObserver(LineObserver const&) = delete;
    LineObserver& operator=(LineObserver const&) = delete;
    virtual ~LineObserver() = default;

    virtual void onEvent(LineEvent const& event) = 0;
    /// The raw bytes, as received from and taken by the panel.
    virtual void onBytes(Direction /*direction*/, ByteView /*bytes*/, Micros /*time*/) {}
};

/// How often each cause occurred.
class EventCounters {
public:
    void count(Cause cause) { ++counts_[static_cast<std::size_t>(cause)]; }
    [[nodiscard]] std::uint64_t of(Cause cause) const { return counts_[static_cast<std::size_t>(cause)]; }
    /// The sum over all causes that are complaints.
    [[nodiscard]] std::uint64_t complaints() const;

private:
    std::array<std::uint64_t, kCauseCount> counts_{};
};

} // namespace plc
