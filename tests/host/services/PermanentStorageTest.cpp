#include "host/services/PermanentStorage.h"

#include "tests/host/Unprivileged.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>

namespace hosttest {
namespace {

namespace fs = std::filesystem;

TEST(InstanceFolder, KeepsOrdinaryNames) {
    EXPECT_EQ(host::instanceFolder("VELK"), "VELK");
    EXPECT_EQ(host::instanceFolder("line-2_press.v1"), "line-2_press.v1");
}

TEST(InstanceFolder, NeverLeavesTheDirectory) {
    EXPECT_EQ(host::instanceFolder(".."), "%2E.");
    EXPECT_EQ(host::instanceFolder("."), "%2E");
    EXPECT_EQ(host::instanceFolder("../../etc"), "%2E.%2F..%2Fetc");
    EXPECT_EQ(host::instanceFolder("/etc"), "%2Fetc");
    EXPECT_EQ(host::instanceFolder(""), std::nullopt);
    EXPECT_EQ(host::instanceFolder(std::string(256, 'a')), std::nullopt);
    EXPECT_EQ(host::instanceFolder(std::string(100, '/')), std::nullopt) << "300 bytes when written out";
}

TEST(InstanceFolder, DifferentInstancesNeverShareAFolder) {
    EXPECT_EQ(host::instanceFolder("a b"), "a%20b");
    EXPECT_EQ(host::instanceFolder("a_b"), "a_b");
    EXPECT_EQ(host::instanceFolder("a%20b"), "a%2520b");
    EXPECT_EQ(host::instanceFolder("\xC3\xA4"), "%C3%A4");
}

TEST(PlainFileName, RefusesEverythingWithAPath) {
    EXPECT_TRUE(host::isPlainFileName("PLCSymbols_1.sdb"));
    for (char const* const name : {"", ".", "..", "../x", "a/b", "/x"}) {
        EXPECT_FALSE(host::isPlainFileName(name)) << name;
    }
}

class PermanentStorage : public testing::Test {
protected:
    IPermanentStorage2* paths() { return static_cast<IPermanentStorage2*>(storage.ConvertTo("IPermanentStorage2")); }
    std::string path(char const* instance, char const* name) {
        bool const found = paths()->GetFullPath(instance, name, buffer.data(), static_cast<int>(buffer.size()));
        return found ? buffer.data() : "none";
    }

    velktest::TempDir temp;
    fs::path root = temp.Path("state/velk");
    host::PermanentStorage storage{root};
    std::array<char, 260> buffer{};
};

TEST_F(PermanentStorage, GivesEveryInstanceAFolderAndMakesIt) {
    EXPECT_FALSE(fs::exists(root));
    EXPECT_EQ(path("VELK", "PLCSymbols_1.sdb"), (root / "VELK" / "PLCSymbols_1.sdb").string());
    EXPECT_TRUE(fs::is_directory(root / "VELK"));
    EXPECT_FALSE(fs::exists(root / "VELK" / "PLCSymbols_1.sdb")) << "the file is the driver's to write";
    EXPECT_EQ(path("VELK", "PLCSymbols_2.sdb"), (root / "VELK" / "PLCSymbols_2.sdb").string());
    EXPECT_EQ(path("press", "PLCSymbols_1.sdb"), (root / "press" / "PLCSymbols_1.sdb").string());
}

TEST_F(PermanentStorage, APathOutOfTheDirectoryIsNotGiven) {
    EXPECT_EQ(path("../..", "x"), (root / "%2E.%2F.." / "x").string());
    EXPECT_EQ(path("VELK", "../x"), "none");
    EXPECT_EQ(path("VELK", ".."), "none");
    EXPECT_EQ(path("", "x"), "none");
    EXPECT_EQ(path(nullptr, "x"), "none");
    EXPECT_EQ(path("VELK", nullptr), "none");
    EXPECT_FALSE(fs::exists(temp.Path("x")));
}

TEST_F(PermanentStorage, ThePathWithItsZeroFitsTheSizeOrIsNotGiven) {
    std::string const full = (root / "VELK" / "x.sdb").string();
    int const exact = static_cast<int>(full.size()) + 1;
    std::array<char, 260> guarded{};
    guarded.fill('#');
    ASSERT_TRUE(paths()->GetFullPath("VELK", "x.sdb", guarded.data(), exact));
    EXPECT_STREQ(guarded.data(), full.c_str());
    EXPECT_EQ(guarded.at(full.size() + 1), '#') << "nothing behind the zero";
    guarded.fill('#');
    EXPECT_FALSE(paths()->GetFullPath("VELK", "x.sdb", guarded.data(), exact - 1));
    EXPECT_EQ(guarded[0], '\0');
    EXPECT_EQ(guarded[1], '#');
    EXPECT_FALSE(paths()->GetFullPath("VELK", "x.sdb", guarded.data(), 0));
    EXPECT_FALSE(paths()->GetFullPath("VELK", "x.sdb", guarded.data(), -1));
    EXPECT_FALSE(paths()->GetFullPath("VELK", "x.sdb", nullptr, 260));
}

TEST_F(PermanentStorage, WithoutADirectoryThereIsNoPath) {
    fs::create_directories(root.parent_path());
    std::ofstream(root) << "a file where the directory should be";
    EXPECT_EQ(path("VELK", "x"), "none");
    auto const prepared = storage.prepare("VELK");
    ASSERT_FALSE(prepared.ok());
    EXPECT_EQ(prepared.failure().text,
              "the directory " + (root / "VELK").string() + " cannot be made: Not a directory");
}

TEST_F(PermanentStorage, PathsDoNotDependOnTheWorkingDirectory) {
    fs::path const before = fs::current_path();
    fs::current_path(temp.Path());
    host::PermanentStorage relative("here");
    fs::current_path(before);
    EXPECT_TRUE(relative.prepare("VELK").ok());
    EXPECT_TRUE(fs::is_directory(temp.Path("here/VELK")));
}

TEST_F(PermanentStorage, NoDirectoryGivesNoPath) {
    host::PermanentStorage nowhere("");
    auto const prepared = nowhere.prepare("VELK");
    ASSERT_FALSE(prepared.ok());
    EXPECT_EQ(prepared.failure().text, "no directory is given to keep files in");
    auto* const service = static_cast<IPermanentStorage2*>(nowhere.ConvertTo("IPermanentStorage2"));
    EXPECT_FALSE(service->GetFullPath("VELK", "x", buffer.data(), 260));
}

TEST_F(PermanentStorage, PrepareTellsWhenNothingCanBeWritten) {
    EXPECT_TRUE(storage.prepare("VELK").ok());
    EXPECT_FALSE(storage.prepare("").ok());
    fs::permissions(temp.Path(), fs::perms::all);
    fs::permissions(root / "VELK", fs::perms::owner_read | fs::perms::others_read | fs::perms::others_exec);
    std::string text;
    {
        Unprivileged const nobody;
        auto const prepared = storage.prepare("VELK");
        ASSERT_FALSE(prepared.ok());
        text = prepared.failure().text;
    }
    fs::permissions(root / "VELK", fs::perms::owner_all);
    EXPECT_NE(text.find("no files can be written in " + (root / "VELK").string()), std::string::npos) << text;
}

TEST_F(PermanentStorage, TheTwoInterfacesAreReachedByName) {
    EXPECT_EQ(storage.ConvertTo("IPermanentStorage"), &storage);
    EXPECT_NE(storage.ConvertTo("IPermanentStorage2"), nullptr);
    EXPECT_EQ(storage.ConvertTo("IPermanentStorage3"), nullptr);
    EXPECT_EQ(storage.ConvertTo(nullptr), nullptr);
    EXPECT_STREQ(storage.GetImpName(), "PermanentStorage");
    EXPECT_EQ(paths()->ConvertTo("IPermanentStorage2"), paths());
}

} // namespace
} // namespace hosttest
