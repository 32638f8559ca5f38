#pragma once

#include "host/serial/ByteLine.h"

namespace host {

/**
 * The line of a terminal's non-blocking descriptor, which it does not own.
 *
 * It fails when the user asks to stop: every wait then ends at once.
 */
class DescriptorLine : public ByteLine {
public:
    /** @p interruption becomes readable when all waiting must end; -1 for none. */
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

    /** True when the line failed because the user asked to stop. */
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
