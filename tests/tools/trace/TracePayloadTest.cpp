#include "tests/tools/trace/Frames.h"
#include "tools/velk/trace/Payload.h"

#include <gtest/gtest.h>

namespace {

using namespace tracetest;
using plc::ByteOrder;
using plc::ServiceKind;
using velk::trace::decodeRequest;
using velk::trace::decodeResponse;
using velk::trace::itemText;
using velk::trace::Request;
using velk::trace::Response;
using velk::trace::statusText;

using Faults = std::vector<std::string>;

/** What follows the 8 bytes of a block's header. */
Bytes Payload(std::string_view frame) {
    Bytes const bytes = Hex(frame);
    return {bytes.begin() + 8, bytes.end()};
}

Request ReadOf(std::string_view items, unsigned count) {
    return decodeRequest(Hex("2E 00") + velktest::Little(count, 4) + Hex(items) + Hex("01 00 00 00"),
                         ByteOrder::kLittle);
}

constexpr std::string_view kTwoBytes = "00 00 08 00 00 00 02 00 00 00";
constexpr std::string_view kBit = "01 00 0B 00 00 00 00 00 00 00";

TEST(TraceRequest, AReadListGivesItsItemsAndItsProject) {
    Request const request = decodeRequest(Payload(kRead), ByteOrder::kLittle);
    EXPECT_EQ(request.service, ServiceKind::kReadList);
    EXPECT_EQ(request.size, 30U);
    EXPECT_EQ(request.project, 0x12345678U);
    ASSERT_EQ(request.items.size(), 2U);
    EXPECT_EQ(itemText(request.items[0]), "area 0, offset 18, 4 bytes");
    EXPECT_EQ(itemText(request.items[1]), "area 2, bit 1.5");
    EXPECT_EQ(request.faults, Faults{});
}

TEST(TraceRequest, AWriteListGivesTheValues) {
    Request const request = decodeRequest(Payload(kBigWrite), ByteOrder::kBig);
    EXPECT_EQ(request.service, ServiceKind::kWriteList);
    EXPECT_EQ(request.project, 9U);
    ASSERT_EQ(request.items.size(), 1U);
    EXPECT_EQ(itemText(request.items[0]), "area 0, offset 16, 2 bytes");
    EXPECT_EQ(request.items[0].value, Hex("04 D2"));
}

TEST(TraceRequest, AListThatDoesNotFitIsTold) {
    Bytes const payload = Payload(kRead);
    Request const request = decodeRequest(plc::ByteView(payload).first(payload.size() - 5), ByteOrder::kLittle);
    EXPECT_EQ(request.service, ServiceKind::kReadList);
    EXPECT_EQ(request.faults, Faults{"a list request of 25 bytes ends in item 1 of 2"});
    EXPECT_TRUE(request.items.empty());
    EXPECT_FALSE(request.project);
}

TEST(TraceRequest, AFileIsNamed) {
    EXPECT_EQ(decodeRequest(Payload(kFileOpen), ByteOrder::kLittle).fileName, "DOWNLOAD.SDB");
    EXPECT_EQ(decodeRequest(Payload(kFileOpen), ByteOrder::kLittle).faults, Faults{});
    Request const wrong = decodeRequest(Hex("31 00 0D 00 44 00"), ByteOrder::kLittle);
    EXPECT_EQ(wrong.fileName, "D");
    EXPECT_EQ(wrong.faults, Faults{"the name's length field says 13 bytes, 2 received"});
    EXPECT_EQ(decodeRequest(Hex("31 00 01 00 44"), ByteOrder::kLittle).faults.size(), 1U); // no zero byte
    EXPECT_EQ(decodeRequest(Hex("31 00"), ByteOrder::kLittle).faults, Faults{"a file request of 2 bytes is too short"});
}

TEST(TraceRequest, WrongSizesAndUnknownServicesAreTold) {
    EXPECT_EQ(decodeRequest(Hex("02"), ByteOrder::kLittle).faults, Faults{});
    EXPECT_EQ(decodeRequest(Hex("02 00"), ByteOrder::kLittle).faults, Faults{"it has 2 bytes instead of 1"});
    EXPECT_EQ(decodeRequest(Hex("01 02"), ByteOrder::kLittle).faults, Faults{"it has 2 bytes instead of 14"});
    EXPECT_EQ(decodeRequest(Hex("99"), ByteOrder::kLittle).faults, Faults{"there is no service 99"});
    EXPECT_EQ(decodeRequest({}, ByteOrder::kLittle).faults, Faults{"it is empty"});
}

TEST(TraceResponse, ValuesStandBesideTheItemsOfTheRequest) {
    Request const request = decodeRequest(Payload(kRead), ByteOrder::kLittle);
    Response const response = decodeResponse(Payload(kReadReply), ByteOrder::kLittle, request);
    EXPECT_EQ(response.service, ServiceKind::kReadList);
    EXPECT_EQ(response.status, 0);
    ASSERT_EQ(response.items.size(), 2U);
    EXPECT_EQ(response.items[0].value, Hex("2A 00 00 00"));
    EXPECT_EQ(response.items[0].quality, 1);
    EXPECT_EQ(response.items[0].offset, 18U);
    EXPECT_EQ(response.items[1].value, Hex("01"));
    EXPECT_EQ(response.faults, Faults{});
}

TEST(TraceResponse, BadQualityAndWrongLengthsAreTold) {
    Request const request = ReadOf(std::string(kTwoBytes) + std::string(kBit), 2);
    auto const faults = [&](std::string_view reply) {
        return decodeResponse(Hex(reply), ByteOrder::kLittle, request).faults;
    };
    EXPECT_EQ(faults("00 00 00 00 00 00 01 12 34 01 01"), Faults{});
    EXPECT_EQ(faults("00 00 00 00 00 00 00 12 34 01 01"), Faults{"item 1 has the quality 0, not 1"});
    EXPECT_EQ(faults("00 00 00 00 00 00 01 12"), Faults{"the value of item 1 has 1 of 2 bytes"});
    EXPECT_EQ(faults("00 00 00 00 00 00 01 12 34"), Faults{"it ends after 1 of 2 items"});
    EXPECT_EQ(faults("00 00 00 00 00 00 01 12 34 01 01 FF"), Faults{"1 bytes follow the last item"});
    EXPECT_EQ(faults("00 00 00"), Faults{"it has 3 bytes instead of at least 6"});
    EXPECT_EQ(faults("00"), Faults{"it has 1 byte and no status word"});
}

TEST(TraceResponse, ALinkCheckMayBeAnsweredWithAnything) {
    Request const request = decodeRequest(Payload(kLinkCheck), ByteOrder::kLittle);
    for (char const* const reply : {"", "33", "01 00", "01 02 03 04 05"}) {
        EXPECT_EQ(decodeResponse(Hex(reply), ByteOrder::kLittle, request).faults, Faults{}) << reply;
    }
}

TEST(TraceResponse, ASingleItemThatCountsBitsTakesWhatThereIs) {
    Request const request = ReadOf(kBit, 1);
    Response const response = decodeResponse(Hex("00 00 00 00 00 00 01 FF 03"), ByteOrder::kLittle, request);
    ASSERT_EQ(response.items.size(), 1U);
    EXPECT_EQ(response.items[0].value, Hex("FF 03"));
    EXPECT_EQ(response.faults, Faults{});
    EXPECT_EQ(decodeResponse(Hex("00 00 00 00 00 00 01"), ByteOrder::kLittle, request).faults,
              Faults{"the value of item 1 has 0 of 1 byte"});
}

TEST(TraceResponse, AFilePieceSaysHowMuchOfTheFileItCarries) {
    Request const request = decodeRequest(Payload(kFileOpen), ByteOrder::kLittle);
    Response const response = decodeResponse(Payload(kFilePiece), ByteOrder::kLittle, request);
    ASSERT_TRUE(response.piece);
    EXPECT_TRUE(response.piece->more);
    EXPECT_EQ(response.piece->count, 3);
    EXPECT_EQ(response.piece->carried, 3U);
    EXPECT_EQ(response.faults, Faults{});
    EXPECT_EQ(decodeResponse(Hex("00 00 00 00 00 04 01 02 03"), ByteOrder::kBig, request).faults,
              Faults{"it says 4 bytes of the file, 3 received"});
    EXPECT_FALSE(decodeResponse(Hex("00 06"), ByteOrder::kBig, request).piece); // refused: nothing else counts
}

TEST(TraceResponse, StatusWordsAreReadInTheOrderOfTheStation) {
    Request const login = decodeRequest(Payload(kBigLogin), ByteOrder::kBig);
    EXPECT_EQ(decodeResponse(Hex("03 E8"), ByteOrder::kBig, login).status, 1000);
    EXPECT_EQ(decodeResponse(Hex("E8 03"), ByteOrder::kLittle, login).status, 1000);
}

TEST(TraceResponse, StatusWordsInWords) {
    EXPECT_EQ(statusText(ServiceKind::kLogin, 1000), "login accepted");
    EXPECT_EQ(statusText(ServiceKind::kLogin, 0), "refused");
    EXPECT_EQ(statusText(ServiceKind::kLogout, 0), "done");
    EXPECT_EQ(statusText(ServiceKind::kReadList, 0), "done");
    EXPECT_EQ(statusText(ServiceKind::kReadList, 0x48), "the PLC runs another project");
    EXPECT_EQ(statusText(ServiceKind::kWriteList, 0x33), "the PLC runs another project");
    EXPECT_EQ(statusText(ServiceKind::kFileOpen, 0x33), "refused");
    EXPECT_EQ(statusText(ServiceKind::kReadList, 4), "refused");
    EXPECT_EQ(statusText(ServiceKind::kLinkCheck, 4), "done"); // nobody looks at its answer
}

TEST(TraceResponse, AReplyToARequestThatNobodyUnderstandsIsLeftAlone) {
    Request const request = decodeRequest(Hex("2E 00 05 00 00 00 00 00 00 00"), ByteOrder::kLittle);
    ASSERT_EQ(request.faults.size(), 1U);
    Response const response = decodeResponse(Hex("00 00 00 00 00 00 01 02"), ByteOrder::kLittle, request);
    EXPECT_TRUE(response.items.empty());
    EXPECT_EQ(response.faults, Faults{});
}

} // namespace
