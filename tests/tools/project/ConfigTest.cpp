#include "tools/velk/commands/ConfigCommand.h"
#include "tools/velk/context/LineOptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

constexpr std::uint16_t kMemoryArea = 0;

TEST(StoredTables, TheFileOfANodeIsLoadedOnceWhateverComesOfIt) {
    std::vector<int> loaded;
    velk::StoredTables tables([&](int node) -> base::Result<velk::SymbolTable> {
        loaded.push_back(node);
        if (node == 2) {
            return base::Failure{base::FailureKind::NoStoredSymbols, "there is none"};
        }
        return velk::SymbolTable(1, {{"Speed", "INT", kMemoryArea, 4, 2}});
    });
    velk::Project project;
    project.stations = {{1, ""}, {2, ""}};
    velk::Settings const settings = velk::mergeSettings(project, {});
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(velk::addressText({"a", "Speed", "", 1, {}, {}}, settings, tables), "1?Speed?M?0?short");
        EXPECT_THAT(velk::addressText({"b", "Speed", "", 2, {}, {}}, settings, tables),
                    testing::EndsWith("(the type comes from the PLC's symbol file)"));
    }
    EXPECT_THAT(loaded, ElementsAre(1, 2));
}

} // namespace
