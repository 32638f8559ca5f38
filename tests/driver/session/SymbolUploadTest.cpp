#include "driver/session/SymbolUpload.h"

#include "driver/config/CommonParams.h"
#include "driver/link/SerialLink.h"
#include "driver/session/Login.h"
#include "tests/support/Conversation.h"
#include "tests/support/FakeHost.h"
#include "tests/support/RecordedErrors.h"
#include "tests/support/TempDir.h"

#include <algorithm>
#include <memory>
#include <string>
#include <sys/stat.h>

/** Fetching a file from the PLC piece by piece into a local file. */
namespace {

using namespace velktest;
using _VELK::CommonParams;
using _VELK::Login;
using _VELK::NodeParams;
using _VELK::SerialLink;
using _VELK::SymbolUpload;

class SymbolUploadTest : public ::testing::Test {
protected:
    SymbolUploadTest() {
        factory.port = &port;
        common.parity = "none";
        common.protType = "Serial_RS232";
        node.BlockSize = 128;
        node.Timeout = 1000;
    }

    void SetUp() override { ASSERT_TRUE(link.open()) << errors.text; }
    void TearDown() override { port.ExpectDone(); }

    Conversation Intel() { return {port, Framing{}}; }
    Conversation Motorola() { return {port, Framing{.bigEndian = true}}; }
    std::string Local() const { return dir.Path("local.sdb"); }

    unsigned int Fetch(bool bigEndian = false) {
        return upload->fetch("DOWNLOAD.SDB", Local().c_str(), &node, bigEndian);
    }

    TempDir dir;
    ScriptedPort port;
    FakeSerialFactory factory;
    CommonParams common;
    NodeParams node;
    RecordedErrors errors;
    SerialLink link{&factory, common, errors.sink};
    Login login;
    std::unique_ptr<SymbolUpload> upload = std::make_unique<SymbolUpload>(link, login, errors.sink);
};

TEST_F(SymbolUploadTest, OnePieceLittleEndian) {
    // AA + AA + 11 + 01 + 01 + 31 + 0D + (D O W N L O A D . S D B = 35F) = 504
    port.Expect("AA AA 11 00 01 00 04 01 31 00 0D 00 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00")
        .Answer("55 55 0A 00 01 00")
        .Expect("55 55 0A 00 00 00")
        // AA + AA + 09 + 01 + 01 + 03 + 41 + 42 + 43 = 228
        .Answer("AA AA 09 00 01 00 28 01 00 00 00 00 03 00 41 42 43")
        .Expect("55 55 0A 00 01 00")
        .Answer("55 55 0A 00 00 00");
    EXPECT_NE(Fetch(), 0U) << errors.text;
    EXPECT_EQ(dir.Get("local.sdb"), Text("ABC"));
    EXPECT_EQ(OpenHandles(Local()), 0);
    errors.Expect(1, "");
}

TEST_F(SymbolUploadTest, OnePieceBigEndian) {
    port.Expect("AA AA 00 11 00 01 04 01 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00")
        .Answer("55 55 00 0A 00 01")
        .Expect("55 55 00 0A 00 00")
        .Answer("AA AA 00 09 00 01 28 01 00 00 00 00 00 03 41 42 43")
        .Expect("55 55 00 0A 00 01")
        .Answer("55 55 00 0A 00 00");
    EXPECT_NE(Fetch(true), 0U) << errors.text;
    EXPECT_EQ(dir.Get("local.sdb"), Text("ABC"));
}

TEST_F(SymbolUploadTest, PiecesAreAppendedInTheirOrder) {
    for (bool const bigEndian : {false, true}) {
        Framing const framing{.bigEndian = bigEndian};
        Conversation line(port, framing);
        line.Exchange(line.OpenFileRequest(), line.FilePiece(Counting(300), true))
            .Exchange(Hex("32"), line.FilePiece(Counting(5, 100), true))
            .Exchange(Hex("32"), line.FilePiece({}, true))
            .Exchange(Hex("32"), line.FilePiece(Text("end"), false));
        EXPECT_NE(Fetch(bigEndian), 0U) << errors.text;
        EXPECT_EQ(dir.Get("local.sdb"), Counting(300) + Counting(5, 100) + Text("end"));
        EXPECT_EQ(OpenHandles(Local()), 0);
    }
}

TEST_F(SymbolUploadTest, AnswersThePortsResultOfTheLastExchange) {
    Conversation line = Intel();
    line.Request(line.OpenFileRequest());
    port.AnswerReturning(line.Line().Block(1, true, line.FilePiece(Text("abc"), false)), 9)
        .Expect(line.Line().Ack(1))
        .Answer(line.Line().Ack(0));
    EXPECT_EQ(Fetch(), 9U);
}

TEST_F(SymbolUploadTest, OtherNamesAreAskedForToo) {
    Intel().Exchange(Hex("31 00 02 00 58 00"), Hex("00 00 00 00 01 00 77"));
    EXPECT_NE(upload->fetch("X", Local().c_str(), &node, false), 0U);
    EXPECT_EQ(dir.Get("local.sdb"), Hex("77"));
}

TEST_F(SymbolUploadTest, EmptyFile) {
    Intel().Exchange(Intel().OpenFileRequest(), Hex("00 00 00 00 00 00"));
    EXPECT_NE(Fetch(), 0U);
    EXPECT_TRUE(dir.Has("local.sdb"));
    EXPECT_TRUE(dir.Get("local.sdb").empty());
}

TEST_F(SymbolUploadTest, EmptyPieceWithMoreToComeCreatesTheFile) {
    Intel().Exchange(Intel().OpenFileRequest(), Hex("00 00 01 00 00 00")).Dead(Hex("32"));
    EXPECT_EQ(Fetch(), 0U);
    EXPECT_TRUE(dir.Has("local.sdb"));
}

TEST_F(SymbolUploadTest, AnOldFileIsReplaced) {
    dir.Put("local.sdb", Bytes(5000, 0x55));
    Intel().Upload(Text("new"));
    EXPECT_NE(Fetch(), 0U);
    EXPECT_EQ(dir.Get("local.sdb"), Text("new"));
}

TEST_F(SymbolUploadTest, BytesBehindThePieceAreIgnored) {
    Intel().Exchange(Intel().OpenFileRequest(), Hex("00 00 00 00 02 00 41 42 43 44"));
    EXPECT_NE(Fetch(), 0U);
    EXPECT_EQ(dir.Get("local.sdb"), Text("AB"));
}

TEST_F(SymbolUploadTest, LargestPieceLeavesNoByteOfTheResponseOver) {
    node.BlockSize = 1460;
    Framing const framing{.blockSize = 1460};
    Bytes const piece = Counting(65535, 1);
    Conversation line(port, framing);
    line.Exchange(line.OpenFileRequest(), line.FilePiece(piece, false));
    EXPECT_NE(Fetch(), 0U);
    EXPECT_EQ(dir.Get("local.sdb"), piece);
}

TEST_F(SymbolUploadTest, RefusedFirstRequestCreatesNoFile) {
    dir.Put("local.sdb", Text("old"));
    for (char const* reply : {"01 00 00 00 00 00", "00 01 00 00 00 00", "FF FF 00 00 03 00 41 42 43"}) {
        Intel().Exchange(Intel().OpenFileRequest(), Hex(reply));
        EXPECT_EQ(Fetch(), 0U);
        errors.Expect(-6, "Wrong reply or Data Counter while reading symbol file");
        EXPECT_EQ(dir.Get("local.sdb"), Text("old"));
        EXPECT_FALSE(errors.sink.hasCommunicationFault());
    }
}

TEST_F(SymbolUploadTest, CountBeyondTheResponseIsRefused) {
    for (char const* reply : {"00 00 00 00 04 00 41 42 43", "00 00 00 00 FF FF 41", "00 00 00 00 01 00"}) {
        Intel().Exchange(Intel().OpenFileRequest(), Hex(reply));
        EXPECT_EQ(Fetch(), 0U) << reply;
        errors.Expect(-6, "Wrong reply or Data Counter while reading symbol file");
        EXPECT_FALSE(dir.Has("local.sdb"));
    }
}

TEST_F(SymbolUploadTest, ResponseShorterThanItsHeadIsRefused) {
    for (std::size_t length = 0; length < 6; ++length) {
        // Bytes of an earlier good response in the buffer must not be taken for this one.
        Intel().Upload(Text("good"));
        EXPECT_NE(Fetch(), 0U);
        dir.Put("local.sdb", {});
        Intel().Exchange(Intel().OpenFileRequest(), Bytes(length, 0x00));
        EXPECT_EQ(Fetch(), 0U) << length;
        errors.Expect(-6, "Wrong reply or Data Counter while reading symbol file");
        EXPECT_TRUE(dir.Get("local.sdb").empty());
    }
}

TEST_F(SymbolUploadTest, BigEndianFieldsAreNotReadLittleEndian) {
    Motorola().Exchange(Motorola().OpenFileRequest(), Hex("00 00 00 00 03 00 41 42 43"));
    EXPECT_EQ(Fetch(true), 0U);
    errors.Expect(-6, "Wrong reply or Data Counter while reading symbol file");
}

TEST_F(SymbolUploadTest, FailedExchangeClosesThePartialFileAndKeepsTheLinksError) {
    Intel().Exchange(Intel().OpenFileRequest(), Intel().FilePiece(Text("half"), true)).Dead(Hex("32"));
    EXPECT_EQ(Fetch(), 0U);
    errors.Expect(-4, "Timeout on Acknowledge");
    EXPECT_EQ(dir.Get("local.sdb"), Text("half"));
    EXPECT_EQ(OpenHandles(Local()), 0);
    EXPECT_FALSE(errors.sink.hasCommunicationFault());
}

TEST_F(SymbolUploadTest, FailedFirstExchangeLeavesTheOldFileAlone) {
    dir.Put("local.sdb", Text("old"));
    Intel().DeadUpload();
    EXPECT_EQ(Fetch(), 0U);
    EXPECT_EQ(dir.Get("local.sdb"), Text("old"));
}

TEST_F(SymbolUploadTest, RefusedLaterPieceLeavesThePartialFileOpen) {
    Intel()
        .Exchange(Intel().OpenFileRequest(), Intel().FilePiece(Text("half"), true))
        .Exchange(Hex("32"), Hex("01 00 00 00 00 00"));
    EXPECT_EQ(Fetch(), 0U);
    errors.Expect(-6, "Wrong reply or Data Counter while reading symbol file");
    EXPECT_EQ(OpenHandles(Local()), 1) << "it is deliberately not closed yet";
    upload.reset();
    EXPECT_EQ(OpenHandles(Local()), 0) << "its end closes it";
    EXPECT_EQ(dir.Get("local.sdb"), Text("half"));
}

TEST_F(SymbolUploadTest, NextUploadClosesThePartialFileBeforeItOpensItsOwn) {
    Intel()
        .Exchange(Intel().OpenFileRequest(), Intel().FilePiece(Text("half"), true))
        .Exchange(Hex("32"), Hex("01 00 00 00 00 00"));
    EXPECT_EQ(Fetch(), 0U);
    ASSERT_EQ(OpenHandles(Local()), 1);
    std::string const other = dir.Path("other.sdb");
    Intel()
        .Exchange(Intel().OpenFileRequest(), Intel().FilePiece(Text("whole"), true))
        .Exchange(Hex("32"), Hex("01 00 00 00 00 00"));
    EXPECT_EQ(upload->fetch("DOWNLOAD.SDB", other.c_str(), &node, false), 0U);
    EXPECT_EQ(OpenHandles(Local()), 0);
    EXPECT_EQ(OpenHandles(other), 1);
}

TEST_F(SymbolUploadTest, PartialFileDoesNotSpoilTheSameFileLater) {
    Intel()
        .Exchange(Intel().OpenFileRequest(), Intel().FilePiece(Text("a long half that is buffered"), true))
        .Exchange(Hex("32"), Hex("01 00 00 00 00 00"));
    EXPECT_EQ(Fetch(), 0U);
    Intel().Upload(Text("whole"));
    EXPECT_NE(Fetch(), 0U);
    EXPECT_EQ(dir.Get("local.sdb"), Text("whole"));
    upload.reset();
    EXPECT_EQ(dir.Get("local.sdb"), Text("whole")) << "nothing of the old file comes late";
}

TEST_F(SymbolUploadTest, FileThatCannotBeOpened) {
    std::string const nowhere = dir.Path("missing/local.sdb");
    Intel().Upload(Text("abc"));
    EXPECT_EQ(upload->fetch("DOWNLOAD.SDB", nowhere.c_str(), &node, false), 0U);
    errors.Expect(-3, "Cannot open symbol file for write");
    EXPECT_TRUE(errors.sink.hasCommunicationFault());
}

TEST_F(SymbolUploadTest, FileThatCannotBeWritten) {
    // The device that is always full; small pieces fail only when the buffer is written.
    struct stat info {};
    ASSERT_EQ(stat("/dev/full", &info), 0);
    node.BlockSize = 1460;
    Conversation line(port, {.blockSize = 1460});
    line.Exchange(line.OpenFileRequest(), line.FilePiece(Bytes(60000, 0x11), true));
    EXPECT_EQ(upload->fetch("DOWNLOAD.SDB", "/dev/full", &node, false), 0U);
    errors.Expect(-3, "Cannot write on symbol file");
    EXPECT_TRUE(errors.sink.hasCommunicationFault());
    EXPECT_EQ(OpenHandles("/dev/full"), 0);
}

TEST_F(SymbolUploadTest, LastPieceThatIsNotWrittenOutIsAShortWrite) {
    Intel().Upload(Text("abc"));
    EXPECT_EQ(upload->fetch("DOWNLOAD.SDB", "/dev/full", &node, false), 0U)
        << "a file that is not on the disk was not fetched";
    EXPECT_EQ(OpenHandles("/dev/full"), 0);
}

TEST_F(SymbolUploadTest, FailedExchangeForgetsTheLogin) {
    login.accepted(1);
    Intel().DeadUpload();
    EXPECT_EQ(Fetch(), 0U);
    EXPECT_FALSE(login.isLoggedIn());
    EXPECT_EQ(login.node(), 0U);
}

TEST_F(SymbolUploadTest, RefusedUploadIsAFailedCallOfTheLogin) {
    login.accepted(1);
    for (int call = 1; call <= 5; ++call) {
        login.beginCall();
        Intel().RefusedUpload();
        EXPECT_EQ(Fetch(), 0U);
        login.endCall();
        EXPECT_EQ(login.isLoggedIn(), call < 5) << call;
    }
}

/** A PLC with a file of any size, which it sends in pieces of one size. */
class FileServerPort : public ScriptedPort {
public:
    long long pieces = 0;

    FileServerPort(std::size_t pieceSize, std::size_t blockSize) : framing_{.blockSize = blockSize} {
        Bytes const reply = Little(0, 2) + Little(1, 2) + Little(pieceSize, 2) + Bytes(pieceSize, 0x5A);
        std::size_t const room = blockSize - 8;
        unsigned number = 1;
        std::size_t at = 0;
        do {
            std::size_t const end = std::min(reply.size(), at + room);
            blocks_.push_back(framing_.Block(number++, end == reply.size(),
                                             Bytes(reply.begin() + static_cast<std::ptrdiff_t>(at),
                                                   reply.begin() + static_cast<std::ptrdiff_t>(end))));
            at = end;
        } while (at < reply.size());
    }

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        if (bytes[0] == 0xAA) {
            next_ = 0;
            ++pieces;
            answer_ = &blockAck_;
        } else if (next_ < blocks_.size()) {
            answer_ = &blocks_[next_++];
        } else {
            answer_ = &closingAck_;
        }
        return length;
    }

    int Read(unsigned char* buffer, int /*maximum*/, int /*first*/, int /*inter*/, int* count, int /*r*/) override {
        std::copy(answer_->begin(), answer_->end(), buffer);
        *count = static_cast<int>(answer_->size());
        return pieces > 3'000'000 ? 0 : 1;
    }

private:
    Framing framing_;
    std::vector<Bytes> blocks_;
    std::size_t next_ = 0;
    Bytes blockAck_ = framing_.Ack(1);
    Bytes closingAck_ = framing_.Ack(0);
    Bytes const* answer_ = &closingAck_;
};

class EndlessUploadTest : public SymbolUploadTest {
protected:
    void SetUp() override {}

    void FetchFrom(FileServerPort& server) {
        factory.port = &server;
        ASSERT_TRUE(link.open());
        EXPECT_EQ(Fetch(), 0U);
        errors.Expect(-6, "Wrong reply or Data Counter while reading symbol file");
        link.close();
    }
};

TEST_F(EndlessUploadTest, FileOfMoreThan64MiBIsRefused) {
    node.BlockSize = 1460;
    FileServerPort server(65535, 1460);
    FetchFrom(server);
    EXPECT_EQ(server.pieces, 1025) << "1024 pieces of 65,535 bytes are below 64 MiB, one more is not";
}

TEST_F(EndlessUploadTest, FileOfMoreThanAMillionPiecesIsRefused) {
    FileServerPort server(0, 128);
    FetchFrom(server);
    EXPECT_GE(server.pieces, 1'000'000);
    EXPECT_LE(server.pieces, 1'000'001);
}

} // namespace
