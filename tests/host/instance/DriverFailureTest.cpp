#include "host/instance/DriverFailure.h"

#include "tests/host/FakeProtocol.h"

#include <gtest/gtest.h>

namespace hosttest {
namespace {

using base::FailureKind;
using host::driverFailureKind;

struct Row {
    int code;
    char const* text;
    FailureKind kind;
};

/** The texts of the contract, with the codes that go with them. */
constexpr Row kContract[] = {
    {0, "Generic error on receiving", FailureKind::PortDied},
    {0, "Can't allocate Tag", FailureKind::Memory},
    {0, "Out of memory", FailureKind::Memory},
    {0, "Can't allocate buffer", FailureKind::Memory},
    {-1, "Can't allocate buffer", FailureKind::Memory},
    {0, "Exception in a host service", FailureKind::Internal},
    {-1, "Parser: unknown format", FailureKind::Configuration},
    {-1, "Parser: parameter 'uart' is not found", FailureKind::Configuration},
    {-1, "Parser: parameter 'prefix' can't be node independent", FailureKind::Configuration},
    {-1, "Parser: parameter 'parity' has invalid value", FailureKind::Configuration},
    {-1, "parameter 'BlockSize' out of range", FailureKind::Configuration},
    {-1, "Protocol type not supported", FailureKind::Configuration},
    {-1, "Tag URI error: 1?X?M?0?nonsense - Unknown data type", FailureKind::Request},
    {-1, "Node number out of range", FailureKind::Request},
    {-1, "Invalid argument", FailureKind::Request},
    {-1, "writing to read_only type", FailureKind::Request},
    {-1, "Can't open serial port", FailureKind::PortFault},
    {-1, "Too many items in datagram", FailureKind::TooLarge},
    {-1, "Tx Buffer dimension exceeded", FailureKind::TooLarge},
    {-1, "Rx Buffer dimension exceeded", FailureKind::WrongLength},
    {-1, "1?X?M?0?int not present in Symbols files", FailureKind::Missing},
    {-1, "tag X not present in symbol file", FailureKind::LoginRefused},
    {-3, "Protocol not started", FailureKind::NotPossible},
    {-3, "Optimized writing not supported", FailureKind::NotPossible},
    {-3, "Cannot open symbol file for write", FailureKind::Storage},
    {-3, "Cannot write on symbol file", FailureKind::Storage},
    {-4, "Timeout on Acknowledge", FailureKind::Timeout},
    {-4, "Timeout on data receiving", FailureKind::Timeout},
    {-6, "Too short Ack message received", FailureKind::Garbled},
    {-6, "Wrong Ack message received", FailureKind::Garbled},
    {-6, "Too short message received", FailureKind::Garbled},
    {-6, "Wrong Protocol ID received", FailureKind::Garbled},
    {-6, "Wrong checksum or wrong block number received", FailureKind::Garbled},
    {-6, "Wrong number of bytes received", FailureKind::WrongSize},
    {-6, "Command not acknowledged by PLC", FailureKind::ReadRefused},
    {-6, "Wrong reply length or ack in WriteData operation", FailureKind::WriteRefused},
    {-6, "One of the values has bad quality", FailureKind::BadQuality},
    {-6, "Project ID mismatch", FailureKind::OtherProject},
    {-6, "Symbol file not present", FailureKind::NoSymbolFile},
    {-6, "Symbol file is corrupted", FailureKind::SymbolFileBroken},
    {-6, "Wrong reply or Data Counter while reading symbol file", FailureKind::WrongReply},
    {-9, "read conversion error", FailureKind::Conversion},
    {-9, "write conversion error", FailureKind::Conversion},
    {-9, "datagramItem conversion error", FailureKind::Conversion},
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
