#include "host/instance/DriverInstance.h"

#include "host/services/HostFactory.h"
#include "interfaces/IInterfaceFactory.h"
#include "interfaces/IProtModule.h"
#include "interfaces/IProtocolFactory.h"
#include "tests/host/FakeProtocol.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace hosttest {
namespace {

using Calls = std::vector<std::string>;

/** A module that records every call. */
class FakeModule final : public IInterfaceFactory { // NOLINT(cppcoreguidelines-virtual-class-destructor)
public:
    IInterface* CreateInterface(char const* name) override {
        std::string const wanted = name;
        if (wanted == "IProtModule" && hasModule) {
            return &module;
        }
        return wanted == "IProtocolFactory" && hasFactory ? &factory : nullptr;
    }
    void ReleaseInterface(IInterface* /*object*/) override {}

    Calls calls;
    bool hasModule = true;
    bool hasFactory = true;
    bool initWorks = true;
    bool memoryIsOut = false;
    std::unique_ptr<FakeProtocol> protocol;

private:
    struct Module final : IProtModule {
        explicit Module(FakeModule& fake) : owner(fake) {}
        IInterface* ConvertTo(char const*) override { return nullptr; }
        char const* GetImpName() const override { return "ProtModule"; }
        int GetImpVersion() const override { return 100; }
        bool Init(IInterfaceFactory*) override {
            owner.calls.emplace_back("Init");
            return owner.initWorks;
        }
        void Close() override { owner.calls.emplace_back("Close"); }
        char const* GetLastError() const override { return "ICDSBuffer not created"; }
        FakeModule& owner;
    };
    struct Factory final : IProtocolFactory {
        explicit Factory(FakeModule& fake) : owner(fake) {}
        IInterface* ConvertTo(char const*) override { return nullptr; }
        char const* GetImpName() const override { return "ProtFactory"; }
        int GetImpVersion() const override { return 100; }
        IProtocol* CreateProtocol(char const* name) override {
            owner.calls.push_back(std::string("CreateProtocol ") + name);
            if (owner.memoryIsOut) {
                throw std::bad_alloc();
            }
            if (std::string(name) != "VELK") {
                return nullptr;
            }
            owner.protocol = std::make_unique<FakeProtocol>();
            return owner.protocol.get();
        }
        void DeleteProtocol(IProtocol* protocol) override {
            EXPECT_EQ(protocol, owner.protocol.get());
            owner.calls.insert(owner.calls.end(), owner.protocol->calls.begin(), owner.protocol->calls.end());
            owner.calls.emplace_back("DeleteProtocol");
            owner.protocol.reset();
        }
        FakeModule& owner;
    };

    Module module{*this};
    Factory factory{*this};
};

class NoServices final : public IInterfaceFactory { // NOLINT(cppcoreguidelines-virtual-class-destructor)
public:
    IInterface* CreateInterface(char const*) override { return nullptr; }
    void ReleaseInterface(IInterface*) override {}
};

class DriverInstance : public testing::Test {
protected:
    std::string refusal(char const* driver = "VELK") {
        auto const created = host::DriverInstance::create(module, services, driver);
        return created.ok() ? "created" : created.failure().text;
    }

    FakeModule module;
    NoServices services;
};

TEST_F(DriverInstance, EverythingIsUndoneInTheOppositeOrder) {
    {
        auto created = host::DriverInstance::create(module, services);
        ASSERT_TRUE(created.ok());
        host::DriverInstance instance = std::move(created.value());
        instance.setIdent("press");
        EXPECT_EQ(module.protocol->ident, "press");
        EXPECT_TRUE(instance.configure("CfgVer=1 uart=com1").ok());
        EXPECT_TRUE(instance.start().ok());
        auto const tag = instance.createTag("1?x?M?0?int");
        ASSERT_TRUE(tag.ok());
        EXPECT_STREQ(tag.value()->GetVarName(), "1?x?M?0?int");
        instance.freeTag(tag.value());
    }
    EXPECT_EQ(module.calls, (Calls{"Init", "CreateProtocol VELK", "Config CfgVer=1 uart=com1", "Start",
                                   "CreateTag 1?x?M?0?int", "FreeTag", "Stop", "DeleteProtocol", "Close"}));
}

TEST_F(DriverInstance, FailuresCarryTheDriversCodeAndText) {
    auto created = host::DriverInstance::create(module, services);
    ASSERT_TRUE(created.ok());
    auto& instance = created.value();
    module.protocol->works = false;
    auto const configured = instance.configure("x");
    ASSERT_FALSE(configured.ok());
    EXPECT_EQ(configured.failure().driverCode, -3);
    EXPECT_EQ(configured.failure().kind, base::FailureKind::NotPossible);
    EXPECT_EQ(configured.failure().text, "refused by the test");
    EXPECT_FALSE(instance.start().ok());
    EXPECT_FALSE(instance.stop().ok());
    auto const tag = instance.createTag("bad");
    ASSERT_FALSE(tag.ok());
    EXPECT_EQ(tag.failure().driverCode, -1);
    EXPECT_EQ(tag.failure().kind, base::FailureKind::Request);
    EXPECT_EQ(tag.failure().text, "Tag URI error: bad");
    module.protocol->works = true;
    EXPECT_TRUE(instance.stop().ok());
    EXPECT_EQ(&instance.protocol(), module.protocol.get());
}

TEST_F(DriverInstance, AMissingServiceIsToldInTheModulesWords) {
    module.initWorks = false;
    EXPECT_EQ(refusal(), "the driver module cannot be initialised: ICDSBuffer not created");
    EXPECT_EQ(module.calls, (Calls{"Init"})) << "a failed Init has no Close";
}

TEST_F(DriverInstance, AnUnknownDriverClosesTheModuleAgain) {
    EXPECT_EQ(refusal("OTHER"), "the driver module has no driver 'OTHER'");
    EXPECT_EQ(module.calls, (Calls{"Init", "CreateProtocol OTHER", "Close"}));
}

TEST_F(DriverInstance, TheOneExceptionOfAModuleBecomesAFailure) {
    module.memoryIsOut = true;
    EXPECT_EQ(refusal().find("the driver 'VELK' cannot be created: "), 0U) << refusal();
    EXPECT_EQ(module.calls.back(), "Close");
}

TEST_F(DriverInstance, AModuleWithoutItsObjectsIsRefused) {
    module.hasFactory = false;
    EXPECT_EQ(refusal(), "the driver module has no IProtocolFactory");
    module.hasModule = false;
    EXPECT_EQ(refusal(), "the driver module has no IProtModule");
}

} // namespace
} // namespace hosttest
