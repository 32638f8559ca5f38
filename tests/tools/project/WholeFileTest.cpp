#include "tools/velk/project/WholeFile.h"

#include "base/WholeFile.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

namespace {

using testing::ElementsAre;
using velk::writeWholeFile;

std::string content(std::string const& file) {
    return base::readWholeFile(file, 1'000'000).value();
}

/** The names in a folder. */
std::vector<std::string> namesIn(std::string const& folder) {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

/** While it lives no file grows beyond so many bytes, as on a full disk. */
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit const small{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST(WriteWholeFile, WritesEveryByteAndLeavesNothingElse) {
    velktest::TempDir const folder;
    std::string const text = std::string(300'000, 'x') + '\0' + "end";
    ASSERT_TRUE(writeWholeFile(folder.Path("file"), text, false).ok());
    EXPECT_EQ(content(folder.Path("file")), text);
    EXPECT_THAT(namesIn(folder.Path()), ElementsAre("file"));
}

TEST(WriteWholeFile, AFileThatIsThereStaysUnlessItIsToBeReplaced) {
    velktest::TempDir const folder;
    std::string const file = folder.Path("file");
    ASSERT_TRUE(writeWholeFile(file, "old and longer", false).ok());
    EXPECT_EQ(writeWholeFile(file, "new", false).failure().kind, base::FailureKind::FileExists);
    EXPECT_EQ(content(file), "old and longer");
    EXPECT_TRUE(writeWholeFile(file, "new", true).ok());
    EXPECT_EQ(content(file), "new");
    EXPECT_THAT(namesIn(folder.Path()), ElementsAre("file"));
}

TEST(WriteWholeFile, ALinkThatLeadsNowhereIsAFileThatIsThere) {
    velktest::TempDir const folder;
    std::filesystem::create_symlink("nowhere", folder.Path("file"));
    EXPECT_EQ(writeWholeFile(folder.Path("file"), "new", false).failure().kind, base::FailureKind::FileExists)
        << "nothing sees it before the name is taken";
    EXPECT_THAT(namesIn(folder.Path()), ElementsAre("file"));
}

TEST(WriteWholeFile, OnAFullDiskNothingIsLeftAndTheOldFileStays) {
    velktest::TempDir const folder;
    std::string const text(1000, 'x');
    ASSERT_TRUE(writeWholeFile(folder.Path("old"), "old", false).ok());
    FullDisk const disk(100);
    EXPECT_EQ(writeWholeFile(folder.Path("new"), text, false).failure().text, "File too large");
    EXPECT_EQ(writeWholeFile(folder.Path("old"), text, true).failure().text, "File too large");
    EXPECT_EQ(content(folder.Path("old")), "old");
    EXPECT_THAT(namesIn(folder.Path()), ElementsAre("old"));
}

TEST(WriteWholeFile, AReplacedFileKeepsItsPermissionsAndTheLinksToIt) {
    velktest::TempDir const folder;
    ASSERT_TRUE(writeWholeFile(folder.Path("file"), "old", false).ok());
    using std::filesystem::perms;
    std::filesystem::permissions(folder.Path("file"), perms::owner_read | perms::owner_write);
    std::filesystem::create_symlink("file", folder.Path("link"));
    ASSERT_TRUE(writeWholeFile(folder.Path("link"), "new", true).ok());
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
    EXPECT_EQ(content(folder.Path("file")), "new");
    EXPECT_EQ(std::filesystem::status(folder.Path("file")).permissions(), perms::owner_read | perms::owner_write);
}

TEST(WriteWholeFile, WhatIsNoFileIsNotReplaced) {
    velktest::TempDir const folder;
    std::string const pipe = folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(writeWholeFile(pipe, "new", true).failure().text, "it is a device, not a file");
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_EQ(writeWholeFile(folder.Path(), "new", true).failure().text, "it is a directory");
    EXPECT_EQ(writeWholeFile(folder.Path("none/file"), "new", true).failure().text, "No such file or directory");
}

} // namespace
