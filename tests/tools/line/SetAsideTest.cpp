#include "tools/velk/line/SetAside.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

namespace {

using velk::SetAside;
using velktest::Bytes;
using velktest::TempDir;

class SetAsideTest : public testing::Test {
protected:
    [[nodiscard]] std::filesystem::path file() const { return std::filesystem::path(dir.Path()) / "a.sdb"; }

    TempDir dir;
    Bytes const before{1, 2, 3};
    Bytes const after{4, 5};
};

TEST_F(SetAsideTest, TheFileIsOutOfTheWayAndComesBack) {
    dir.Put("a.sdb", before);
    {
        SetAside const aside(file());
        EXPECT_FALSE(std::filesystem::exists(file()));
        dir.Put("a.sdb", after);
    }
    EXPECT_EQ(dir.Get("a.sdb"), before) << "what came in its place was not good enough";
}

TEST_F(SetAsideTest, OneThatIsNotNeededAnyMoreIsGone) {
    dir.Put("a.sdb", before);
    {
        SetAside aside(file());
        dir.Put("a.sdb", after);
        aside.drop();
    }
    EXPECT_EQ(dir.Get("a.sdb"), after);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);
}

TEST_F(SetAsideTest, WithoutAFileThereIsNothingToDo) {
    { SetAside const aside(file()); }
    EXPECT_FALSE(std::filesystem::exists(file()));
}

} // namespace
