#include "base/TomlSection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using base::TomlSection;
using testing::ElementsAre;
using Texts = std::vector<std::string>;

/** The complaints about a text that is read in this way. */
Texts complaints(std::string const& text, std::function<void(TomlSection&)> const& read, int columnsBefore = 0) {
    try {
        base::readToml(text, base::Complaints("t.toml", columnsBefore), "the file", [&](TomlSection& top) {
            read(top);
            return 0;
        });
        return {};
    } catch (base::FileError const& error) {
        return error.complaints();
    }
}

TEST(TomlSection, ReadsEveryKindOfValue) {
    EXPECT_THAT(complaints("n = 3\nr = 1.5\nw = 2\nt = true\nx = 'a'\ny = 7\nl = ['a', 'b']\nm = 'c'\n",
                           [](TomlSection& top) {
                               EXPECT_EQ(top.number("n", 0, 3), 3);
                               EXPECT_EQ(top.real("r"), 1.5);
                               EXPECT_EQ(top.real("w"), 2.0);
                               EXPECT_EQ(top.truth("t"), true);
                               EXPECT_EQ(top.text("x"), "a");
                               EXPECT_EQ(top.textOrNumber("x"), "a");
                               EXPECT_EQ(top.textOrNumber("y"), "7");
                               EXPECT_EQ(top.texts("l"), (Texts{"a", "b"}));
                               EXPECT_EQ(top.texts("m"), Texts{"c"}) << "one text is a list of one";
                           }),
                ElementsAre());
}

TEST(TomlSection, AKeyThatIsMissingIsNotGiven) {
    EXPECT_THAT(complaints("",
                           [](TomlSection& top) {
                               EXPECT_EQ(top.number("n", 0, 3), std::nullopt);
                               EXPECT_EQ(top.real("r"), std::nullopt);
                               EXPECT_EQ(top.truth("t"), std::nullopt);
                               EXPECT_EQ(top.text("x"), std::nullopt);
                               EXPECT_EQ(top.textOrNumber("x"), std::nullopt);
                               EXPECT_EQ(top.texts("l"), std::nullopt);
                               top.section("s", [](TomlSection& /*inner*/) { FAIL(); });
                               top.sections("s", [](TomlSection& /*inner*/) { FAIL(); });
                           }),
                ElementsAre());
}

TEST(TomlSection, CollectsWhatIsWrongInTheOrderOfTheFile) {
    EXPECT_THAT(complaints("x = 1\nn = 4\n[s]\nf = 1.5\n  k = 'K'\n",
                           [](TomlSection& top) {
                               top.section("s", [](TomlSection& s) {
                                   EXPECT_EQ(s.choice("k", Texts{"k", "l"}), "k") << "whatever the case";
                                   EXPECT_EQ(s.fraction("f"), std::nullopt);
                                   EXPECT_EQ(s.neededText("name"), "");
                               });
                               EXPECT_EQ(top.number("n", 0, 3), std::nullopt);
                               EXPECT_EQ(top.text("x"), std::nullopt);
                           }),
                ElementsAre("t.toml:1:5: 'x' must be a text, not a whole number",
                            "t.toml:2:5: 'n' is 4; it must be 0 to 3", "t.toml:3:1: 'name' is missing",
                            "t.toml:4:5: 'f' must be a number from 0 to 1"));
}

TEST(TomlSection, RefusesEveryKeyThatNobodyAskedFor) {
    EXPECT_THAT(complaints("[[s]]\nspeed = 1\nsped = 2\n[[s]]\nother = 1\n[t]\nany = 1\n",
                           [](TomlSection& top) {
                               top.sections("s", [](TomlSection& s) { static_cast<void>(s.number("speed", 0, 9)); });
                               top.section("t", [](TomlSection& t) { t.acceptOtherKeys(); });
                           }),
                ElementsAre("t.toml:3:1: there is no 'sped' in [[s]]; did you mean speed?",
                            "t.toml:5:1: there is no 'other' in [[s]]"));
}

TEST(TomlSection, NamesAreLookedUp) {
    auto const digit = [](std::string_view name) { return name == "one" ? std::optional(1) : std::nullopt; };
    EXPECT_THAT(complaints("a = 'one'\nb = 'two'\n",
                           [&](TomlSection& top) {
                               EXPECT_EQ(top.named("a", digit, "one"), 1);
                               EXPECT_EQ(top.named("b", digit, "one"), std::nullopt);
                               EXPECT_EQ(top.named("c", digit, "one"), std::nullopt);
                           }),
                ElementsAre("t.toml:2:5: 'b' is 'two'; it must be one"));
}

TEST(TomlSection, TheFirstLineMayHaveSomethingInFrontOfTheUsersText) {
    EXPECT_THAT(
        complaints(
            "a = {b = 1}\nc = 2\n", [](TomlSection& top) { top.section("a", [](TomlSection& a) { a.need("x"); }); }, 5),
        ElementsAre("t.toml:1: 'x' is missing", "t.toml:1:1: there is no 'b' in [a]",
                    "t.toml:2:1: there is no 'c' in the file; did you mean a?"));
}

TEST(TomlSection, WhatIsNotTomlIsSaidWithItsPlace) {
    Texts const lines = complaints("a = 1\nb = = 2\n", [](TomlSection& /*top*/) { FAIL(); });
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], testing::StartsWith("t.toml:2:5: "));
}

TEST(TomlSection, KeysThatAreNestedWithoutEndAreRefused) {
    std::string key = "a";
    for (int level = 0; level < 1100; ++level) {
        key += ".a";
    }
    Texts const lines = complaints(key + " = 1\n", [](TomlSection& /*top*/) { FAIL(); });
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], testing::EndsWith(": this is nested too deeply"));
}

TEST(Complaints, SayWhatTheyKnowOfThePlace) {
    base::Complaints complaints("t.toml");
    EXPECT_TRUE(complaints.empty());
    complaints.add({.line = 2, .column = 7}, "three");
    complaints.add({.line = 2}, "two");
    complaints.add({}, "one");
    EXPECT_STREQ(complaints.error().what(), "t.toml: one\nt.toml:2: two\nt.toml:2:7: three");
}

} // namespace
