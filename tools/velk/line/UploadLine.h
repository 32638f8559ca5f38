#pragma once

#include "host/serial/PortObserver.h"
#include "tools/common/UploadProgress.h"
#include "tools/velk/project/Settings.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velk {

class Terminal;

/** Bytes of the header before every frame with this framing. */
std::size_t routingHeaderLength(host::DriverConfig const& config);

/** "fetching the symbol file: 12,345 bytes, 24 pieces, 5.1 kB/s", with a bar when the approximate length is known. */
std::string uploadText(tools::Upload const& upload, std::optional<std::uint64_t> expectedBytes);

/** How an upload is shown. */
struct UploadStyle {
    std::string label{};   ///< before the text of the redrawn line
    bool vanishes = false; ///< removed from the screen when the upload is done
};

/** Shows the progress of a symbol file's upload on the terminal. */
class UploadLine final : public host::PortObserver {
public:
    UploadLine(Settings const& settings, Terminal& terminal, UploadStyle style = {});

    /** Bytes of an earlier file, for the bar; nothing when there was none. */
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
