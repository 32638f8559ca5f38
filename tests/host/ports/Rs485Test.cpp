#include "host/ports/Rs485.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

TEST(Rs485, OnDrivesTheDirectionSignalWhileSendingAndDoesNotHearItself) {
    serial_rs485 fresh{};
    fresh.flags = SER_RS485_RX_DURING_TX;
    serial_rs485 const on = host::rs485Settings(fresh, true);
    EXPECT_EQ(on.flags, SER_RS485_ENABLED | SER_RS485_RTS_ON_SEND);
}

TEST(Rs485, ThePortsOwnPolarityAndDelaysStay) {
    serial_rs485 inverted{};
    inverted.flags = SER_RS485_RTS_AFTER_SEND;
    inverted.delay_rts_before_send = 3;
    inverted.delay_rts_after_send = 4;
    serial_rs485 const on = host::rs485Settings(inverted, true);
    EXPECT_EQ(on.flags, SER_RS485_ENABLED | SER_RS485_RTS_AFTER_SEND);
    EXPECT_EQ(on.delay_rts_before_send, 3U);
    EXPECT_EQ(on.delay_rts_after_send, 4U);
}

TEST(Rs485, OffOnlyTakesTheModeAway) {
    serial_rs485 running{};
    running.flags = SER_RS485_ENABLED | SER_RS485_RTS_ON_SEND | SER_RS485_RX_DURING_TX;
    EXPECT_EQ(host::rs485Settings(running, false).flags, SER_RS485_RTS_ON_SEND | SER_RS485_RX_DURING_TX);
}

} // namespace
} // namespace hosttest
