#pragma once

#include "host/serial/ByteLine.h"

namespace host {

/**
 * A line behind the non-blocking descriptor of a terminal, which it does not own.
 *
 * It dies when its user wants the end: every wait is over at once.
 */
class DescriptorLine : public ByteLine {
public:
    /** @p interruption can be read from the moment on when waiting has to end; -1 for a line without that. */
    explicit DescriptorLine(int descriptor, int interruption = -1)
        : descriptor_(descriptor), interruption_(interruption) {}

    Wait waitForInput(std::int64_t microseconds) override;
    Wait waitForRoom(std::int64_t microseconds) override;
    Transfer receive(std::span<unsigned char> room) override;
    Transfer send(std::span<unsigned char const> bytes) override;
    std::size_t unsent() override;
    bool pause(std::int64_t microseconds) override;
    bool drain() override;
    void dropUnsent() override;
    [[nodiscard]] std::string faultText() const override;

    /** True when the line died because its user wanted the end. */
    [[nodiscard]] bool isInterrupted() const { return interrupted_; }

private:
    Wait interrupt();
    Wait waitFor(short events, std::int64_t microseconds);
    [[nodiscard]] bool isReadable() const;
    Transfer failedTransfer(int error);

    int descriptor_;
    int interruption_;
    bool interrupted_ = false;
    char const* condition_ = ""; ///< the fault as a condition of the line ...
    int error_ = 0;              ///< ... or as an error number
};

} // namespace host
