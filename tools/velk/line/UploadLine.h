#pragma once

#include "host/serial/PortObserver.h"
#include "tools/common/UploadProgress.h"
#include "tools/velk/project/Settings.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velk {

class Terminal;

/** Bytes of the header in front of every frame, as the framing has it. */
std::size_t routingHeaderLength(host::DriverConfig const& config);

/** "fetching the symbol file: 12,345 bytes, 24 pieces, 5.1 kB/s", with a bar when the length is known about. */
std::string uploadText(tools::Upload const& upload, std::optional<std::uint64_t> expectedBytes);

/** How an upload is shown. */
struct UploadStyle {
    std::string label{};   ///< in front of the line that redraws itself
    bool vanishes = false; ///< nothing stays on the screen when the upload is done
};

/** Shows on the terminal how a symbol file comes from the PLC. */
class UploadLine final : public host::PortObserver {
public:
    UploadLine(Settings const& settings, Terminal& terminal, UploadStyle style = {});

    /** What an earlier file had, for the bar; nothing when there was none. */
    void expect(std::optional<std::uint64_t> bytes) { expected_ = bytes; }

    /** The upload under way or the last one; no bytes when there was none. */
    [[nodiscard]] tools::Upload const& upload() const { return progress_.upload(); }

    void onFrame(host::PortFrame const& frame) override { progress_.onFrame(frame); }

private:
    void show(tools::Upload const& upload);

    Terminal& terminal_;
    UploadStyle style_;
    std::optional<std::uint64_t> expected_;
    tools::UploadProgress progress_;
};

} // namespace velk
