#include "tools/velk/commands/watch/RoundText.h"

#include "tests/support/TempDir.h"
#include "tools/velk/commands/watch/ValueFile.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using namespace velk;

constexpr std::chrono::system_clock::time_point kThen{std::chrono::seconds(1'700'000'000)}; // 2023-11-14T22:13:20Z

/** A round with a good value and one that is not. */
class RoundText : public testing::Test {
protected:
    RoundText() {
        for (std::size_t i = 0; i < tags_.size(); ++i) {
            tags_[i].station = i == 0 ? "press" : "oven";
            tags_[i].name = i == 0 ? "Speed" : "Level";
            tags_[i].access.dataType = "short";
            tags_[i].access.shownAs = ICU_SHORT;
            readings_[i].tag = &tags_[i];
            readings_[i].at = kThen;
        }
        readings_[0].result.good = true;
        readings_[0].result.value = {7, 0};
        readings_[1].result.failure = {base::FailureKind::BadQuality, "worn, \"old\"", -6};
    }

    std::array<Tag, 2> tags_;
    std::array<Reading, 2> readings_;
};

TEST_F(RoundText, ALineTellsWhyItsValueIsNotGood) {
    EXPECT_EQ(roundLines(readings_, false), "2023-11-14T22:13:20.000Z Speed 7 good\n"
                                            "2023-11-14T22:13:20.000Z Level - failed: worn, \"old\"\n");
    EXPECT_EQ(roundLines({readings_.data(), 1}, true), "2023-11-14T22:13:20.000Z press:Speed 7 good\n");
}

TEST_F(RoundText, JsonOfARound) {
    WatchHeader header;
    header.rounds = 3;
    header.roundMs = 1.5;
    EXPECT_EQ(roundJson(header, kThen, readings_),
              R"({"time":"2023-11-14T22:13:20.000Z","round":3,"round_ms":1.5,"items":[)"
              R"({"station":"press","name":"Speed","value":7,"status":"good"},)"
              R"({"station":"oven","name":"Level","value":null,"status":"failed","reason":"worn, \"old\"",)"
              R"("kind":"bad_quality","driver_code":-6}]})"
              "\n");
}

TEST_F(RoundText, AFileOfValuesHasItsHeadOnceAndTheReasons) {
    velktest::TempDir const folder;
    std::string const name = folder.Path("values.csv");
    for (int run = 0; run < 2; ++run) {
        ValueFile(name).append({readings_.data() + run, 1});
    }
    std::ostringstream text;
    text << std::ifstream(name, std::ios::binary).rdbuf();
    EXPECT_EQ(text.str(), "time,station,name,value,status,reason\r\n"
                          "2023-11-14T22:13:20.000Z,press,Speed,7,good,\r\n"
                          "2023-11-14T22:13:20.000Z,oven,Level,,failed,\"worn, \"\"old\"\"\"\r\n");
}

} // namespace
