#pragma once

#include "host/serial/PortObserver.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tools {

/** The progress of a file's upload. The length of the file is not known from the line. */
struct Upload {
    std::uint64_t bytes = 0;  ///< of the file
    std::uint64_t pieces = 0; ///< replies of the PLC
    std::int64_t microseconds = 0;
    bool done = false; ///< the PLC has sent its last byte

    /** Bytes in a second, 0 before any time has passed. */
    [[nodiscard]] double rate() const;
};

/** Watches the line for a file's upload and reports each piece. */
class UploadProgress final : public host::PortObserver {
public:
    using Listener = std::function<void(Upload const&)>;

    /** @param routingHeaderLength bytes before every frame: 19 where requests are routed through couplers, else 0 */
    UploadProgress(std::size_t routingHeaderLength, Listener listener);

    void onFrame(host::PortFrame const& frame) override;

    /** The upload under way, or the last one. */
    [[nodiscard]] Upload const& upload() const { return upload_; }

private:
    void onSent(std::span<unsigned char const> block, std::int64_t at);
    void onReceived(std::span<unsigned char const> block, std::int64_t at);
    void tell();

    std::size_t routingHeaderLength_;
    Listener listener_;
    Upload upload_;
    std::int64_t began_ = 0;
    bool underWay_ = false;
    bool lastPiece_ = false;   ///< the reply under way says that it is the last
    bool pieceBegins_ = false; ///< the next received block is the first one of a reply
};

} // namespace tools
