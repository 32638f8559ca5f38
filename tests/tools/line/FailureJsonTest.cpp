#include "tools/velk/line/FailureJson.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using base::FailureKind;
using velk::kindWord;

TEST(FailureJson, EveryKindHasAWordOfItsOwn) {
    std::set<std::string_view> words;
    for (int kind = 0; kind < base::kFailureKinds; ++kind) {
        std::string_view const word = kindWord(static_cast<FailureKind>(kind));
        EXPECT_EQ(word.find_first_not_of("abcdefghijklmnopqrstuvwxyz_"), std::string_view::npos) << word;
        EXPECT_TRUE(words.insert(word).second) << word;
    }
}

TEST(FailureJson, WordsStayTheSame) {
    EXPECT_EQ(kindWord(FailureKind::PortMissing), "port_missing");
    EXPECT_EQ(kindWord(FailureKind::Timeout), "no_answer");
    EXPECT_EQ(kindWord(FailureKind::LoginRefused), "login_refused");
    EXPECT_EQ(kindWord(FailureKind::Missing), "missing");
}

TEST(FailureJson, TheDriversCodeIsThereWhenItIsFromTheDriver) {
    nlohmann::ordered_json json;
    velk::putFailure(json, {FailureKind::PortBusy, "in use"});
    EXPECT_EQ(json.dump(), R"({"reason":"in use","kind":"port_busy"})");
    velk::putFailure(json, {FailureKind::BadQuality, "bad", -6});
    EXPECT_EQ(json.dump(), R"({"reason":"bad","kind":"bad_quality","driver_code":-6})");
}

} // namespace
