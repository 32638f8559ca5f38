#include "host/instance/ModuleLoader.h"

#include "interfaces/IInterface.h"
#include "interfaces/IInterfaceFactory.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>

namespace hosttest {
namespace {

std::string refusal(std::filesystem::path const& file) {
    auto const loaded = host::LoadedModule::load(file);
    return loaded.ok() ? "loaded" : loaded.failure().text;
}

TEST(ModuleLoader, GivesTheModulesFactory) {
    auto loaded = host::LoadedModule::load(HOST_TEST_MODULE);
    ASSERT_TRUE(loaded.ok()) << loaded.failure().text;
    host::LoadedModule module = std::move(loaded.value());
    IInterface* const service = module.factory().CreateInterface("Greeting");
    ASSERT_NE(service, nullptr);
    EXPECT_STREQ(service->GetImpName(), "a module of the tests");
    EXPECT_EQ(module.factory().CreateInterface("Other"), nullptr);
}

TEST(ModuleLoader, AModuleCanBeLoadedAgain) {
    { ASSERT_TRUE(host::LoadedModule::load(HOST_TEST_MODULE).ok()); }
    EXPECT_TRUE(host::LoadedModule::load(HOST_TEST_MODULE).ok());
}

TEST(ModuleLoader, ANameWithoutAFolderIsAFileHere) {
    std::filesystem::path const file = HOST_TEST_MODULE;
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(file.parent_path());
    EXPECT_EQ(refusal(file.filename()), "loaded");
    std::filesystem::current_path(before);
}

TEST(ModuleLoader, AMissingFileIsNamed) {
    EXPECT_EQ(refusal("/velk-no-such-module.so"), "there is no driver module /velk-no-such-module.so");
    EXPECT_EQ(refusal(""), "there is no driver module ");
}

TEST(ModuleLoader, AFileThatIsNoLibraryIsNamed) {
    velktest::TempDir const folder;
    std::filesystem::path const file = folder.Path("module.so");
    std::ofstream(file) << "not a library";
    EXPECT_EQ(refusal(file).find("the driver module " + file.string() + " cannot be loaded: "), 0U) << refusal(file);
}

TEST(ModuleLoader, ALibraryWithoutTheEntryPointIsNoModule) {
    std::string const file = HOST_TEST_LIBRARY;
    EXPECT_EQ(refusal(file), file + " is not a driver module: it has no function GetInterfaceFactory");
}

TEST(ModuleLoader, AModuleWithoutAFactoryIsRefused) {
    std::string const file = HOST_TEST_EMPTY_MODULE;
    EXPECT_EQ(refusal(file), "the driver module " + file + " gives no interface factory");
}

} // namespace
} // namespace hosttest
