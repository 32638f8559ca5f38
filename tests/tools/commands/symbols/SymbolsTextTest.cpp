#include "tools/velk/commands/symbols/SymbolsText.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using velk::offsetText;
using velk::SymbolsFormat;
using velk::symbolsText;
using velk::Variable;

/** A program whose names do not come in the order of the alphabet. */
class SymbolsText : public testing::Test {
protected:
    [[nodiscard]] std::string text(SymbolsFormat format) const {
        std::vector<Variable const*> list;
        for (Variable const& variable : variables_) {
            list.push_back(&variable);
        }
        return symbolsText(list, 0x12345678, format);
    }

    std::vector<Variable> variables_{
        {"Main.Speed", "INT", 0, 20, 2}, {"Main.Name", "STRING(7)", 0, 22, 8}, {"Lamp", "BIT", 2, 13, 1}};
};

TEST_F(SymbolsText, TableKeepsTheOrderOfTheFile) {
    std::string const table = text(SymbolsFormat::Table);
    EXPECT_LT(table.find("Main.Speed"), table.find("Main.Name"));
    EXPECT_LT(table.find("Main.Name"), table.find("Lamp"));
    EXPECT_NE(table.find("1.5"), std::string::npos);
}

TEST_F(SymbolsText, TreeJoinsWhatBeginsAlike) {
    EXPECT_EQ(text(SymbolsFormat::Tree), "├─ Lamp  BIT  Q:1.5\n"
                                         "└─ Main\n"
                                         "   ├─ Name  STRING(7)  M:22\n"
                                         "   └─ Speed  INT  M:20\n");
}

TEST_F(SymbolsText, TreeDoesNotTellTheCasesOfLettersApart) {
    variables_ = {{"MAIN.A", "INT", 0, 0, 2}, {"Main.B", "INT", 0, 2, 2}};
    EXPECT_EQ(text(SymbolsFormat::Tree), "└─ MAIN\n"
                                         "   ├─ A  INT  M:0\n"
                                         "   └─ B  INT  M:2\n");
}

TEST_F(SymbolsText, TreeDoesNotGrowWithoutEnd) {
    Variable const deep{std::string(30'000, '.') + "X", "INT", 0, 0, 2};
    Variable const* const one[] = {&deep};
    std::string const tree = velk::symbolsText(one, 1, SymbolsFormat::Tree);
    EXPECT_EQ(std::count(tree.begin(), tree.end(), '\n'), 32);
    EXPECT_LT(tree.size(), 40'000U);
    EXPECT_NE(tree.find("X  INT  M:0"), std::string::npos);
}

TEST_F(SymbolsText, TreeShowsAStructureThatIsAVariableItself) {
    variables_ = {{"Pump", "DATA", 0, 0, 6}, {"Pump.Speed", "INT", 0, 4, 2}};
    EXPECT_EQ(text(SymbolsFormat::Tree), "└─ Pump  DATA  M:0\n"
                                         "   └─ Speed  INT  M:4\n");
}

TEST_F(SymbolsText, CsvQuotesWhatHasCommas) {
    variables_ = {{"Grid", "ARRAY [0..1, 0..2] OF INT", 0, 0, 12}};
    EXPECT_EQ(text(SymbolsFormat::Csv), "name,type,area,offset,size\n"
                                        "Grid,\"ARRAY [0..1, 0..2] OF INT\",M,0,12\n");
}

TEST_F(SymbolsText, JsonHasTheProjectAndBitsAsTheFileCountsThem) {
    variables_ = {{"Lamp", "BIT", 2, 13, 1}};
    EXPECT_EQ(text(SymbolsFormat::Json), "{\n"
                                         "  \"project\": 305419896,\n"
                                         "  \"variables\": [\n"
                                         "    {\n"
                                         "      \"name\": \"Lamp\",\n"
                                         "      \"type\": \"BIT\",\n"
                                         "      \"area\": \"Q\",\n"
                                         "      \"offset\": 13,\n"
                                         "      \"size\": 1\n"
                                         "    }\n"
                                         "  ]\n"
                                         "}\n");
}

TEST_F(SymbolsText, ControlCharactersOfANameDoNothingToATerminal) {
    variables_ = {{"A\x1B[2JB", "INT", 0, 0, 2}};
    EXPECT_EQ(text(SymbolsFormat::Table).find('\x1B'), std::string::npos);
    EXPECT_EQ(text(SymbolsFormat::Tree).find('\x1B'), std::string::npos);
}

TEST_F(SymbolsText, AnEmptyListIsStillADocument) {
    variables_.clear();
    EXPECT_EQ(text(SymbolsFormat::Tree), "");
    EXPECT_EQ(text(SymbolsFormat::Csv), "name,type,area,offset,size\n");
    EXPECT_EQ(text(SymbolsFormat::Json), "{\n  \"project\": 305419896,\n  \"variables\": []\n}\n");
}

TEST(OffsetText, BitsAreCountedFromTheirByteAndBytesAsTheyAre) {
    EXPECT_EQ(offsetText({"X", "BIT", 0, 8, 1}), "1.0");
    EXPECT_EQ(offsetText({"X", "bit", 0, 7, 1}), "0.7");
    EXPECT_EQ(offsetText({"X", "BOOL", 0, 8, 1}), "8");
}

} // namespace
