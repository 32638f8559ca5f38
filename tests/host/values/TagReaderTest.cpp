#include "host/values/TagReader.h"

#include "tests/host/FakeProtocol.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <optional>
#include <set>

namespace hosttest {
namespace {

using Bytes = std::vector<unsigned char>;
using Calls = std::vector<std::string>;

class TagReader : public testing::Test {
protected:
    FakeTag& add(std::string name, int node, Bytes value) {
        int const length = static_cast<int>(value.size());
        tags.emplace_back(std::move(name), node, ICU_BINARY, length);
        tags.back().value = std::move(value);
        list.push_back(&tags.back());
        return tags.back();
    }

    /** "good 1 2", "-4 Timeout on Acknowledge" for the driver's failures, or "the tag is read-only" for the host's. */
    static std::string shown(host::TagResult const& result) {
        if (!result.good) {
            EXPECT_TRUE(result.value.empty());
            std::optional<int> const code = result.failure.driverCode;
            return (code ? std::to_string(*code) + " " : "") + result.failure.text;
        }
        std::string text = "good";
        for (unsigned char const byte : result.value) {
            text += " " + std::to_string(byte);
        }
        return text;
    }
    static Calls shown(std::vector<host::TagResult> const& results) {
        Calls lines;
        for (auto const& result : results) {
            lines.push_back(shown(result));
        }
        return lines;
    }

    /** Tags "0", "1" ... of node 1, each with its number as its value. */
    void addMany(int count) {
        for (int i = 0; i < count; ++i) {
            add(std::to_string(i), 1, {static_cast<unsigned char>(i)});
        }
    }
    void spoil(std::set<std::size_t> const& bad) {
        for (std::size_t i = 0; i < tags.size(); ++i) {
            tags[i].spoils = bad.contains(i);
        }
    }
    void expectOnlyTheseFail(std::set<std::size_t> const& bad, std::vector<host::TagResult> const& results) const {
        for (std::size_t i = 0; i < results.size(); ++i) {
            EXPECT_EQ(results[i].good, !bad.contains(i)) << i;
            EXPECT_EQ(results[i].value, bad.contains(i) ? Bytes{} : tags[i].value) << i;
        }
    }

    FakeProtocol protocol;
    std::deque<FakeTag> tags;
    std::vector<ITag*> list;
};

TEST_F(TagReader, GivesValuesInTheCallersOrder) {
    add("a", 1, {1, 2});
    add("b", 2, {3});
    add("c", 1, {4, 5, 6});
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"good 1 2", "good 3", "good 4 5 6"}));
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram a c", "ReadDatagram b"}));
}

TEST_F(TagReader, AVariableThePlcDoesNotHaveHasNoValueAndDoesNotSpoilTheOthers) {
    add("a", 1, {1});
    add("b", 1, {2}).status = -1;
    add("c", 1, {3}).status = 0;
    add("d", 1, {4}).status = -17;
    add("e", 1, {5});
    host::TagReader reader(protocol);
    auto const results = reader.read(list);
    EXPECT_EQ(shown(results),
              (Calls{"good 1", "the PLC program has no such variable", "the driver did not process the tag",
                     "the driver gave the tag the status -17", "good 5"}));
    EXPECT_EQ(results[1].status, kItemNotInSymbolFile);
    EXPECT_EQ(results[1].failure.kind, base::FailureKind::Missing);
    EXPECT_EQ(results[2].failure.kind, base::FailureKind::LeftOut);
    EXPECT_EQ(results[0].status, kItemGood);
}

TEST_F(TagReader, AFailedDatagramFailsOnlyItsOwnTags) {
    add("a", 1, {1});
    add("b", 2, {2});
    add("c", 3, {3});
    protocol.silentNodes = {2};
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"good 1", "-4 Timeout on Acknowledge", "good 3"}));
}

TEST_F(TagReader, ATagThatSpoilsItsDatagramIsFoundAndFailsAlone) {
    for (char const* const name : {"a", "b", "c", "d"}) {
        add(name, 1, {7});
    }
    tags[2].spoils = true;
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"good 7", "good 7", "-6 One of the values has bad quality", "good 7"}));
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram a b c d", "ReadDatagram a b", "ReadDatagram c d", "ReadDatagram c",
                                     "ReadDatagram d"}));
}

TEST_F(TagReader, OfFortyFourTagsOnlyTheThreeBadOnesFail) {
    addMany(44);
    std::set<std::size_t> const bad{3, 20, 41};
    spoil(bad);
    host::TagReader reader(protocol);
    expectOnlyTheseFail(bad, reader.read(list));
    EXPECT_LE(protocol.calls.size(), 31U) << "one call, and 2 * 3 * log2(44 / 3) + 2 * 3 = 29.2 more";
}

TEST_F(TagReader, WhateverTheNumberOfBadTagsAllOthersHaveTheirValues) {
    addMany(90);
    for (std::size_t const step : {90U, 30U, 10U, 7U, 3U, 2U, 1U}) {
        std::set<std::size_t> bad;
        for (std::size_t i = step / 2; i < list.size(); i += step) {
            bad.insert(i);
        }
        spoil(bad);
        protocol.calls.clear();
        host::TagReader reader(protocol);
        expectOnlyTheseFail(bad, reader.read(list));
        for (std::size_t const item : bad) {
            EXPECT_EQ(std::count(protocol.calls.begin(), protocol.calls.end(), "ReadDatagram " + tags[item].name), 1);
        }
        auto const count = static_cast<double>(bad.size());
        double const more = 2 * count * std::log2(128 / count) + 2 * count; // halved as often as 128 would be
        EXPECT_LE(static_cast<double>(protocol.calls.size()), 1 + more) << bad.size() << " are bad";
    }
}

TEST_F(TagReader, TagsThatWereBadAreAskedApartUntilTheyAreGood) {
    for (char const* const name : {"a", "b", "c", "d"}) {
        add(name, 1, {7});
    }
    spoil({0, 2});
    host::BadTags known;
    host::TagReader reader(protocol);
    reader.read(list, known);
    for (int round = 0; round < 2; ++round) {
        protocol.calls.clear();
        expectOnlyTheseFail({0, 2}, reader.read(list, known));
        EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram b d", "ReadDatagram a", "ReadDatagram c"}));
    }
    spoil({0});
    reader.read(list, known); // finds out that c is good
    protocol.calls.clear();
    expectOnlyTheseFail({0}, reader.read(list, known));
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram b c d", "ReadDatagram a"}));
}

TEST_F(TagReader, ATimeOutEndsTheSearchForBadTags) {
    addMany(8);
    spoil({1, 6});
    protocol.silentAfter = 3; // 0 to 7, 0 to 3, 0 to 1
    host::TagReader reader(protocol);
    auto const results = reader.read(list);
    EXPECT_EQ(protocol.calls.size(), 4U);
    for (auto const& result : results) {
        EXPECT_EQ(shown(result), "-4 Timeout on Acknowledge");
    }
}

TEST_F(TagReader, ASilentPlcIsNotAskedAgainForTagsThatWereBad) {
    addMany(4);
    spoil({1, 2});
    host::BadTags known;
    host::TagReader reader(protocol);
    reader.read(list, known);
    protocol.calls.clear();
    protocol.silentNodes = {1};
    reader.read(list, known);
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram 0 3"}));
}

TEST_F(TagReader, TagsThatThePlcRefusesToReadDoNotSpoilTheOthers) {
    addMany(44);
    protocol.spoiledText = "Command not acknowledged by PLC";
    std::set<std::size_t> const refused{3, 20, 41};
    spoil(refused);
    host::TagReader reader(protocol);
    expectOnlyTheseFail(refused, reader.read(list));
}

TEST_F(TagReader, APlcThatRefusesWhateverItIsAskedIsNotAskedForEachTag) {
    addMany(90);
    protocol.spoiledText = "Command not acknowledged by PLC";
    for (FakeTag& tag : tags) {
        tag.spoils = true;
    }
    host::BadTags known;
    host::TagReader reader(protocol);
    for (int round = 0; round < 2; ++round) {
        protocol.calls.clear();
        auto const results = reader.read(list, known);
        EXPECT_EQ(protocol.calls.size(), 17U) << "one call and 16 more in vain";
        for (auto const& result : results) {
            EXPECT_EQ(shown(result), "-6 Command not acknowledged by PLC");
        }
    }
}

TEST_F(TagReader, ASymbolFileThatDoesNotComeIsNoTagsFault) {
    add("a", 1, {1});
    add("b", 1, {2}).spoils = true;
    protocol.spoiledText = "Symbol file not present";
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"-6 Symbol file not present", "-6 Symbol file not present"}));
    EXPECT_EQ(protocol.calls.size(), 1U);
}

TEST_F(TagReader, WithoutASearchTheWholeDatagramFails) {
    add("a", 1, {1});
    add("b", 1, {2}).spoils = true;
    host::TagReader reader(protocol, {.findBadTags = false});
    EXPECT_EQ(shown(reader.read(list)),
              (Calls{"-6 One of the values has bad quality", "-6 One of the values has bad quality"}));
    EXPECT_EQ(protocol.calls.size(), 1U);
}

TEST_F(TagReader, ATimeOutIsNoTagsFaultAndIsNotSearched) {
    add("a", 1, {1});
    add("b", 1, {2});
    protocol.silentNodes = {1};
    host::TagReader reader(protocol);
    reader.read(list);
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram a b"}));
}

TEST_F(TagReader, OnRequestASilentNodeIsAskedOnlyOnceACall) {
    protocol.maxItems = 1;
    add("a", 1, {1});
    add("b", 1, {2});
    add("c", 2, {3});
    protocol.silentNodes = {1};
    host::TagReader patient(protocol);
    EXPECT_EQ(shown(patient.read(list)), (Calls{"-4 Timeout on Acknowledge", "-4 Timeout on Acknowledge", "good 3"}));
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram a", "ReadDatagram b", "ReadDatagram c"}));

    protocol.calls.clear();
    host::TagReader brisk(protocol, {.skipNodeAfterTimeout = true});
    EXPECT_EQ(shown(brisk.read(list)), (Calls{"-4 Timeout on Acknowledge", "-4 Timeout on Acknowledge", "good 3"}));
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram a", "ReadDatagram c"}));
    protocol.silentNodes.clear();
    EXPECT_EQ(shown(brisk.read(list)), (Calls{"good 1", "good 2", "good 3"})) << "the next call asks again";
}

TEST_F(TagReader, AMissingTagFailsAlone) {
    add("a", 1, {1});
    list.push_back(nullptr);
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"good 1", "there is no such tag"}));
}

TEST_F(TagReader, AFailureWithoutATextStillSaysSomething) {
    add("a", 1, {1}).spoils = true;
    protocol.spoiledText = "";
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"-6 the driver gave no reason"}));
}

TEST_F(TagReader, ADriverWithoutDatagramsIsReadTagByTag) {
    protocol.maxItems = 0;
    add("a", 1, {1});
    add("b", 1, {2}).spoils = true;
    host::TagReader reader(protocol);
    EXPECT_EQ(shown(reader.read(list)), (Calls{"good 1", "-6 One of the values has bad quality"}));
    EXPECT_EQ(protocol.calls, (Calls{"Read a", "Read b"}));
}

TEST_F(TagReader, ATagWithoutALengthIsRefusedAndFailsAlone) {
    add("a", 1, {}).length = -5;
    add("b", 1, {2});
    add("c", 1, {});
    host::TagReader reader(protocol);
    auto const results = reader.read(list);
    EXPECT_EQ(shown(results), (Calls{"the tag has a negative length", "good 2",
                                     "its length is 0: the type needs a count, as in string-20 or short-10"}));
    EXPECT_EQ(results[2].failure.kind, base::FailureKind::Unreachable);
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram b"}));
    std::vector<host::TagWrite> const writes = {{list[1], {9}}, {list[2], {}}};
    EXPECT_EQ(shown(reader.write(writes))[1], "its length is 0: the type needs a count, as in string-20 or short-10");
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram b", "WriteDatagram b"}));
}

TEST_F(TagReader, AValueThatFitsNoResponseIsRefusedAndFailsAlone) {
    add("a", 1, {1}).packed = 74'993; // 75,000 bytes with the status, 4 bytes without meaning, and the quality
    add("b", 1, {2}).packed = 74'994;
    host::TagReader reader(protocol);
    auto const results = reader.read(list);
    EXPECT_EQ(shown(results), (Calls{"good 1", "its 74994 bytes are more than the 74993 that fit one response"}));
    EXPECT_EQ(results[1].failure.kind, base::FailureKind::Unreachable);
    EXPECT_EQ(protocol.calls, (Calls{"ReadDatagram a"}));
}

TEST_F(TagReader, APlanCanBeUsedAgain) {
    add("a", 1, {1});
    add("b", 1, {2});
    host::TagReader reader(protocol);
    auto const plan = host::planDatagrams(protocol, list, host::Purpose::Read);
    EXPECT_EQ(shown(reader.read(list, plan)), (Calls{"good 1", "good 2"}));
    tags[1].value = {9};
    EXPECT_EQ(shown(reader.read(list, plan)), (Calls{"good 1", "good 9"}));
}

TEST_F(TagReader, WritesEveryValueToItsTag) {
    add("a", 1, {0, 0});
    add("b", 2, {0});
    add("c", 1, {0});
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1, 2}}, {list[1], {3}}, {list[2], {4}}};
    EXPECT_EQ(shown(writer.write(writes)), (Calls{"good", "good", "good"}));
    EXPECT_EQ(tags[0].value, (Bytes{1, 2}));
    EXPECT_EQ(tags[1].value, (Bytes{3}));
    EXPECT_EQ(tags[2].value, (Bytes{4}));
    EXPECT_EQ(protocol.calls, (Calls{"WriteDatagram a c", "WriteDatagram b"}));
}

TEST_F(TagReader, TheLaterOfTwoWritesToOneTagWins) {
    protocol.maxLength = 3;
    add("a", 1, {0, 0});
    add("b", 1, {0, 0});
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1, 1}}, {list[1], {2, 2}}, {list[0], {3, 3}}};
    EXPECT_EQ(shown(writer.write(writes)), (Calls{"good", "good", "good"}));
    EXPECT_EQ(tags[0].value, (Bytes{3, 3}));
}

TEST_F(TagReader, WritesThatCannotBeRightAreRefusedAlone) {
    add("a", 1, {0});
    add("b", 1, {0}).readOnly = true;
    add("c", 1, {0, 0});
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1}}, {list[1], {1}}, {list[2], {1}}, {nullptr, {1}}};
    EXPECT_EQ(shown(writer.write(writes)),
              (Calls{"good", "the tag is read-only", "the value has 1 byte instead of 2", "there is no such tag"}));
    EXPECT_EQ(protocol.calls, (Calls{"WriteDatagram a"}));
}

TEST_F(TagReader, AValueThatAConversionRefusesDoesNotSpoilTheOtherWrites) {
    add("a", 1, {0});
    add("b", 1, {0}).spoils = true;
    protocol.spoiledCode = -9;
    protocol.spoiledText = "datagramItem conversion error";
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1}}, {list[1], {2}}};
    EXPECT_EQ(shown(writer.write(writes)), (Calls{"good", "-9 datagramItem conversion error"}));
    EXPECT_EQ(tags[0].value, (Bytes{1}));
}

TEST_F(TagReader, AWriteThatThePlcRefusedIsNotSentAgain) {
    add("a", 1, {0});
    add("b", 1, {0}).spoils = true;
    protocol.spoiledCode = -6;
    protocol.spoiledText = "Wrong reply length or ack in WriteData operation";
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1}}, {list[1], {2}}};
    EXPECT_EQ(shown(writer.write(writes)), (Calls{"-6 Wrong reply length or ack in WriteData operation",
                                                  "-6 Wrong reply length or ack in WriteData operation"}));
    EXPECT_EQ(protocol.calls.size(), 1U);
}

TEST_F(TagReader, AWriteWhoseAnswerIsTooLongIsNotSentAgain) {
    add("a", 1, {0});
    add("b", 1, {0}).spoils = true;
    protocol.spoiledCode = -1;
    protocol.spoiledText = "Rx Buffer dimension exceeded";
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1}}, {list[1], {2}}};
    EXPECT_EQ(shown(writer.write(writes)),
              (Calls{"-1 Rx Buffer dimension exceeded", "-1 Rx Buffer dimension exceeded"}));
    EXPECT_EQ(protocol.calls.size(), 1U);
    protocol.spoiledText = "Tx Buffer dimension exceeded"; // found before anything is sent
    EXPECT_EQ(shown(writer.write(writes)), (Calls{"good", "-1 Tx Buffer dimension exceeded"}));
}

TEST_F(TagReader, ATagThatGoesWithNothingIsWrittenThroughTheSingleCall) {
    add("a", 1, {0});
    add("id", 1, {0}).alone = true;
    host::TagReader writer(protocol);
    std::vector<host::TagWrite> const writes = {{list[0], {1}}, {list[1], {2}}};
    EXPECT_EQ(shown(writer.write(writes)), (Calls{"good", "good"}));
    EXPECT_EQ(protocol.calls, (Calls{"WriteDatagram a", "Write id"}));
    EXPECT_EQ(tags[1].value, (Bytes{2}));
}

} // namespace
} // namespace hosttest
