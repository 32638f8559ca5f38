#include "interfaces/IProtModule.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ModuleEntry.h"

#include <gtest/gtest.h>

#include <string>

extern "C" IInterfaceFactory* GetInterfaceFactory();

namespace {

IInterface* Create(char const* name) {
    return GetInterfaceFactory()->CreateInterface(name);
}

TEST(EntryPoint, AlwaysAnswersTheSameFactory) {
    ASSERT_NE(GetInterfaceFactory(), nullptr);
    EXPECT_EQ(GetInterfaceFactory(), GetInterfaceFactory());
    GetInterfaceFactoryFunction const entry = &GetInterfaceFactory;
    EXPECT_EQ(entry(), GetInterfaceFactory());
    EXPECT_STREQ(kModuleEntryName, "GetInterfaceFactory");
}

TEST(InterfaceFactory, HandsOutTheSameProtocolFactoryUnderBothNames) {
    IInterface* const factory = Create("IProtocolFactory");
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(Create("ProtocolFactory"), factory);
    EXPECT_EQ(Create("IProtocolFactory"), factory);
    EXPECT_STREQ(factory->GetImpName(), "ProtFactoryInDLL");
    EXPECT_EQ(factory->GetImpVersion(), 100);
}

TEST(InterfaceFactory, HandsOutTheSameModuleUnderBothNames) {
    IInterface* const module = Create("IProtModule");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Create("ProtModule"), module);
    EXPECT_EQ(Create("IProtModule"), module);
    EXPECT_NE(module, Create("IProtocolFactory"));
    EXPECT_STREQ(module->GetImpName(), "ProtModule");
    EXPECT_EQ(module->GetImpVersion(), 100);
}

TEST(InterfaceFactory, NamesAreComparedByteForByte) {
    for (char const* name : {"iprotmodule", "IPROTMODULE", "IProtModule ", " IProtModule", "IProtModul", "IProtModule2",
                             "protocolfactory", "IProtocolFactory ", "", "VELK", "IInterface"}) {
        EXPECT_EQ(Create(name), nullptr) << "'" << name << "'";
    }
}

TEST(InterfaceFactory, ImplementationNameIsNoInterfaceName) {
    EXPECT_EQ(Create("ProtFactoryInDLL"), nullptr);
}

TEST(InterfaceFactory, ReleaseDoesNothing) {
    IInterface* const module = Create("IProtModule");
    GetInterfaceFactory()->ReleaseInterface(module);
    GetInterfaceFactory()->ReleaseInterface(module);
    GetInterfaceFactory()->ReleaseInterface(nullptr);
    EXPECT_EQ(Create("IProtModule"), module);
    EXPECT_STREQ(module->GetImpName(), "ProtModule");
}

TEST(InterfaceFactory, ModuleConvertsToItselfOnly) {
    IInterface* const module = Create("IProtModule");
    EXPECT_EQ(module->ConvertTo("ProtModule"), module);
    EXPECT_EQ(module->ConvertTo("IProtModule"), module);
    for (char const* name : {"IInterface", "protmodule", "IProtModule ", "IProtocolFactory", ""}) {
        EXPECT_EQ(module->ConvertTo(name), nullptr) << "'" << name << "'";
    }
}

TEST(InterfaceFactory, ProtocolFactoryConvertsToItselfOnly) {
    IInterface* const factory = Create("IProtocolFactory");
    EXPECT_EQ(factory->ConvertTo("ProtocolFactory"), factory);
    EXPECT_EQ(factory->ConvertTo("IProtocolFactory"), factory);
    for (char const* name :
         {"IInterface", "ProtFactoryInDLL", "iprotocolfactory", "IProtocolFactory ", "IProtModule"}) {
        EXPECT_EQ(factory->ConvertTo(name), nullptr) << "'" << name << "'";
    }
}

} // namespace
