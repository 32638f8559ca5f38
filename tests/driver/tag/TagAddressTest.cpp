#include "tests/support/VelkTest.h"

#include <string>

/** Tag addresses: what is accepted, what is refused and why, and where an address points. */
namespace {

using namespace velktest;

class TagAddressTest : public VelkTest {
protected:
    void SetUp() override {
        VelkTest::SetUp();
        ASSERT_TRUE(driver->Config(ConfigText().Node(2, "model", "Motorola").Build().c_str()));
    }

    void TearDown() override {
        EXPECT_TRUE(port.writes.empty()) << "making tags never goes over the line";
        DriverTest::TearDown();
    }

    void ExpectRefusal(std::string const& address, std::string const& reason) {
        driver->Config("nonsense");
        EXPECT_EQ(driver->CreateTag(address.c_str()), nullptr) << address;
        ExpectError(-1, "Tag URI error: " + address + " - " + reason);
    }
};

TEST_F(TagAddressTest, EveryFieldArrives) {
    ITag* const tag = Tag("1?PLC_PRG/Counter?M?5?int(swap2)");
    EXPECT_STREQ(tag->GetVarName(), "1?PLC_PRG/Counter?M?5?int(swap2)");
    EXPECT_EQ(driver->GetNodeID(tag), 1);
    EXPECT_EQ(tag->GetVarType(), ICU_INT);
    EXPECT_EQ(tag->GetItemType(), ICU_NONE);
    EXPECT_EQ(tag->GetVarLength(), 4);
    EXPECT_EQ(tag->PackedLen(), 4);
    EXPECT_EQ(tag->GetByteOffset(), 5);
    EXPECT_EQ(tag->GetBitIndex(), 0);
    EXPECT_FALSE(tag->IsReadOnly());
    EXPECT_FALSE(tag->IsWriteOnly());
}

TEST_F(TagAddressTest, ThereMustBeFiveFields) {
    std::string const reason = "there must be 5 tag specification fields";
    for (char const* address : {"", "1", "1?A", "1?A?M?0", "1?A?M?0?int?", "1?A?M?0?int?x", "??????????"}) {
        ExpectRefusal(address, reason);
    }
}

TEST_F(TagAddressTest, EmptyFields) {
    EXPECT_EQ(driver->GetNodeID(Tag("?A?M?0?int")), 0);
    ExpectRefusal("1??M?0?int", "tagname field missing");
    ExpectRefusal("1?A??0?int", "addressSpace field missing");
    EXPECT_EQ(Tag("1?A?M??int")->GetByteOffset(), 0);
    EXPECT_EQ(Tag("1?A?M??boolean")->GetBitIndex(), 0);
    ExpectRefusal("1?A?M?0?", "icomType field missing");
}

TEST_F(TagAddressTest, EmptyFieldsAreReportedInTheirOrder) {
    ExpectRefusal("????", "tagname field missing");
    ExpectRefusal("?A???", "addressSpace field missing");
    ExpectRefusal("?A?NOSUCH??", "icomType field missing");
}

TEST_F(TagAddressTest, BlanksAroundFieldsDoNotCount) {
    ITag* const tag = Tag(" 1 ?\tA ? M ? 5 ? int ");
    EXPECT_EQ(driver->GetNodeID(tag), 1);
    EXPECT_EQ(tag->GetByteOffset(), 5);
    EXPECT_EQ(tag->GetVarType(), ICU_INT);
    ExpectRefusal("1? ?M?0?int", "tagname field missing");
}

TEST_F(TagAddressTest, NodeNumbersHaveABase) {
    EXPECT_EQ(driver->GetNodeID(Tag("0x1F?A?M?0?int")), 31);
    EXPECT_EQ(driver->GetNodeID(Tag("010?A?M?0?int")), 8);
    EXPECT_EQ(driver->GetNodeID(Tag("256?A?M?0?int")), 256);
    EXPECT_EQ(driver->GetNodeID(Tag("node?A?M?0?int")), 0);
    EXPECT_EQ(driver->GetNodeID(Tag("4294967297?A?M?0?int")), 2147483647) << "it is not node 1";
}

TEST_F(TagAddressTest, TagsOfNodesOutOfRangeCanBeMade) {
    EXPECT_EQ(driver->GetNodeID(Tag("257?A?M?0?int")), 257);
    EXPECT_EQ(driver->GetNodeID(Tag("-1?A?M?0?int")), -1);
}

TEST_F(TagAddressTest, MemoryTypesOfBothModels) {
    for (std::string const node : {"1", "2"}) {
        for (std::string const space : {"M", "I", "Q", "3", "4", "5"}) {
            EXPECT_NE(Tag(node + "?A?" + space + "?0?short"), nullptr) << space;
        }
        for (std::string const space : {"MB", "IB", "QB"}) {
            EXPECT_NE(Tag(node + "?A?" + space + "?0?boolean"), nullptr) << space;
        }
        EXPECT_NE(Tag(node + "?A?PROJ_ID?0?unsignedInt"), nullptr);
    }
}

TEST_F(TagAddressTest, UnknownMemoryTypes) {
    for (std::string const space : {"m", "N", "NO_IP", "MX", "6", "0", "proj_id", "3B", "M B"}) {
        ExpectRefusal("1?A?" + space + "?0?short", "Can't access memory type");
    }
}

TEST_F(TagAddressTest, ModelOfAnotherNameHasNoMemoryTypes) {
    // An unknown model falls back to the first one, but its memory types do not.
    RemakeDriver();
    ASSERT_TRUE(driver->Config(ConfigText().Set("model", "intel").Build().c_str()));
    ExpectRefusal("1?A?M?0?short", "Can't access memory type");
}

TEST_F(TagAddressTest, UnknownDataTypes) {
    for (std::string const type : {"foo", "Int", "int - 5", "int5", "string", "bool", "swap2(int)"}) {
        ExpectRefusal("1?A?M?0?" + type, type + ": data type unknown");
    }
    ExpectRefusal("1?A?M?0?int(swap2", "int(swap2: data type unknown");
}

TEST_F(TagAddressTest, NegativeAndOverflowingLengthsAreUnknownDataTypes) {
    for (std::string const type :
         {"string--1", "int--5", "byte--2147483648", "int-536870912", "double-268435456", "short-1073741824",
          "string-2147483648", "string-99999999999999999999", "int-4611686018427387905"}) {
        ExpectRefusal("1?A?M?0?" + type, type + ": data type unknown");
    }
}

TEST_F(TagAddressTest, LengthsOfArrays) {
    EXPECT_EQ(Tag("1?A?M?0?string-20")->GetVarLength(), 20);
    EXPECT_EQ(Tag("1?A?M?0?string-20")->GetItemType(), ICU_BYTE);
    EXPECT_EQ(Tag("1?A?M?0?int-10")->GetVarLength(), 40);
    EXPECT_EQ(Tag("1?A?M?0?int-10")->GetVarType(), ICU_INT_ARRAY);
    EXPECT_EQ(Tag("1?A?M?0?int-10")->GetItemType(), ICU_INT);
    EXPECT_EQ(Tag("1?A?M?0?double-3")->GetVarLength(), 24);
    EXPECT_EQ(Tag("1?A?M?0?string-")->GetVarLength(), 0);
    EXPECT_EQ(Tag("1?A?M?0?string-2147483647")->GetVarLength(), 2147483647);
    EXPECT_EQ(Tag("1?A?M?0?boolean-12")->GetVarLength(), 12);
    EXPECT_EQ(Tag("1?A?M?0?boolean-12")->PackedLen(), 2);
    EXPECT_EQ(Tag("1?A?M?0.7?boolean-12")->PackedLen(), 3);
    EXPECT_EQ(Tag("1?A?M?0?boolean-16")->PackedLen(), 2);
    EXPECT_EQ(Tag("1?A?M?0.1?boolean-16")->PackedLen(), 3);
    EXPECT_EQ(Tag("1?A?M?0.7?boolean-2147483647")->PackedLen(), 268435457);
}

TEST_F(TagAddressTest, TypesThatAMemoryTypeDoesNotTake) {
    std::string const reason = "not allowed icom type";
    for (std::string const type : {"binary-4", "time", "time-2", "uint64", "int64", "uint64-2", "int64-2"}) {
        ExpectRefusal("1?A?M?0?" + type, reason);
    }
    for (std::string const type : {"byte", "unsignedByte", "short", "int", "boolean-4", "string-4"}) {
        ExpectRefusal("1?A?MB?0?" + type, reason);
    }
    for (std::string const type : {"int", "boolean", "unsignedInt-1", "unsignedShort", "float"}) {
        ExpectRefusal("1?A?PROJ_ID?0?" + type, reason);
    }
    for (std::string const type : {"boolean", "byte", "short", "int", "unsignedByte", "unsignedShort", "unsignedInt",
                                   "float", "double", "string-4", "boolean-4", "byte-4", "short-4", "int-4",
                                   "unsignedByte-4", "unsignedShort-4", "unsignedInt-4", "float-4", "double-4"}) {
        EXPECT_NE(Tag("1?A?M?0?" + type), nullptr) << type;
    }
}

TEST_F(TagAddressTest, IndexesHaveABase) {
    EXPECT_EQ(Tag("1?A?M?0x10?int")->GetByteOffset(), 16);
    EXPECT_EQ(Tag("1?A?M?010?int")->GetByteOffset(), 8);
    EXPECT_EQ(Tag("1?A?M?2147483647?int")->GetByteOffset(), 2147483647);
    EXPECT_EQ(Tag("1?A?M?none?int")->GetByteOffset(), 0);
}

TEST_F(TagAddressTest, IndexBorders) {
    for (char const* offset : {"-1", "-2147483648", "2147483648", "0x80000000", "4294967296", "4294967297",
                               "99999999999999999999", "-99999999999999999999"}) {
        ExpectRefusal("1?A?M?" + std::string(offset) + "?int", "Index out of range");
        ExpectRefusal("1?A?PROJ_ID?" + std::string(offset) + "?unsignedInt", "Index out of range");
    }
}

TEST_F(TagAddressTest, SubindexOfABitInAByteArea) {
    ITag* const tag = Tag("1?A?M?0x10.3?boolean");
    EXPECT_EQ(tag->GetByteOffset(), 16);
    EXPECT_EQ(tag->GetBitIndex(), 3);
    EXPECT_EQ(Tag("1?A?M?5.7?boolean")->GetBitIndex(), 7);
    EXPECT_EQ(Tag("1?A?M?5.0x7?boolean")->GetBitIndex(), 7);
    EXPECT_EQ(Tag("1?A?M?5.?boolean")->GetBitIndex(), 0);
    EXPECT_EQ(Tag("1?A?M?.5?boolean")->GetBitIndex(), 5);
    EXPECT_EQ(Tag("1?A?M?5.3.9?boolean")->GetBitIndex(), 3) << "what follows a second point is no part of the number";
}

TEST_F(TagAddressTest, SubindexBorders) {
    std::string const reason = "Subindex invalid";
    for (std::string const offset :
         {"5.8", "5.-1", "5.100", "5.2147483648", "5.4294967296", "5.99999999999999999999"}) {
        ExpectRefusal("1?A?M?" + offset + "?boolean", reason);
        ExpectRefusal("1?A?M?" + offset + "?boolean-4", reason);
        ExpectRefusal("1?A?MB?" + offset + "?boolean", reason);
    }
    for (std::string const type : {"byte", "short", "int", "double", "string-4", "int-4"}) {
        EXPECT_EQ(Tag("1?A?M?5.0?" + type)->GetByteOffset(), 5) << type;
        ExpectRefusal("1?A?M?5.1?" + type, reason);
        ExpectRefusal("1?A?M?5.-1?" + type, reason);
    }
}

TEST_F(TagAddressTest, IndexIsCheckedBeforeSubindex) {
    ExpectRefusal("1?A?M?-1.9?boolean", "Index out of range");
}

TEST_F(TagAddressTest, OffsetIsCheckedBeforeTheType) {
    ExpectRefusal("1?A?M?-1?time", "Index out of range");
    ExpectRefusal("1?A?M?-1?foo", "foo: data type unknown");
    ExpectRefusal("1?A?NOSUCH?-1?foo", "Can't access memory type");
}

TEST_F(TagAddressTest, BitAreasCountBits) {
    for (std::string const space : {"MB", "IB", "QB"}) {
        EXPECT_EQ(Tag("1?A?" + space + "?13?boolean")->GetByteOffset(), 1) << space;
        EXPECT_EQ(Tag("1?A?" + space + "?13?boolean")->GetBitIndex(), 5) << space;
        EXPECT_EQ(Tag("1?A?" + space + "?0?boolean")->GetByteOffset(), 0) << space;
        EXPECT_EQ(Tag("1?A?" + space + "?7?boolean")->GetByteOffset(), 0) << space;
        EXPECT_EQ(Tag("1?A?" + space + "?8?boolean")->GetByteOffset(), 1) << space;
        EXPECT_EQ(Tag("1?A?" + space + "?8?boolean")->GetBitIndex(), 0) << space;
        EXPECT_EQ(Tag("1?A?" + space + "?8.3?boolean")->GetBitIndex(), 0) << "the index decides";
    }
}

TEST_F(TagAddressTest, NaturalTypeWithoutALengthIsRefused) {
    Model model("Odd");
    MemoryType type;
    type.setName("MX");
    type.setNaturalType(ICU_STRING);
    type.setMaxIndex(100);
    model.addMemoryType(type);
    RemakeDriver();
    Velk().getMemoryManager().addModel(model);
    ASSERT_TRUE(driver->Config(ConfigText().Set("model", "Odd").Build().c_str()));
    ExpectRefusal("1?A?MX?0?int", "invalid natural data type for this memory type");
    ExpectRefusal("1?A?MX?0?uint64", "not allowed icom type");
    ExpectRefusal("1?A?MX?101?int", "Index out of range");
    ExpectRefusal("1?A?MX?0?boolean", "Subindex invalid");
}

TEST_F(TagAddressTest, IndexBelowTheMemoryTypesMinimum) {
    Model model("Odd");
    MemoryType type;
    type.setName("MX");
    type.setNaturalType(ICU_BYTE);
    type.setMinIndex(10);
    type.setMaxIndex(20);
    model.addMemoryType(type);
    RemakeDriver();
    Velk().getMemoryManager().addModel(model);
    ASSERT_TRUE(driver->Config(ConfigText().Set("model", "Odd").Build().c_str()));
    EXPECT_EQ(Tag("1?A?MX?10?int")->GetByteOffset(), 10);
    EXPECT_EQ(Tag("1?A?MX?20?int")->GetByteOffset(), 20);
    ExpectRefusal("1?A?MX?9?int", "Index out of range");
    ExpectRefusal("1?A?MX?21?int", "Index out of range");
}

TEST_F(TagAddressTest, OffsetsOfWideElementsDoNotOverflow) {
    ITag* const tag = Tag("1?ID?PROJ_ID?0x7FFFFFFF?unsignedInt");
    tag->GetByteOffset(); // a sanitized run sees an overflow
    EXPECT_EQ(tag->PackedLen(), 4);
}

TEST_F(TagAddressTest, ProjectIdentifierOfANodeOutOfRangeIsRefused) {
    ExpectRefusal("257?ID?PROJ_ID?7?unsignedInt", "Can't access protocol node parameters");
    ExpectRefusal("-1?ID?PROJ_ID?7?unsignedInt", "Can't access protocol node parameters");
    EXPECT_NE(Tag("256?ID?PROJ_ID?7?unsignedInt"), nullptr);
    EXPECT_TRUE(Symbols().usesDefaultAddresses(256));
    EXPECT_EQ(Symbols().projectIdentifier(256), 7U);
}

TEST_F(TagAddressTest, RefusedProjectIdentifierDeclaresNothing) {
    ExpectRefusal("1?ID?PROJ_ID?7?int", "not allowed icom type");
    ExpectRefusal("1?ID?PROJ_ID?7.1?unsignedInt", "Subindex invalid");
    EXPECT_FALSE(Symbols().usesDefaultAddresses(1));
    EXPECT_EQ(Symbols().projectIdentifier(1), 0U);
}

TEST_F(TagAddressTest, LaterProjectIdentifierReplacesTheEarlier) {
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    Tag("1?ID?PROJ_ID?9?unsignedInt");
    EXPECT_EQ(Symbols().projectIdentifier(1), 9U);
    EXPECT_EQ(Symbols().confirmedProjectIdentifier(1), 9U);
}

TEST_F(TagAddressTest, FreedProjectIdentifierTagLeavesItsDeclaration) {
    driver->FreeTag(Tag("1?ID?PROJ_ID?7?unsignedInt"));
    EXPECT_TRUE(Symbols().usesDefaultAddresses(1));
}

TEST_F(TagAddressTest, VeryLongAddresses) {
    std::string const name(100000, 'x');
    ITag* const tag = Tag("1?" + name + "?M?0?int");
    EXPECT_EQ(std::string(tag->GetVarName()), "1?" + name + "?M?0?int");
    ExpectRefusal("1?A?M?0?" + name, name + ": data type unknown");
}

// --- binding ---

class BindingTest : public TagAddressTest {
protected:
    Tag_VELK const& Velk_(ITag const* tag) { return static_cast<Tag_VELK const&>(*tag); }

    void Load(SymbolFileBytes const& file) {
        dir.Put("symbols.sdb", file.Build());
        std::string path = dir.Path("symbols.sdb");
        std::uint32_t id = 0;
        ASSERT_EQ(Symbols().table().SymLoadSymbolsFromFile(1, path.c_str(), &id), 1);
    }
};

TEST_F(BindingTest, BoundTagPointsAtItsVariable) {
    ITag* const tag = Tag("1?PLC_PRG/A?M?5?short");
    Load(SymbolFileBytes(7).Variable("PLC_PRG.A", 3, 4321));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    EXPECT_EQ(tag->GetByteOffset(), 4321);
}

TEST_F(BindingTest, MissingVariableChangesNothing) {
    ITag* const tag = Tag("1?B?M?5?short");
    Load(SymbolFileBytes(7).Variable("A", 3, 4321));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 1);
    EXPECT_EQ(tag->GetByteOffset(), 5);
}

TEST_F(BindingTest, SameStampIsNotLookedUpAgain) {
    ITag* const tag = Tag("1?A?M?5?short");
    Load(SymbolFileBytes(7).Variable("A", 0, 100));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    Load(SymbolFileBytes(7).Variable("A", 0, 200));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    EXPECT_EQ(tag->GetByteOffset(), 100) << "the stamp is the same";
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 8), 0);
    EXPECT_EQ(tag->GetByteOffset(), 200);
}

TEST_F(BindingTest, BoundTagStaysBoundWhenANewStampFindsNothing) {
    ITag* const tag = Tag("1?A?M?5?short");
    Load(SymbolFileBytes(7).Variable("A", 0, 100));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    Symbols().table().SymExit();
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 8), 1);
    EXPECT_EQ(tag->GetByteOffset(), 100);
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
}

TEST_F(BindingTest, BindingABitAreaReplacesTheBit) {
    ITag* const tag = Tag("1?A?MB?2?boolean");
    Load(SymbolFileBytes(7).Variable("A", 0, 13));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    EXPECT_EQ(tag->GetByteOffset(), 1);
    EXPECT_EQ(tag->GetBitIndex(), 5);
}

TEST_F(BindingTest, BindingABitInAByteAreaKeepsTheSubindex) {
    ITag* const tag = Tag("1?A?M?2.6?boolean");
    Load(SymbolFileBytes(7).Variable("A", 0, 13));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    EXPECT_EQ(tag->GetByteOffset(), 13);
    EXPECT_EQ(tag->GetBitIndex(), 6);
}

// --- copies ---

TEST_F(BindingTest, CloneIsIndependent) {
    ITag* const tag = Tag("2?PLC_PRG/A?M?5.3?boolean(inv)");
    Load(SymbolFileBytes(7).Variable("PLC_PRG.A", 0, 100));
    ITag* const copy = tag->Clone();
    ASSERT_NE(copy, nullptr);
    ASSERT_NE(copy, tag);
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    EXPECT_EQ(tag->GetByteOffset(), 100);
    EXPECT_EQ(copy->GetByteOffset(), 5) << "the copy was made before the binding";
    driver->FreeTag(tag);
    EXPECT_STREQ(copy->GetVarName(), "2?PLC_PRG/A?M?5.3?boolean(inv)");
    EXPECT_EQ(copy->GetVarType(), ICU_BOOLEAN);
    EXPECT_EQ(copy->GetBitIndex(), 3);
    EXPECT_EQ(driver->GetNodeID(copy), 2);
    unsigned char const bit = 0x08;
    unsigned char value = 0xCC;
    EXPECT_TRUE(copy->ConvertVariable(&bit, &value, false));
    EXPECT_EQ(value, 0) << "the conversion came along";
    delete copy;
}

TEST_F(BindingTest, CloneOfABoundTagIsBound) {
    ITag* const tag = Tag("1?A?M?5?short");
    Load(SymbolFileBytes(7).Variable("A", 0, 100));
    EXPECT_EQ(Velk_(tag).UpdateTagData(Symbols().table(), 7), 0);
    ITag* const copy = tag->Clone();
    EXPECT_EQ(copy->GetByteOffset(), 100);
    Symbols().table().SymExit();
    EXPECT_EQ(Velk_(copy).UpdateTagData(Symbols().table(), 7), 0);
    delete copy;
}

TEST_F(BindingTest, CloneKeepsTheByteOrder) {
    ITag* const copy = Tag("2?A?M?5?short")->Clone();
    Bytes const plc = Hex("12 34");
    Bytes value(2);
    EXPECT_TRUE(copy->ConvertVariable(plc.data(), value.data(), false));
    EXPECT_EQ(value, Hex("34 12"));
    delete copy;
}

} // namespace
