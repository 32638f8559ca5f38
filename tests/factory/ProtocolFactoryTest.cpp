#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ModuleEntry.h"
#include "protlib/protocol/HostServiceVariables.h"
#include "tests/support/AllocationGate.h"
#include "tests/support/Cancellation.h"
#include "tests/support/ConfigText.h"
#include "tests/support/FakeHost.h"
#include "tests/support/ScriptedPort.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

extern "C" IInterfaceFactory* GetInterfaceFactory();

namespace {

class ProtocolFactoryTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(module->Init(&host)); }
    void TearDown() override { module->Close(); }

    IProtModule* module = static_cast<IProtModule*>(GetInterfaceFactory()->CreateInterface("IProtModule"));
    IProtocolFactory* factory =
        static_cast<IProtocolFactory*>(GetInterfaceFactory()->CreateInterface("IProtocolFactory"));
    velktest::FakeHost host;
};

TEST_F(ProtocolFactoryTest, CreatesDistinctInstances) {
    IProtocol* const first = factory->CreateProtocol("VELK");
    IProtocol* const second = factory->CreateProtocol("VELK");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_STREQ(first->GetName(), "VELK");
    factory->DeleteProtocol(first);
    EXPECT_STREQ(second->GetName(), "VELK");
    factory->DeleteProtocol(second);
}

TEST_F(ProtocolFactoryTest, InstancesKeepTheirStateApart) {
    IProtocol* const first = factory->CreateProtocol("VELK");
    IProtocol* const second = factory->CreateProtocol("VELK");
    first->SetIdent("one");
    EXPECT_FALSE(first->Config("nonsense"));
    EXPECT_STREQ(first->GetIdent(), "one");
    EXPECT_STREQ(second->GetIdent(), "VELK");
    EXPECT_EQ(first->GetLastError(), -1);
    EXPECT_EQ(second->GetLastError(), 1);
    factory->DeleteProtocol(first);
    factory->DeleteProtocol(second);
}

TEST_F(ProtocolFactoryTest, KnowsOneNameOnly) {
    for (char const* name : {"velk", "VELK ", " VELK", "VEL", "VELKX", "", "Protocol_VELK"}) {
        EXPECT_EQ(factory->CreateProtocol(name), nullptr) << "'" << name << "'";
    }
}

TEST_F(ProtocolFactoryTest, DeletingNothingIsHarmless) {
    factory->DeleteProtocol(nullptr);
    IProtocol* const protocol = factory->CreateProtocol("VELK");
    EXPECT_NE(protocol, nullptr);
    factory->DeleteProtocol(protocol);
}

/** A factory that cannot close the port, the first time. */
class TroubledSerialFactory : public velktest::FakeSerialFactory {
public:
    void (*trouble)() = nullptr;

    void ReleasePort(ISerialPort* given) override {
        FakeSerialFactory::ReleasePort(given);
        if (auto* const now = std::exchange(trouble, nullptr); now != nullptr) {
            now();
        }
    }
};

TEST_F(ProtocolFactoryTest, DeletingAnInstanceOutlivesAHostThatThrowsWhenItClosesThePort) {
    velktest::ScriptedPort port;
    TroubledSerialFactory serial;
    serial.port = &port;
    auto* const service = std::exchange(piSerialFactory, &serial);
    IProtocol* const protocol = factory->CreateProtocol("VELK");
    piSerialFactory = service;
    ASSERT_TRUE(protocol->Config(velktest::ConfigText().Build().c_str()));
    ASSERT_TRUE(protocol->Start());
    serial.trouble = [] { throw std::runtime_error("cannot close"); };
    factory->DeleteProtocol(protocol);
    ASSERT_FALSE(serial.released.empty());
    EXPECT_EQ(serial.released.front(), &port);
}

TEST_F(ProtocolFactoryTest, InstanceIsStillThereAfterAThreadWasCancelledInItsDeletion) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    velktest::ScriptedPort port;
    TroubledSerialFactory serial;
    serial.port = &port;
    auto* const service = std::exchange(piSerialFactory, &serial);
    IProtocol* const protocol = factory->CreateProtocol("VELK");
    piSerialFactory = service;
    ASSERT_TRUE(protocol->Config(velktest::ConfigText().Build().c_str()));
    ASSERT_TRUE(protocol->Start());
    serial.trouble = velktest::CancelThisThread;
    EXPECT_TRUE(velktest::IsCancelledIn([&] { factory->DeleteProtocol(protocol); }));
    EXPECT_STREQ(protocol->GetName(), "VELK");
    factory->DeleteProtocol(protocol);
}

TEST_F(ProtocolFactoryTest, DeletingAnInstanceGivesAllItsMemoryBack) {
    std::string const config = velktest::ConfigText().Node(1, "prefix", "a_name_too_long_to_be_kept_inline").Build();
    velktest::AllocationGate const gate;
    IProtocol* const protocol = factory->CreateProtocol("VELK");
    ASSERT_TRUE(protocol->Config(config.c_str()));
    for (int i = 0; i < 10; ++i) {
        ASSERT_NE(protocol->CreateTag("1?PLC_PRG.Counter?M?0?int(swap2,bcd)"), nullptr);
    }
    EXPECT_EQ(protocol->CreateTag("not a tag address at all"), nullptr);
    factory->DeleteProtocol(protocol);
    EXPECT_GT(velktest::AllocationGate::Seen(), 11U);
    EXPECT_EQ(velktest::AllocationGate::Seen(), velktest::AllocationGate::Freed());
}

} // namespace
