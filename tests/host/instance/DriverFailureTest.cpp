#include "host/instance/DriverFailure.h"

#include "tests/host/FakeProtocol.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

using base::FailureKind;
using host::driverFailureKind;

struct Row {
    char const* text;
    int code;
    FailureKind kind;
};

/** The texts of the contract, with the codes that go with them. */
constexpr Row kContract[] = {
    {"Generic error on receiving", 0, FailureKind::PortDied},
    {"Can't allocate Tag", 0, FailureKind::Memory},
    {"Out of memory", 0, FailureKind::Memory},
    {"Exception in a host service", 0, FailureKind::Internal},
    {"Parser: unknown format", -1, FailureKind::Configuration},
    {"Parser: parameter 'uart' is not found", -1, FailureKind::Configuration},
    {"Parser: parameter 'prefix' can't be node independent", -1, FailureKind::Configuration},
    {"Parser: parameter 'parity' has invalid value", -1, FailureKind::Configuration},
    {"parameter 'BlockSize' out of range", -1, FailureKind::Configuration},
    {"Protocol type not supported", -1, FailureKind::Configuration},
    {"Tag URI error: 1?X?M?0?nonsense - Unknown data type", -1, FailureKind::Request},
    {"Node number out of range", -1, FailureKind::Request},
    {"Invalid argument", -1, FailureKind::Request},
    {"writing to read_only type", -1, FailureKind::Request},
    {"Can't open serial port", -1, FailureKind::PortFault},
    {"Too many items in datagram", -1, FailureKind::TooLarge},
    {"Tx Buffer dimension exceeded", -1, FailureKind::TooLarge},
    {"Rx Buffer dimension exceeded", -1, FailureKind::WrongLength},
    {"1?X?M?0?int not present in Symbols files", -1, FailureKind::Missing},
    {"tag X not present in symbol file", -1, FailureKind::LoginRefused},
    {"Protocol not started", -3, FailureKind::NotPossible},
    {"Optimized writing not supported", -3, FailureKind::NotPossible},
    {"Cannot open symbol file for write", -3, FailureKind::Storage},
    {"Cannot write on symbol file", -3, FailureKind::Storage},
    {"Timeout on Acknowledge", -4, FailureKind::Timeout},
    {"Timeout on data receiving", -4, FailureKind::Timeout},
    {"Too short Ack message received", -6, FailureKind::Garbled},
    {"Wrong Ack message received", -6, FailureKind::Garbled},
    {"Too short message received", -6, FailureKind::Garbled},
    {"Wrong Protocol ID received", -6, FailureKind::Garbled},
    {"Wrong checksum or wrong block number received", -6, FailureKind::Garbled},
    {"Wrong number of bytes received", -6, FailureKind::WrongSize},
    {"Command not acknowledged by PLC", -6, FailureKind::ReadRefused},
    {"Wrong reply length or ack in WriteData operation", -6, FailureKind::WriteRefused},
    {"One of the values has bad quality", -6, FailureKind::BadQuality},
    {"Project ID mismatch", -6, FailureKind::OtherProject},
    {"Symbol file not present", -6, FailureKind::NoSymbolFile},
    {"Symbol file is corrupted", -6, FailureKind::SymbolFileBroken},
    {"Wrong reply or Data Counter while reading symbol file", -6, FailureKind::WrongReply},
    {"read conversion error", -9, FailureKind::Conversion},
    {"write conversion error", -9, FailureKind::Conversion},
    {"datagramItem conversion error", -9, FailureKind::Conversion},
};

TEST(DriverFailure, EveryTextOfTheContractHasItsKind) {
    for (Row const& row : kContract) {
        EXPECT_EQ(driverFailureKind(row.code, row.text), row.kind) << row.code << " " << row.text;
    }
}

TEST(DriverFailure, ATextThatIsNotKnownIsClassifiedByItsCode) {
    EXPECT_EQ(driverFailureKind(0, "new"), FailureKind::PortFault);
    EXPECT_EQ(driverFailureKind(-1, "new"), FailureKind::Request);
    EXPECT_EQ(driverFailureKind(-3, "new"), FailureKind::NotPossible);
    EXPECT_EQ(driverFailureKind(-4, "new"), FailureKind::Timeout);
    EXPECT_EQ(driverFailureKind(-6, "new"), FailureKind::WrongReply);
    EXPECT_EQ(driverFailureKind(-9, "new"), FailureKind::Conversion);
    EXPECT_EQ(driverFailureKind(-77, "new"), FailureKind::Internal);
}

TEST(DriverFailure, PartOfAKnownTextIsNotThatText) {
    EXPECT_EQ(driverFailureKind(-6, "One of the values has bad quality, perhaps"), FailureKind::WrongReply);
    EXPECT_EQ(driverFailureKind(-1, "not a Tag URI error: x"), FailureKind::Request);
}

TEST(DriverFailure, WhatLeavesNoReasonIsARefusedLogin) {
    FakeProtocol protocol;
    base::Failure const failure = host::driverFailure(protocol);
    EXPECT_EQ(failure.kind, FailureKind::LoginRefused);
    EXPECT_EQ(failure.text, "the driver gave no reason");
    EXPECT_EQ(failure.driverCode, 1);
}

TEST(DriverFailure, KeepsTheDriversCodeAndText) {
    FakeProtocol protocol;
    protocol.setError(-4, "Timeout on Acknowledge");
    base::Failure const failure = host::driverFailure(protocol);
    EXPECT_EQ(failure.kind, FailureKind::Timeout);
    EXPECT_EQ(failure.text, "Timeout on Acknowledge");
    EXPECT_EQ(failure.driverCode, -4);
}

} // namespace
} // namespace hosttest
