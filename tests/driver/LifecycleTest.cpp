#include "description/ProtocolDescription.h"
#include "protlib/tag/TagBase.h"
#include "tests/support/VelkTest.h"

#include <cstring>
#include <string>

/** The driver object: its identity, what it registers, its configuration, and its port. */
namespace {

using namespace velktest;

class LifecycleTest : public VelkTest {
protected:
    bool Config(ConfigText const& text) { return driver->Config(text.Build().c_str()); }
};

// --- identity ---

TEST_F(LifecycleTest, Identity) {
    EXPECT_STREQ(driver->GetImpName(), "Protocol_VELK");
    EXPECT_EQ(driver->GetImpVersion(), 100);
    EXPECT_STREQ(driver->GetName(), "VELK");
    EXPECT_STREQ(driver->GetProtocolName(), "Velk Serial Link");
    EXPECT_EQ(driver->GetProtocolVersion(), 144);
    EXPECT_EQ(driver->GetProtocolType(), 277);
    EXPECT_STREQ(driver->GetNextInstanceName(), "VELK");
    EXPECT_FALSE(driver->IsConverted());
}

TEST_F(LifecycleTest, ConvertsToItsClassesAndInterfaces) {
    for (char const* name : {"Protocol_VELK", "ProtocolBase", "IProtocol3", "IProtocol2", "IProtocol"}) {
        EXPECT_EQ(driver->ConvertTo(name), driver) << name;
    }
    for (char const* name : {"ITag", "IInterface", "IProtocol4", "iprotocol", "IProtocol ", "protocol_velk", ""}) {
        EXPECT_EQ(driver->ConvertTo(name), nullptr) << name;
    }
}

TEST_F(LifecycleTest, DescriptionBeginsWithItsLength) {
    ASSERT_NE(driver->GetXml(), nullptr);
    EXPECT_STREQ(driver->GetXml(), "compressedXML=2055");
    EXPECT_EQ(static_cast<unsigned char>(driver->GetXml()[19]), 0x78);
    EXPECT_EQ(static_cast<unsigned char>(driver->GetXml()[20]), 0x9C);
    EXPECT_EQ(std::memcmp(driver->GetXml() + 19 + 2055, "<<ICOM_XML_END>>", 17), 0);
}

TEST_F(LifecycleTest, IdentIsTheNameUntilItIsSet) {
    EXPECT_STREQ(driver->GetIdent(), "VELK");
    driver->SetIdent("line 1");
    EXPECT_STREQ(driver->GetIdent(), "line 1");
    driver->SetIdent("");
    EXPECT_STREQ(driver->GetIdent(), "VELK");
}

TEST_F(LifecycleTest, UnsupportedOperationsSaySo) {
    EXPECT_EQ(driver->Extend(1, nullptr), 0);
    EXPECT_FALSE(driver->MultipleReadSupported());
    EXPECT_FALSE(driver->MultipleRead(nullptr));
    EXPECT_FALSE(driver->MultipleWriteSupported());
    EXPECT_FALSE(driver->MultipleWrite(nullptr));
    EXPECT_EQ(driver->GetInterface("IProtocol"), nullptr);
    ASSERT_TRUE(Config({}));
    ITag* const tag = Tag("1?A?MB?0?boolean");
    unsigned char bit = 0xCC;
    EXPECT_FALSE(driver->ReadBitBlock(tag, &bit, 1));
    EXPECT_FALSE(driver->WriteBitBlock(tag, &bit, 1));
    EXPECT_EQ(bit, 0xCC);
}

TEST_F(LifecycleTest, ErrorOfAFreshDriver) {
    ExpectError(1, "");
}

TEST_F(LifecycleTest, FreshDriverKnowsNoNode) {
    for (int const node : {0, 1, 255, 256}) {
        EXPECT_EQ(Symbols().projectIdentifier(node), 0U);
        EXPECT_EQ(Symbols().confirmedProjectIdentifier(node), 0U);
        EXPECT_FALSE(Symbols().usesDefaultAddresses(node));
        EXPECT_FALSE(Symbols().table().SymIsActive(static_cast<std::uint16_t>(node)));
    }
    EXPECT_FALSE(IsPortOpen());
    EXPECT_FALSE(LoginState().isLoggedIn());
    EXPECT_EQ(LoginState().node(), 0U);
    EXPECT_FALSE(HasFault());
}

TEST_F(LifecycleTest, BuffersHoldExactly75000Bytes) {
    EXPECT_EQ(Velk().txData().size(), 75000U);
    EXPECT_EQ(Velk().rxData().size(), 75000U);
}

// --- memory types and models ---

struct MemoryRow {
    char const* name;
    ICU_Type naturalType;
    int icomTypes;
    bool inDatagram;
};

constexpr MemoryRow kMemoryRows[] = {
    {"M", ICU_BYTE, 0x1ff3ff, true},  {"MB", ICU_BOOLEAN, 0x1, false},
    {"I", ICU_BYTE, 0x1ff3ff, false}, {"IB", ICU_BOOLEAN, 0x1, false},
    {"Q", ICU_BYTE, 0x1ff3ff, false}, {"QB", ICU_BOOLEAN, 0x1, false},
    {"3", ICU_BYTE, 0x1ff3ff, false}, {"4", ICU_BYTE, 0x1ff3ff, false},
    {"5", ICU_BYTE, 0x1ff3ff, false}, {"PROJ_ID", ICU_UNSIGNED_INT, 0x40, false},
};

TEST_F(LifecycleTest, MemoryTypesOfBothModels) {
    for (char const* model : {"Intel", "Motorola"}) {
        for (MemoryRow const& row : kMemoryRows) {
            MemoryType const* const type = Velk().getMemoryManager().getMemoryType(model, row.name);
            ASSERT_NE(type, nullptr) << model << " " << row.name;
            EXPECT_EQ(type->getName(), row.name);
            EXPECT_EQ(type->getNaturalType(), row.naturalType) << row.name;
            EXPECT_EQ(type->getIcomTypes(), row.icomTypes) << row.name;
            EXPECT_EQ(type->isInDatagram(), row.inDatagram) << row.name;
            EXPECT_FALSE(type->isSwap2()) << row.name;
            EXPECT_FALSE(type->isSwap4()) << row.name;
            EXPECT_FALSE(type->isBitWrite()) << row.name;
            EXPECT_FALSE(type->isBitArrayWrite()) << row.name;
            EXPECT_FALSE(type->isReadOnly()) << row.name;
            EXPECT_FALSE(type->isWriteOnly()) << row.name;
            EXPECT_FALSE(type->isInternalConversion()) << "also of M, although the description says so";
            EXPECT_EQ(type->getMinIndex(), 0) << row.name;
            EXPECT_EQ(type->getMaxIndex(), 0x7fffffff) << row.name;
            EXPECT_EQ(type->getBlockReadCount(), 0) << row.name;
            EXPECT_EQ(type->getBlockWriteCount(), 0) << row.name;
        }
    }
}

TEST_F(LifecycleTest, ModelsAndTheirLimits) {
    MemoryManager const& memory = Velk().getMemoryManager();
    for (char const* name : {"Intel", "Motorola"}) {
        Model const* const model = memory.getModel(name);
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(model->getName(), name);
        EXPECT_EQ(model->getMaxDatagramItems(), 90);
        EXPECT_EQ(model->getMaxDatagramLength(), 1024);
    }
    EXPECT_EQ(memory.getModel("no such model"), memory.getModel("Intel")) << "Intel is the first";
    EXPECT_EQ(memory.getMemoryType("no such model", "M"), nullptr);
    EXPECT_EQ(memory.getMemoryType("Intel", "NO_IP"), nullptr);
}

// --- configuration ---

TEST_F(LifecycleTest, FailedConfigurationReportsTheParsersText) {
    EXPECT_FALSE(driver->Config(""));
    ExpectError(-1, "Parser: unknown format");
    EXPECT_FALSE(Config(ConfigText().Without("Timeout")));
    ExpectError(-1, "Parser: parameter 'Timeout' is not found");
    EXPECT_FALSE(Config(ConfigText().Set("BlockSize", "1461")));
    ExpectError(-1, "parameter 'BlockSize' out of range");
    EXPECT_FALSE(Config(ConfigText().Without("uart").Node(1, "uart", "com1")));
    ExpectError(-1, "Parser: parameter 'uart' is not found");
}

TEST_F(LifecycleTest, LineSettingsReachThePort) {
    ASSERT_TRUE(Config(ConfigText()
                           .Set("uart", "com7")
                           .Set("baudrate", "57600")
                           .Set("parity", "even")
                           .Set("stopbits", "2")
                           .Set("mode", "RS-485")));
    ASSERT_TRUE(driver->Start());
    EXPECT_EQ(host.serial.created, (std::vector<std::string>{"com7"}));
    ASSERT_EQ(port.opens.size(), 1U);
    EXPECT_EQ(port.opens[0], (ScriptedPort::OpenCall{57600, 1, 8, 2, 1}));
}

TEST_F(LifecycleTest, Parities) {
    for (auto const& [name, value] : {std::pair{"none", 0}, {"even", 1}, {"odd", 2}, {"mark", 3}}) {
        RemakeDriver();
        port.opens.clear();
        ASSERT_TRUE(Config(ConfigText().Set("parity", name))) << name;
        ASSERT_TRUE(driver->Start());
        EXPECT_EQ(port.opens[0].parity, value) << name;
    }
}

TEST_F(LifecycleTest, UnknownParities) {
    for (char const* name : {"space", "None", "EVEN", "1", "", "none,"}) {
        EXPECT_FALSE(Config(ConfigText().Set("parity", name))) << name;
        ExpectError(-1, "Parser: parameter 'parity' has invalid value");
    }
}

TEST_F(LifecycleTest, OnlyTheExactModeIsRs485) {
    for (auto const& [mode, value] :
         {std::pair{"RS-485", 1}, {"rs-485", 0}, {"RS485", 0}, {"RS-232", 0}, {"RS-485x", 0}, {"", 0}}) {
        RemakeDriver();
        port.opens.clear();
        ASSERT_TRUE(Config(ConfigText().Set("mode", mode)));
        ASSERT_TRUE(driver->Start());
        EXPECT_EQ(port.opens[0].rs485, value) << mode;
    }
}

TEST_F(LifecycleTest, FailedConfigurationLeavesWhatWasCopied) {
    EXPECT_FALSE(Config(ConfigText().Set("uart", "com3").Set("baudrate", "1200").Set("parity", "space")));
    ASSERT_TRUE(driver->Start());
    EXPECT_EQ(host.serial.created, (std::vector<std::string>{"com3"}));
    EXPECT_EQ(port.opens[0].baud, 1200);
}

TEST_F(LifecycleTest, SecondConfigurationReplacesTheLine) {
    ASSERT_TRUE(Config(ConfigText().Set("uart", "com1").Set("mode", "RS-485")));
    ASSERT_TRUE(Config(ConfigText().Set("uart", "com2").Set("baudrate", "300")));
    ASSERT_TRUE(driver->Start());
    EXPECT_EQ(host.serial.created, (std::vector<std::string>{"com2"}));
    EXPECT_EQ(port.opens[0], (ScriptedPort::OpenCall{300, 0, 8, 1, 0}));
}

TEST_F(LifecycleTest, TagsOutliveASecondConfiguration) {
    Store(1, SymbolFileBytes(7).Variable("A", 0, 16).Build());
    ConfigureAndStart(ConfigText().Node(1, "Timeout", "700"));
    ITag* const tag = Tag("1?A?M?0?short");
    ITag* const other = Tag("2?A?M?0?short");
    ConfigText many;
    for (int node = 0; node <= 256; ++node) {
        many.Node(node, "prefix", "node_" + std::to_string(node));
    }
    ASSERT_TRUE(Config(many));
    Intel().LinkCheck().Login().Exchange("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 07 00 00 00",
                                         "00 00 | 00 00 00 00 | 01 34 12");
    EXPECT_EQ(Read({tag}).values, Hex("34 12"));
    EXPECT_EQ(port.reads[0].firstByteTimeoutMs, 700) << "the first record of a node wins";
    EXPECT_EQ(driver->GetNodeID(other), 2);
}

// --- the port ---

TEST_F(LifecycleTest, StartTwiceOpensOnce) {
    ASSERT_TRUE(Config({}));
    EXPECT_TRUE(driver->Start());
    EXPECT_TRUE(driver->Start());
    EXPECT_EQ(host.serial.created.size(), 1U);
    EXPECT_EQ(port.opens.size(), 1U);
    EXPECT_TRUE(IsPortOpen());
}

TEST_F(LifecycleTest, StopReleasesThePort) {
    ASSERT_TRUE(Config({}));
    EXPECT_TRUE(driver->Start());
    EXPECT_TRUE(driver->Stop());
    EXPECT_FALSE(IsPortOpen());
    EXPECT_EQ(host.serial.released, (std::vector<ISerialPort*>{&port}));
    EXPECT_EQ(port.closes, 0) << "the factory closes it";
    EXPECT_TRUE(driver->Stop());
    EXPECT_EQ(host.serial.released.size(), 1U);
}

TEST_F(LifecycleTest, StopOfAClosedPortSucceeds) {
    EXPECT_TRUE(driver->Stop());
    EXPECT_TRUE(host.serial.released.empty());
}

TEST_F(LifecycleTest, StartAgainAfterStop) {
    ASSERT_TRUE(Config({}));
    EXPECT_TRUE(driver->Start());
    EXPECT_TRUE(driver->Stop());
    EXPECT_TRUE(driver->Start());
    EXPECT_EQ(port.opens.size(), 2U);
    DeleteDriver();
    EXPECT_EQ(host.serial.released.size(), 2U);
}

TEST_F(LifecycleTest, PortThatDoesNotExist) {
    ASSERT_TRUE(Config({}));
    host.serial.port = nullptr;
    EXPECT_FALSE(driver->Start());
    ExpectError(-1, "Can't open serial port");
    EXPECT_TRUE(host.serial.released.empty());
    EXPECT_FALSE(IsPortOpen());
    EXPECT_TRUE(driver->Stop());
    EXPECT_TRUE(host.serial.released.empty());
}

TEST_F(LifecycleTest, PortThatCannotBeOpened) {
    ASSERT_TRUE(Config({}));
    port.openResult = 0;
    EXPECT_FALSE(driver->Start());
    ExpectError(-1, "Can't open serial port");
    EXPECT_EQ(host.serial.released, (std::vector<ISerialPort*>{&port}));
    EXPECT_FALSE(IsPortOpen());
    port.openResult = 1;
    EXPECT_TRUE(driver->Start()) << "and can be opened later";
    DeleteDriver();
    EXPECT_EQ(host.serial.released.size(), 2U);
}

TEST_F(LifecycleTest, AnyNonZeroResultOfOpenIsSuccess) {
    ASSERT_TRUE(Config({}));
    for (int const result : {256, -1, 0x10000}) {
        port.openResult = result;
        EXPECT_TRUE(driver->Start()) << result;
        EXPECT_TRUE(driver->Stop());
    }
}

TEST_F(LifecycleTest, DeletedDriverReleasesItsPort) {
    ASSERT_TRUE(Config({}));
    EXPECT_TRUE(driver->Start());
    DeleteDriver();
    EXPECT_EQ(host.serial.released, (std::vector<ISerialPort*>{&port}));
}

TEST_F(LifecycleTest, ExchangeWithoutAConfiguration) {
    EXPECT_TRUE(driver->Start());
    EXPECT_EQ(driver->CreateTag("1?A?M?0?short"), nullptr);
    ExpectError(-1, "Tag URI error: 1?A?M?0?short - Can't access memory type");
}

// --- the registry of tags ---

TEST_F(LifecycleTest, FreedTagsAreGone) {
    ASSERT_TRUE(Config({}));
    ITag* const tag = Tag("1?A?M?0?short");
    Tag("1?B?M?0?short");
    driver->FreeTag(tag);
    driver->FreeTag(nullptr);
    EXPECT_NE(Tag("1?C?M?0?short"), nullptr); // the remaining tags are deleted with the driver: the leak checker
                                              // verifies it
}

TEST_F(LifecycleTest, CloneCanBeFreedThroughTheDriver) {
    ASSERT_TRUE(Config({}));
    ITag* const tag = Tag("1?A?M?0?short");
    driver->FreeTag(tag->Clone()); // destroyed although it was never registered
    EXPECT_STREQ(tag->GetVarName(), "1?A?M?0?short");
}

TEST_F(LifecycleTest, TagFactoryMakesUnregisteredTags) {
    ASSERT_TRUE(Config({}));
    TagBase* const tag = driver->CreateTagBase("1?A?M?5?short");
    ASSERT_NE(tag, nullptr);
    EXPECT_EQ(tag->GetByteOffset(), 5);
    delete tag;
    EXPECT_EQ(driver->CreateTagBase("1?A?M?5"), nullptr);
    ExpectError(-1, "Tag URI error: 1?A?M?5 - there must be 5 tag specification fields");
}

TEST_F(LifecycleTest, FailedSecondConfigurationDoesNotBreakTheLine) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    EXPECT_FALSE(driver->Config(ConfigText().Set("BlockSize", "7").Build().c_str()));
    ReadOutcome const outcome = Read({tag});
    EXPECT_FALSE(outcome.ok);
    ExpectError(-1, "parameter 'BlockSize' out of range");
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(LifecycleTest, FailedSecondConfigurationMakesNobodyWaitForDays) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    for (char const* timeout : {"2147483647", "-1"}) {
        EXPECT_FALSE(driver->Config(ConfigText().Set("Timeout", timeout).Build().c_str()));
        port.reads.clear();
        Intel().DeadLinkCheck();
        EXPECT_FALSE(Read({tag}).ok);
        ASSERT_EQ(port.reads.size(), 1U);
        EXPECT_EQ(port.reads[0].firstByteTimeoutMs, 1000);
    }
}

} // namespace
