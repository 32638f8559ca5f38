#include "protlib/tag/TagBase.h"

#include "tests/protlib/TestTag.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using velktest::Bytes;
using velktest::Counting;
using velktest::Hex;

constexpr bool kTowardsHost = false;
constexpr bool kTowardsPlc = true;

TestTag bitTag(int bits, int bitIndex, std::vector<std::string> conversions = {}) {
    TestTag tag(bits == 1 ? ICU_BOOLEAN : ICU_BOOLEAN_ARRAY, bits == 1 ? ICU_NONE : ICU_BOOLEAN, bits,
                std::move(conversions));
    tag.bitIndex = bitIndex;
    return tag;
}

/** Converts into a destination that held @p before, or gives an empty result on failure. */
Bytes convert(TestTag const& tag, Bytes const& source, Bytes destination, bool towardsPlc) {
    destination.push_back(0xA5);
    EXPECT_TRUE(tag.ConvertVariable(source.data(), destination.data(), towardsPlc)) << tag.GetErrorText();
    EXPECT_EQ(destination.back(), 0xA5);
    destination.pop_back();
    return destination;
}

void expectFailure(TestTag const& tag, Bytes const& source, bool towardsPlc, char const* text) {
    Bytes destination = Hex("E1 E2 E3 E4 E5 E6 E7 E8");
    EXPECT_FALSE(tag.ConvertVariable(source.data(), destination.data(), towardsPlc));
    EXPECT_EQ(destination, Hex("E1 E2 E3 E4 E5 E6 E7 E8"));
    EXPECT_STREQ(tag.GetErrorText(), text);
}

// --- lengths and flags ---

TEST(TagBase, PackedLengthOfBitTypesIsTheBytesTheyTouch) {
    EXPECT_EQ(bitTag(1, 0).PackedLen(), 1);
    EXPECT_EQ(bitTag(1, 7).PackedLen(), 1);
    EXPECT_EQ(bitTag(8, 0).PackedLen(), 1);
    EXPECT_EQ(bitTag(8, 1).PackedLen(), 2);
    EXPECT_EQ(bitTag(2, 7).PackedLen(), 2);
    EXPECT_EQ(bitTag(17, 7).PackedLen(), 3);
    EXPECT_EQ(bitTag(2147483647, 7).PackedLen(), 268435457);
}

TEST(TagBase, PackedLengthOfEveryOtherTypeIsItsLength) {
    TestTag tag(ICU_INT, ICU_NONE, 4);
    tag.bitIndex = 7;
    EXPECT_EQ(tag.PackedLen(), 4);
    EXPECT_EQ(TestTag(ICU_STRING, ICU_BYTE, 20).PackedLen(), 20);
    EXPECT_EQ(TestTag(ICU_STRING, ICU_BYTE, 0).PackedLen(), 0);
}

TEST(TagBase, TagsCanBeReadAndWrittenByDefault) {
    TestTag const tag;
    EXPECT_FALSE(tag.IsReadOnly());
    EXPECT_FALSE(tag.IsWriteOnly());
}

// --- error text ---

TEST(TagBase, ErrorTextIsEmptyAtFirstAndReplacedByEachError) {
    TestTag const tag;
    EXPECT_STREQ(tag.GetErrorText(), "");
    tag.SetError("first");
    EXPECT_STREQ(tag.GetErrorText(), "first");
    tag.SetError("second");
    EXPECT_STREQ(tag.GetErrorText(), "second");
    tag.SetError("");
    EXPECT_STREQ(tag.GetErrorText(), "");
}

TEST(TagBase, CopyHasTheConversionsAndTheErrorText) {
    TestTag const original(ICU_SHORT, ICU_NONE, 2, {"swap2", "bcd"});
    original.SetError("broken");
    std::unique_ptr<ITag> const clone(original.Clone());
    auto const* const copy = dynamic_cast<TestTag const*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->getConversions(), (std::vector<std::string>{"swap2", "bcd"}));
    EXPECT_STREQ(copy->GetErrorText(), "broken");
    original.SetError("other");
    EXPECT_STREQ(copy->GetErrorText(), "broken");
}

// --- moving values ---

TEST(TagConvert, WithoutConversionsTheBytesAreCopied) {
    TestTag const tag(ICU_INT, ICU_NONE, 4);
    EXPECT_EQ(convert(tag, Hex("12 34 56 78"), Hex("00 00 00 00"), kTowardsHost), Hex("12 34 56 78"));
    EXPECT_EQ(convert(tag, Hex("12 34 56 78"), Hex("00 00 00 00"), kTowardsPlc), Hex("12 34 56 78"));
}

TEST(TagConvert, EmptyValueTouchesNothing) {
    TestTag const tag(ICU_STRING, ICU_BYTE, 0);
    EXPECT_EQ(convert(tag, Hex("12"), Hex(""), kTowardsHost), Hex(""));
    EXPECT_EQ(convert(tag, Hex("12"), Hex(""), kTowardsPlc), Hex(""));
}

TEST(TagConvert, BitsAreUnpackedTowardsTheHost) {
    EXPECT_EQ(convert(bitTag(4, 6), Hex("C0 01"), Hex("77 77 77 77"), kTowardsHost), Hex("01 01 01 00"));
    EXPECT_EQ(convert(bitTag(1, 3), Hex("08"), Hex("77"), kTowardsHost), Hex("01"));
    EXPECT_EQ(convert(bitTag(1, 3), Hex("F7"), Hex("77"), kTowardsHost), Hex("00"));
}

TEST(TagConvert, BitsArePackedTowardsThePlcWithoutTouchingTheirNeighbours) {
    EXPECT_EQ(convert(bitTag(2, 7), Hex("01 00"), Hex("00 FF"), kTowardsPlc), Hex("80 FE"));
    EXPECT_EQ(convert(bitTag(1, 3), Hex("00"), Hex("FF"), kTowardsPlc), Hex("F7"));
    EXPECT_EQ(convert(bitTag(1, 3), Hex("01"), Hex("00"), kTowardsPlc), Hex("08"));
    EXPECT_EQ(convert(bitTag(3, 1), Hex("05 00 01"), Hex("F1"), kTowardsPlc), Hex("FB"));
}

TEST(TagConvert, ConversionsOfBitsWorkOnTheUnpackedBits) {
    EXPECT_EQ(convert(bitTag(4, 6, {"inv"}), Hex("C0 01"), Hex("77 77 77 77"), kTowardsHost), Hex("00 00 00 01"));
    EXPECT_EQ(convert(bitTag(2, 7, {"inv"}), Hex("01 00"), Hex("80 00"), kTowardsPlc), Hex("00 01"));
}

/** A tag whose value has different lengths on the two sides. */
class UnevenTag : public TestTag {
public:
    UnevenTag(int hostLength, int plcLength) : TestTag(ICU_BINARY, ICU_UNSIGNED_BYTE, hostLength), packed(plcLength) {}
    int PackedLen() const override { return packed; }
    int packed;
};

TEST(TagConvert, ShorterPlcImageIsFilledUpWithZerosTowardsTheHost) {
    EXPECT_EQ(convert(UnevenTag(4, 2), Hex("11 22"), Hex("77 77 77 77"), kTowardsHost), Hex("11 22 00 00"));
}

TEST(TagConvert, LongerPlcImageIsCutTowardsTheHost) {
    EXPECT_EQ(convert(UnevenTag(2, 4), Hex("11 22 33 44"), Hex("77 77"), kTowardsHost), Hex("11 22"));
}

TEST(TagConvert, LongerPlcImageIsFilledUpWithZerosTowardsThePlc) {
    EXPECT_EQ(convert(UnevenTag(2, 4), Hex("11 22"), Hex("77 77 77 77"), kTowardsPlc), Hex("11 22 00 00"));
}

TEST(TagConvert, ShorterPlcImageIsCutTowardsThePlc) {
    EXPECT_EQ(convert(UnevenTag(4, 2), Hex("11 22 33 44"), Hex("77 77"), kTowardsPlc), Hex("11 22"));
}

TEST(TagConvert, ValuesAroundTheSizeOfTheStackBufferAreMovedWhole) {
    for (int const length : {255, 256, 257, 1000}) {
        TestTag const tag(ICU_STRING, ICU_BYTE, length, {"swapnibble", "swapnibble"});
        Bytes const value = Counting(static_cast<std::size_t>(length), 3);
        Bytes const empty(static_cast<std::size_t>(length), 0x77);
        EXPECT_EQ(convert(tag, value, empty, kTowardsHost), value) << length;
        EXPECT_EQ(convert(tag, value, empty, kTowardsPlc), value) << length;
    }
}

TEST(TagConvert, SourceAndDestinationMayBeTheSameBytes) {
    TestTag const tag(ICU_SHORT, ICU_NONE, 2, {"swap2"});
    Bytes bytes = Hex("12 34");
    EXPECT_TRUE(tag.ConvertVariable(bytes.data(), bytes.data(), kTowardsHost));
    EXPECT_EQ(bytes, Hex("34 12"));
}

// --- the list of conversions ---

/** Records which conversions are requested, and can refuse one. */
class RecordingTag : public TestTag {
public:
    using TestTag::TestTag;
    bool DoConversion(unsigned char* buffer, char const* keyword, bool towardsPlc) const override {
        asked.push_back(std::string(keyword) + (towardsPlc ? " to plc" : " to host"));
        return refused != keyword && TestTag::DoConversion(buffer, keyword, towardsPlc);
    }
    mutable std::vector<std::string> asked;
    std::string refused;
};

using Asked = std::vector<std::string>;

TEST(TagConversionList, RunsFromLastToFirstTowardsTheHost) {
    RecordingTag const tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, Asked{"swap2", "bcd", "swapnibble"});
    Bytes value(2);
    EXPECT_TRUE(tag.ConvertVariable(Hex("00 00").data(), value.data(), kTowardsHost));
    EXPECT_EQ(tag.asked, (Asked{"swapnibble to host", "bcd to host", "swap2 to host"}));
}

TEST(TagConversionList, RunsFromFirstToLastTowardsThePlc) {
    RecordingTag const tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, Asked{"swap2", "bcd", "swapnibble"});
    Bytes value(2);
    EXPECT_TRUE(tag.ConvertVariable(Hex("00 00").data(), value.data(), kTowardsPlc));
    EXPECT_EQ(tag.asked, (Asked{"swap2 to plc", "bcd to plc", "swapnibble to plc"}));
}

TEST(TagConversionList, Swap2AndBcdAreAppliedAsBcdThenSwap2TowardsTheHost) {
    TestTag const tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, {"swap2", "bcd"});
    // 34 12 is 1234 in packed decimal, D2 04 in binary, and 04 D2 with its bytes exchanged.
    EXPECT_EQ(convert(tag, Hex("34 12"), Hex("00 00"), kTowardsHost), Hex("04 D2"));
    EXPECT_EQ(convert(tag, Hex("04 D2"), Hex("00 00"), kTowardsPlc), Hex("34 12"));
}

TEST(TagConversionList, OtherOrderGivesOtherBytes) {
    TestTag const tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, {"bcd", "swap2"});
    EXPECT_EQ(convert(tag, Hex("12 34"), Hex("00 00"), kTowardsHost), Hex("D2 04"));
    EXPECT_EQ(convert(tag, Hex("D2 04"), Hex("00 00"), kTowardsPlc), Hex("12 34"));
}

TEST(TagConversionList, StopsAtTheFirstFailureTowardsTheHost) {
    RecordingTag tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, Asked{"swap2", "bcd", "swapnibble"});
    tag.refused = "bcd";
    expectFailure(tag, Hex("00 00"), kTowardsHost, "Conversion error at: bcd");
    EXPECT_EQ(tag.asked, (Asked{"swapnibble to host", "bcd to host"}));
}

TEST(TagConversionList, StopsAtTheFirstFailureTowardsThePlc) {
    RecordingTag tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, Asked{"swap2", "bcd", "swapnibble"});
    tag.refused = "swap2";
    expectFailure(tag, Hex("00 00"), kTowardsPlc, "Conversion error at: swap2");
    EXPECT_EQ(tag.asked, (Asked{"swap2 to plc"}));
}

TEST(TagConversionList, Swap2OnThreeBytesFailsAndKeepsTheDestination) {
    TestTag const tag(ICU_STRING, ICU_BYTE, 3, {"swap2"});
    expectFailure(tag, Hex("41 42 43"), kTowardsHost, "Conversion error at: swap2");
    expectFailure(tag, Hex("41 42 43"), kTowardsPlc, "Conversion error at: swap2");
}

TEST(TagConversionList, BcdFailuresNameTheConversion) {
    TestTag const tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, {"swapnibble", "bcd"});
    expectFailure(tag, Hex("1A 00"), kTowardsHost, "Conversion error at: bcd");
    // Towards the PLC swapnibble comes first: 01 72 becomes 10 27, which is 10000.
    expectFailure(tag, Hex("01 72"), kTowardsPlc, "Conversion error at: bcd");
}

TEST(TagConversionList, FailureOfABitTagLeavesThePlcsBits) {
    expectFailure(bitTag(3, 2, {"neg"}), Hex("01 01 01"), kTowardsPlc, "Conversion error at: neg");
    expectFailure(bitTag(3, 2, {"neg"}), Hex("FF"), kTowardsHost, "Conversion error at: neg");
}

TEST(TagConversionList, UnknownKeywordFailsOnlyWhenItIsUsed) {
    TestTag const tag(ICU_SHORT, ICU_NONE, 2, {"BCD"});
    EXPECT_STREQ(tag.GetErrorText(), "");
    expectFailure(tag, Hex("12 34"), kTowardsHost, "Conversion error at: BCD");
    TestTag const empty(ICU_SHORT, ICU_NONE, 2, {""});
    expectFailure(empty, Hex("12 34"), kTowardsPlc, "Conversion error at: ");
}

TEST(TagConversionList, FailureOfALongValueKeepsTheDestination) {
    TestTag const tag(ICU_STRING, ICU_BYTE, 301, {"swap2"});
    Bytes const source(301, 0x11);
    Bytes destination(301, 0x77);
    EXPECT_FALSE(tag.ConvertVariable(source.data(), destination.data(), kTowardsHost));
    EXPECT_EQ(destination, Bytes(301, 0x77));
    EXPECT_STREQ(tag.GetErrorText(), "Conversion error at: swap2");
}

TEST(TagConversionList, SuccessKeepsTheErrorText) {
    TestTag const tag(ICU_UNSIGNED_BYTE, ICU_NONE, 1, {"bcd"});
    expectFailure(tag, Hex("0A"), kTowardsHost, "Conversion error at: bcd");
    EXPECT_EQ(convert(tag, Hex("10"), Hex("00"), kTowardsHost), Hex("0A"));
    EXPECT_STREQ(tag.GetErrorText(), "Conversion error at: bcd");
}

TEST(TagConversionList, MixedListIsUndoneExactly) {
    TestTag const tag(ICU_UNSIGNED_INT, ICU_NONE, 4, {"swap4", "swap4", "bcd", "swapnibble", "swap2"});
    // Towards the host: 56 78 12 34 swapped in pairs, nibbles swapped: 87 65 43 21; as decimal 21436587.
    Bytes const host = convert(tag, Hex("56 78 12 34"), Hex("00 00 00 00"), kTowardsHost);
    EXPECT_EQ(host, Hex("AB 18 47 01"));
    EXPECT_EQ(convert(tag, host, Hex("00 00 00 00"), kTowardsPlc), Hex("56 78 12 34"));
}

/** A driver's tag that adds its own step to the common one. */
class OverridingTag : public TestTag {
public:
    using TestTag::TestTag;
    bool Convert(unsigned char const* source, unsigned char* destination, bool towardsPlc) const override {
        seen = towardsPlc ? "to plc" : "to host";
        return TestTag::Convert(source, destination, towardsPlc) && succeed;
    }
    mutable std::string seen;
    bool succeed = true;
};

TEST(TagConvert, ConvertVariableUsesTheDriversConvert) {
    OverridingTag tag(ICU_BYTE);
    unsigned char value = 0;
    EXPECT_TRUE(tag.ConvertVariable(Hex("12").data(), &value, kTowardsPlc));
    EXPECT_EQ(tag.seen, "to plc");
    EXPECT_TRUE(tag.ConvertVariable(Hex("12").data(), &value, kTowardsHost));
    EXPECT_EQ(tag.seen, "to host");
    tag.succeed = false;
    EXPECT_FALSE(tag.ConvertVariable(Hex("12").data(), &value, kTowardsHost));
}

// --- slots ---

/** Records which operation was called; the results differ, so that no two slots can be confused. */
class SlotTag : public TagBase {
public:
    ~SlotTag() override { called = "destructor"; }
    ITag* Clone() const override { return note<ITag*>("Clone", nullptr); }
    int GetByteOffset() const override { return note("GetByteOffset", 103); }
    int GetBitIndex() const override { return note("GetBitIndex", 104); }
    char const* GetVarName() const override { return note("GetVarName", "name of slot 5"); }
    ICU_Type GetVarType() const override { return note("GetVarType", ICU_TIME_ARRAY); }
    int GetVarLength() const override { return note("GetVarLength", 107); }
    ICU_Type GetItemType() const override { return note("GetItemType", ICU_TIME); }
    int PackedLen() const override { return note("PackedLen", 109); }
    bool ConvertVariable(unsigned char const* source, unsigned char* destination, bool towardsPlc) const override {
        remember(source, destination, towardsPlc);
        return note("ConvertVariable", true);
    }
    bool IsReadOnly() const override { return note("IsReadOnly", true); }
    bool IsWriteOnly() const override { return note("IsWriteOnly", true); }
    bool Convert(unsigned char const* source, unsigned char* destination, bool towardsPlc) const override {
        remember(source, destination, towardsPlc);
        return note("Convert", true);
    }
    bool DoConversion(unsigned char* buffer, char const* keyword, bool towardsPlc) const override {
        remember(buffer, keyword, towardsPlc);
        return note("DoConversion", true);
    }

    static inline std::string called;
    mutable void const* first = nullptr;
    mutable void const* second = nullptr;
    mutable bool third = false;

private:
    template <typename Answer>
    static Answer note(char const* operation, Answer answer) {
        called = operation;
        return answer;
    }
    void remember(void const* a, void const* b, bool c) const {
        first = a;
        second = b;
        third = c;
    }
};

TEST(TagSlots, StandInTheOrderOfTheContract) {
    SlotTag tag;
    void const* const object = &tag;

    EXPECT_EQ(callSlot<void*>(object, 2), nullptr);
    EXPECT_EQ(SlotTag::called, "Clone");
    EXPECT_EQ(callSlot<int>(object, 3), 103);
    EXPECT_EQ(SlotTag::called, "GetByteOffset");
    EXPECT_EQ(callSlot<int>(object, 4), 104);
    EXPECT_EQ(SlotTag::called, "GetBitIndex");
    EXPECT_STREQ(callSlot<char const*>(object, 5), "name of slot 5");
    EXPECT_EQ(SlotTag::called, "GetVarName");
    EXPECT_EQ(callSlot<int>(object, 6), 22);
    EXPECT_EQ(SlotTag::called, "GetVarType");
    EXPECT_EQ(callSlot<int>(object, 7), 107);
    EXPECT_EQ(SlotTag::called, "GetVarLength");
    EXPECT_EQ(callSlot<int>(object, 8), 12);
    EXPECT_EQ(SlotTag::called, "GetItemType");
    EXPECT_EQ(callSlot<int>(object, 9), 109);
    EXPECT_EQ(SlotTag::called, "PackedLen");
    EXPECT_TRUE(callSlot<bool>(object, 11));
    EXPECT_EQ(SlotTag::called, "IsReadOnly");
    EXPECT_TRUE(callSlot<bool>(object, 12));
    EXPECT_EQ(SlotTag::called, "IsWriteOnly");
}

TEST(TagSlots, ConvertingSlotsTakeSourceDestinationAndDirection) {
    SlotTag tag;
    unsigned char const source = 0;
    unsigned char destination = 0;
    EXPECT_TRUE((callSlot<bool, unsigned char const*, unsigned char*, bool>(&tag, 10, &source, &destination, true)));
    EXPECT_EQ(SlotTag::called, "ConvertVariable");
    EXPECT_EQ(tag.first, &source);
    EXPECT_EQ(tag.second, &destination);
    EXPECT_TRUE(tag.third);
    EXPECT_TRUE((callSlot<bool, unsigned char const*, unsigned char*, bool>(&tag, 13, &source, &destination, false)));
    EXPECT_EQ(SlotTag::called, "Convert");
    EXPECT_FALSE(tag.third);
    char const* const keyword = "bcd";
    EXPECT_TRUE((callSlot<bool, unsigned char*, char const*, bool>(&tag, 14, &destination, keyword, true)));
    EXPECT_EQ(SlotTag::called, "DoConversion");
    EXPECT_EQ(tag.first, &destination);
    EXPECT_EQ(tag.second, keyword);
    EXPECT_TRUE(tag.third);
}

TEST(TagSlots, FirstTwoDestroyAndDelete) {
    alignas(SlotTag) unsigned char storage[sizeof(SlotTag)];
    auto* const inPlace = new (storage) SlotTag;
    SlotTag::called.clear();
    callSlot<void>(inPlace, 0);
    EXPECT_EQ(SlotTag::called, "destructor");

    auto* const onHeap = new SlotTag;
    SlotTag::called.clear();
    callSlot<void>(onHeap, 1);
    EXPECT_EQ(SlotTag::called, "destructor");
}

TEST(TagSlots, AddressOfTheInterfaceIsThatOfTheObject) {
    SlotTag tag;
    EXPECT_EQ(static_cast<void const*>(static_cast<ITag*>(&tag)), static_cast<void const*>(&tag));
    EXPECT_EQ(static_cast<void const*>(static_cast<TagBase*>(&tag)), static_cast<void const*>(&tag));
}

} // namespace
