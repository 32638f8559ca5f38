#include "tools/velk/context/ExitCode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <set>
#include <vector>

namespace {

using base::FailureKind;
using velk::ExitCode;
using velk::exitCodeFor;

TEST(ExitCode, NumbersAreAsDocumented) {
    EXPECT_EQ(static_cast<int>(ExitCode::Good), 0);
    EXPECT_EQ(static_cast<int>(ExitCode::ItemNotGood), 1);
    EXPECT_EQ(static_cast<int>(ExitCode::Usage), 2);
    EXPECT_EQ(static_cast<int>(ExitCode::Port), 3);
    EXPECT_EQ(static_cast<int>(ExitCode::Silent), 4);
    EXPECT_EQ(static_cast<int>(ExitCode::Refused), 5);
    EXPECT_EQ(static_cast<int>(ExitCode::Interrupted), 130);
}

struct Expected {
    FailureKind kind;
    ExitCode code;
};

constexpr std::array kExpected{
    Expected{FailureKind::Internal, ExitCode::Usage},
    Expected{FailureKind::Usage, ExitCode::Usage},
    Expected{FailureKind::Configuration, ExitCode::Usage},
    Expected{FailureKind::Request, ExitCode::Usage},
    Expected{FailureKind::Value, ExitCode::Usage},
    Expected{FailureKind::TooLarge, ExitCode::Usage},
    Expected{FailureKind::NotPossible, ExitCode::Usage},
    Expected{FailureKind::LeftOut, ExitCode::Usage},
    Expected{FailureKind::Unreachable, ExitCode::ItemNotGood},
    Expected{FailureKind::Missing, ExitCode::ItemNotGood},
    Expected{FailureKind::Module, ExitCode::Usage},
    Expected{FailureKind::Memory, ExitCode::Usage},
    Expected{FailureKind::File, ExitCode::Usage},
    Expected{FailureKind::FileExists, ExitCode::Usage},
    Expected{FailureKind::Storage, ExitCode::Usage},
    Expected{FailureKind::NoStoredSymbols, ExitCode::Usage},
    Expected{FailureKind::StoredSymbolsBroken, ExitCode::Usage},
    Expected{FailureKind::PortMissing, ExitCode::Port},
    Expected{FailureKind::NotAPort, ExitCode::Port},
    Expected{FailureKind::PortDenied, ExitCode::Port},
    Expected{FailureKind::PortBusy, ExitCode::Port},
    Expected{FailureKind::PortNoHardware, ExitCode::Port},
    Expected{FailureKind::PortSettings, ExitCode::Port},
    Expected{FailureKind::PortFault, ExitCode::Port},
    Expected{FailureKind::PortDied, ExitCode::Port},
    Expected{FailureKind::Interrupted, ExitCode::Interrupted},
    Expected{FailureKind::Timeout, ExitCode::Silent},
    Expected{FailureKind::Coupler, ExitCode::Refused},
    Expected{FailureKind::Garbled, ExitCode::Refused},
    Expected{FailureKind::WrongReply, ExitCode::Refused},
    Expected{FailureKind::WrongSize, ExitCode::Refused},
    Expected{FailureKind::WrongLength, ExitCode::Refused},
    Expected{FailureKind::LoginRefused, ExitCode::Refused},
    Expected{FailureKind::ReadRefused, ExitCode::Refused},
    Expected{FailureKind::WriteRefused, ExitCode::Refused},
    Expected{FailureKind::OtherProject, ExitCode::Refused},
    Expected{FailureKind::NoSymbolFile, ExitCode::Refused},
    Expected{FailureKind::SymbolFileBroken, ExitCode::Refused},
    Expected{FailureKind::BadQuality, ExitCode::ItemNotGood},
    Expected{FailureKind::Conversion, ExitCode::ItemNotGood},
};

TEST(ExitCode, EveryKindOfFailureHasItsOwn) {
    static_assert(kExpected.size() == base::kFailureKinds);
    std::set<FailureKind> seen;
    for (Expected const& each : kExpected) {
        EXPECT_EQ(exitCodeFor(each.kind), each.code) << static_cast<int>(each.kind);
        seen.insert(each.kind);
    }
    EXPECT_EQ(seen.size(), kExpected.size());
}

TEST(ExitCode, OfThePortAreTheKindsOfThePort) {
    for (Expected const& each : kExpected) {
        EXPECT_EQ(base::isOfPort(each.kind), each.code == ExitCode::Port) << static_cast<int>(each.kind);
    }
}

TEST(ExitCode, OfItemsIsThatOfTheLineOnlyWhenNoneIsGood) {
    auto const of = [](std::vector<ExitCode> const& items) { return velk::exitCodeOfItems(items); };
    EXPECT_EQ(of({}), ExitCode::Good);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Good}), ExitCode::Good);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::ItemNotGood}), ExitCode::ItemNotGood);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Silent}), ExitCode::ItemNotGood);
    EXPECT_EQ(of({ExitCode::Silent, ExitCode::Silent}), ExitCode::Silent);
    EXPECT_EQ(of({ExitCode::ItemNotGood, ExitCode::Silent, ExitCode::Refused}), ExitCode::Silent);
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Port}), ExitCode::Port) << "nothing works without a port";
    EXPECT_EQ(of({ExitCode::Good, ExitCode::Interrupted}), ExitCode::Interrupted);
}

TEST(ExitCode, TheMoreTellingOneCounts) {
    EXPECT_EQ(velk::worse(ExitCode::Good, ExitCode::ItemNotGood), ExitCode::ItemNotGood);
    EXPECT_EQ(velk::worse(ExitCode::Interrupted, ExitCode::Port), ExitCode::Interrupted);
    EXPECT_EQ(velk::worse(ExitCode::Refused, ExitCode::Silent), ExitCode::Silent);
    EXPECT_EQ(velk::worse(ExitCode::Port, ExitCode::Usage), ExitCode::Port);
}

} // namespace
