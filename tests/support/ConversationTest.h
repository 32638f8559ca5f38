#pragma once

#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ITag.h"
#include "interfaces/ModuleEntry.h"
#include "plc/line/Line.h"
#include "tests/support/ConfigText.h"
#include "tests/support/FakeHost.h"
#include "tests/support/SimulatedPort.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

extern "C" IInterfaceFactory* GetInterfaceFactory();

namespace velktest {

static_assert(std::endian::native == std::endian::little, "host values are written down as the panel has them");

/** A number as the host has it. */
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
class ConversationTest : public ::testing::Test {
protected:
    void TearDown() override { End(); }

    /** Puts the stations on the line and starts a driver that is configured by @p config. */
    void Begin(plc::LineDescription const& stations, ConfigText const& config) {
        End();
        line = std::make_unique<plc::Line>(stations);
        port = std::make_unique<SimulatedPort>(*line);
        host.serial.port = port.get();
        host.storage.directory = dir.Path();
        ASSERT_TRUE(Module()->Init(&host)) << Module()->GetLastError();
        driver = static_cast<IProtocol3*>(Protocols()->CreateProtocol("VELK"));
        ASSERT_TRUE(driver->Config(config.Build().c_str())) << driver->GetLastErrorString();
        ASSERT_TRUE(driver->Start()) << driver->GetLastErrorString();
    }

    void End() {
        if (driver != nullptr) {
            Protocols()->DeleteProtocol(driver);
            Module()->Close();
            driver = nullptr;
        }
    }

    ITag* Tag(std::string const& address) {
        ITag* const tag = driver->CreateTag(address.c_str());
        EXPECT_NE(tag, nullptr) << driver->GetLastErrorString();
        return tag;
    }

    struct Outcome {
        bool ok = false;
        Bytes value;
        std::vector<idal_error_t> status;
    };

    Outcome Read(std::vector<ITag*> const& tags) {
        Outcome outcome;
        std::size_t size = 0;
        for (ITag const* tag : tags) {
            size += static_cast<std::size_t>(tag->GetVarLength());
        }
        outcome.value.assign(size, 0xCC);
        outcome.status.assign(tags.size(), 77);
        outcome.ok = driver->ReadDatagramWithStatus(tags.data(), static_cast<int>(tags.size()), outcome.value.data(),
                                                    outcome.status.data());
        return outcome;
    }

    template <typename Number>
    void ExpectNumber(ITag* tag, Number expected) {
        Outcome const outcome = Read({tag});
        EXPECT_TRUE(outcome.ok) << tag->GetVarName() << ": " << driver->GetLastErrorString();
        EXPECT_EQ(outcome.status[0], 1) << tag->GetVarName();
        EXPECT_EQ(NumberOf<Number>(outcome.value), expected) << tag->GetVarName();
    }

    bool Write(std::vector<ITag*> const& tags, Bytes const& values) {
        std::vector<idal_error_t> status(tags.size(), 77);
        bool const ok =
            driver->WriteDatagramWithStatus(tags.data(), static_cast<int>(tags.size()), values.data(), status.data());
        EXPECT_EQ(status, std::vector<idal_error_t>(tags.size(), ok ? 1 : 77));
        return ok;
    }

    void ExpectError(int code, std::string const& text) const {
        EXPECT_EQ(driver->GetLastError(), code);
        EXPECT_EQ(std::string(driver->GetLastErrorString()), text);
    }

    std::uint64_t Count(plc::Cause cause) const { return line->counters().of(cause); }

    /** The stations found nothing wrong with what the driver sent. */
    void ExpectNoComplaints() const {
        for (std::size_t i = 0; i < plc::kCauseCount; ++i) {
            auto const cause = static_cast<plc::Cause>(i);
            if (plc::isComplaint(cause)) {
                EXPECT_EQ(line->counters().of(cause), 0U) << plc::nameOf(cause);
            }
        }
    }

    static IProtModule* Module() {
        return static_cast<IProtModule*>(GetInterfaceFactory()->CreateInterface("IProtModule"));
    }
    static IProtocolFactory* Protocols() {
        return static_cast<IProtocolFactory*>(GetInterfaceFactory()->CreateInterface("IProtocolFactory"));
    }

    TempDir dir;
    FakeHost host;
    std::unique_ptr<plc::Line> line;
    std::unique_ptr<SimulatedPort> port;
    IProtocol3* driver = nullptr;
};

} // namespace velktest
