#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"
#include "plc/frames/EventReporter.h"
#include "plc/program/LoadedProgram.h"
#include "plc/station/Faults.h"
#include "plc/station/FileTransfer.h"
#include "plc/station/LinkStation.h"
#include "plc/station/ListRequest.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace plc {

/// Status words at the start of a reply. Those from 1 to 8 are this simulation's own codes for refusals.
namespace status {
inline constexpr std::uint16_t kDone = 0;
inline constexpr std::uint16_t kRefused = 1;
inline constexpr std::uint16_t kNotLoggedIn = 2;
inline constexpr std::uint16_t kWrongRequest = 3;
inline constexpr std::uint16_t kUnknownService = 4;
inline constexpr std::uint16_t kNoSuchMemory = 5;
inline constexpr std::uint16_t kNoSuchFile = 6;
inline constexpr std::uint16_t kNoOpenFile = 7;
inline constexpr std::uint16_t kReplyTooLong = 8;
inline constexpr std::uint16_t kOtherProject = 0x48;
inline constexpr std::uint16_t kOtherProjectToo = 0x33;
inline constexpr std::uint16_t kLoginAccepted = 1000;
} // namespace status

/// Quality byte of an item whose value is good; bad ones have 0.
inline constexpr std::uint8_t kGoodQuality = 1;

/// The one file of the PLC.
inline constexpr std::string_view kSymbolFileName = "DOWNLOAD.SDB";

struct ServiceSettings {
    ByteOrder order = ByteOrder::kLittle;
    std::size_t filePieceSize = 0;
    std::uint16_t mismatchWord = status::kOtherProject;
};

/**
 * The services of a station: link check, login and logout, reading and writing lists of variables, reading the symbol
 * file in pieces. Lists and files need a login. A wrong request is refused with a status word and reported; a wrong
 * link check is not answered, because its reply could not report anything.
 */
class Services final : public RequestHandler {
public:
    Services(ServiceSettings const& settings, LoadedProgram& program, FaultPlan& faults, StationReporter reporter);

    [[nodiscard]] std::optional<Bytes> handle(ByteView request) override;

    [[nodiscard]] bool loggedIn() const { return loggedIn_; }
    /// Loses login and file transfer.
    void restart();
    /// Ends the file transfer.
    void closeFile() { file_.close(); }

private:
    [[nodiscard]] std::optional<Bytes> perform(ServiceKind service, ByteView request);
    [[nodiscard]] std::optional<Bytes> checkLink(ByteView request);
    [[nodiscard]] Bytes logOut(ByteView request);
    [[nodiscard]] Bytes logIn(ByteView request);
    [[nodiscard]] Bytes accessList(ByteView request);
    [[nodiscard]] Bytes readList(ListRequest const& list);
    [[nodiscard]] bool fitsReply(ListRequest const& list) const;
    [[nodiscard]] Bytes writeList(ListRequest const& list);
    [[nodiscard]] Bytes openFile(ByteView request);
    [[nodiscard]] Bytes nextPiece(ByteView request);
    [[nodiscard]] Bytes filePiece(Cause cause);

    void appendItem(Bytes& reply, ListItem const& item) const;
    [[nodiscard]] bool concerns(FaultRule const& rule, ListItem const& item, std::size_t position) const;
    void spoilLength(Bytes& reply);

    [[nodiscard]] Bytes statusOnly(std::uint16_t word) const;
    [[nodiscard]] Bytes fileStatus(std::uint16_t word) const;
    [[nodiscard]] Bytes refuse(Cause cause, std::uint16_t word, std::string text) const;

    ServiceSettings settings_;
    LoadedProgram& program_;
    FaultPlan& faults_;
    StationReporter reporter_;
    bool loggedIn_ = false;
    FileTransfer file_;
};

} // namespace plc
