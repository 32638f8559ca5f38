#include "protlib/config/ConfigParser.h"

#include <climits>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

/// The lookup flags as the callers of the parser pass them.
constexpr int kNoRestriction = 0;
constexpr int kGeneralOnly = 1;
constexpr int kNodeOnly = 2;
constexpr int kNodeIndependent = -1;

std::vector<int> nodes(std::string const& configuration) {
    CfgParser const parser(configuration.c_str());
    std::vector<int> result;
    result.reserve(static_cast<std::size_t>(parser.GetNodeCount()));
    for (int i = 0; i < parser.GetNodeCount(); ++i) {
        result.push_back(parser.GetNodeID(i));
    }
    return result;
}

/// The raw general lookup, "(null)" when the parser has no such entry.
std::string lookup(std::string const& configuration, char const* name) {
    CfgParser parser(configuration.c_str());
    char const* const value = parser.GetParam(name);
    return value == nullptr ? "(null)" : value;
}

struct Answer {
    int result = -1;
    std::string value = "untouched";
};

Answer ask(std::string const& configuration, char const* name, int node, int flags) {
    CfgParser parser(configuration.c_str());
    Answer answer;
    answer.result = parser.getParam(name, node, answer.value, flags);
    return answer;
}

void expectValue(std::string const& configuration, char const* name, int node, int flags, char const* value) {
    Answer const answer = ask(configuration, name, node, flags);
    EXPECT_EQ(answer.result, 0) << configuration;
    EXPECT_EQ(answer.value, value) << configuration;
}

void expectNoValue(std::string const& configuration, char const* name, int node, int flags, int result) {
    Answer const answer = ask(configuration, name, node, flags);
    EXPECT_EQ(answer.result, result) << configuration;
    EXPECT_EQ(answer.value, "untouched") << configuration;
}

// --- the section ---

TEST(CfgSection, MarkerMakesTheFormatKnown) {
    EXPECT_TRUE(CfgParser("CfgVer=1").KnownFormat());
    EXPECT_TRUE(CfgParser("CfgVer=1 a=1").KnownFormat());
    EXPECT_TRUE(CfgParser("anything before CfgVer=1 a=1").KnownFormat());
}

TEST(CfgSection, TextWithoutMarkerIsAnUnknownFormat) {
    EXPECT_FALSE(CfgParser("").KnownFormat());
    EXPECT_FALSE(CfgParser("a=1").KnownFormat());
    EXPECT_FALSE(CfgParser("CfgVer=2 a=1").KnownFormat());
    EXPECT_FALSE(CfgParser("CfgVer= 1 a=1").KnownFormat());
    EXPECT_FALSE(CfgParser("cfgver=1 a=1").KnownFormat());
    EXPECT_FALSE(CfgParser("CfgVer=").KnownFormat());
}

TEST(CfgSection, UnknownFormatStillLooksUpInTheWholeText) {
    EXPECT_EQ(lookup("a=1 Node3::b=2", "a"), "1");
    EXPECT_EQ(lookup("a=1 Node3::b=2", "Node3::b"), "2");
    EXPECT_EQ(lookup("CfgVer=2 a=1", "CfgVer"), "2");
    EXPECT_EQ(nodes("a=1 Node3::b=2"), std::vector<int>{});
}

TEST(CfgSection, TextBeforeTheMarkerIsInvisible) {
    EXPECT_EQ(lookup("a=1 CfgVer=1 b=2", "a"), "(null)");
}

TEST(CfgSection, MarkerItselfIsInvisible) {
    EXPECT_EQ(lookup("CfgVer=1 a=1", "CfgVer"), "(null)");
}

TEST(CfgSection, SecondSectionIsInvisible) {
    EXPECT_EQ(lookup("CfgVer=1 a=1 CfgVer=2 a=2", "a"), "1");
    EXPECT_EQ(lookup("CfgVer=1 a=1 CfgVer=2 b=2", "b"), "(null)");
    EXPECT_EQ(nodes("CfgVer=1 Node1::a=1 CfgVer=2 Node2::a=2"), std::vector<int>{1});
}

TEST(CfgSection, SecondSectionOfTheSameVersionEndsTheFirst) {
    EXPECT_EQ(lookup("CfgVer=1 a=1 CfgVer=1 b=2", "b"), "(null)");
}

TEST(CfgSection, EarlierSectionOfAnotherVersionIsSkipped) {
    EXPECT_EQ(lookup("CfgVer=2 a=2 CfgVer=1 a=1", "a"), "1");
    EXPECT_TRUE(CfgParser("CfgVer=2 a=2 CfgVer=1 a=1").KnownFormat());
}

TEST(CfgSection, LongerVersionNumberIsTakenForVersionOne) {
    CfgParser parser("CfgVer=12 x=1");
    EXPECT_TRUE(parser.KnownFormat());
    EXPECT_STREQ(parser.GetParam("x"), "1");
    // The section begins with the character 2, so an entry glued to the marker is not preceded by white space.
    EXPECT_EQ(lookup("CfgVer=12=7 x=1", "2"), "7");
}

TEST(CfgSection, EntryGluedToTheMarkerIsAtTheBeginningOfTheSection) {
    EXPECT_EQ(lookup("CfgVer=1a=5", "a"), "5");
}

TEST(CfgSection, SectionEndsAtTheNextMarkerEvenInsideAnEntry) {
    EXPECT_EQ(lookup("CfgVer=1 a=5CfgVer=3 b=1", "a"), "5");
    EXPECT_EQ(lookup("CfgVer=1CfgVer=1 b=1", "b"), "(null)");
}

// --- the nodes ---

TEST(CfgNodes, AreDistinctAndInOrderOfFirstAppearance) {
    EXPECT_EQ(nodes("CfgVer=1 Node1::a=1 Node1::b=2 Node10::a=3 NodeX::a=4"), (std::vector<int>{1, 10}));
    EXPECT_EQ(nodes("CfgVer=1 Node7::a=1 Node2::a=1 Node7::b=1 Node256::c=1"), (std::vector<int>{7, 2, 256}));
}

TEST(CfgNodes, EmptyNumberIsNodeZero) {
    EXPECT_EQ(nodes("CfgVer=1 Node::a=1"), std::vector<int>{0});
}

TEST(CfgNodes, NumbersAreDecimalAndEqualNumbersCountOnce) {
    EXPECT_EQ(nodes("CfgVer=1 Node010::a=1 Node10::a=1"), std::vector<int>{10});
    EXPECT_EQ(nodes("CfgVer=1 Node0::a=1 Node::a=1"), std::vector<int>{0});
}

TEST(CfgNodes, MarkersWithAnythingButDigitsAreIgnored) {
    EXPECT_EQ(nodes("CfgVer=1 Node1x::a=1"), std::vector<int>{});
    EXPECT_EQ(nodes("CfgVer=1 Node-1::a=1"), std::vector<int>{});
    EXPECT_EQ(nodes("CfgVer=1 Node 1::a=1"), std::vector<int>{});
    EXPECT_EQ(nodes("CfgVer=1 Node+1::a=1"), std::vector<int>{});
    EXPECT_EQ(nodes("CfgVer=1 node1::a=1"), std::vector<int>{});
}

TEST(CfgNodes, SearchGoesOnBehindAnIgnoredMarker) {
    EXPECT_EQ(nodes("CfgVer=1 NodeX=1 Node3::a=1"), std::vector<int>{3});
    EXPECT_EQ(nodes("CfgVer=1 NodeNode5::a=1"), std::vector<int>{5});
    EXPECT_EQ(nodes("CfgVer=1 NodeX::a=1 Node4::a=1"), std::vector<int>{4});
}

TEST(CfgNodes, MarkerWithoutColonsEndsTheSearch) {
    EXPECT_EQ(nodes("CfgVer=1 Node3=1"), std::vector<int>{});
    EXPECT_EQ(nodes("CfgVer=1 Node3::a=1 Node4=1"), std::vector<int>{3});
    EXPECT_EQ(nodes("CfgVer=1 Node3:a=1"), std::vector<int>{});
}

TEST(CfgNodes, MarkerInsideAWordOrValueCounts) {
    EXPECT_EQ(nodes("CfgVer=1 myNode4::a=1"), std::vector<int>{4});
    EXPECT_EQ(nodes("CfgVer=1 a=Node6::"), std::vector<int>{6});
}

TEST(CfgNodes, NumbersOutsideAnIntAreTheNearestIntAndDoNotWrap) {
    EXPECT_EQ(nodes("CfgVer=1 Node2147483647::a=1"), std::vector<int>{INT_MAX});
    EXPECT_EQ(nodes("CfgVer=1 Node4294967297::a=1 Node99999999999999999999::a=1"), std::vector<int>{INT_MAX});
}

TEST(CfgNodes, IndexOutsideTheListGivesZero) {
    CfgParser const parser("CfgVer=1 Node5::a=1 Node6::a=1");
    EXPECT_EQ(parser.GetNodeCount(), 2);
    EXPECT_EQ(parser.GetNodeID(0), 5);
    EXPECT_EQ(parser.GetNodeID(1), 6);
    EXPECT_EQ(parser.GetNodeID(2), 0);
    EXPECT_EQ(parser.GetNodeID(1000000), 0);
    EXPECT_EQ(parser.GetNodeID(-1), 0);
    EXPECT_EQ(CfgParser("CfgVer=1").GetNodeID(0), 0);
}

// --- the raw lookup ---

TEST(CfgLookup, ValueRunsToTheNextWhiteSpace) {
    EXPECT_EQ(lookup("CfgVer=1 a=1 b=two c=3", "b"), "two");
    EXPECT_EQ(lookup("CfgVer=1 a=x\tb=1", "a"), "x");
    EXPECT_EQ(lookup("CfgVer=1 a=x\nb=1", "a"), "x");
    EXPECT_EQ(lookup("CfgVer=1 a=x\rb=1", "a"), "x");
    EXPECT_EQ(lookup("CfgVer=1 a=x\vb=1", "a"), "x");
    EXPECT_EQ(lookup("CfgVer=1 a=x\fb=1", "a"), "x");
    EXPECT_EQ(lookup("CfgVer=1 a=last", "a"), "last");
}

TEST(CfgLookup, AnyWhiteSpaceBeforeTheKeyWillDo) {
    for (char const separator : {' ', '\t', '\n', '\r', '\v', '\f'}) {
        EXPECT_EQ(lookup(std::string("CfgVer=1") + separator + "a=1", "a"), "1") << static_cast<int>(separator);
    }
}

TEST(CfgLookup, KeyInsideALongerNameDoesNotCount) {
    EXPECT_EQ(lookup("CfgVer=1 xa=5", "a"), "(null)");
    EXPECT_EQ(lookup("CfgVer=1 xa=5 a=6", "a"), "6");
    EXPECT_EQ(lookup("CfgVer=1 ab=5", "a"), "(null)");
    EXPECT_EQ(lookup("CfgVer=1 aa=5", "a"), "(null)");
}

TEST(CfgLookup, NodeEntryIsNotAGeneralEntry) {
    EXPECT_EQ(lookup("CfgVer=1 Node3::Timeout=1", "Timeout"), "(null)");
    EXPECT_EQ(lookup("CfgVer=1 Node3::Timeout=1", "Node3::Timeout"), "1");
}

TEST(CfgLookup, FirstOccurrenceWins) {
    EXPECT_EQ(lookup("CfgVer=1 a=1 a=2", "a"), "1");
}

TEST(CfgLookup, NamesAreCaseSensitive) {
    EXPECT_EQ(lookup("CfgVer=1 timeout=1", "Timeout"), "(null)");
    EXPECT_EQ(lookup("CfgVer=1 timeout=1 Timeout=2", "Timeout"), "2");
}

TEST(CfgLookup, EmptyValueIsFoundAndEmpty) {
    EXPECT_EQ(lookup("CfgVer=1 a= b=1", "a"), "");
    EXPECT_EQ(lookup("CfgVer=1 a=", "a"), "");
}

TEST(CfgLookup, ValueIsTakenAsItStands) {
    EXPECT_EQ(lookup("CfgVer=1 a=\"q\" b=1", "a"), "\"q\"");
    EXPECT_EQ(lookup("CfgVer=1 a=x=y b=1", "a"), "x=y");
    EXPECT_EQ(lookup("CfgVer=1 a=1#2 b=1", "a"), "1#2");
    EXPECT_EQ(lookup("CfgVer=1 a=a\\tb b=1", "a"), "a\\tb");
    EXPECT_EQ(lookup("CfgVer=1 a=x&nbsp;y b=1", "a"), "x&nbsp;y");
}

TEST(CfgLookup, BlankBeforeTheEqualSignIsAnotherKey) {
    EXPECT_EQ(lookup("CfgVer=1 a =1", "a"), "(null)");
}

TEST(CfgLookup, BytesAboveAsciiAreOrdinaryCharacters) {
    EXPECT_EQ(lookup("CfgVer=1 a=\xE4\xF6\xFF\xA0\x85 b=1", "a"), "\xE4\xF6\xFF\xA0\x85");
    EXPECT_EQ(lookup("CfgVer=1 \xE4=1", "\xE4"), "1");
    EXPECT_EQ(lookup("CfgVer=1 \xFF"
                     "a=1",
                     "a"),
              "(null)");
}

TEST(CfgLookup, NextLookupReplacesTheLastValue) {
    CfgParser parser("CfgVer=1 a=first b=second");
    EXPECT_STREQ(parser.GetParam("a"), "first");
    EXPECT_STREQ(parser.GetParam("b"), "second");
    EXPECT_EQ(parser.GetParam("c"), nullptr);
    EXPECT_STREQ(parser.GetParam("a"), "first");
}

TEST(CfgLookup, NamesThatBeginAlikeAreToldApart) {
    constexpr char const* kText = "CfgVer=1 ab=2 b=x a-b=3 a==5 A=4 aa=6 a=1 \xFF=7 =8";
    EXPECT_EQ(lookup(kText, "a"), "=5"); // the first of two
    EXPECT_EQ(lookup(kText, "ab"), "2");
    EXPECT_EQ(lookup(kText, "a-b"), "3");
    EXPECT_EQ(lookup(kText, "A"), "4");
    EXPECT_EQ(lookup(kText, "aa"), "6");
    EXPECT_EQ(lookup(kText, "\xFF"), "7");
    EXPECT_EQ(lookup(kText, ""), "8");
    EXPECT_EQ(lookup(kText, "aab"), "(null)");
    EXPECT_EQ(lookup(kText, "a-"), "(null)");
}

TEST(CfgLookup, NamesThatNoEntryCanHaveAreSearchedInTheText) {
    constexpr char const* kText = "CfgVer=1 xa=b=1 a=b=2 a=b=3 c d=4 e==5";
    EXPECT_EQ(lookup(kText, "a=b"), "2");
    EXPECT_EQ(lookup(kText, "c d"), "4");
    EXPECT_EQ(lookup(kText, "e="), "5");
    EXPECT_EQ(lookup(kText, "c  d"), "(null)");
    EXPECT_EQ(lookup(kText, "b=2 a=b"), "(null)");
}

TEST(CfgLookup, FirstOfManyEntriesOfOneNameCounts) {
    std::string text = "CfgVer=1";
    for (int i = 0; i < 300; ++i) { // enough entries that no sort leaves them in order by chance
        text += " z=" + std::to_string(i) + " a=" + std::to_string(i) + " m=" + std::to_string(i);
    }
    EXPECT_EQ(lookup(text, "a"), "0");
    EXPECT_EQ(lookup(text, "m"), "0");
    EXPECT_EQ(lookup(text, "z"), "0");
}

TEST(CfgLookup, EmptyNameFindsOnlyABareEqualSign) {
    EXPECT_EQ(lookup("CfgVer=1 =5", ""), "5");
    EXPECT_EQ(lookup("CfgVer=1 a=5", ""), "(null)");
}

// --- the lookup by node ---

constexpr char const* kTimeouts = "CfgVer=1 Timeout=500 Node2::Timeout=700";

TEST(CfgNodeLookup, NodeEntryGoesBeforeTheGeneralOne) {
    expectValue(kTimeouts, "Timeout", 2, kNoRestriction, "700");
    expectValue(kTimeouts, "Timeout", 5, kNoRestriction, "500");
    expectValue(kTimeouts, "Timeout", kNodeIndependent, kNoRestriction, "500");
    EXPECT_EQ(nodes(kTimeouts), std::vector<int>{2});
}

TEST(CfgNodeLookup, NodeNumbersAreNotMixedUp) {
    std::string const text = "CfgVer=1 Node10::a=ten Node1::a=one Node0::a=zero";
    expectValue(text, "a", 1, kNoRestriction, "one");
    expectValue(text, "a", 10, kNoRestriction, "ten");
    expectValue(text, "a", 0, kNoRestriction, "zero");
    expectNoValue(text, "a", 100, kNoRestriction, 2);
}

TEST(CfgNodeLookup, EmptyValueIsFound) {
    expectValue("CfgVer=1 a=", "a", kNodeIndependent, kNoRestriction, "");
    expectValue("CfgVer=1 Node1::a= a=5", "a", 1, kNoRestriction, "");
}

TEST(CfgNodeLookup, AbsentEntryIsNotFound) {
    expectNoValue("CfgVer=1 a=1", "b", kNodeIndependent, kNoRestriction, 2);
    expectNoValue("CfgVer=1 a=1", "b", 3, kNoRestriction, 2);
    expectNoValue("CfgVer=1 Node3::a=1", "a", kNodeIndependent, kNoRestriction, 2);
    expectNoValue("CfgVer=1 Node3::a=1", "a", 4, kNoRestriction, 2);
}

TEST(CfgNodeLookup, BothRestrictionsAtOnceAreACallerError) {
    expectNoValue(kTimeouts, "Timeout", 2, kGeneralOnly | kNodeOnly, 6);
    expectNoValue(kTimeouts, "Timeout", kNodeIndependent, kGeneralOnly | kNodeOnly, 6);
    expectNoValue(kTimeouts, "missing", 5, kGeneralOnly | kNodeOnly, 6);
}

TEST(CfgNodeLookup, NodeEntryOfAGeneralOnlyParameterIsRefused) {
    expectNoValue("CfgVer=1 Node1::uart=com1 uart=com2", "uart", 1, kGeneralOnly, 4);
    expectNoValue("CfgVer=1 Node1::uart=com1", "uart", 1, kGeneralOnly, 4);
}

TEST(CfgNodeLookup, NodeEntryOfAGeneralOnlyParameterIsNotSeenNodeIndependently) {
    expectNoValue("CfgVer=1 Node1::uart=com1", "uart", kNodeIndependent, kGeneralOnly, 2);
    expectValue("CfgVer=1 Node1::uart=com1 uart=com2", "uart", kNodeIndependent, kGeneralOnly, "com2");
    expectValue("CfgVer=1 Node1::uart=com1 uart=com2", "uart", 3, kGeneralOnly, "com2");
}

TEST(CfgNodeLookup, NodeOnlyParameterIsFoundForItsNode) {
    expectValue("CfgVer=1 Node1::prefix=p", "prefix", 1, kNodeOnly, "p");
}

TEST(CfgNodeLookup, NodeOnlyParameterOfANodeFallsBackToTheGeneralEntry) {
    expectValue("CfgVer=1 prefix=p Node1::a=1", "prefix", 1, kNodeOnly, "p");
    expectNoValue("CfgVer=1 Node1::a=1", "prefix", 1, kNodeOnly, 2);
}

TEST(CfgNodeLookup, NodeOnlyParameterGivenGenerallyBesideNodesIsRefused) {
    expectNoValue("CfgVer=1 prefix=p Node1::a=1", "prefix", kNodeIndependent, kNodeOnly, 5);
}

TEST(CfgNodeLookup, NodeOnlyParameterMissingBesideNodesIsNotApplicable) {
    expectNoValue("CfgVer=1 Node1::prefix=p", "prefix", kNodeIndependent, kNodeOnly, 1);
    expectNoValue("CfgVer=1 Node1::a=1", "prefix", kNodeIndependent, kNodeOnly, 1);
}

TEST(CfgNodeLookup, NodeOnlyParameterWithoutAnyNodesIsAGeneralOne) {
    expectValue("CfgVer=1 prefix=p", "prefix", kNodeIndependent, kNodeOnly, "p");
    expectNoValue("CfgVer=1 a=1", "prefix", kNodeIndependent, kNodeOnly, 2);
}

TEST(CfgNodeLookup, ResultsHaveFixedNumbers) {
    EXPECT_EQ(CfgParser::kFound, 0);
    EXPECT_EQ(CfgParser::kNotApplicable, 1);
    EXPECT_EQ(CfgParser::kNotFound, 2);
    EXPECT_EQ(CfgParser::kIllegalValue, 3);
    EXPECT_EQ(CfgParser::kCannotBePrefixed, 4);
    EXPECT_EQ(CfgParser::kCannotBeNodeIndependent, 5);
    EXPECT_EQ(CfgParser::kInvalidSpecification, 6);
    EXPECT_EQ(CfgParser::kGeneralOnly, 1);
    EXPECT_EQ(CfgParser::kNodeOnly, 2);
    EXPECT_EQ(CfgParser::kAnyNode, -1);
}

// --- values and messages ---

TEST(CfgValue, NonBreakingBlanksBecomeBlanks) {
    std::string value;
    EXPECT_TRUE(CfgParserN::parseValue("a&nbsp;b&nbsp;&nbsp;c", value));
    EXPECT_EQ(value, "a b  c");
    EXPECT_TRUE(CfgParserN::parseValue("&nbsp;", value));
    EXPECT_EQ(value, " ");
    EXPECT_TRUE(CfgParserN::parseValue("", value));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(CfgParserN::parseValue("&nbsp &NBSP; nbsp; &amp;", value));
    EXPECT_EQ(value, "&nbsp &NBSP; nbsp; &amp;");
    EXPECT_TRUE(CfgParserN::parseValue("&&nbsp;nbsp;", value));
    EXPECT_EQ(value, "& nbsp;");
}

std::string message(int result, char const* name) {
    return CfgParserN::getErrorString(static_cast<CfgParser::parseResult>(result), name);
}

TEST(CfgMessage, NamesTheParameterAndTheReason) {
    EXPECT_EQ(message(2, "Timeout"), "Parser: parameter 'Timeout' is not found");
    EXPECT_EQ(message(3, "Timeout"), "Parser: parameter 'Timeout' has illegal value");
    EXPECT_EQ(message(4, "uart"), "Parser: parameter 'uart' can't be prefixed");
    EXPECT_EQ(message(5, "prefix"), "Parser: parameter 'prefix' can't be node independent");
    EXPECT_EQ(message(6, "x"), "Parser: parameter 'x' has invalid internal specification");
    EXPECT_EQ(message(2, ""), "Parser: parameter '' is not found");
}

TEST(CfgMessage, EveryOtherResultIsAnUnknownError) {
    EXPECT_EQ(message(0, "a"), "Parser: parameter 'a' has unknown error");
    EXPECT_EQ(message(1, "a"), "Parser: parameter 'a' has unknown error");
    EXPECT_EQ(message(7, "a"), "Parser: parameter 'a' has unknown error");
}

// --- typed readers ---

struct TextAnswer {
    bool ok = false;
    std::string value = "default";
    std::string error;
};

TextAnswer readText(std::string const& configuration, char const* name, int node, int flags, bool optional) {
    CfgParser parser(configuration.c_str());
    TextAnswer answer;
    answer.ok = readParam<std::string>(parser, name, node, answer.value, flags, optional, answer.error);
    return answer;
}

struct NumberAnswer {
    bool ok = false;
    int value = -77;
    std::string error;
};

NumberAnswer readNumber(std::string const& configuration, char const* name, int node, int flags, bool optional) {
    CfgParser parser(configuration.c_str());
    NumberAnswer answer;
    answer.ok = readParam<int>(parser, name, node, answer.value, flags, optional, answer.error);
    return answer;
}

int number(std::string const& valueText) {
    NumberAnswer const answer = readNumber("CfgVer=1 n=" + valueText + " z=1", "n", kNodeIndependent, 0, false);
    EXPECT_TRUE(answer.ok) << valueText;
    EXPECT_EQ(answer.error, "") << valueText;
    return answer.value;
}

TEST(ReadText, DeliversTheValueWithItsBlanks) {
    TextAnswer const answer = readText("CfgVer=1 a=x&nbsp;y", "a", kNodeIndependent, 0, false);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, "x y");
    EXPECT_EQ(answer.error, "");
}

TEST(ReadText, DeliversAnEmptyValue) {
    TextAnswer const answer = readText("CfgVer=1 a= b=1", "a", kNodeIndependent, 0, false);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, "");
}

TEST(ReadText, MissingRequiredParameterIsAnError) {
    TextAnswer const answer = readText("CfgVer=1 b=1", "a", kNodeIndependent, 0, false);
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "Parser: parameter 'a' is not found");
    EXPECT_EQ(answer.value, "default");
}

TEST(ReadText, MissingOptionalParameterKeepsTheDefault) {
    TextAnswer const answer = readText("CfgVer=1 b=1", "a", kNodeIndependent, 0, true);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, "default");
    EXPECT_EQ(answer.error, "");
}

TEST(ReadText, NotApplicableIsSuccessWithTheDefault) {
    TextAnswer const answer = readText("CfgVer=1 Node1::a=1", "prefix", kNodeIndependent, kNodeOnly, false);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, "default");
    EXPECT_EQ(answer.error, "");
}

TEST(ReadText, PrefixGivenGenerallyBesideNodesIsAnErrorEvenWhenOptional) {
    for (bool const optional : {false, true}) {
        TextAnswer const answer =
            readText("CfgVer=1 prefix=p Node1::a=1", "prefix", kNodeIndependent, kNodeOnly, optional);
        EXPECT_FALSE(answer.ok);
        EXPECT_EQ(answer.error, "Parser: parameter 'prefix' can't be node independent");
        EXPECT_EQ(answer.value, "default");
    }
}

TEST(ReadText, UartGivenForANodeIsAnErrorEvenWhenOptional) {
    for (bool const optional : {false, true}) {
        TextAnswer const answer = readText("CfgVer=1 Node1::uart=com1", "uart", 1, kGeneralOnly, optional);
        EXPECT_FALSE(answer.ok);
        EXPECT_EQ(answer.error, "Parser: parameter 'uart' can't be prefixed");
    }
}

TEST(ReadText, UartGivenForANodeIsNotSeenNodeIndependently) {
    TextAnswer const answer = readText("CfgVer=1 Node1::uart=com1", "uart", kNodeIndependent, kGeneralOnly, false);
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "Parser: parameter 'uart' is not found");
}

TEST(ReadText, BothRestrictionsAreAnErrorEvenWhenOptional) {
    TextAnswer const answer = readText("CfgVer=1 a=1", "a", 1, kGeneralOnly | kNodeOnly, true);
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "Parser: parameter 'a' has invalid internal specification");
}

TEST(ReadNumber, DetectsTheBase) {
    EXPECT_EQ(number("10"), 10);
    EXPECT_EQ(number("010"), 8);
    EXPECT_EQ(number("0x20"), 32);
    EXPECT_EQ(number("0X1F4"), 500);
    EXPECT_EQ(number("0"), 0);
    EXPECT_EQ(number("-5"), -5);
    EXPECT_EQ(number("+5"), 5);
}

TEST(ReadNumber, IgnoresWhatFollowsTheNumber) {
    EXPECT_EQ(number("500ms"), 500);
    EXPECT_EQ(number("0x1Fg"), 31);
    EXPECT_EQ(number("1.9"), 1);
    EXPECT_EQ(number("09"), 0);
    EXPECT_EQ(number("5&nbsp;6"), 5);
    EXPECT_EQ(number("0b101"), 0) << "this C library reads binary numbers, which the parameters do not know";
}

TEST(ReadNumber, TextWithoutDigitsIsZero) {
    EXPECT_EQ(number("abc"), 0);
    EXPECT_EQ(number(""), 0);
    EXPECT_EQ(number("-"), 0);
    EXPECT_EQ(number("&nbsp;7"), 0);
}

TEST(ReadNumber, EmptyValueAtTheEndIsZero) {
    NumberAnswer const answer = readNumber("CfgVer=1 n=", "n", kNodeIndependent, 0, false);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, 0);
}

TEST(ReadNumber, TakesTheNodesEntryBeforeTheGeneralOne) {
    EXPECT_EQ(readNumber(kTimeouts, "Timeout", 2, 0, false).value, 700);
    EXPECT_EQ(readNumber(kTimeouts, "Timeout", 5, 0, false).value, 500);
    EXPECT_EQ(readNumber(kTimeouts, "Timeout", kNodeIndependent, 0, false).value, 500);
}

TEST(ReadNumber, MissingRequiredParameterIsAnError) {
    NumberAnswer const answer = readNumber("CfgVer=1 a=1", "Timeout", 4, 0, false);
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.value, -77);
    EXPECT_EQ(answer.error, "Parser: parameter 'Timeout' is not found");
}

TEST(ReadNumber, MissingOptionalParameterKeepsTheDefault) {
    NumberAnswer const answer = readNumber("CfgVer=1 a=1", "repeat", 4, 0, true);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, -77);
    EXPECT_EQ(answer.error, "");
}

TEST(ReadNumber, NotApplicableIsSuccessWithTheDefault) {
    NumberAnswer const answer = readNumber("CfgVer=1 Node1::n=5", "n", kNodeIndependent, kNodeOnly, false);
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.value, -77);
}

TEST(ReadNumber, RefusalsCarryTheirMessages) {
    EXPECT_EQ(readNumber("CfgVer=1 Node1::baudrate=9600", "baudrate", 1, kGeneralOnly, true).error,
              "Parser: parameter 'baudrate' can't be prefixed");
    EXPECT_EQ(readNumber("CfgVer=1 n=1 Node1::a=1", "n", kNodeIndependent, kNodeOnly, true).error,
              "Parser: parameter 'n' can't be node independent");
    EXPECT_EQ(readNumber("CfgVer=1 n=1", "n", 1, kGeneralOnly | kNodeOnly, true).error,
              "Parser: parameter 'n' has invalid internal specification");
}

TEST(ReadNumber, NumbersOutsideAnIntAreTheNearestIntAndDoNotWrap) {
    EXPECT_EQ(number("2147483647"), INT_MAX);
    EXPECT_EQ(number("2147483648"), INT_MAX);
    EXPECT_EQ(number("4294967297"), INT_MAX);
    EXPECT_EQ(number("99999999999999999999999999"), INT_MAX);
    EXPECT_EQ(number("0xFFFFFFFFFFFFFFFFFF"), INT_MAX);
    EXPECT_EQ(number("-2147483648"), INT_MIN);
    EXPECT_EQ(number("-2147483649"), INT_MIN);
    EXPECT_EQ(number("-99999999999999999999999999"), INT_MIN);
}

// --- hostile texts ---

TEST(CfgHostileText, NullConfigurationIsAnUnknownFormat) {
    CfgParser parser(nullptr);
    EXPECT_FALSE(parser.KnownFormat());
    EXPECT_EQ(parser.GetNodeCount(), 0);
    EXPECT_EQ(parser.GetParam("a"), nullptr);
}

TEST(CfgHostileText, ManyNodesAreAllListedOnce) {
    std::string text = "CfgVer=1";
    for (int node = 0; node < 1000; ++node) {
        text += " Node" + std::to_string(node) + "::a=1 Node" + std::to_string(node) + "::b=1";
    }
    CfgParser const parser(text.c_str());
    ASSERT_EQ(parser.GetNodeCount(), 1000);
    EXPECT_EQ(parser.GetNodeID(0), 0);
    EXPECT_EQ(parser.GetNodeID(999), 999);
}

TEST(CfgHostileText, RandomTextsKeepTheRules) {
    std::vector<std::string> const pieces = {
        "CfgVer=1", "CfgVer=", "Node", "::",      "1",    "256",    " ",  "\t",
        "a=",       "a",       "=",    "Node3::", "\xff", "&nbsp;", "\n", "99999999999"};
    std::mt19937 random(4711);
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(0, 25);
    int found = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (int i = length(random); i > 0; --i) {
            text += pieces[piece(random)];
        }
        CfgParser parser(text.c_str());
        ASSERT_EQ(parser.KnownFormat(), text.find("CfgVer=1") != std::string::npos) << text;
        std::vector<int> seen;
        for (int i = 0; i < parser.GetNodeCount(); ++i) {
            for (int const earlier : seen) {
                ASSERT_NE(earlier, parser.GetNodeID(i)) << text;
            }
            seen.push_back(parser.GetNodeID(i));
            ASSERT_GE(seen.back(), 0) << text;
        }
        std::string value = "untouched";
        int const result = parser.getParam("a", 3, value, 0);
        ASSERT_TRUE(result == 0 || result == 2) << text;
        if (result == 0) {
            ++found;
            ASSERT_EQ(value.find_first_of(" \t\n"), std::string::npos) << text;
            ASSERT_NE(text.find("a=" + value), std::string::npos) << text;
        } else {
            ASSERT_EQ(value, "untouched") << text;
        }
    }
    EXPECT_GT(found, 500);
}

} // namespace
