#pragma once

#include "host/ByteLine.h"

namespace host {

/** A line behind the non-blocking descriptor of a terminal, which it does not own. */
class DescriptorLine : public ByteLine {
public:
    explicit DescriptorLine(int descriptor) : descriptor_(descriptor) {}

    Wait waitForInput(std::int64_t microseconds) override;
    Wait waitForRoom(std::int64_t microseconds) override;
    Transfer receive(std::span<unsigned char> room) override;
    Transfer send(std::span<unsigned char const> bytes) override;
    std::size_t unsent() override;
    void pause(std::int64_t microseconds) override;
    bool drain() override;
    void dropUnsent() override;
    [[nodiscard]] std::string faultText() const override;

private:
    Wait waitFor(short events, std::int64_t microseconds);
    [[nodiscard]] bool isReadable() const;
    Transfer failedTransfer(int error);

    int descriptor_;
    char const* condition_ = ""; ///< the fault as a condition of the line ...
    int error_ = 0;              ///< ... or as an error number
};

} // namespace host
