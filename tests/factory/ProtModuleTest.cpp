#include "interfaces/IProtModule.h"
#include "interfaces/ModuleEntry.h"
#include "protlib/HostServiceVariables.h"
#include "tests/support/FakeHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

extern "C" IInterfaceFactory* GetInterfaceFactory();

namespace {

using velktest::FakeHost;
using Names = std::vector<std::string>;

/** The module, uninitialised at the start and at the end of every test. */
class ProtModuleTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (int i = 0; i < initialisations; ++i) {
            module->Close();
        }
    }

    bool Init(FakeHost& from) {
        bool const ok = module->Init(&from);
        initialisations += ok ? 1 : 0;
        return ok;
    }

    void Close() {
        module->Close();
        --initialisations;
    }

    IProtModule* module = static_cast<IProtModule*>(GetInterfaceFactory()->CreateInterface("IProtModule"));
    FakeHost host;
    int initialisations = 0;
};

Names const kAcquired{"IMultiTask2",       "ISerialFactory",   "ISocketFactory", "ICDSBuffer", "IDiag",
                      "IPermanentStorage", "IDriverInterface", "ISmux",          "IFastTimer"};
Names const kReleased{"IFastTimer",  "ISmux",          "IDriverInterface", "IDiag",     "IPermanentStorage",
                      "IMultiTask2", "ISerialFactory", "ISocketFactory",   "ICDSBuffer"};

TEST_F(ProtModuleTest, AcquiresTheServicesInOrder) {
    ASSERT_TRUE(Init(host));
    EXPECT_EQ(host.Logged("create"), kAcquired);
    EXPECT_TRUE(host.Logged("release").empty());
    EXPECT_EQ(piMultiTask, &host.scheduler);
    EXPECT_EQ(piSerialFactory, &host.serial);
    EXPECT_EQ(piSocketFactory, &host.sockets);
    EXPECT_EQ(piCDSBuffer, &host.buffers);
    EXPECT_EQ(piDiag, &host.diagnosis);
    EXPECT_EQ(piPermanentStorage, &host.storage);
    EXPECT_EQ(piDriverInterface, &host.driverInterface);
    EXPECT_EQ(piSmux, &host.smux);
    EXPECT_EQ(piFastTimer, &host.fastTimer);
}

TEST_F(ProtModuleTest, ReleasesTheServicesInOrder) {
    ASSERT_TRUE(Init(host));
    host.log.clear();
    Close();
    EXPECT_EQ(host.Logged("release"), kReleased);
    EXPECT_TRUE(host.Logged("create").empty());
    for (IInterface* service : {piMultiTask, piSerialFactory, piSocketFactory, piCDSBuffer, piDiag, piPermanentStorage,
                                piDriverInterface, piSmux, piFastTimer}) {
        EXPECT_EQ(service, nullptr);
    }
}

TEST_F(ProtModuleTest, InitialisationsAreCounted) {
    FakeHost other;
    ASSERT_TRUE(Init(host));
    ASSERT_TRUE(Init(other)) << "the second host is ignored";
    EXPECT_TRUE(other.log.empty());
    Close();
    EXPECT_TRUE(host.Logged("release").empty());
    EXPECT_EQ(piMultiTask, &host.scheduler);
    Close();
    EXPECT_EQ(host.Logged("release"), kReleased) << "given back to the host that they came from";
    EXPECT_TRUE(other.log.empty());
    host.log.clear();
    module->Close();
    EXPECT_TRUE(host.log.empty()) << "a third close does nothing";
    ASSERT_TRUE(Init(host)) << "the superfluous close was not counted";
    EXPECT_EQ(host.Logged("create"), kAcquired);
}

TEST_F(ProtModuleTest, CloseBeforeInitDoesNothing) {
    module->Close();
    ASSERT_TRUE(Init(host));
    EXPECT_EQ(host.Logged("create"), kAcquired);
    EXPECT_TRUE(host.Logged("release").empty());
}

TEST_F(ProtModuleTest, CanBeInitialisedAgain) {
    ASSERT_TRUE(Init(host));
    Close();
    FakeHost other;
    ASSERT_TRUE(Init(other));
    EXPECT_EQ(other.Logged("create"), kAcquired);
    EXPECT_EQ(piSerialFactory, &other.serial);
    Close();
    EXPECT_EQ(other.Logged("release"), kReleased);
}

TEST_F(ProtModuleTest, NullHostIsIgnoredOnceInitialised) {
    ASSERT_TRUE(Init(host));
    ASSERT_TRUE(module->Init(nullptr));
    ++initialisations;
    Close();
    EXPECT_TRUE(host.Logged("release").empty());
}

TEST_F(ProtModuleTest, NoHostAtAllIsRefused) {
    EXPECT_FALSE(module->Init(nullptr));
    ASSERT_TRUE(Init(host));
    EXPECT_EQ(host.Logged("create"), kAcquired);
}

TEST_F(ProtModuleTest, MissingScheduler) {
    host.lacking = {"IMultiTask2"};
    EXPECT_FALSE(Init(host));
    EXPECT_STREQ(module->GetLastError(), "IMultiTask2 not created");
    EXPECT_EQ(host.log, (Names{"create IMultiTask2"}));
}

TEST_F(ProtModuleTest, MissingSerialFactory) {
    host.lacking = {"ISerialFactory"};
    EXPECT_FALSE(Init(host));
    EXPECT_STREQ(module->GetLastError(), "ISerialFactory not created");
    EXPECT_EQ(host.log, (Names{"create IMultiTask2", "create ISerialFactory", "release IMultiTask2"}));
}

TEST_F(ProtModuleTest, MissingSocketFactory) {
    host.lacking = {"ISocketFactory"};
    EXPECT_FALSE(Init(host));
    EXPECT_STREQ(module->GetLastError(), "ISocketFactory not created");
    EXPECT_EQ(host.log, (Names{"create IMultiTask2", "create ISerialFactory", "create ISocketFactory",
                               "release IMultiTask2", "release ISerialFactory"}));
}

TEST_F(ProtModuleTest, MissingBufferIsNamedByItsVariable) {
    host.lacking = {"ICDSBuffer"};
    EXPECT_FALSE(Init(host));
    EXPECT_STREQ(module->GetLastError(), "piCDSBuffer not created");
    EXPECT_EQ(host.log,
              (Names{"create IMultiTask2", "create ISerialFactory", "create ISocketFactory", "create ICDSBuffer",
                     "release IMultiTask2", "release ISerialFactory", "release ISocketFactory"}));
}

TEST_F(ProtModuleTest, FailedInitIsNotCounted) {
    host.lacking = {"ISocketFactory"};
    EXPECT_FALSE(Init(host));
    host.log.clear();
    module->Close();
    EXPECT_TRUE(host.log.empty());
    host.lacking.clear();
    ASSERT_TRUE(Init(host));
    EXPECT_EQ(host.Logged("create"), kAcquired);
    Close();
    EXPECT_EQ(host.Logged("release"), kReleased);
}

TEST_F(ProtModuleTest, ReleasedServicesKeepTheirStaleVariablesAfterAFailedInit) {
    host.lacking = {"ISocketFactory"};
    EXPECT_FALSE(Init(host));
    EXPECT_EQ(piMultiTask, &host.scheduler);
    EXPECT_EQ(piSerialFactory, &host.serial);
    EXPECT_EQ(piSocketFactory, nullptr);
    host.lacking.clear();
    ASSERT_TRUE(Init(host));
}

TEST_F(ProtModuleTest, MissingOptionalServicesAreNoError) {
    host.lacking = {"IDiag", "IPermanentStorage", "IDriverInterface", "ISmux", "IFastTimer"};
    ASSERT_TRUE(Init(host));
    EXPECT_EQ(host.Logged("create"), kAcquired);
    EXPECT_EQ(piPermanentStorage, nullptr);
    host.log.clear();
    Close();
    EXPECT_EQ(host.Logged("release"), (Names{"IMultiTask2", "ISerialFactory", "ISocketFactory", "ICDSBuffer"}));
}

TEST_F(ProtModuleTest, EachOptionalServiceIsReleasedOnlyWhenThere) {
    for (std::string const optional : {"IDiag", "IPermanentStorage", "IDriverInterface", "ISmux", "IFastTimer"}) {
        FakeHost poorer;
        poorer.lacking = {optional};
        ASSERT_TRUE(Init(poorer)) << optional;
        Close();
        Names expected = kReleased;
        std::erase(expected, optional);
        EXPECT_EQ(poorer.Logged("release"), expected) << optional;
    }
}

TEST_F(ProtModuleTest, LastErrorIsATextThatStays) {
    ASSERT_NE(module->GetLastError(), nullptr);
    host.lacking = {"ISerialFactory"};
    EXPECT_FALSE(Init(host));
    host.lacking.clear();
    ASSERT_TRUE(Init(host));
    EXPECT_STREQ(module->GetLastError(), "ISerialFactory not created") << "only a failure sets it";
}

} // namespace
