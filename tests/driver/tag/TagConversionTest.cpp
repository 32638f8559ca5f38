#include "tests/support/AllocationGate.h"
#include "tests/support/DriverTest.h"

#include <string>

/**
 * The PLC's byte order together with the conversions. Node 1 is "Intel", node 2 "Motorola", node 3 has another model
 * name.
 */
namespace {

using namespace velktest;

class TagConversionTest : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        ASSERT_TRUE(driver->Config(ConfigText().Node(2, "model", "Motorola").Build().c_str()));
    }

    Bytes ToHost(ITag const* tag, Bytes const& plc) {
        EXPECT_EQ(plc.size(), static_cast<std::size_t>(tag->PackedLen()));
        Bytes value(static_cast<std::size_t>(tag->GetVarLength()), 0xCC);
        EXPECT_TRUE(tag->ConvertVariable(plc.data(), value.data(), false));
        return value;
    }

    Bytes ToPlc(ITag const* tag, Bytes const& value) {
        EXPECT_EQ(value.size(), static_cast<std::size_t>(tag->GetVarLength()));
        Bytes plc(static_cast<std::size_t>(tag->PackedLen()), 0xCC);
        EXPECT_TRUE(tag->ConvertVariable(value.data(), plc.data(), true));
        return plc;
    }

    /** Converts @p type for a big-endian node, in both directions. */
    void ExpectBigEndian(std::string const& type, std::string_view plc, std::string_view value) {
        ITag const* const tag = Tag("2?A?M?0?" + type);
        EXPECT_EQ(ToHost(tag, Hex(plc)), Hex(value)) << type;
        EXPECT_EQ(ToPlc(tag, Hex(value)), Hex(plc)) << type;
    }

    /** Converting @p type for a little-endian node changes nothing. */
    void ExpectLittleEndian(std::string const& type, std::string_view bytes) {
        ITag const* const tag = Tag("1?A?M?0?" + type);
        EXPECT_EQ(ToHost(tag, Hex(bytes)), Hex(bytes)) << type;
        EXPECT_EQ(ToPlc(tag, Hex(bytes)), Hex(bytes)) << type;
    }
};

TEST_F(TagConversionTest, LittleEndianBytesStayAsTheyAre) {
    for (char const* type : {"byte", "unsignedByte", "string-1"}) {
        ExpectLittleEndian(type, "81");
    }
    for (char const* type : {"short", "unsignedShort", "string-2"}) {
        ExpectLittleEndian(type, "01 02");
    }
    for (char const* type : {"int", "unsignedInt", "float", "short-2"}) {
        ExpectLittleEndian(type, "01 02 03 04");
    }
    for (char const* type : {"double", "int-2", "float-2", "double-1"}) {
        ExpectLittleEndian(type, "01 02 03 04 05 06 07 08");
    }
}

TEST_F(TagConversionTest, BigEndianScalars) {
    ExpectBigEndian("byte", "81", "81");
    ExpectBigEndian("unsignedByte", "81", "81");
    ExpectBigEndian("short", "01 02", "02 01");
    ExpectBigEndian("unsignedShort", "01 02", "02 01");
    ExpectBigEndian("int", "01 02 03 04", "04 03 02 01");
    ExpectBigEndian("unsignedInt", "01 02 03 04", "04 03 02 01");
    ExpectBigEndian("float", "3F 80 00 00", "00 00 80 3F");
    ExpectBigEndian("double", "01 02 03 04 05 06 07 08", "08 07 06 05 04 03 02 01");
    ExpectBigEndian("string-4", "41 42 43 44", "41 42 43 44");
}

TEST_F(TagConversionTest, BigEndianArrays) {
    ExpectBigEndian("byte-3", "01 02 03", "01 02 03");
    ExpectBigEndian("unsignedByte-3", "01 02 03", "01 02 03");
    ExpectBigEndian("short-3", "01 02 03 04 05 06", "02 01 04 03 06 05");
    ExpectBigEndian("unsignedShort-2", "01 02 03 04", "02 01 04 03");
    ExpectBigEndian("int-2", "01 02 03 04 05 06 07 08", "04 03 02 01 08 07 06 05");
    ExpectBigEndian("unsignedInt-2", "01 02 03 04 05 06 07 08", "04 03 02 01 08 07 06 05");
    ExpectBigEndian("float-2", "01 02 03 04 05 06 07 08", "04 03 02 01 08 07 06 05");
}

TEST_F(TagConversionTest, OnlyTheFirstElementOfADoubleArrayIsTurned) {
    // Kept on purpose.
    ExpectBigEndian("double-2", "01 02 03 04 05 06 07 08 11 12 13 14 15 16 17 18",
                    "08 07 06 05 04 03 02 01 11 12 13 14 15 16 17 18");
    ExpectBigEndian("double-1", "01 02 03 04 05 06 07 08", "08 07 06 05 04 03 02 01");
}

TEST_F(TagConversionTest, EmptyDoubleArrayIsLeftAlone) {
    ITag const* const tag = Tag("2?A?M?0?double-0");
    unsigned char const source = 0x11;
    unsigned char destination = 0xCC;
    tag->ConvertVariable(&source, &destination, false); // a sanitized run sees an overrun
    tag->ConvertVariable(&source, &destination, true);
    EXPECT_EQ(destination, 0xCC);
}

TEST_F(TagConversionTest, EveryModelButIntelIsBigEndian) {
    for (char const* model : {"intel", "INTEL", "Motorola"}) {
        RemakeDriver();
        ASSERT_TRUE(driver->Config(ConfigText().Set("model", model).Build().c_str()));
        ITag* const tag = driver->CreateTag("1?A?M?0?short");
        if (std::string(model) == "Motorola") {
            ASSERT_NE(tag, nullptr);
            EXPECT_EQ(ToHost(tag, Hex("01 02")), Hex("02 01"));
        } else {
            EXPECT_EQ(tag, nullptr) << "a model that is not registered has no memory types";
        }
    }
}

TEST_F(TagConversionTest, ByteOrderComesBeforeTheConversionsTowardsTheHost) {
    ITag const* const tag = Tag("2?A?M?0?unsignedShort(bcd)");
    EXPECT_EQ(ToHost(tag, Hex("12 34")), Hex("D2 04")); // 1234
    EXPECT_EQ(ToPlc(tag, Hex("D2 04")), Hex("12 34"));
    ITag const* const list = Tag("2?A?M?0?unsignedShort(swap2,bcd)");
    EXPECT_EQ(ToHost(list, Hex("34 12")), Hex("0D 54")); // 12 34 is 3412 = 0x0D54, stored as 54 0D, then swapped
}

TEST_F(TagConversionTest, BitsInBothByteOrders) {
    for (std::string const node : {"1", "2"}) {
        ITag const* const bit = Tag(node + "?A?M?0.3?boolean");
        EXPECT_EQ(ToHost(bit, Hex("08")), Hex("01"));
        EXPECT_EQ(ToHost(bit, Hex("F7")), Hex("00"));
        ITag const* const bits = Tag(node + "?A?M?0.6?boolean-4");
        EXPECT_EQ(ToHost(bits, Hex("C0 01")), Hex("01 01 01 00"));
    }
}

TEST_F(TagConversionTest, PackedBitsKeepTheirNeighboursOnALittleEndianNodeOnly) {
    Bytes const one = Hex("01");
    Bytes byte = Hex("F0");
    EXPECT_TRUE(Tag("1?A?M?0.3?boolean")->ConvertVariable(one.data(), byte.data(), true));
    EXPECT_EQ(byte, Hex("F8"));
    byte = Hex("F0");
    EXPECT_TRUE(Tag("2?A?M?0.3?boolean")->ConvertVariable(one.data(), byte.data(), true));
    EXPECT_EQ(byte, Hex("08")) << "a big-endian node's bytes start from zero";
}

TEST_F(TagConversionTest, FailedConversionLeavesTheDestinationAlone) {
    for (std::string const node : {"1", "2"}) {
        ITag const* const tag = Tag(node + "?A?M?0?unsignedShort(bcd)");
        Bytes const bad = Hex("1A 1A");
        Bytes value(2, 0xCC);
        EXPECT_FALSE(tag->ConvertVariable(bad.data(), value.data(), false)) << node;
        EXPECT_EQ(value, Hex("CC CC"));
        Bytes const tooBig = Hex("10 27");
        EXPECT_FALSE(tag->ConvertVariable(tooBig.data(), value.data(), true)) << node;
        EXPECT_EQ(value, Hex("CC CC"));
    }
}

TEST_F(TagConversionTest, ByteOrderScratchUpTo128BytesIsOnTheStack) {
    for (int const length : {64, 65}) {
        ITag const* const tag = Tag("2?A?M?0?short-" + std::to_string(length));
        Bytes const plc(static_cast<std::size_t>(length) * 2, 0x11);
        Bytes value(plc.size());
        std::size_t seen = 0;
        {
            AllocationGate const gate;
            tag->ConvertVariable(plc.data(), value.data(), false);
            seen = AllocationGate::Seen();
        }
        EXPECT_EQ(seen, length == 64 ? 0U : 1U);
        {
            AllocationGate const gate;
            tag->ConvertVariable(value.data(), const_cast<unsigned char*>(plc.data()), true);
            seen = AllocationGate::Seen();
        }
        EXPECT_EQ(seen, length == 64 ? 0U : 1U);
    }
}

TEST_F(TagConversionTest, LittleEndianNodesUseOneScratchOnly) {
    for (int const length : {128, 129}) {
        ITag const* const tag = Tag("1?A?M?0?short-" + std::to_string(length));
        Bytes const plc(static_cast<std::size_t>(length) * 2, 0x11);
        Bytes value(plc.size());
        AllocationGate const gate;
        tag->ConvertVariable(plc.data(), value.data(), false);
        EXPECT_EQ(AllocationGate::Seen(), length == 128 ? 0U : 1U);
    }
}

// --- a further configuration ---

TEST_F(TagConversionTest, TagsFollowTheirNodesPresentByteOrder) {
    ITag* const tag = Tag("3?A?M?0?short"); // the node uses the general model
    ITag* const copy = tag->Clone();
    EXPECT_EQ(ToHost(tag, Hex("12 34")), Hex("12 34"));
    ASSERT_TRUE(driver->Config(ConfigText().Set("model", "Motorola").Build().c_str()));
    for (ITag const* each : {tag, copy}) {
        EXPECT_EQ(ToHost(each, Hex("12 34")), Hex("34 12"));
        EXPECT_EQ(ToPlc(each, Hex("34 12")), Hex("12 34"));
    }
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    EXPECT_EQ(ToHost(tag, Hex("12 34")), Hex("12 34"));
    delete copy;
}

TEST_F(TagConversionTest, TagsFollowARecordThatTheirNodeGetsLater) {
    ITag* const tag = Tag("4?A?M?0?short");
    ASSERT_TRUE(driver->Config(ConfigText().Node(4, "model", "Motorola").Build().c_str()));
    EXPECT_EQ(ToHost(tag, Hex("12 34")), Hex("34 12"));
}

} // namespace
