#include "tests/support/AnsweringPort.h"
#include "tests/support/VelkTest.h"

#include <climits>

#include <algorithm>
#include <random>
#include <string>

/**
 * Invalid input from every side. These tests require that nothing crashes, hangs or overruns (a sanitized run sees
 * more), and that the driver afterwards serves a faultless PLC again. Every seed is fixed.
 */
namespace {

using namespace velktest;

class HostileInputTest : public VelkTest {
protected:
    unsigned Random(unsigned below) { return std::uniform_int_distribution<unsigned>(0, below - 1)(random); }
    bool OneIn(unsigned n) { return Random(n) == 0; }

    Bytes RandomBytes(std::size_t most) {
        Bytes bytes(Random(static_cast<unsigned>(most) + 1));
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(Random(256)); });
        return bytes;
    }

    /** A text with some characters replaced, removed, doubled or inserted. */
    std::string Mutated(std::string text) {
        static std::string const kCharacters = "?.-/(),:=& \t0123456789xXabcMIQBN_\xFF\x01\x7F";
        for (unsigned i = Random(4); i != 0; --i) {
            std::size_t const at = Random(static_cast<unsigned>(text.size()) + 1);
            char const character = kCharacters[Random(static_cast<unsigned>(kCharacters.size()))];
            switch (Random(4)) {
            case 0:
                text.insert(at, 1, character);
                break;
            case 1:
                text.insert(at, Random(40), character);
                break;
            case 2:
                if (at < text.size()) {
                    text[at] = character;
                }
                break;
            default:
                text.erase(at, Random(5));
                break;
            }
        }
        return text;
    }

    /** A faultless PLC of node 1, whose project is 7 and whose variable A is at offset 16. */
    Bytes Healthy(Bytes const& request) {
        switch (request.empty() ? 0 : request[0]) {
        case 0x42:
            return Hex("00");
        case 0x01:
            return framing.Word(1000);
        case 0x02:
            return Hex("00 00");
        case 0x31:
            return framing.Word(0) + framing.Word(0) + framing.Word(file.size()) + file;
        case 0x2E:
            return Hex("00 00 | 00 00 00 00 | 01 34 12");
        default:
            return Hex("00 00");
        }
    }

    /** A faultless PLC must be readable again within a few calls. */
    void ExpectRecovery(ITag* tag) {
        bool ok = false;
        for (int call = 0; call < 12 && !ok; ++call) {
            ReadOutcome const outcome = Read({tag});
            ok = outcome.ok && outcome.status[0] == 1;
        }
        EXPECT_TRUE(ok) << driver->GetLastErrorString();
    }

    std::mt19937 random{20'240'611};
    Framing framing;
    Bytes file = SymbolFileBytes(7).Variable("A", 0, 16).Variable("B", 1, 32).Variable("FLAG", 0, 13).Build();
};

// --- the host ---

TEST_F(HostileInputTest, NullPointers) {
    EXPECT_FALSE(driver->Config(nullptr));
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ASSERT_TRUE(driver->Start());
    EXPECT_EQ(driver->CreateTag(nullptr), nullptr);
    EXPECT_EQ(driver->CreateTagBase(nullptr), nullptr);
    ITag* const tag = Tag("1?A?M?0?short");
    ITag const* const tags[] = {tag};
    ITag const* const holes[] = {tag, nullptr};
    ITag const* const none[] = {nullptr};
    unsigned char bytes[64] = {};
    idal_error_t status[2] = {};
    EXPECT_FALSE(driver->Read(nullptr, bytes));
    ExpectError(-1, "Invalid argument");
    EXPECT_FALSE(driver->IsBefore(nullptr, tag));
    EXPECT_FALSE(driver->IsBefore(tag, nullptr));
    EXPECT_FALSE(driver->IsAdjacent(nullptr, tag));
    EXPECT_FALSE(driver->IsAdjacent(tag, nullptr));
    EXPECT_FALSE(driver->CanAddToDatagram(nullptr, 1, tag));
    EXPECT_FALSE(driver->CanAddToDatagram(holes, 2, tag));
    EXPECT_FALSE(driver->CanAddToDatagram(none, 0, tag));
    EXPECT_FALSE(driver->CanAddToDatagram(tags, 1, nullptr));
    EXPECT_FALSE(driver->Write(nullptr, bytes));
    EXPECT_FALSE(driver->Write(tag, nullptr));
    EXPECT_FALSE(driver->ReadBlock(nullptr, bytes, 2));
    EXPECT_FALSE(driver->ReadBlock(tag, nullptr, 2));
    EXPECT_FALSE(driver->WriteBlock(nullptr, nullptr, 2));
    EXPECT_FALSE(driver->ReadDatagram(nullptr, 1, bytes));
    EXPECT_FALSE(driver->ReadDatagram(none, 1, bytes));
    EXPECT_FALSE(driver->ReadDatagram(holes, 2, bytes));
    EXPECT_FALSE(driver->ReadDatagram(tags, 1, nullptr));
    EXPECT_FALSE(driver->ReadDatagramWithStatus(nullptr, 1, bytes, status));
    EXPECT_FALSE(driver->ReadDatagramWithStatus(none, 1, bytes, status));
    EXPECT_FALSE(driver->ReadDatagramWithStatus(tags, 1, nullptr, status));
    EXPECT_FALSE(driver->ReadDatagramWithStatus(tags, 1, bytes, nullptr));
    EXPECT_FALSE(driver->WriteDatagramWithStatus(nullptr, 1, bytes, status));
    EXPECT_FALSE(driver->WriteDatagramWithStatus(holes, 2, bytes, status));
    EXPECT_FALSE(driver->WriteDatagramWithStatus(tags, 1, nullptr, status));
    EXPECT_FALSE(driver->WriteDatagramWithStatus(tags, 1, bytes, nullptr));
    driver->SetIdent(nullptr);
    EXPECT_STREQ(driver->GetIdent(), "VELK");
    EXPECT_FALSE(driver->DoCommand(nullptr, nullptr, 0));
    driver->DoCommand("help", nullptr, 100);
    driver->DoCommand("info", nullptr, 100);
    driver->GetInfo(nullptr, 100);
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(HostileInputTest, NegativeCounts) {
    ConfigureAndStart();
    ITag const* const tags[] = {Tag("1?A?M?0?short")};
    unsigned char bytes[2] = {0xCC, 0xCC};
    idal_error_t status[1] = {77};
    for (int const count : {-1, -90, INT_MIN}) {
        EXPECT_FALSE(driver->ReadDatagram(tags, count, bytes));
        EXPECT_FALSE(driver->ReadDatagramWithStatus(tags, count, bytes, status));
        EXPECT_FALSE(driver->WriteDatagramWithStatus(tags, count, bytes, status));
        EXPECT_FALSE(driver->ReadBlock(tags[0], bytes, count));
        EXPECT_FALSE(driver->CanAddToDatagram(tags, count, nullptr));
        char text[8] = "#######";
        driver->GetInfo(text, count);
        driver->DoCommand("help", text, count);
        driver->DoCommand("info", text, count);
        driver->DoCommand("lasterror", text, count);
        EXPECT_STREQ(text, "#######");
    }
    EXPECT_EQ(status[0], 77);
    EXPECT_EQ(bytes[0], 0xCC);
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(HostileInputTest, HugeValuesAreRefusedCleanly) {
    ConfigureAndStart();
    Store(1, file);
    unsigned char byte = 0;
    for (char const* type : {"string-2147483647", "short-1073741823", "boolean-2147483647", "double-268435455"}) {
        ITag* const tag = Tag(std::string("1?A?M?0?") + type);
        ITag const* const tags[] = {tag, tag, tag};
        // Only a length that is refused before the buffer is used may be tried with so small a buffer.
        EXPECT_FALSE(driver->ReadBlock(tag, &byte, 2'000'000'000)) << type;
        EXPECT_FALSE(driver->CanAddToDatagram(tags, 2, tag)) << type;
        EXPECT_GT(tag->PackedLen(), 0) << type;
    }
    EXPECT_TRUE(port.writes.empty());
}

TEST_F(HostileInputTest, MutatedTagAddresses) {
    ASSERT_TRUE(driver->Config(ConfigText().Node(2, "model", "Motorola").Build().c_str()));
    std::vector<std::string> const seeds{
        "1?PLC_PRG/Counter?M?0?int(swap2)", "2?A?MB?13?boolean",         "1?A?M?0x10.3?boolean-12", "1?A?Q?5?string-20",
        "2?ID?PROJ_ID?7?unsignedInt",       "1?A?M?0?double-3(swap8)",   "256?A?5?1?float-7",       "????",
        "1?A?M?2147483647.7?boolean-99",    "1?A?M?0?unsignedShort(bcd)"};
    int made = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string const address = Mutated(seeds[Random(static_cast<unsigned>(seeds.size()))]);
        ITag* const tag = driver->CreateTag(address.c_str());
        if (tag == nullptr) {
            std::string const text = driver->GetLastErrorString();
            EXPECT_TRUE(text.starts_with("Tag URI error: ")) << address;
            continue;
        }
        ++made;
        tag->GetByteOffset();
        EXPECT_GE(tag->GetBitIndex(), 0) << address;
        EXPECT_LE(tag->GetBitIndex(), 7) << address;
        EXPECT_GE(tag->GetVarLength(), 0) << address;
        EXPECT_GE(tag->PackedLen(), 0) << address;
        EXPECT_EQ(tag->GetVarName(), address);
        driver->IsBefore(tag, tag);
        driver->IsAdjacent(tag, tag);
        driver->CanAddToDatagram(&tag, 1, tag);
        if (tag->GetVarLength() < 5000 && tag->PackedLen() < 5000) {
            Bytes source(5000, 0x5A);
            Bytes destination(5000);
            tag->ConvertVariable(source.data(), destination.data(), false);
            tag->ConvertVariable(source.data(), destination.data(), true);
        }
        ITag* const copy = tag->Clone();
        driver->FreeTag(tag);
        EXPECT_EQ(copy->GetVarName(), address);
        delete copy;
    }
    EXPECT_GT(made, 1000) << "the seeds were mutated beyond use";
}

TEST_F(HostileInputTest, MutatedConfigurations) {
    std::string const seed = ConfigText()
                                 .Set("mode", "RS-485")
                                 .Set("protType", "ABB_RS232_AC")
                                 .Node(1, "AddressLV1", "10.1.2.3")
                                 .Node(2, "Timeout", "0x1F4")
                                 .Node(256, "prefix", "a&nbsp;b")
                                 .Build();
    int accepted = 0;
    for (int i = 0; i < 5'000; ++i) {
        if (i % 500 == 0) {
            RemakeDriver();
        }
        accepted += driver->Config(Mutated(seed).c_str()) ? 1 : 0;
        ITag* const tag = driver->CreateTag("1?A?M?0?short");
        driver->FreeTag(tag);
    }
    EXPECT_GT(accepted, 100);
    EXPECT_LT(accepted, 4'900);
}

TEST_F(HostileInputTest, RandomConfigurationsAndAddresses) {
    for (int i = 0; i < 5'000; ++i) {
        Bytes const noise = RandomBytes(100);
        std::string const text(noise.begin(), noise.end());
        EXPECT_FALSE(driver->Config(text.c_str()));
        EXPECT_EQ(driver->CreateTag(text.c_str()), nullptr);
        char reply[16];
        driver->DoCommand(text.c_str(), reply, sizeof reply);
    }
}

TEST_F(HostileInputTest, MutatedCommands) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    std::vector<std::string> const seeds{
        "help", "info", "xml", "lasterror", "read 1?A?M?0?int", "write 1?A?M?0?int 00112233", "getmaxtm", "setid 3"};
    for (int i = 0; i < 5'000; ++i) {
        std::string const command = Mutated(seeds[Random(static_cast<unsigned>(seeds.size()))]);
        std::size_t const size = Random(64);
        Bytes reply(size + 1, 0xEE);
        driver->DoCommand(command.c_str(), reinterpret_cast<char*>(reply.data()), static_cast<int>(size));
        EXPECT_EQ(reply[size], 0xEE) << command;
    }
}

// --- the line ---

/** Answers every read with random bytes, and claims random numbers of bytes. */
class NoisePort : public ScriptedPort {
public:
    explicit NoisePort(bool lies) : lies_(lies) {}

    int Write(unsigned char const* /*bytes*/, int length, int /*reserved*/) override { return length; }

    int Purge(unsigned char* buffer, int /*r1*/, int /*r2*/) override {
        std::fill(buffer, buffer + 1460, static_cast<unsigned char>(random_()));
        return static_cast<int>(random_() % 3);
    }

    int Read(unsigned char* buffer, int maximum, int /*first*/, int /*inter*/, int* count, int /*r*/) override {
        int const length = static_cast<int>(random_() % static_cast<unsigned>(maximum + 1));
        std::generate(buffer, buffer + length, [&] { return static_cast<unsigned char>(random_()); });
        static constexpr int kLies[] = {-1, INT_MIN, INT_MAX, 1461, 1479, 75'001, 0, 1460};
        *count = lies_ && random_() % 2 == 0 ? kLies[random_() % 8] : length;
        return static_cast<int>(random_() % 20);
    }

private:
    bool lies_;
    std::mt19937 random_{4'711};
};

TEST_F(HostileInputTest, NoiseOnTheLine) {
    for (char const* framed : {"Serial_RS232", "ABB_RS232_AC"}) {
        for (bool const lies : {false, true}) {
            NoisePort noise(lies);
            host.serial.port = &noise;
            RemakeDriver();
            ConfigureAndStart(ConfigText().Set("protType", framed).Set("repeat", "3").Node(2, "model", "Motorola"));
            Store(1, file);
            std::vector<ITag*> const tags{Tag("1?A?M?0?short"), Tag("2?A?M?0?int"), Tag("1?FLAG?MB?0?boolean")};
            unsigned char value[64] = {};
            for (int i = 0; i < 1'000; ++i) {
                EXPECT_FALSE(Read({tags[Random(3)]}).ok);
                EXPECT_FALSE(Write({tags[0]}, Hex("00 00")));
                EXPECT_FALSE(driver->ReadBlock(tags[1], value, static_cast<int>(Random(64)) + 1));
            }
            driver->Stop();
        }
    }
}

/** A PLC that frames its messages well but answers nonsense, or whose messages are corrupted on the line. */
class NonsenseTest : public HostileInputTest {
protected:
    AnsweringPort Plc(bool bigEndian) {
        framing.bigEndian = bigEndian;
        AnsweringPort::Answer answer = [this](Bytes const& request) {
            return nonsense ? Nonsense(request) : Healthy(request);
        };
        return AnsweringPort(framing, answer);
    }

    Bytes Nonsense(Bytes const& request) {
        static constexpr unsigned kStatuses[] = {0, 0, 0, 0x48, 0x33, 1000, 1, 0xFFFF};
        switch (Random(4)) {
        case 0:
            return Healthy(request);
        case 1:
            return RandomBytes(40);
        case 2:
            return framing.Word(kStatuses[Random(8)]) + RandomBytes(30);
        default: {
            Bytes reply = Healthy(request);
            if (!reply.empty()) {
                reply[Random(static_cast<unsigned>(reply.size()))] = static_cast<unsigned char>(Random(256));
            }
            if (OneIn(3)) {
                reply.resize(Random(static_cast<unsigned>(reply.size()) + 20));
            }
            return reply;
        }
        }
    }

    void Storm(int calls) {
        std::vector<ITag*> const tags{
            Tag("1?A?M?0?short"),        Tag("1?B?I?5?int-3"), Tag("1?FLAG?MB?2?boolean"), Tag("1?NONE?M?9?string-20"),
            Tag("1?A?M?0.6?boolean-12"), Tag("2?A?M?0?short"), Tag("1?A?M?3?short(bcd)")};
        Bytes value(512);
        for (int i = 0; i < calls; ++i) {
            std::vector<ITag*> some;
            for (unsigned n = Random(3) + 1; n != 0; --n) {
                some.push_back(tags[Random(static_cast<unsigned>(tags.size()))]);
            }
            switch (Random(5)) {
            case 0:
                Write(some, Bytes(128, 0x01));
                break;
            case 1:
                driver->Read(some[0], value.data());
                break;
            case 2:
                driver->Write(some[0], value.data());
                break;
            case 3:
                driver->ReadBlock(some[0], value.data(), static_cast<int>(Random(300)));
                break;
            default:
                Read(some);
                break;
            }
            if (OneIn(200)) {
                Tag("1?ID?PROJ_ID?7?unsignedInt");
            }
            if (OneIn(50)) {
                Store(1, file);
            }
        }
    }

    bool nonsense = true;
};

TEST_F(NonsenseTest, NonsenseInGoodFrames) {
    for (bool const bigEndian : {false, true}) {
        AnsweringPort plc = Plc(bigEndian);
        host.serial.port = &plc;
        RemakeDriver();
        ConfigureAndStart(ConfigText().Set("model", bigEndian ? "Motorola" : "Intel"));
        nonsense = true;
        Storm(3'000);
        EXPECT_GT(plc.messages, 10'000);
        nonsense = false;
        ExpectRecovery(Tag("1?A?M?0?string-2"));
        driver->Stop();
    }
}

TEST_F(NonsenseTest, SpoiltFrames) {
    AnsweringPort plc = Plc(false);
    host.serial.port = &plc;
    ConfigureAndStart(ConfigText().Set("repeat", "2"));
    Store(1, file);
    nonsense = false;
    plc.disturb = [&](Bytes message) {
        switch (Random(12)) {
        case 0:
            return Bytes();
        case 1:
            message.resize(Random(static_cast<unsigned>(message.size()) + 1));
            return message;
        case 2:
            return message + RandomBytes(20);
        case 3:
            if (!message.empty()) {
                message[Random(static_cast<unsigned>(message.size()))] ^= static_cast<unsigned char>(1U << Random(8));
            }
            return message;
        default:
            return message;
        }
    };
    Storm(3'000);
    plc.disturb = nullptr;
    ExpectRecovery(Tag("1?A?M?0?short"));
    driver->Stop();
}

TEST_F(HostileInputTest, MutatedSymbolFiles) {
    AnsweringPort plc(framing, [this](Bytes const& request) {
        return request[0] == 0x31 ? Hex("05 00 00 00 00 00") : Healthy(request);
    });
    host.serial.port = &plc;
    int loaded = 0;
    for (int i = 0; i < 3'000; ++i) {
        if (i % 100 == 0) {
            RemakeDriver();
            ConfigureAndStart();
        }
        int const node = i % 100;
        Bytes broken = file;
        for (unsigned n = Random(3); n != 0; --n) {
            broken[Random(static_cast<unsigned>(broken.size()))] = static_cast<unsigned char>(Random(256));
        }
        if (OneIn(4)) {
            broken.resize(Random(static_cast<unsigned>(broken.size())));
        }
        Store(node, broken);
        ITag* const tag = Tag(std::to_string(node) + "?A?M?0?short");
        loaded += Read({tag}).ok ? 1 : 0;
        driver->FreeTag(tag);
    }
    EXPECT_GT(loaded, 300);
    EXPECT_LT(loaded, 2'900);
    DeleteDriver();
}

TEST_F(HostileInputTest, SchedulerThatIsAbsentIsNotCalled) {
    // A module that was closed while a driver exists no longer has a scheduler.
    Store(1, file);
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?short");
    Module()->Close();
    Intel().LinkCheck().Login();
    std::filesystem::current_path(dir.Path()); // without storage, the bare name
    Intel().Exchange("2E 00 | 01 00 00 00 | 00 00 10 00 00 00 02 00 00 00 | 07 00 00 00",
                     "00 00 | 00 00 00 00 | 01 34 12");
    EXPECT_TRUE(Read({tag}).ok) << driver->GetLastErrorString();
    EXPECT_EQ(host.scheduler.yields, 0);
    std::filesystem::current_path("/");
    ASSERT_TRUE(Module()->Init(&host));
}

} // namespace
