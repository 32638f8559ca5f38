#include "factory/ProtModule.h"

#include "interfaces/ModuleEntry.h"
#include "protlib/protocol/HostServiceVariables.h"
#include "tests/support/Cancellation.h"
#include "tests/support/FakeHost.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
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

// --- the end of the module object ---

/**
 * A module object that the test can destroy. It keeps its services in the same variables as the other one, which holds
 * none.
 */
class OwnProtModuleTest : public ::testing::Test {
protected:
    std::unique_ptr<ProtModule> module = std::make_unique<ProtModule>();
    FakeHost host;
};

TEST_F(OwnProtModuleTest, GivesItsServicesBackInTheEndHoweverOftenItWasInitialised) {
    for (int initialisations = 1; initialisations <= 3; ++initialisations) {
        module = std::make_unique<ProtModule>();
        for (int i = 0; i < initialisations; ++i) {
            ASSERT_TRUE(module->Init(&host));
        }
        host.log.clear();
        module.reset();
        EXPECT_EQ(host.Logged("release"), kReleased) << initialisations;
        EXPECT_EQ(piMultiTask, nullptr) << initialisations;
    }
}

TEST_F(OwnProtModuleTest, GivesNothingBackInTheEndWhenItHoldsNothing) {
    host.lacking = {"ICDSBuffer"};
    EXPECT_FALSE(module->Init(&host));
    host.log.clear();
    module.reset();
    EXPECT_TRUE(host.log.empty()) << "neither after a failed initialisation";

    host.lacking.clear();
    module = std::make_unique<ProtModule>();
    ASSERT_TRUE(module->Init(&host));
    module->Close();
    host.log.clear();
    module.reset();
    EXPECT_TRUE(host.log.empty()) << "nor after the last close";
}

// --- a failing host ---

/** A host that does something else, once, instead of creating or releasing a service. */
class TroubledHost final : public IInterfaceFactory {
public:
    FakeHost host;
    std::string call; ///< "create <name>" or "release <name>"
    void (*trouble)() = nullptr;

    IInterface* CreateInterface(char const* name) override {
        IInterface* const service = host.CreateInterface(name);
        MeetTrouble();
        return service;
    }

    void ReleaseInterface(IInterface* object) override {
        host.ReleaseInterface(object);
        MeetTrouble();
    }

private:
    void MeetTrouble() const {
        if (host.log.back() == call) {
            trouble();
        }
    }
};

void ThrowError() {
    throw std::runtime_error("no such service");
}

void ThrowNumber() {
    throw 7;
}

void RunOutOfMemory() {
    throw std::bad_alloc();
}

class TroubledHostTest : public ::testing::Test {
protected:
    void Expect(std::string call, void (*trouble)()) {
        troubled.call = std::move(call);
        troubled.trouble = trouble;
        troubled.host.log.clear();
    }

    TroubledHost troubled;
    FakeHost& host = troubled.host;
    std::unique_ptr<ProtModule> module = std::make_unique<ProtModule>();
};

TEST_F(TroubledHostTest, RequiredServiceWhoseCreationThrowsFailsTheInitialisation) {
    for (auto* const trouble : {ThrowError, ThrowNumber}) {
        Expect("create ISocketFactory", trouble);
        EXPECT_FALSE(module->Init(&troubled));
        EXPECT_STREQ(module->GetLastError(), "Exception in a host service");
        EXPECT_EQ(host.Logged("release"), (Names{"IMultiTask2", "ISerialFactory"}));
    }
    Expect("", nullptr);
    ASSERT_TRUE(module->Init(&troubled));
    EXPECT_EQ(host.Logged("create"), kAcquired);
}

TEST_F(TroubledHostTest, RequiredServiceForWhichTheHostHasNoMemoryIsNotCreated) {
    Expect("create ISerialFactory", RunOutOfMemory);
    EXPECT_FALSE(module->Init(&troubled));
    EXPECT_STREQ(module->GetLastError(), "ISerialFactory not created");
    EXPECT_EQ(host.Logged("release"), Names{"IMultiTask2"});
}

TEST_F(TroubledHostTest, OptionalServiceWhoseCreationThrowsIsAbsent) {
    Expect("create IPermanentStorage", ThrowError);
    ASSERT_TRUE(module->Init(&troubled));
    EXPECT_EQ(host.Logged("create"), kAcquired);
    EXPECT_EQ(piPermanentStorage, nullptr);
    EXPECT_EQ(piFastTimer, &host.fastTimer);
    EXPECT_STREQ(module->GetLastError(), "");
}

TEST_F(TroubledHostTest, ReleaseThatThrowsDoesNotKeepTheOthers) {
    for (std::string const& service : kReleased) {
        Expect("release " + service, ThrowError);
        ASSERT_TRUE(module->Init(&troubled));
        module->Close();
        EXPECT_EQ(host.Logged("release"), kReleased) << service;
    }
    Expect("release IMultiTask2", ThrowError);
    ASSERT_TRUE(module->Init(&troubled));
    module.reset();
    EXPECT_EQ(host.Logged("release"), kReleased) << "in the end";
}

TEST_F(TroubledHostTest, ReleaseThatThrowsDuringAFailedInitialisationDoesNotKeepTheOthers) {
    host.lacking = {"ICDSBuffer"};
    Expect("release IMultiTask2", ThrowError);
    EXPECT_FALSE(module->Init(&troubled));
    EXPECT_STREQ(module->GetLastError(), "piCDSBuffer not created");
    EXPECT_EQ(host.Logged("release"), (Names{"IMultiTask2", "ISerialFactory", "ISocketFactory"}));
}

TEST_F(TroubledHostTest, ThreadThatIsCancelledInInitEndsAndWhatItAcquiredIsGivenBackInTheEnd) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    Expect("create IDiag", velktest::CancelThisThread);
    EXPECT_TRUE(velktest::IsCancelledIn([&] { module->Init(&troubled); }));
    EXPECT_TRUE(host.Logged("release").empty());
    module.reset();
    EXPECT_EQ(host.Logged("release"), (Names{"IMultiTask2", "ISerialFactory", "ISocketFactory", "ICDSBuffer"}));
}

TEST_F(TroubledHostTest, ModuleCanBeInitialisedAgainAfterAThreadWasCancelledInInit) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    Expect("create ISocketFactory", velktest::CancelThisThread);
    EXPECT_TRUE(velktest::IsCancelledIn([&] { module->Init(&troubled); }));
    Expect("", nullptr);
    ASSERT_TRUE(module->Init(&troubled));
    EXPECT_EQ(host.Logged("release"), (Names{"IMultiTask2", "ISerialFactory"})) << "what was left";
    EXPECT_EQ(host.Logged("create"), kAcquired);
    host.log.clear();
    module->Close();
    EXPECT_EQ(host.Logged("release"), kReleased);
}

TEST_F(TroubledHostTest, CloseGoesOnWhereACancelledThreadEnded) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    ASSERT_TRUE(module->Init(&troubled));
    Expect("release IDriverInterface", velktest::CancelThisThread);
    EXPECT_TRUE(velktest::IsCancelledIn([&] { module->Close(); }));
    EXPECT_EQ(host.Logged("release"), (Names{"IFastTimer", "ISmux", "IDriverInterface"}));
    module->Close();
    EXPECT_EQ(host.Logged("release"), kReleased) << "each of them once";
}

} // namespace
