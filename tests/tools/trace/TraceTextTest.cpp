#include "tests/tools/trace/Frames.h"
#include "tools/velk/trace/TraceKind.h"
#include "tools/velk/trace/TraceTime.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace tracetest;
using velk::trace::Conversation;
using velk::trace::makeTraceFormat;
using velk::trace::TraceFormat;
using velk::trace::TraceKind;
using velk::trace::Way;

/** 2026-11-21 11:34:18.000005 UTC. */
constexpr std::int64_t kStart = 1'795'260'858'000'005;

/** Writes frames down one after another. */
class Writer {
public:
    explicit Writer(TraceKind kind) : format_(makeTraceFormat(kind)) {}

    std::string begin() { return format_->begin({.at = kStart, .program = "velk 1"}); }
    std::string frame(Way way, Bytes const& bytes, std::int64_t after = 0, std::int64_t lasts = 0) {
        velk::trace::Step const step = conversation_.next(way, bytes);
        return format_->frame({.way = way, .bytes = bytes, .at = kStart + after, .lasts = lasts, .step = step});
    }
    std::string to(std::string_view hex) { return frame(Way::ToPlc, Hex(hex)); }
    std::string from(std::string_view hex) { return frame(Way::FromPlc, Hex(hex)); }
    TraceFormat& format() { return *format_; }

private:
    std::unique_ptr<TraceFormat> format_;
    Conversation conversation_;
};

TEST(TraceTime, IsWrittenWithMicroseconds) {
    EXPECT_EQ(velk::trace::isoTime(kStart), "2026-11-21T11:34:18.000005Z");
    EXPECT_EQ(velk::trace::isoTime(0), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(velk::trace::isoTime(-1), "1969-12-31T23:59:59.999999Z");
    EXPECT_EQ(velk::trace::secondsText(12'345'678), "12.345678");
    EXPECT_EQ(velk::trace::secondsText(-1), "-0.000001");
}

TEST(TextTrace, AnExchangeReadsLikeThis) {
    Writer writer(TraceKind::Text);
    EXPECT_EQ(writer.begin(),
              "# velk 1, trace of 2026-11-21T11:34:18.000005Z, in seconds from there on; -> to the PLC, "
              "<- from the PLC\n");
    EXPECT_EQ(writer.frame(Way::ToPlc, Hex(kRead), 1'000),
              "        0.001000 -> block 1, the last, 30 bytes, checksum DD right, little-endian\n"
              "                    AA AA 1E 00 01 00 DD 01 2E 00 02 00 00 00 00 00\n"
              "                    12 00 00 00 04 00 00 00 02 00 0D 00 00 00 00 00\n"
              "                    00 00 78 56 34 12\n"
              "                    request: read variables, 30 bytes, 2 items, project 12345678\n"
              "                      1: area 0, offset 18, 4 bytes\n"
              "                      2: area 2, bit 1.5\n");
    EXPECT_EQ(writer.frame(Way::FromPlc, Hex(kAck1), 12'345'678),
              "       12.345678 <- acknowledge of block 1, little-endian\n"
              "                    55 55 0A 00 01 00\n");
    EXPECT_EQ(writer.to(kAck0), "        0.000000 -> turnaround: the panel waits for the response, little-endian\n"
                                "                    55 55 0A 00 00 00\n");
    EXPECT_EQ(writer.from(kReadReply),
              "        0.000000 <- block 1, the last, 13 bytes, checksum 90 right, little-endian\n"
              "                    AA AA 0D 00 01 00 90 01 00 00 00 00 00 00 01 2A\n"
              "                    00 00 00 01 01\n"
              "                    response: read variables, 13 bytes, status 0 (done)\n"
              "                      1: area 0, offset 18, 4 bytes = 2A 00 00 00, quality 1\n"
              "                      2: area 2, bit 1.5 = 01, quality 1\n");
    EXPECT_EQ(writer.from(kAck0), "        0.000000 <- closing acknowledge: the exchange is over, little-endian\n"
                                  "                    55 55 0A 00 00 00\n");
}

TEST(TextTrace, RoutingAndFaultsHaveLinesOfTheirOwn) {
    Writer writer(TraceKind::Text);
    static_cast<void>(writer.begin());
    Bytes bytes = Hex(kHeader) + Hex(kBigAck1);
    bytes[17] = 1;
    EXPECT_EQ(writer.frame(Way::FromPlc, bytes),
              "        0.000000 <- acknowledge of block 1, big-endian\n"
              "                    4F 00 02 20 2B 0A 00 00 01 00 1D 0A 00 00 02 00\n"
              "                    00 01 00 55 55 00 0A 00 01\n"
              "                    routed: block size 512, 2 levels, hop 43 to 10.0.0.1, hop 29 to 10.0.0.2\n"
              "                    !! routing status 1: a coupler could not pass the frame on\n"
              "                    !! no block 1 was sent before\n");
    EXPECT_EQ(writer.from("41 42"), "        0.000000 <- no frame\n"
                                    "                    41 42\n"
                                    "                    !! 2 bytes that are not a frame\n");
}

TEST(TextTrace, ALongFrameIsShownInPart) {
    Writer writer(TraceKind::Text);
    static_cast<void>(writer.begin());
    std::string const text = writer.frame(Way::FromPlc, Bytes(66));
    EXPECT_NE(text.find("                    ... 2 more bytes\n"), std::string::npos) << text;
    EXPECT_EQ(writer.frame(Way::FromPlc, Bytes(64)).find("more bytes"), std::string::npos);
}

TEST(TextTrace, FilesAndRefusalsAreTold) {
    Writer writer(TraceKind::Text);
    static_cast<void>(writer.begin());
    EXPECT_NE(writer.to(kFileOpen).find("request: open file, 17 bytes, \"DOWNLOAD.SDB\"\n"), std::string::npos);
    static_cast<void>(writer.to(kAck0));
    EXPECT_NE(writer.from(kFilePiece)
                  .find("response: open file, 9 bytes, status 0 (done), 3 bytes of the file, more to come\n"),
              std::string::npos);
    static_cast<void>(writer.to(kRead));
    EXPECT_NE(writer.from("AA AA 02 00 01 00 A0 01 48 00")
                  .find("response: read variables, 2 bytes, status 72 (the PLC runs another project)\n"),
              std::string::npos);
}

TEST(TextTrace, WhatIsNoFrameEitherIsTold) {
    Writer writer(TraceKind::Text);
    static_cast<void>(writer.begin());
    EXPECT_EQ(writer.format().timeout(kStart + 2'000'000),
              "        2.000000 !! nothing received within the time-out\n");
    EXPECT_EQ(writer.format().dropped(Hex("01 02"), kStart), "        0.000000 !! 2 bytes dropped: not expected\n"
                                                             "                    01 02\n");
    EXPECT_EQ(writer.format().fault("", kStart), "        0.000000 !! the port died\n");
    EXPECT_EQ(writer.format().fault("hang\x1b-up", kStart), "        0.000000 !! hang\\x1B-up\n");
}

TEST(JsonTrace, EveryLineIsAnObject) {
    Writer writer(TraceKind::JsonLines);
    EXPECT_EQ(writer.begin(), R"({"event":"begin","time":"2026-11-21T11:34:18.000005Z","program":"velk 1"})"
                              "\n");
    EXPECT_EQ(
        writer.frame(Way::ToPlc, Hex(kRead), 0, 250),
        R"({"event":"frame","time":"2026-11-21T11:34:18.000005Z","lasts_us":250,"direction":"to_plc",)"
        R"("kind":"block","byte_order":"little","number":1,"last":true,"length":30,)"
        R"("checksum":{"value":221,"right":true},)"
        R"("bytes":"AA AA 1E 00 01 00 DD 01 2E 00 02 00 00 00 00 00 12 00 00 00 04 00 00 00 02 00 0D 00 00 00 00 )"
        R"(00 00 00 78 56 34 12","faults":[],)"
        R"("request":{"service":"read_list","size":30,"items":[{"area":0,"offset":18,"size":4},)"
        R"({"area":2,"offset":13,"size":0}],"project":305419896,"faults":[]}})"
        "\n");
    EXPECT_EQ(writer.from(kAck1), R"({"event":"frame","time":"2026-11-21T11:34:18.000005Z","lasts_us":0,)"
                                  R"("direction":"from_plc","kind":"acknowledge","byte_order":"little","number":1,)"
                                  R"("code":10,"bytes":"55 55 0A 00 01 00","faults":[]})"
                                  "\n");
    static_cast<void>(writer.to(kAck0));
    nlohmann::json const reply = nlohmann::json::parse(writer.from(kReadReply));
    EXPECT_EQ(reply["response"]["status"], 0);
    EXPECT_EQ(reply["response"]["meaning"], "done");
    EXPECT_EQ(reply["response"]["items"][0]["value"], "2A 00 00 00");
    EXPECT_EQ(reply["response"]["items"][1]["quality"], 1);
}

TEST(JsonTrace, RoutingFilesAndFaults) {
    Writer writer(TraceKind::JsonLines);
    nlohmann::json const routed = nlohmann::json::parse(writer.frame(Way::ToPlc, Hex(kHeader) + Hex(kBigWrite)));
    EXPECT_EQ(routed["routing"].dump(), R"({"block_size":512,"levels":2,"status":0,"way":[{"address":"10.0.0.1",)"
                                        R"("hop":43},{"address":"10.0.0.2","hop":29}]})");
    EXPECT_EQ(routed["request"]["items"][0]["value"], "04 D2");
    EXPECT_EQ(nlohmann::json::parse(writer.to(kFileOpen))["request"]["file"], "DOWNLOAD.SDB");
    static_cast<void>(writer.to(kAck0));
    EXPECT_EQ(nlohmann::json::parse(writer.from(kFilePiece))["response"]["file"].dump(), R"({"count":3,"more":true})");
    EXPECT_EQ(nlohmann::json::parse(writer.from("41"))["faults"][0], "1 bytes that are not a frame");
    EXPECT_EQ(nlohmann::json::parse(writer.from("41"))["kind"], "unknown");
}

TEST(JsonTrace, AFileNameOfAnyBytesStaysJson) {
    Writer writer(TraceKind::JsonLines);
    // The name is the byte FF: AA + AA + 06 + 01 + 01 + 31 + 02 + FF = 28E.
    nlohmann::json const json = nlohmann::json::parse(writer.to("AA AA 06 00 01 00 8E 01 31 00 02 00 FF 00"));
    EXPECT_EQ(json["request"]["file"], "\xC3\xBF");
}

TEST(JsonTrace, WhatIsNoFrameHasEventsOfItsOwn) {
    Writer writer(TraceKind::JsonLines);
    EXPECT_EQ(writer.format().timeout(kStart), R"({"event":"timeout","time":"2026-11-21T11:34:18.000005Z"})"
                                               "\n");
    EXPECT_EQ(writer.format().dropped(Hex("01 02"), kStart),
              R"({"event":"dropped","time":"2026-11-21T11:34:18.000005Z","bytes":"01 02"})"
              "\n");
    EXPECT_EQ(writer.format().fault("hang-up", kStart),
              R"({"event":"fault","time":"2026-11-21T11:34:18.000005Z","reason":"hang-up"})"
              "\n");
}

std::string FileBytes(std::string_view hex) {
    Bytes const bytes = Hex(hex);
    return {bytes.begin(), bytes.end()};
}

TEST(PcapngTrace, BeginsWithASectionAndAnInterface) {
    Writer writer(TraceKind::Pcapng);
    EXPECT_EQ(writer.begin(),
              FileBytes("0A 0D 0D 0A | 2C 00 00 00 | 4D 3C 2B 1A | 01 00 00 00 | FF FF FF FF FF FF FF FF |"
                        "04 00 06 00 76 65 6C 6B 20 31 00 00 | 00 00 00 00 | 2C 00 00 00 |"
                        "01 00 00 00 | 20 00 00 00 | 93 00 00 00 | 00 00 00 00 |"
                        "09 00 01 00 06 00 00 00 | 00 00 00 00 | 20 00 00 00"));
}

TEST(PcapngTrace, AFrameIsAPacketWithItsTimeAndItsDirection) {
    Writer writer(TraceKind::Pcapng);
    // kStart is 000660C7 BDB86285; 6 bytes are filled up to 8.
    EXPECT_EQ(writer.to(kAck0), FileBytes("06 00 00 00 | 34 00 00 00 | 00 00 00 00 | C7 60 06 00 | 85 62 B8 BD |"
                                          "06 00 00 00 | 06 00 00 00 | 55 55 0A 00 00 00 00 00 |"
                                          "02 00 04 00 02 00 00 00 | 00 00 00 00 | 34 00 00 00"));
    EXPECT_EQ(writer.from("01 02 03 04"),
              FileBytes("06 00 00 00 | 30 00 00 00 | 00 00 00 00 | C7 60 06 00 | 85 62 B8 BD |"
                        "04 00 00 00 | 04 00 00 00 | 01 02 03 04 |"
                        "02 00 04 00 01 00 00 00 | 00 00 00 00 | 30 00 00 00"));
}

TEST(PcapngTrace, DroppedBytesSaySoInAComment) {
    Writer writer(TraceKind::Pcapng);
    std::string const packet = writer.format().dropped(Hex("01"), kStart);
    EXPECT_EQ(packet.size() % 4, 0U);
    EXPECT_NE(packet.find("dropped: these bytes were not expected"), std::string::npos);
}

TEST(PcapngTrace, WhatIsNoBytesLeavesNoPacket) {
    Writer writer(TraceKind::Pcapng);
    EXPECT_EQ(writer.format().timeout(kStart), "");
    EXPECT_EQ(writer.format().fault("hang-up", kStart), "");
}

} // namespace
