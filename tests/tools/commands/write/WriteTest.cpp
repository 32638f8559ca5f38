#include "tests/tools/trace/Frames.h"
#include "tools/velk/commands/write/Change.h"
#include "tools/velk/commands/write/StationNaming.h"
#include "tools/velk/commands/write/WritePreview.h"
#include "tools/velk/commands/write/WriteResult.h"
#include "tools/velk/commands/write/WriteWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace velk;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// ---- what the line tells

class WriteWatchTest : public testing::Test {
protected:
    void sent(std::string_view frame) { show(host::FrameDirection::Sent, frame); }
    void received(std::string_view frame) { show(host::FrameDirection::Received, frame); }
    void exchange(std::string_view answer) {
        sent(tracetest::kBigWrite);
        received(tracetest::kBigAck1);
        sent(tracetest::kBigAck0);
        received(answer);
    }

    WriteWatch watch_;

private:
    void show(host::FrameDirection direction, std::string_view frame) {
        tracetest::Bytes const bytes = tracetest::Hex(frame);
        watch_.onFrame({direction, bytes, 0, 0});
    }
};

constexpr std::string_view kRefusal = "AA AA 00 02 00 01 59 01 | 00 01";

TEST_F(WriteWatchTest, WithoutTheListNothingIsSent) {
    sent(tracetest::kBigLogin);
    received(tracetest::kBigLoginDone);
    EXPECT_EQ(watch_.delivery(), Delivery::NotSent);
}

TEST_F(WriteWatchTest, AListThatWasSentMayBeCarriedOut) {
    sent(tracetest::kBigWrite);
    EXPECT_EQ(watch_.delivery(), Delivery::Unanswered);
    received(tracetest::kBigAck1);
    EXPECT_EQ(watch_.delivery(), Delivery::Unanswered) << "an acknowledge says nothing of the list";
}

TEST_F(WriteWatchTest, TheFirstBlockAloneIsNoList) {
    sent("AA AA 00 16 00 01 99 00 | 3C 00 00 00 00 01 | 00 00 00 00 00 10 00 00 00 02 | 04 D2 | 00 00 00 09");
    EXPECT_EQ(watch_.delivery(), Delivery::NotSent);
}

TEST_F(WriteWatchTest, AListThatTheDyingPortHadInHandMayHaveGoneOut) {
    tracetest::Bytes const bytes = tracetest::Hex(tracetest::kBigWrite);
    watch_.onUnsent(bytes);
    EXPECT_EQ(watch_.delivery(), Delivery::Unanswered);
}

TEST_F(WriteWatchTest, TheAnswerDecides) {
    exchange(tracetest::kBigDone);
    EXPECT_EQ(watch_.delivery(), Delivery::Accepted);
    watch_.begin();
    EXPECT_EQ(watch_.delivery(), Delivery::NotSent);
    exchange(kRefusal);
    EXPECT_EQ(watch_.delivery(), Delivery::Refused);
}

TEST_F(WriteWatchTest, ARefusalOfTheSecondAttemptSaysNothingOfTheFirst) {
    sent(tracetest::kBigWrite);
    exchange(kRefusal);
    EXPECT_EQ(watch_.delivery(), Delivery::Unanswered);
}

TEST_F(WriteWatchTest, ADamagedAnswerIsNone) {
    exchange("AA AA 00 02 00 01 57 01 | 00 00");
    EXPECT_EQ(watch_.delivery(), Delivery::Unanswered);
}

TEST_F(WriteWatchTest, WhatACouplerSendsBackIsNoAnswer) {
    std::string const header(tracetest::kHeader);
    std::string const failed = header.substr(0, header.size() - 5) + "01 00 ";
    sent(header + " " + std::string(tracetest::kBigWrite));
    received(failed + std::string(tracetest::kBigDone));
    EXPECT_EQ(watch_.delivery(), Delivery::Unanswered);
}

// ---- how it ended

class ChangeTest : public testing::Test {
protected:
    ChangeTest() {
        tag_.name = "Number";
        tag_.node = 2;
        tag_.station = "oven";
        tag_.variable = "Number";
        tag_.plcType = "INT";
        tag_.access.dataType = "short";
        tag_.access.shownAs = ICU_SHORT;
        change_.tag = &tag_;
        change_.wanted = value(5);
        change_.before.result = good(7);
        change_.before.tag = &tag_;
    }

    static host::ValueBytes value(unsigned char number) { return {number, 0}; }
    static host::TagResult good(unsigned char number) {
        host::TagResult result;
        result.good = true;
        result.value = value(number);
        return result;
    }
    static host::TagResult failed(base::FailureKind kind, std::string text) {
        host::TagResult result;
        result.failure = {kind, std::move(text)};
        return result;
    }

    void accepted() {
        change_.written.good = true;
        change_.delivery = Delivery::Accepted;
    }
    void silent(Delivery delivery) { fail(delivery, ExitCode::Silent, "Timeout on Acknowledge"); }
    void refused() { fail(Delivery::Refused, ExitCode::Refused, "refused"); }
    void fail(Delivery delivery, ExitCode code, std::string text) {
        change_.written = failed(base::FailureKind::Timeout, std::move(text));
        change_.writeCode = code;
        change_.delivery = delivery;
    }
    void readBack(unsigned char number) { change_.after.result = good(number); }
    void notReadBack(ExitCode code, std::string text) {
        change_.after.result = failed(base::FailureKind::Timeout, std::move(text));
        change_.readBackCode = code;
    }

    void expect(std::string const& text, std::optional<bool> isWritten, bool took, ExitCode code) const {
        EXPECT_EQ(change_.text(), text);
        EXPECT_EQ(change_.isWritten(), isWritten) << text;
        EXPECT_EQ(change_.took(), took) << text;
        EXPECT_EQ(change_.exitCode(), code) << text;
    }

    Tag tag_;
    Change change_;
};

TEST_F(ChangeTest, TookOrDidNot) {
    accepted();
    readBack(5);
    expect("took", true, true, ExitCode::Good);
    readBack(7);
    expect("not kept, or changed by the program since", true, false, ExitCode::ItemNotGood);
}

TEST_F(ChangeTest, AcceptedAndNotReadBack) {
    accepted();
    notReadBack(ExitCode::Silent, "Timeout on Acknowledge");
    expect("written, not read back: Timeout on Acknowledge", true, false, ExitCode::Silent);
    notReadBack(ExitCode::Interrupted, "interrupted");
    expect("written, not read back", true, false, ExitCode::Interrupted);
}

TEST_F(ChangeTest, AListThatWasNotSentIsNotWritten) {
    silent(Delivery::NotSent);
    expect("not written: Timeout on Acknowledge", false, false, ExitCode::Silent);
    readBack(5);
    expect("not written: Timeout on Acknowledge", false, false, ExitCode::Silent);
    fail(Delivery::NotSent, ExitCode::Port, "gone away");
    expect("not written", false, false, ExitCode::Port);
}

TEST_F(ChangeTest, WithoutAnAnswerTheReadBackDecides) {
    silent(Delivery::Unanswered);
    notReadBack(ExitCode::Silent, "Timeout on Acknowledge");
    expect("not known whether it was written: read it (Timeout on Acknowledge)", std::nullopt, false, ExitCode::Silent);
    readBack(5);
    expect("no answer (Timeout on Acknowledge), but the PLC has the value", true, true, ExitCode::Good);
    readBack(7);
    expect("failed: Timeout on Acknowledge", std::nullopt, false, ExitCode::Silent);
    change_.before.result = good(5);
    readBack(5);
    expect("no answer (Timeout on Acknowledge), but the PLC has the value", std::nullopt, true, ExitCode::Good);
}

TEST_F(ChangeTest, AnInterruptedWriteIsNotKnown) {
    fail(Delivery::Unanswered, ExitCode::Interrupted, "interrupted");
    notReadBack(ExitCode::Interrupted, "");
    expect("not known whether it was written: read it", std::nullopt, false, ExitCode::Interrupted);
}

TEST_F(ChangeTest, AnAnswerThatCameBeforeTheEndOfTheExchangeCounts) {
    silent(Delivery::Accepted);
    notReadBack(ExitCode::Port, "");
    expect("written, not read back", true, false, ExitCode::Port);
    readBack(5);
    expect("no answer (Timeout on Acknowledge), but the PLC has the value", true, true, ExitCode::Good);
}

TEST_F(ChangeTest, ARefusalStaysOneWhenTheValueWasThereBefore) {
    refused();
    readBack(7);
    expect("failed: refused", false, false, ExitCode::Refused);
    readBack(5);
    expect("no good answer (refused), but the PLC has the value", true, true, ExitCode::Good);
    change_.before.result = good(5);
    expect("failed: refused", false, false, ExitCode::Refused);
}

TEST_F(ChangeTest, WithAnotherProgramWhatIsReadBackMeansNothing) {
    change_.programReplaced = true;
    accepted();
    readBack(5);
    expect("written, not read back: the PLC's program was replaced", true, false, ExitCode::ItemNotGood);
    refused();
    readBack(5);
    expect("not written: the PLC's program was replaced", false, false, ExitCode::Refused);
    silent(Delivery::Unanswered);
    expect("not known whether it was written: read it (the PLC's program was replaced)", std::nullopt, false,
           ExitCode::Silent);
}

// ---- how it is shown

class WriteTextTest : public ChangeTest {
protected:
    StationNaming naming(std::size_t stations) const {
        Settings settings;
        settings.node = 2;
        settings.stations.resize(stations);
        return {settings, {}};
    }
    std::vector<Change> one() const { return {change_}; }
};

TEST_F(WriteTextTest, TheStationIsShownWhereThereAreSeveral) {
    accepted();
    readBack(5);
    EXPECT_THAT(resultText(one(), naming(1)), Not(HasSubstr("oven")));
    EXPECT_THAT(resultText(one(), naming(2)), testing::ContainsRegex("oven +Number +INT +7 +5 +5 +took"));
    EXPECT_THAT(previewText(one(), naming(2)), testing::ContainsRegex("oven +Number +INT +7 +5"));
}

TEST_F(WriteTextTest, TheQuestionNamesTheStations) {
    std::vector<Tag> tags{tag_};
    EXPECT_EQ(questionText(tags, naming(1)), "Write this value to the PLC? [y/N] ");
    EXPECT_EQ(questionText(tags, naming(2)), "Write this value to oven? [y/N] ");
    tags.push_back(tag_);
    tags.push_back(tag_);
    tags.back().node = 3;
    tags.back().station = "3";
    EXPECT_EQ(questionText(tags, naming(2)), "Write these 3 values to oven and station 3? [y/N] ");
}

TEST_F(WriteTextTest, AStationThatIsNotTheUsualOneIsNamed) {
    Settings settings;
    settings.stations.resize(1);
    TagRequest request;
    EXPECT_FALSE(StationNaming(settings, {&request, 1}).shown());
    request.node = 7;
    EXPECT_TRUE(StationNaming(settings, {&request, 1}).shown());
}

TEST_F(WriteTextTest, JsonTellsWhatIsNotKnown) {
    silent(Delivery::Unanswered);
    notReadBack(ExitCode::Silent, "Timeout on Acknowledge");
    nlohmann::json const unknown = nlohmann::json::parse(resultJson(one())).at(0);
    EXPECT_EQ(unknown.at("before"), 7);
    EXPECT_EQ(unknown.at("to_write"), 5);
    EXPECT_TRUE(unknown.at("after").is_null());
    EXPECT_TRUE(unknown.at("written").is_null());
    EXPECT_EQ(unknown.at("took"), false);
    change_.before.result = failed(base::FailureKind::Conversion, "conversion error");
    readBack(5);
    nlohmann::json const known = nlohmann::json::parse(resultJson(one())).at(0);
    EXPECT_TRUE(known.at("before").is_null());
    EXPECT_EQ(known.at("after"), 5);
    EXPECT_EQ(known.at("written"), true);
}

TEST_F(WriteTextTest, EachComplaintComesOnceAndWithItsStation) {
    silent(Delivery::NotSent);
    change_.advice = "Timeout. Likely the cable.";
    std::vector<Change> const changes{change_, change_};
    EXPECT_THAT(complaintsOf(changes, naming(1)), ElementsAre("Timeout. Likely the cable."));
    EXPECT_THAT(complaintsOf(changes, naming(2)), ElementsAre("oven: Timeout. Likely the cable."));
    change_.programReplaced = true;
    EXPECT_THAT(
        complaintsOf(one(), naming(2)),
        ElementsAre("the program of oven was replaced: run the command again; variables and types may have changed"));
}

} // namespace
