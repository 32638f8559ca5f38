#include "description/ProtocolDescription.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

namespace {

using Attributes = std::vector<std::pair<std::string, std::string>>;
using Texts = std::vector<std::string>;

/** The driver's description, inflated as the host does it: by the length before the stream. */
struct Inflated {
    Inflated() {
        char const* const start = GetXml_VELK();
        announced = static_cast<std::size_t>(std::strtol(start + std::strlen("compressedXML="), nullptr, 10));
        std::vector<unsigned char> input(announced);
        std::memcpy(input.data(), start + std::strlen(start) + 1, announced);
        std::vector<unsigned char> output(100000);
        z_stream stream{};
        if (inflateInit(&stream) != Z_OK) {
            return;
        }
        stream.next_in = input.data();
        stream.avail_in = static_cast<uInt>(input.size());
        stream.next_out = output.data();
        stream.avail_out = static_cast<uInt>(output.size());
        result = inflate(&stream, Z_FINISH);
        unread = stream.avail_in;
        consumed = stream.total_in;
        text.assign(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(stream.total_out));
        inflateEnd(&stream);
    }

    std::size_t announced = 0;
    int result = Z_ERRNO;
    std::size_t unread = 99;
    std::size_t consumed = 0;
    std::string text;
};

Inflated const& inflated() {
    static Inflated const once;
    return once;
}

TEST(DescriptionStream, InflatesToTheWholeDocumentAndIsConsumedWhole) {
    EXPECT_EQ(inflated().announced, 2055U);
    EXPECT_EQ(inflated().result, Z_STREAM_END);
    EXPECT_EQ(inflated().unread, 0U);
    EXPECT_EQ(inflated().consumed, 2055U);
    EXPECT_EQ(inflated().text.size(), 13595U);
}

// --- how it is written ---

TEST(DescriptionText, BeginsWithItsDeclaration) {
    constexpr char const* kFirstLine =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<protocol_cfg>\n";
    EXPECT_EQ(inflated().text.substr(0, std::strlen(kFirstLine)), kFirstLine);
}

TEST(DescriptionText, EndsWithOneLineEndBehindTheRoot) {
    constexpr char const* kLastLines = "    </mappedDataTypes>\n</protocol_cfg>\n";
    ASSERT_GE(inflated().text.size(), std::strlen(kLastLines));
    EXPECT_EQ(inflated().text.substr(inflated().text.size() - std::strlen(kLastLines)), kLastLines);
}

TEST(DescriptionText, HasNoTabsCarriageReturnsEmptyLinesOrBlanksAtLineEnds) {
    for (char const* const unwanted : {"\t", "\r", "\n\n", " \n", " />", "'", "<!--"}) {
        EXPECT_EQ(inflated().text.find(unwanted), std::string::npos) << '"' << unwanted << '"';
    }
}

TEST(DescriptionText, IsPlainAscii) {
    for (char const character : inflated().text) {
        ASSERT_TRUE(character == '\n' || (character >= ' ' && character <= '~'));
    }
}

TEST(DescriptionText, GreaterSignInAValueIsEscaped) {
    EXPECT_NE(inflated().text.find("display=\"AB-&gt;BA\""), std::string::npos);
    EXPECT_NE(inflated().text.find("display=\"ABCD-&gt;CDAB\""), std::string::npos);
    EXPECT_NE(inflated().text.find("display=\"ABCDEFGH-&gt;GHEFCDAB\""), std::string::npos);
}

TEST(DescriptionText, EveryLevelIsIndentedByFourBlanks) {
    for (char const* const line :
         {"\n    <usesUart>true</usesUart>\n", "\n    <parameters>\n", "\n    </parameters>\n",
          "\n        <parameter default=\"1\" ", "\n        <memtype display=\"PLC Memory\" ",
          "\n        <tag_field display=\"nodeid\" ", "\n        <model display=\"Intel\" ",
          "\n        <conversion display=\"BCD\" ", "\n        <map idalType=\"boolean\" plcType=\"BOOL\"/>\n"}) {
        EXPECT_NE(inflated().text.find(line), std::string::npos) << line;
    }
}

TEST(DescriptionText, ElementWithTextAndChildrenStaysOnOneLine) {
    EXPECT_NE(inflated().text.find("isMandatory=\"true\">stopbits<list_entry>1</list_entry><list_entry>2</list_entry>"
                                   "</parameter>\n"),
              std::string::npos);
    EXPECT_NE(inflated().text.find(">Intel<memtype_ref min=\"0\" max=\"2147483647\" hasInternalConversion=\"false\">M"
                                   "</memtype_ref><memtype_ref min=\"0\" max=\"2147483647\">MB</memtype_ref>"),
              std::string::npos);
}

// --- what it says ---

struct Document : testing::Test {
    Document() {
        pugi::xml_parse_result const result = document_.load_buffer(inflated().text.data(), inflated().text.size());
        EXPECT_TRUE(result) << result.description();
        root = document_.child("protocol_cfg");
    }

    /** The children that are elements, in order. */
    static std::vector<pugi::xml_node> elements(pugi::xml_node parent) {
        std::vector<pugi::xml_node> result;
        for (pugi::xml_node const child : parent.children()) {
            if (child.type() == pugi::node_element) {
                result.push_back(child);
            }
        }
        return result;
    }

    static Attributes attributes(pugi::xml_node node) {
        Attributes result;
        for (pugi::xml_attribute const attribute : node.attributes()) {
            result.emplace_back(attribute.name(), attribute.value());
        }
        return result;
    }

    static Texts textsOf(std::vector<pugi::xml_node> const& nodes) {
        Texts result;
        for (auto const node : nodes) {
            result.emplace_back(node.text().get());
        }
        return result;
    }

    static void expectElement(pugi::xml_node node, char const* name, std::string const& text,
                              Attributes const& expected) {
        EXPECT_STREQ(node.name(), name) << text;
        EXPECT_EQ(node.text().get(), text);
        EXPECT_EQ(attributes(node), expected) << name << ' ' << text;
    }

    static void expectNoText(pugi::xml_node node) { EXPECT_FALSE(node.text()) << node.name(); }

    pugi::xml_node root;

private:
    pugi::xml_document document_;
};

TEST_F(Document, RootHasNoAttributes) {
    EXPECT_STREQ(root.name(), "protocol_cfg");
    EXPECT_EQ(attributes(root), Attributes{});
}

TEST_F(Document, CapabilitiesAndIdentityComeFirst) {
    std::vector<std::pair<char const*, char const*>> const expected = {{"usesUart", "true"},
                                                                       {"usesEthernet", "false"},
                                                                       {"usesNetwork", "true"},
                                                                       {"usesDatagram", "true"},
                                                                       {"usesTags", "true"},
                                                                       {"isReentrant", "true"},
                                                                       {"isConverted", "false"},
                                                                       {"isProtgen", "true"},
                                                                       {"usesTask", "false"},
                                                                       {"usesSemaphore", "false"},
                                                                       {"usesDoCommand", "true"},
                                                                       {"name", "VELK"},
                                                                       {"display", "Velk Serial Link"},
                                                                       {"displayDlgTitle", "Velk Serial Link"},
                                                                       {"protGenVer", "108"},
                                                                       {"code", "277"},
                                                                       {"maxDisplayRows", "6"}};
    auto const children = elements(root);
    ASSERT_GE(children.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expectElement(children[i], expected[i].first, expected[i].second, {});
    }
}

TEST_F(Document, NetworkAndOfflineSettingsFollow) {
    auto const children = elements(root);
    ASSERT_GE(children.size(), 22U);
    expectElement(children[17], "plcnet", "",
                  {{"alwaysEnable", "false"},
                   {"locator", "ipAddress"},
                   {"disable_list_id", "protType"},
                   {"disable_list_entry", "0"}});
    expectElement(children[18], "usesOfflineOpt", "true", {});
    expectElement(children[19], "defaultOrt", "3000", {});
    expectElement(children[20], "minimumOrt", "1000", {});
    expectElement(children[21], "defaultRpt", "3", {});
}

TEST_F(Document, SixListsEndIt) {
    auto const children = elements(root);
    ASSERT_EQ(children.size(), 28U);
    constexpr char const* kLists[] = {"parameters", "memtypes", "tag_uri", "models", "conversions", "mappedDataTypes"};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_STREQ(children[22 + i].name(), kLists[i]);
        Attributes const expected =
            i == 4 ? Attributes{{"display", "Conversions"}} : Attributes{}; // conversions alone is displayed
        EXPECT_EQ(attributes(children[22 + i]), expected);
    }
}

struct DescriptionParameter : Document {
    pugi::xml_node at(std::size_t index) {
        auto const all = elements(root.child("parameters"));
        EXPECT_EQ(all.size(), 19U);
        return index < all.size() ? all[index] : pugi::xml_node();
    }

    /** Checks the parameter at that position; @p entries are its choices. */
    void expectParameter(std::size_t index, char const* key, Attributes const& expected, Texts const& entries = {}) {
        pugi::xml_node const node = at(index);
        expectElement(node, "parameter", key, expected);
        auto const choices = elements(node);
        EXPECT_EQ(textsOf(choices), entries) << key;
        for (auto const choice : choices) {
            expectElement(choice, "list_entry", choice.text().get(), {});
        }
    }
};

TEST_F(DescriptionParameter, VersionHasNoLabel) {
    expectParameter(0, "CfgVer",
                    {{"default", "1"},
                     {"defaultValue", "1"},
                     {"isNodeProperty", "false"},
                     {"group", "none"},
                     {"type", "prop_integer"},
                     {"spin", "true"},
                     {"isDistinct", "false"},
                     {"isMandatory", "false"}});
}

TEST_F(DescriptionParameter, AliasIsDistinctForEachNode) {
    expectParameter(1, "prefix",
                    {{"display", "Alias"},
                     {"default", ""},
                     {"defaultValue", ""},
                     {"isNodeProperty", "true"},
                     {"group", "none"},
                     {"type", "prop_string"},
                     {"spin", "false"},
                     {"isDistinct", "true"},
                     {"isMandatory", "false"}});
}

/** Attributes of a list of the serial line. */
Attributes lineList(char const* label, char const* preset, char const* listType) {
    return {{"display", label},          {"default", preset},     {"isNodeProperty", "false"},
            {"group", "communications"}, {"type", "prop_list"},   {"listType", listType},
            {"spin", "false"},           {"isDistinct", "false"}, {"isMandatory", "true"}};
}

TEST_F(DescriptionParameter, Line) {
    expectParameter(2, "uart", lineList("Port", "com1", "string"),
                    {"com1", "com2", "com3", "com4", "com5", "com6", "com7", "com8", "com9", "com10", "com11", "com12",
                     "com13", "com14", "com15", "com16"});
    expectParameter(3, "parity", lineList("Parity", "none", "string"), {"none", "even", "odd"});
    expectParameter(4, "baudrate", lineList("Baudrate", "19200", "integer"),
                    {"9600", "19200", "38400", "57600", "115200"});
    expectParameter(5, "stopbits", lineList("Stop bits", "1", "integer"), {"1", "2"});
    expectParameter(6, "mode",
                    {{"display", "Mode"},
                     {"default", "RS-232"},
                     {"defaultValue", ""},
                     {"isNodeProperty", "false"},
                     {"group", "communications"},
                     {"type", "prop_list"},
                     {"listType", "string"},
                     {"spin", "false"},
                     {"isDistinct", "false"},
                     {"isMandatory", "false"}},
                    {"RS-232", "RS-485"});
}

/** Attributes of a number of a node with a range. */
Attributes nodeNumber(char const* label, char const* preset, char const* min, char const* max) {
    return {{"display", label},     {"default", preset},      {"isNodeProperty", "true"},
            {"group", "none"},      {"type", "prop_integer"}, {"min", min},
            {"max", max},           {"spin", "true"},         {"isDistinct", "false"},
            {"isMandatory", "true"}};
}

TEST_F(DescriptionParameter, Node) {
    expectParameter(7, "BlockSize", nodeNumber("BlockSize", "128", "128", "1460"));
    expectParameter(8, "Timeout", nodeNumber("Timeout (ms)", "10000", "100", "20000"));
    expectParameter(9, "repeat",
                    {{"display", "Num of repeats"},
                     {"default", "2"},
                     {"defaultValue", "2"},
                     {"isNodeProperty", "true"},
                     {"group", "none"},
                     {"type", "prop_integer"},
                     {"spin", "true"},
                     {"isDistinct", "false"},
                     {"isMandatory", "false"}});
    expectParameter(11, "model",
                    {{"display", "ByteOrder"},
                     {"default", "Motorola"},
                     {"isNodeProperty", "true"},
                     {"group", "none"},
                     {"type", "prop_modelRef"},
                     {"spin", "false"},
                     {"isDistinct", "false"},
                     {"isMandatory", "true"}});
}

TEST_F(DescriptionParameter, ProtocolType) {
    expectParameter(10, "protType",
                    {{"display", "Protocol type"},
                     {"default", "ABB_RS232_AC"},
                     {"isNodeProperty", "false"},
                     {"group", "none"},
                     {"type", "prop_list"},
                     {"listType", "string"},
                     {"spin", "false"},
                     {"isDistinct", "false"},
                     {"isMandatory", "true"}},
                    {"Serial_RS232", "ABB_RS232_AC"});
}

/** Adds the attributes common to all routing keys. */
Attributes routed(Attributes attributes) {
    attributes.emplace_back("disable_list_id", "protType");
    attributes.emplace_back("disable_list_entry", "0");
    return attributes;
}

TEST_F(DescriptionParameter, RoutingIsDisabledForTheFirstProtocolType) {
    expectParameter(12, "RoutingLevels", routed(nodeNumber("Routing levels", "0", "0", "2")));
    std::size_t index = 13;
    for (std::string const level : {"1", "2"}) {
        expectParameter(index, ("CouplerLV" + level).c_str(),
                        routed({{"display", "Coupler (Level " + level + ")"},
                                {"default", "0"},
                                {"isNodeProperty", "true"},
                                {"group", "none"},
                                {"type", "prop_list"},
                                {"listType", "string"},
                                {"spin", "false"},
                                {"isDistinct", "false"},
                                {"isMandatory", "true"}}),
                        {"0", "1", "2", "3", "4", "5", "6"});
        expectParameter(index + 1, ("ChannelLV" + level).c_str(),
                        routed(nodeNumber(("Channel (Level " + level + ")").c_str(), "0", "0", "19")));
        expectParameter(index + 2, ("AddressLV" + level).c_str(),
                        routed({{"display", "Address (Level " + level + ")"},
                                {"default", ""},
                                {"defaultValue", "0.0.0.0"},
                                {"isNodeProperty", "true"},
                                {"group", "none"},
                                {"type", "prop_ipAddress"},
                                {"spin", "false"},
                                {"isDistinct", "false"},
                                {"isMandatory", "false"}}));
        index += 3;
    }
}

TEST_F(Document, MemoryTypes) {
    struct Row {
        char const* name;
        char const* display;
        char const* naturalType;
        char const* icomTypes;
        char const* useInDatagram;
        char const* hasInternalConversion;
    };
    constexpr Row kRows[] = {{"M", "PLC Memory", "byte", "0x1ff3ff", "true", "true"},
                             {"MB", "PLC Memory Bit", "boolean", "0x1", "false", "false"},
                             {"I", "PLC Input", "byte", "0x1ff3ff", "false", "false"},
                             {"IB", "PLC Input Bit", "boolean", "0x1", "false", "false"},
                             {"Q", "PLC Output", "byte", "0x1ff3ff", "false", "false"},
                             {"QB", "PLC Output Bit", "boolean", "0x1", "false", "false"},
                             {"3", "Retentive Memory", "byte", "0x1ff3ff", "false", "false"},
                             {"4", "Local/Global Var", "byte", "0x1ff3ff", "false", "false"},
                             {"5", "Local/Global Var(5)", "byte", "0x1ff3ff", "false", "false"},
                             {"PROJ_ID", "ProjectId", "unsignedInt", "0x40", "false", "false"}};
    auto const types = elements(root.child("memtypes"));
    ASSERT_EQ(types.size(), std::size(kRows));
    for (std::size_t i = 0; i < types.size(); ++i) {
        Row const& row = kRows[i];
        expectElement(types[i], "memtype", row.name,
                      {{"display", row.display},
                       {"naturalType", row.naturalType},
                       {"icomTypes", row.icomTypes},
                       {"isSwap2", "false"},
                       {"isSwap4", "false"},
                       {"canBitWrite", "false"},
                       {"canBitArrayWrite", "false"},
                       {"isReadOnly", "false"},
                       {"isWriteOnly", "false"},
                       {"useInDatagram", row.useInDatagram},
                       {"hasInternalConversion", row.hasInternalConversion},
                       {"blockReadCount", "0"},
                       {"blockWriteCount", "0"},
                       {"min", "0"},
                       {"max", "0"}});
        EXPECT_TRUE(elements(types[i]).empty()) << row.name;
    }
}

TEST_F(Document, FieldsOfATagAddress) {
    struct Row {
        char const* name;
        char const* display;
        char const* preset;
        char const* defaultValue;
        char const* readonly;
        char const* type;
        char const* sub;
        char const* isMandatory;
    };
    constexpr Row kRows[] = {{"nodeid", "nodeid", "", "", "true", "prop_nodeRef", "false", "false"},
                             {"tagname", "Tag Name", "", "", "false", "prop_string", "false", "true"},
                             {"addressSpace", "Address Space", "", "", "false", "prop_memTypeRef", "false", "true"},
                             {"offset", "Offset.SubIndex", "", "0", "false", "prop_subIndex", "false", "false"},
                             {"datatype", "Data Type", "boolean", "", "false", "prop_idalType", "true", "true"}};
    // The group is fixed for the first three; those of offset and datatype only have to exist.
    constexpr char const* kGroups[] = {"network", "tag_parser", "field", nullptr, nullptr};
    auto const fields = elements(root.child("tag_uri"));
    ASSERT_EQ(fields.size(), std::size(kRows));
    for (std::size_t i = 0; i < fields.size(); ++i) {
        Row const& row = kRows[i];
        std::string const group = fields[i].attribute("group").value();
        EXPECT_FALSE(group.empty()) << row.name;
        if (kGroups[i] != nullptr) {
            EXPECT_EQ(group, kGroups[i]) << row.name;
        }
        expectElement(fields[i], "tag_field", row.name,
                      {{"display", row.display},
                       {"default", row.preset},
                       {"defaultValue", row.defaultValue},
                       {"arrayType", "false"},
                       {"readonly", row.readonly},
                       {"group", group},
                       {"type", row.type},
                       {"conversion", "true"},
                       {"sub", row.sub},
                       {"isMandatory", row.isMandatory}});
    }
}

TEST_F(Document, Models) {
    auto const models = elements(root.child("models"));
    ASSERT_EQ(models.size(), 2U);
    constexpr char const* kNames[] = {"Intel", "Motorola"};
    for (std::size_t i = 0; i < 2; ++i) {
        expectElement(models[i], "model", kNames[i],
                      {{"display", kNames[i]}, {"datagramCount", "90"}, {"datagramLength", "1024"}});
        auto const references = elements(models[i]);
        EXPECT_EQ(textsOf(references), (Texts{"M", "MB", "I", "IB", "Q", "QB", "3", "4", "5", "PROJ_ID"}));
        for (std::size_t k = 0; k < references.size(); ++k) {
            Attributes expected = {{"min", "0"}, {"max", "2147483647"}};
            if (k == 0) {
                expected.emplace_back("hasInternalConversion", "false");
            }
            expectElement(references[k], "memtype_ref", references[k].text().get(), expected);
        }
    }
}

TEST_F(Document, Conversions) {
    struct Row {
        char const* name;
        char const* display;
        char const* icomTypes;
    };
    constexpr Row kRows[] = {{"bcd", "BCD", "0x7e47e"},           {"swapnibble", "AB->BA", "0x3feffe"},
                             {"swap2", "ABCD->CDAB", "0x3ECBEC"}, {"swap4", "ABCDEFGH->GHEFCDAB", "0x1c81c8"},
                             {"inv", "Inv bits", "0x71471"},      {"neg", "Negate", "0x18e18e"}};
    auto const conversions = elements(root.child("conversions"));
    ASSERT_EQ(conversions.size(), std::size(kRows));
    for (std::size_t i = 0; i < conversions.size(); ++i) {
        expectElement(conversions[i], "conversion", kRows[i].name,
                      {{"display", kRows[i].display}, {"icomTypes", kRows[i].icomTypes}});
    }
}

TEST_F(Document, MappedTypes) {
    std::vector<std::pair<char const*, char const*>> const expected = {{"boolean", "BOOL"},
                                                                       {"byte", "SINT"},
                                                                       {"short", "INT"},
                                                                       {"int", "DINT"},
                                                                       {"unsignedByte", "BYTE"},
                                                                       {"unsignedShort", "UINT"},
                                                                       {"unsignedInt", "UDINT"},
                                                                       {"float", "REAL"},
                                                                       {"double", "LREAL"},
                                                                       {"string", "STRING"},
                                                                       {"boolean []", "BOOL[]"},
                                                                       {"byte []", "SINT[]"},
                                                                       {"short []", "INT[]"},
                                                                       {"int []", "DINT[]"},
                                                                       {"unsignedByte []", "BYTE[]"},
                                                                       {"unsignedShort []", "UINT[]"},
                                                                       {"unsignedInt []", "UDINT[]"},
                                                                       {"float []", "REAL[]"},
                                                                       {"double []", "LREAL[]"}};
    auto const maps = elements(root.child("mappedDataTypes"));
    ASSERT_EQ(maps.size(), expected.size());
    for (std::size_t i = 0; i < maps.size(); ++i) {
        expectElement(maps[i], "map", "", {{"idalType", expected[i].first}, {"plcType", expected[i].second}});
        expectNoText(maps[i]);
    }
}

} // namespace
