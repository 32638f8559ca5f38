#include "base/WholeFile.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <thread>

namespace {

using base::readWholeFile;

TEST(ReadWholeFile, AnswersEveryByte) {
    velktest::TempDir const folder;
    std::string const content = std::string(200'000, 'x') + '\0' + "end";
    std::ofstream(folder.Path("file"), std::ios::binary) << content;
    base::Result<std::string> const read = readWholeFile(folder.Path("file"), content.size());
    ASSERT_TRUE(read.ok()) << read.failure().text;
    EXPECT_EQ(read.value(), content);
}

TEST(ReadWholeFile, RefusesAByteTooMany) {
    velktest::TempDir const folder;
    std::ofstream(folder.Path("file")) << "12345";
    EXPECT_TRUE(readWholeFile(folder.Path("file"), 5).ok());
    EXPECT_EQ(readWholeFile(folder.Path("file"), 4).failure().text, "it is larger than 4 bytes");
}

TEST(ReadWholeFile, ReadsAPipeToItsEndButNotWithoutEnd) {
    velktest::TempDir const folder;
    std::string const pipe = folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (std::size_t const most : {5U, 4U}) {
        std::thread writer([&] { std::ofstream(pipe) << "12345"; });
        base::Result<std::string> const read = readWholeFile(pipe, most);
        writer.join();
        EXPECT_EQ(read.ok() ? read.value() : read.failure().text, most == 5 ? "12345" : "it is larger than 4 bytes");
    }
}

TEST(ReadWholeFile, TellsThreeThingsApart) {
    velktest::TempDir const folder;
    EXPECT_EQ(readWholeFile(folder.Path("none"), 5).failure().text, "No such file or directory");
    EXPECT_EQ(readWholeFile(folder.Path(), 5).failure().text, "it is a directory");
    EXPECT_EQ(readWholeFile("/dev/zero", 5).failure().text, "it is a device, not a file");
}

} // namespace
