#include "interfaces/HostServices.h"
#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ITag.h"
#include "interfaces/ModuleEntry.h"
#include "tests/module/LoadedModule.h"
#include "tests/support/Cancellation.h"
#include "tests/support/ConfigText.h"
#include "tests/support/Conversation.h"
#include "tests/support/FakeHost.h"
#include "tests/support/ScriptedPort.h"
#include "tests/support/SymbolFileBytes.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

/** A host that uses only the interfaces' headers and the built module. */
namespace {

using namespace velktest;
using Names = std::vector<std::string>;

class ModuleTest : public ::testing::Test {
protected:
    void SetUp() override {
        host.serial.port = &port;
        host.storage.directory = dir.Path();
        auto const entry = reinterpret_cast<GetInterfaceFactoryFunction>(library.Symbol(kModuleEntryName));
        ASSERT_NE(entry, nullptr);
        factory = entry();
        ASSERT_NE(factory, nullptr);
        module = static_cast<IProtModule*>(factory->CreateInterface("IProtModule"));
        protocols = static_cast<IProtocolFactory*>(factory->CreateInterface("IProtocolFactory"));
        ASSERT_NE(module, nullptr);
        ASSERT_NE(protocols, nullptr);
    }

    IProtocol3* Protocol() {
        auto* const protocol = static_cast<IProtocol3*>(protocols->CreateProtocol("VELK"));
        EXPECT_NE(protocol, nullptr);
        return protocol;
    }

    FakeHost host;
    TempDir dir;
    ScriptedPort port;
    LoadedModule library;
    IInterfaceFactory* factory = nullptr;
    IProtModule* module = nullptr;
    IProtocolFactory* protocols = nullptr;
};

TEST_F(ModuleTest, FreshModuleHasNoError) {
    EXPECT_STREQ(module->GetLastError(), "");
}

TEST_F(ModuleTest, ServicesAreReleasedWhenAnInitialisedModuleIsUnloaded) {
    ASSERT_TRUE(module->Init(&host));
    ASSERT_TRUE(module->Init(&host));
    module->Close();
    EXPECT_TRUE(host.Logged("release").empty());
    library.Unload();
    EXPECT_EQ(host.Logged("release"), (Names{"IFastTimer", "ISmux", "IDriverInterface", "IDiag", "IPermanentStorage",
                                             "IMultiTask2", "ISerialFactory", "ISocketFactory", "ICDSBuffer"}));
}

TEST_F(ModuleTest, ServicesAreReleasedAtUnloadingHoweverOftenTheModuleWasInitialised) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(module->Init(&host));
    }
    library.Unload();
    EXPECT_EQ(host.Logged("release"), (Names{"IFastTimer", "ISmux", "IDriverInterface", "IDiag", "IPermanentStorage",
                                             "IMultiTask2", "ISerialFactory", "ISocketFactory", "ICDSBuffer"}));
}

/** A host whose thread is cancelled while it creates a service. */
class CancelledHost final : public IInterfaceFactory {
public:
    IInterface* CreateInterface(char const* /*name*/) override {
        CancelThisThread();
        return nullptr;
    }
    void ReleaseInterface(IInterface* /*object*/) override {}
};

TEST_F(ModuleTest, CancelledThreadUnwindsOutOfTheModule) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    CancelledHost cancelled;
    EXPECT_TRUE(IsCancelledIn([&] { module->Init(&cancelled); }));
    EXPECT_TRUE(module->Init(&host));
}

TEST_F(ModuleTest, ClosedModuleIsUnloadedWithoutAWord) {
    ASSERT_TRUE(module->Init(&host));
    module->Close();
    host.log.clear();
    library.Unload();
    EXPECT_TRUE(host.log.empty());
}

TEST_F(ModuleTest, NeverInitialisedModuleIsUnloadedWithoutAWord) {
    library.Unload();
    EXPECT_TRUE(host.log.empty());
}

TEST_F(ModuleTest, WholeLifeOfADriver) {
    ASSERT_TRUE(module->Init(&host)) << module->GetLastError();
    IProtocol3* const protocol = Protocol();
    EXPECT_EQ(protocol->ConvertTo("IProtocol3"), protocol);
    EXPECT_EQ(protocol->GetLastError(), 1);
    ASSERT_TRUE(protocol->Config(ConfigText().Set("uart", "com4").Build().c_str())) << protocol->GetLastErrorString();
    ASSERT_TRUE(protocol->Start());
    EXPECT_EQ(host.serial.created, (Names{"com4"}));

    ITag* const number = protocol->CreateTag("1?PLC_PRG/Number?M?0?int");
    ITag* const text = protocol->CreateTag("1?PLC_PRG/Text?M?0?string-5");
    ITag* const flag = protocol->CreateTag("1?PLC_PRG/Flag?MB?0?boolean");
    ITag const* const tags[] = {number, text, flag};
    EXPECT_TRUE(protocol->CanAddToDatagram(tags, 2, flag));

    Bytes const file = SymbolFileBytes(7)
                           .Variable("PLC_PRG.Number", 0, 16)
                           .Variable("PLC_PRG.Text", 1, 32)
                           .Variable("PLC_PRG.Flag", 0, 13)
                           .Build();
    std::string const items[] = {"00 00 10 00 00 00 04 00 00 00", "01 00 20 00 00 00 05 00 00 00",
                                 "00 00 0D 00 00 00 00 00 00 00"};
    Conversation line(port, {});
    line.LinkCheck().Login().Upload(file).Exchange(
        Hex("2E 00 | 03 00 00 00" + items[0] + items[1] + items[2] + "07 00 00 00"),
        Hex("00 00 | 00 00 00 00 | 01 78 56 34 12 | 01 48 45 4C 4C 4F | 01 20"));
    Bytes values(10);
    idal_error_t status[3] = {};
    EXPECT_TRUE(protocol->ReadDatagramWithStatus(tags, 3, values.data(), status)) << protocol->GetLastErrorString();
    EXPECT_EQ(values, Hex("78 56 34 12 | 48 45 4C 4C 4F | 01"));
    EXPECT_EQ(status[0], kItemGood);
    EXPECT_EQ(status[2], kItemGood);
    EXPECT_EQ(dir.Get("PLCSymbols_1.sdb"), file);
    EXPECT_GT(host.scheduler.yields, 0);

    line.LinkCheck().Exchange(Hex("3C 00 | 02 00 00 00" + items[0] + "01 02 03 04" + items[2] + "20 | 07 00 00 00"),
                              Hex("00 00"));
    ITag const* const written[] = {number, flag};
    EXPECT_TRUE(protocol->WriteDatagramWithStatus(written, 2, Hex("01 02 03 04 01").data(), status))
        << protocol->GetLastErrorString();

    line.LinkCheck().Exchange(Hex("2E 00 | 01 00 00 00" + items[1] + "07 00 00 00"),
                              Hex("00 00 | 00 00 00 00 | 01 57 4F 52 4C 44"));
    Bytes word(5);
    EXPECT_TRUE(protocol->Read(text, word.data()));
    EXPECT_EQ(word, Text("WORLD"));

    line.DeadLinkCheck();
    EXPECT_FALSE(protocol->Read(text, word.data()));
    EXPECT_EQ(protocol->GetLastError(), -4);
    EXPECT_STREQ(protocol->GetLastErrorString(), "Timeout on Acknowledge");

    protocol->FreeTag(text);
    EXPECT_TRUE(protocol->Stop());
    EXPECT_EQ(host.serial.released.size(), 1U);
    protocols->DeleteProtocol(protocol);
    module->Close();
    port.ExpectDone();
}

/** Hands out a port for each name. */
class TwoPorts : public FakeSerialFactory {
public:
    std::map<std::string, ISerialPort*> ports;

    ISerialPort* CreatePort(char const* name) override {
        FakeSerialFactory::CreatePort(name);
        return ports[name];
    }
};

class TwoPortHost final : public IInterfaceFactory {
public:
    TwoPorts serial;
    FakeHost rest;

    IInterface* CreateInterface(char const* name) override {
        return std::strcmp(name, "ISerialFactory") == 0 ? &serial : rest.CreateInterface(name);
    }
    void ReleaseInterface(IInterface* object) override {
        if (object != &serial) {
            rest.ReleaseInterface(object);
        }
    }
};

TEST_F(ModuleTest, TwoDriversOnTwoLinesTakeTurns) {
    TwoPortHost both;
    ScriptedPort second;
    both.serial.ports = {{"com1", &port}, {"com2", &second}};
    both.rest.storage.directory = dir.Path();
    ASSERT_TRUE(module->Init(&both));
    IProtocol3* const one = Protocol();
    IProtocol3* const two = Protocol();
    ASSERT_TRUE(one->Config(ConfigText().Set("uart", "com1").Build().c_str()));
    ASSERT_TRUE(two->Config(ConfigText().Set("uart", "com2").Set("model", "Motorola").Build().c_str()));
    ASSERT_TRUE(one->Start());
    ASSERT_TRUE(two->Start());
    one->CreateTag("1?ID?PROJ_ID?7?unsignedInt");
    two->CreateTag("1?ID?PROJ_ID?9?unsignedInt");
    ITag* const oneTag = one->CreateTag("1?A?M?16?short");
    ITag* const twoTag = two->CreateTag("1?A?M?16?short");
    Conversation lineOne(port, {});
    Conversation lineTwo(second, {.bigEndian = true});
    lineOne.LinkCheck().Login();
    lineTwo.LinkCheck().Login();
    Bytes value(2);
    for (int turn = 0; turn < 3; ++turn) {
        lineOne.Exchange(Hex("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 07 00 00 00"),
                         Hex("00 00 | 00 00 00 00 | 01 34 12"));
        lineTwo.Exchange(Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 00 02 | 00 00 00 09"),
                         Hex("00 00 | 00 00 00 00 | 01 56 78"));
        EXPECT_TRUE(one->Read(oneTag, value.data())) << one->GetLastErrorString();
        EXPECT_EQ(value, Hex("34 12"));
        EXPECT_TRUE(two->Read(twoTag, value.data())) << two->GetLastErrorString();
        EXPECT_EQ(value, Hex("78 56"));
        lineOne.LinkCheck();
        lineTwo.LinkCheck();
    }
    port.Forget();
    second.Forget();
    protocols->DeleteProtocol(one);
    EXPECT_FALSE(two->Config("nonsense"));
    protocols->DeleteProtocol(two);
    module->Close();
    EXPECT_EQ(both.serial.released, (std::vector<ISerialPort*>{&port, &second}));
}

} // namespace
