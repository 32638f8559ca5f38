#include "tools/velk/line/Readings.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace {

using namespace velk;
using base::FailureKind;

/** A reading that failed, in words that no program has. */
Reading failed(Tag const& tag, FailureKind kind) {
    Reading reading;
    reading.tag = &tag;
    reading.result.failure = {kind, "reworded: in use, there is no, corrupted, not present in Symbols files"};
    return reading;
}

TEST(Readings, TheStatusComesFromTheKindWhateverTheWords) {
    Tag const tag;
    EXPECT_EQ(statusWord(failed(tag, FailureKind::Missing)), "missing");
    EXPECT_EQ(statusWord(failed(tag, FailureKind::Unreachable)), "failed");
    EXPECT_EQ(statusWord(failed(tag, FailureKind::Timeout)), "failed");
}

TEST(Readings, JsonHasTheKindBesideTheReason) {
    Tag const tag;
    Reading const reading = failed(tag, FailureKind::Timeout);
    auto const json = nlohmann::json::parse(readingsText({&reading, 1}, OutputFormat::Json, {})).at(0);
    EXPECT_EQ(json.at("status"), "failed");
    EXPECT_EQ(json.at("kind"), "no_answer");
    EXPECT_EQ(json.at("reason"), reading.result.failure.text);
    EXPECT_FALSE(json.contains("driver_code"));
}

TEST(Readings, ALongValueDoesNotPushTheOthersApart) {
    Tag tag;
    tag.name = "A";
    tag.access = {.dataType = "string-200", .shownAs = ICU_STRING};
    std::vector<Reading> readings(2);
    for (Reading& reading : readings) {
        reading.tag = &tag;
        reading.result.good = true;
    }
    readings[0].result.value.assign(200, 'x');
    readings[1].result.value = {'y', 0};
    std::string const text = readingsText(readings, OutputFormat::Table, {.longest = 1'000});
    EXPECT_NE(text.find("xxx\"  good"), std::string::npos) << text;
    EXPECT_NE(text.find("A     string-200  \"y\"    good"), std::string::npos) << text;
}

} // namespace
