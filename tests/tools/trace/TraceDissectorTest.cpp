#include "tests/support/TempDir.h"
#include "tests/tools/trace/Frames.h"
#include "tools/velk/trace/TraceKind.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

namespace {

using namespace tracetest;
using velk::trace::Conversation;
using velk::trace::TraceFormat;
using velk::trace::TraceKind;
using velk::trace::Way;

struct PipeCloser {
    void operator()(std::FILE* pipe) const { static_cast<void>(::pclose(pipe)); }
};

std::string OutputOf(std::string const& command) {
    std::unique_ptr<std::FILE, PipeCloser> const pipe(::popen(command.c_str(), "r"));
    std::string text;
    std::array<char, 4096> piece{};
    for (std::size_t count = 1; pipe != nullptr && count != 0;) {
        count = std::fread(piece.data(), 1, piece.size(), pipe.get());
        text.append(piece.data(), count);
    }
    return text;
}

/** A capture file, and tshark with the dissector to look at it. */
class Dissector : public testing::Test {
protected:
    Dissector() { bytes_ = format_->begin({.at = kStart, .program = "velk 1"}); }

    void SetUp() override {
        if (std::system("command -v tshark >/dev/null 2>&1") != 0) { // NOLINT(cert-env33-c): a literal
            FAIL() << "tshark is missing: scripts/install-dependencies test installs it";
        }
    }

    void frame(Way way, Bytes const& bytes) {
        velk::trace::Step const step = conversation_.next(way, bytes);
        bytes_ += format_->frame({.way = way, .bytes = bytes, .at = kStart + micros_++, .lasts = 0, .step = step});
    }
    void to(std::string_view hex) { frame(Way::ToPlc, Hex(hex)); }
    void from(std::string_view hex) { frame(Way::FromPlc, Hex(hex)); }
    void dropped(std::string_view hex) { bytes_ += format_->dropped(Hex(hex), kStart + micros_++); }

    /** Columns of every packet, "|" between them. */
    std::string columns(std::string const& fields, std::string const& more = "") {
        std::ofstream(folder_ / "trace.pcapng", std::ios::binary) << bytes_;
        // In a separate home directory: the user's settings must not matter.
        return OutputOf("HOME='" + folder_.string() + "' tshark -X lua_script:" VELK_DISSECTOR " -r '" +
                        (folder_ / "trace.pcapng").string() + "' " + more + " -T fields -E separator='|' " + fields +
                        " 2>'" + (folder_ / "errors").string() + "'");
    }

    [[nodiscard]] std::string errors() const {
        std::ifstream file(folder_ / "errors");
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    static constexpr std::int64_t kStart = 1'795'260'858'000'000;

    velktest::TempDir temporary_;
    std::filesystem::path folder_ = temporary_.Path();
    std::unique_ptr<TraceFormat> format_ = velk::trace::makeTraceFormat(TraceKind::Pcapng);
    Conversation conversation_;
    std::string bytes_;
    std::int64_t micros_ = 0;
};

TEST_F(Dissector, TellsAnExchangeInTheInfoColumn) {
    to(kRead);
    from(kAck1);
    to(kAck0);
    from(kReadReply);
    to(kAck1);
    from(kAck0);
    EXPECT_EQ(columns("-e frame.time_epoch -e _ws.col.Protocol -e _ws.col.Source -e _ws.col.Info"),
              "1795260858.000000000|VELK|panel|block 1, the last | request: read variables, 2 items\n"
              "1795260858.000001000|VELK|PLC|acknowledge of block 1\n"
              "1795260858.000002000|VELK|panel|turnaround\n"
              "1795260858.000003000|VELK|PLC|block 1, the last | response: read variables, done\n"
              "1795260858.000004000|VELK|panel|acknowledge of block 1\n"
              "1795260858.000005000|VELK|PLC|closing acknowledge\n")
        << errors();
}

TEST_F(Dissector, TakesItemsApart) {
    to(kRead);
    from(kAck1);
    to(kAck0);
    from(kReadReply);
    EXPECT_EQ(columns("-e velk.service -e velk.item.area -e velk.item.offset -e velk.item.size -e velk.item.quality "
                      "-e velk.item.value -e velk.project -e velk.status"),
              "0x2e|0,2|18,13|4,0|||0x12345678|\n"
              "|||||||\n"
              "|||||||\n"
              "0x2e|0,2|18,13|4,0|1,1|2a000000,01||0\n")
        << errors();
}

TEST_F(Dissector, ReadsBothByteOrdersBehindRoutingHeaders) {
    Bytes const header = Hex(kHeader);
    frame(Way::ToPlc, header + Hex(kBigWrite));
    frame(Way::FromPlc, header + Hex(kBigAck1));
    frame(Way::ToPlc, header + Hex(kBigAck0));
    frame(Way::FromPlc, header + Hex(kBigDone));
    frame(Way::ToPlc, header + Hex(kBigAck1));
    frame(Way::FromPlc, header + Hex(kBigAck0));
    frame(Way::ToPlc, header + Hex(kFileOpen));
    EXPECT_EQ(columns("-e velk.to_plc -e velk.byte_order -e velk.number -e velk.routing.hop -e velk.routing.address "
                      "-e velk.item.value -e velk.file.name"),
              "1|1|1|43,29|10.0.0.1,10.0.0.2|04d2|\n"
              "0|1|1|43,29|10.0.0.1,10.0.0.2||\n"
              "1|1|0|43,29|10.0.0.1,10.0.0.2||\n"
              "0|1|1|43,29|10.0.0.1,10.0.0.2||\n"
              "1|1|1|43,29|10.0.0.1,10.0.0.2||\n"
              "0|1|0|43,29|10.0.0.1,10.0.0.2||\n"
              "1|0|1|43,29|10.0.0.1,10.0.0.2||DOWNLOAD.SDB\n")
        << errors();
}

TEST_F(Dissector, JoinsBlocksAndShowsPiecesOfAFile) {
    to(kFileOpen);
    from(kAck1);
    to(kAck0);
    from("AA AA 05 00 01 00 5E 00 | 00 00 01 00 03"); // the same as kFilePiece in two blocks
    to(kAck1);
    from("AA AA 04 00 02 00 61 01 | 00 01 02 03");
    EXPECT_EQ(columns("-e velk.number -e velk.last -e velk.file.more -e velk.file.count -e velk.file.data"),
              "1|1|||\n"
              "1||||\n"
              "0||||\n"
              "1|0|||\n"
              "1||||\n"
              "2|1|1|3|010203\n")
        << errors();
}

TEST_F(Dissector, FindsWhatIsWrong) {
    to(kRead);
    from("AA AA 02 00 01 00 59 01 00 00"); // checksum
    from("41 42");
    from("AA AA 02 00 03 00 5A 01 00 00"); // block 3
    to(kRead);
    from(kAck1);
    to(kAck0);
    from("AA AA 02 00 01 00 A0 01 48 00");
    dropped(kAck0);
    EXPECT_EQ(columns("-e frame.number -e velk.checksum.right -e velk.fault -e velk.status.meaning -e frame.comment "
                      "-e _ws.expert.message",
                      "-Y '_ws.expert or frame.comment'"),
              "2|0||||wrong checksum, should be 58\n"
              "3||2 bytes that are not a frame|||2 bytes that are not a frame\n"
              "4|1|block 3 instead of block 1|||block 3 instead of block 1\n"
              "8|1||the PLC runs another project||the PLC runs another project\n"
              "9||||dropped: these bytes were not expected|dropped: these bytes were not expected\n")
        << errors();
}

TEST_F(Dissector, TakesEveryBeginningOfAFrameWithoutHarm) {
    for (Bytes const& whole :
         {Hex(kRead), Hex(kReadReply), Hex(kBigWrite), Hex(kFileOpen), Hex(kHeader) + Hex(kAck1)}) {
        for (std::size_t size = 1; size <= whole.size(); ++size) {
            Bytes const part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            frame(size % 2 == 0 ? Way::ToPlc : Way::FromPlc, part);
        }
    }
    EXPECT_EQ(columns("-e _ws.expert.message", "-Y _ws.lua.error"), "") << errors();
    EXPECT_NE(columns("-e velk.kind"), "");
}

} // namespace
