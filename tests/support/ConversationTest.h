#pragma once

#include "plc/line/Line.h"
#include "tests/support/HostedDriverTest.h"
#include "tests/support/SimulatedPort.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace velktest {

static_assert(std::endian::native == std::endian::little, "host values are written down as the panel has them");

/** A number in the host's representation. */
template <typename Number>
Bytes HostValue(Number value) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

template <typename Number>
Number NumberOf(Bytes const& bytes) {
    Number value{};
    EXPECT_EQ(bytes.size(), sizeof value);
    std::memcpy(&value, bytes.data(), std::min(sizeof value, bytes.size()));
    return value;
}

/** A whole driver on a line of simulated stations, in virtual time. */
class ConversationTest : public HostedDriverTest {
protected:
    /** Puts the stations on the line and starts a driver that is configured by @p config. */
    void Begin(plc::LineDescription const& stations, ConfigText const& config) {
        DeleteDriver();
        line = std::make_unique<plc::Line>(stations);
        port = std::make_unique<SimulatedPort>(*line);
        host.serial.port = port.get();
        ASSERT_NO_FATAL_FAILURE(MakeDriver());
        ConfigureAndStart(config);
    }

    template <typename Number>
    void ExpectNumber(ITag* tag, Number expected) {
        ReadOutcome const outcome = Read({tag});
        EXPECT_TRUE(outcome.ok) << tag->GetVarName() << ": " << driver->GetLastErrorString();
        EXPECT_EQ(outcome.status[0], 1) << tag->GetVarName();
        EXPECT_EQ(NumberOf<Number>(outcome.values), expected) << tag->GetVarName();
    }

    std::uint64_t Count(plc::Cause cause) const { return line->counters().of(cause); }

    /** The stations found no error in what the driver sent. */
    void ExpectNoComplaints() const {
        for (std::size_t i = 0; i < plc::kCauseCount; ++i) {
            auto const cause = static_cast<plc::Cause>(i);
            if (plc::isComplaint(cause)) {
                EXPECT_EQ(line->counters().of(cause), 0U) << plc::nameOf(cause);
            }
        }
    }

    std::unique_ptr<plc::Line> line;
    std::unique_ptr<SimulatedPort> port;
};

} // namespace velktest
