#pragma once

#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ITag.h"
#include "interfaces/ModuleEntry.h"
#include "tests/support/ConfigText.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

extern "C" IInterfaceFactory* GetInterfaceFactory();

namespace velktest {

/** One driver instance, created as a host does it, with its own storage; the derived fixture provides the port. */
class HostedDriverTest : public ::testing::Test {
protected:
    HostedDriverTest() { host.storage.directory = dir.Path(); }

    void TearDown() override { DeleteDriver(); }

    void MakeDriver() {
        ASSERT_TRUE(Module()->Init(&host)) << Module()->GetLastError();
        initialised_ = true;
        driver = static_cast<IProtocol3*>(Protocols()->CreateProtocol("VELK"));
        ASSERT_NE(driver, nullptr);
    }

    /** Does nothing when there is none. */
    void DeleteDriver() {
        Protocols()->DeleteProtocol(driver);
        driver = nullptr;
        if (initialised_) {
            Module()->Close();
            initialised_ = false;
        }
    }

    void ConfigureAndStart(ConfigText const& text = {}) {
        ASSERT_TRUE(driver->Config(text.Build().c_str())) << driver->GetLastErrorString();
        ASSERT_TRUE(driver->Start()) << driver->GetLastErrorString();
    }

    ITag* Tag(std::string const& address) {
        ITag* const tag = driver->CreateTag(address.c_str());
        EXPECT_NE(tag, nullptr) << driver->GetLastErrorString();
        return tag;
    }

    void ExpectError(int code, std::string const& text) const {
        EXPECT_EQ(driver->GetLastError(), code);
        EXPECT_EQ(std::string(driver->GetLastErrorString()), text);
    }

    /** What ReadDatagramWithStatus() did. */
    struct ReadOutcome {
        bool ok = false;
        Bytes values;
        std::vector<idal_error_t> status;
    };

    /** Reads the tags; before the call, the values are filled with 0xCC and the statuses with 77. */
    ReadOutcome Read(std::vector<ITag*> const& tags) {
        ReadOutcome outcome;
        std::size_t size = 0;
        for (auto const* tag : tags) {
            size += static_cast<std::size_t>(tag->GetVarLength());
        }
        outcome.values.assign(size + 1, 0xCC); // one more, so that the address is valid even for no bytes
        outcome.status.assign(tags.size(), 77);
        outcome.ok = driver->ReadDatagramWithStatus(tags.data(), static_cast<int>(tags.size()), outcome.values.data(),
                                                    outcome.status.data());
        EXPECT_EQ(outcome.values.back(), 0xCC);
        outcome.values.pop_back();
        return outcome;
    }

    /** Writes host values to the tags; true and all statuses good, or false. */
    bool Write(std::vector<ITag*> const& tags, Bytes values) {
        values.push_back(0xEE); // so that the address is valid even for no bytes
        std::vector<idal_error_t> status(tags.size(), 77);
        bool const ok =
            driver->WriteDatagramWithStatus(tags.data(), static_cast<int>(tags.size()), values.data(), status.data());
        EXPECT_EQ(status, std::vector<idal_error_t>(tags.size(), ok ? 1 : 77));
        return ok;
    }

    static IProtModule* Module() {
        return static_cast<IProtModule*>(GetInterfaceFactory()->CreateInterface("IProtModule"));
    }
    static IProtocolFactory* Protocols() {
        return static_cast<IProtocolFactory*>(GetInterfaceFactory()->CreateInterface("IProtocolFactory"));
    }

    TempDir dir;
    FakeHost host;
    IProtocol3* driver = nullptr;

private:
    bool initialised_ = false;
};

} // namespace velktest
