#include "tests/support/AllocationGate.h"
#include "tests/support/AnsweringPort.h"
#include "tests/support/VelkTest.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <new>
#include <string>

/** Memory runs out at every possible place: no exception may reach the host, and nothing may break. */
namespace {

using namespace velktest;

class AllocationFailureTest : public VelkTest {
protected:
    void SetUp() override {
        VelkTest::SetUp();
        Store(1, SymbolFileBytes(7).Variable("A", 0, 16).Variable("A_LONG_NAME_FOR_A_PLC_VARIABLE", 0, 32).Build());
    }

    /**
     * Runs @p operation again and again, refusing its first allocation, then its second, and so on until it needs no
     * more; @p prepare comes before each run, @p check after it. Once with a single refusal, once with all later
     * allocations refused, too.
     */
    void RefuseEach(std::function<void()> const& prepare, std::function<void()> const& operation,
                    std::function<void(bool refused)> const& check, bool needsMemory = true) {
        for (bool const allAfter : {false, true}) {
            bool refused = true;
            std::size_t refusals = 0;
            for (std::size_t at = 1; refused; ++at) {
                ASSERT_LT(at, 10'000U) << "it never ends";
                prepare();
                try {
                    AllocationGate const gate(at, allAfter);
                    operation();
                } catch (std::exception const& thrown) {
                    ADD_FAILURE() << "thrown at allocation " << at << ": " << thrown.what();
                } catch (...) {
                    ADD_FAILURE() << "thrown at allocation " << at;
                }
                refused = AllocationGate::Refused();
                refusals += refused ? 1 : 0;
                check(refused);
            }
            EXPECT_TRUE(refusals > 0 || !needsMemory) << "nothing was refused, so nothing was tested";
        }
    }
};

TEST_F(AllocationFailureTest, CreateTag) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    std::string const address = "1?PLC_PRG/A_LONG_NAME_FOR_A_VARIABLE?M?0?int(swap2,bcd,neg,swapnibble)";
    ITag* tag = nullptr;
    RefuseEach([] {}, [&] { tag = driver->CreateTag(address.c_str()); },
               [&](bool refused) {
                   if (tag != nullptr) {
                       EXPECT_EQ(std::string(tag->GetVarName()), address);
                   }
                   EXPECT_TRUE(refused || tag != nullptr);
                   driver->FreeTag(tag);
               });
}

TEST_F(AllocationFailureTest, CreateTagThatCannotEvenBeAllocated) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ITag* tag = nullptr;
    {
        AllocationGate const gate(1, true);
        tag = driver->CreateTag("1?A?M?0?int");
    }
    EXPECT_EQ(tag, nullptr);
    EXPECT_EQ(driver->GetLastError(), 0);
    std::string const text = driver->GetLastErrorString();
    EXPECT_TRUE(text == "Can't allocate Tag" || text.empty()) << text; // the text itself may need memory
}

TEST_F(AllocationFailureTest, RefusedAddress) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ITag* tag = nullptr;
    std::string const address = "1?PLC_PRG/A_LONG_NAME_FOR_A_VARIABLE?M?0?no_such_type";
    RefuseEach([] {}, [&] { tag = driver->CreateTag(address.c_str()); },
               [&](bool refused) {
                   EXPECT_EQ(tag, nullptr);
                   if (!refused) {
                       ExpectError(-1, "Tag URI error: " + address + " - no_such_type: data type unknown");
                   }
               });
}

TEST_F(AllocationFailureTest, ProjectIdentifierTag) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ITag* tag = nullptr;
    RefuseEach([] {}, [&] { tag = driver->CreateTag("1?A_LONG_NAME_FOR_A_PROJECT?PROJ_ID?7?unsignedInt"); },
               [&](bool) { driver->FreeTag(tag); });
    EXPECT_EQ(Symbols().projectIdentifier(1), 7U);
}

TEST_F(AllocationFailureTest, Clone) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    ITag* const tag = Tag("1?PLC_PRG/A_LONG_NAME_FOR_A_VARIABLE?M?0?int(swap2,bcd)");
    ITag* copy = nullptr;
    RefuseEach([] {}, [&] { copy = tag->Clone(); },
               [&](bool refused) {
                   EXPECT_EQ(copy == nullptr, refused);
                   delete copy;
               });
}

TEST_F(AllocationFailureTest, Config) {
    std::string const text = ConfigText()
                                 .Set("uart", "a_serial_port_with_a_long_name")
                                 .Node(1, "prefix", "an_alias_with_a_long_name")
                                 .Node(2, "AddressLV1", "192.168.100.200")
                                 .Build();
    bool ok = false;
    RefuseEach([] {}, [&] { ok = driver->Config(text.c_str()); },
               [&](bool refused) { EXPECT_TRUE(refused || ok) << driver->GetLastErrorString(); });
    EXPECT_TRUE(driver->Start());
    EXPECT_EQ(host.serial.created, (std::vector<std::string>{"a_serial_port_with_a_long_name"}));
}

TEST_F(AllocationFailureTest, SmallOperations) {
    ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
    char reply[2048];
    bool ok = false;
    for (char const* command : {"help", "info", "xml", "lasterror", "getmaxtm", "read x", "write 1?A?M?0?int 00000000",
                                "setid a_very_long_identifier_of_a_server", "deletetags"}) {
        RefuseEach([] {}, [&] { ok = driver->DoCommand(command, reply, sizeof reply); },
                   [&](bool refused) { EXPECT_TRUE(refused || ok == !std::string(command).starts_with("setid")); },
                   false);
    }
    RefuseEach([] {}, [&] { driver->SetIdent("an ident that is longer than any small string would be"); }, [](bool) {},
               false);
    EXPECT_STREQ(driver->GetIdent(), "an ident that is longer than any small string would be");
    RefuseEach([] {}, [&] { ok = driver->GetInfo(reply, sizeof reply) > 50; },
               [&](bool refused) { EXPECT_TRUE(refused || ok); }, false);
}

/**
 * One read or write with a login and the loading of symbols before it. The PLC answers every exchange; whatever
 * allocation fails, no list other than the expected one may be sent.
 */
class ExchangeAllocationTest : public AllocationFailureTest {
protected:
    static Bytes ReadOf(std::uint32_t offset, std::uint32_t length) {
        return Hex("2E 00 | 01 00 00 00 | 00 00") + Little(offset, 4) + Little(length, 4) + Hex("07 00 00 00");
    }
    static Bytes WriteOf(Bytes const& bytes) {
        return Hex("3C 00 | 01 00 00 00 | 00 00 10 00 00 00") + Little(bytes.size(), 4) + bytes + Hex("07 00 00 00");
    }
    static Bytes Value(Bytes const& bytes) { return Hex("00 00 | 00 00 00 00 | 01") + bytes; }

    Bytes Answer(Bytes const& request) {
        switch (request[0]) {
        case 0x42:
            return Hex("00");
        case 0x01:
            return framing.Word(1000);
        case 0x31:
            return framing.Word(5) + framing.Long(0); // the file is only in the panel's storage
        default:
            EXPECT_EQ(ToHex(request), ToHex(expectedList));
            return listReply;
        }
    }

    void Run(std::string const& address, std::function<void()> const& operation,
             std::function<void()> const& onSuccess) {
        RefuseEach(
            [&] {
                host.serial.port = &plc;
                Store(1, file);
                RemakeDriver();
                ConfigureAndStart(config);
                tag = Tag(address);
                ok = false;
                status = 77;
            },
            operation,
            [&](bool refused) {
                EXPECT_TRUE(refused || ok) << driver->GetLastErrorString();
                if (ok) {
                    onSuccess();
                }
            });
    }

    Bytes ValueBytes(std::size_t length) const { return {value.begin(), value.begin() + static_cast<int>(length)}; }

    Framing framing;
    ConfigText config;
    Bytes file = SymbolFileBytes(7).Variable("A", 0, 16).Variable("A_LONG_NAME_FOR_A_PLC_VARIABLE", 0, 32).Build();
    AnsweringPort plc{framing, [this](Bytes const& request) { return Answer(request); }};
    Bytes expectedList;
    Bytes listReply;
    ITag* tag = nullptr;
    Bytes value = Bytes(4096);
    idal_error_t status = 77;
    bool ok = false;
};

TEST_F(ExchangeAllocationTest, ReadDatagram) {
    expectedList = ReadOf(16, 300);
    listReply = Value(Bytes(300, 0x41));
    Run(
        "1?A?M?0?string-300",
        [&] {
            ITag const* const tags[] = {tag};
            ok = driver->ReadDatagramWithStatus(tags, 1, value.data(), &status);
        },
        [&] {
            EXPECT_EQ(ValueBytes(300), Bytes(300, 0x41));
            EXPECT_EQ(status, 1);
        });
}

TEST_F(ExchangeAllocationTest, SingleRead) {
    expectedList = ReadOf(32, 300);
    listReply = Value(Bytes(300, 0x41));
    Run(
        "1?A_LONG_NAME_FOR_A_PLC_VARIABLE?M?0?string-300(swapnibble)", [&] { ok = driver->Read(tag, value.data()); },
        [&] { EXPECT_EQ(ValueBytes(300), Bytes(300, 0x14)); });
}

TEST_F(ExchangeAllocationTest, SingleWrite) {
    expectedList = WriteOf(Bytes(300, 0x41));
    listReply = Hex("00 00");
    std::fill(value.begin(), value.end(), 0x41);
    Run(
        "1?A?M?0?string-300", [&] { ok = driver->Write(tag, value.data()); }, [] {});
}

TEST_F(ExchangeAllocationTest, WriteDatagram) {
    expectedList = WriteOf(Bytes(300, 0x41));
    listReply = Hex("00 00");
    std::fill(value.begin(), value.end(), 0x41);
    Run(
        "1?A?M?0?string-300",
        [&] {
            ITag const* const tags[] = {tag};
            ok = driver->WriteDatagramWithStatus(tags, 1, value.data(), &status);
            EXPECT_EQ(status, ok ? 1 : 77);
        },
        [] {});
}

TEST_F(ExchangeAllocationTest, FirstWriteOfABit) {
    file = SymbolFileBytes(7).Variable("FLAG", 0, 13).Build();
    expectedList = Hex("3C 00 | 01 00 00 00 | 00 00 0D 00 00 00 00 00 00 00 20 | 07 00 00 00");
    listReply = Hex("00 00");
    value[0] = 1;
    Run(
        "1?FLAG?MB?2?boolean",
        [&] {
            ITag const* const tags[] = {tag};
            ok = driver->WriteDatagramWithStatus(tags, 1, value.data(), &status);
        },
        [] {});
}

TEST_F(ExchangeAllocationTest, ReadBlock) {
    expectedList = ReadOf(16, 300);
    listReply = Value(Bytes(300, 0x41));
    Run(
        "1?A?M?0?short", [&] { ok = driver->ReadBlock(tag, value.data(), 300); },
        [&] { EXPECT_EQ(ValueBytes(300), Bytes(300, 0x41)); });
}

TEST_F(ExchangeAllocationTest, MissingVariable) {
    expectedList = ReadOf(99, 2);
    listReply = Value(Hex("34 12"));
    Run(
        "1?NO/SUCH/VARIABLE/ANYWHERE/IN/THIS/PLC?M?99?short",
        [&] {
            ITag const* const tags[] = {tag};
            ok = driver->ReadDatagramWithStatus(tags, 1, value.data(), &status);
        },
        [&] { EXPECT_EQ(status, -1); });
}

TEST_F(ExchangeAllocationTest, BigEndianArray) {
    framing.bigEndian = true;
    AnsweringPort bigPlc(framing, [this](Bytes const& request) { return Answer(request); });
    config.Set("model", "Motorola");
    expectedList = Hex("2E 00 | 00 00 00 01 | 00 00 00 00 00 10 00 00 01 2C | 00 00 00 07");
    listReply = Value(Bytes(300, 0x41));
    RefuseEach(
        [&] {
            host.serial.port = &bigPlc;
            RemakeDriver();
            ConfigureAndStart(config);
            tag = Tag("1?A?M?0?short-150");
        },
        [&] { ok = driver->Read(tag, value.data()); },
        [&](bool refused) { EXPECT_TRUE(refused || ok) << driver->GetLastErrorString(); });
}

TEST_F(ExchangeAllocationTest, LateTagAfterAnotherNodeTookTheTable) {
    // Reloading the node's own file fails for lack of memory; the other node's address must not be used instead.
    Store(2, SymbolFileBytes(7).Variable("A", 0, 200).Variable("B", 0, 300).Build());
    file = SymbolFileBytes(7).Variable("A", 0, 16).Variable("B", 0, 32).Build();
    AnsweringPort both(framing,
                       [this](Bytes const& request) { return request[0] == 0x02 ? Hex("00 00") : Answer(request); });
    ITag* late = nullptr;
    RefuseEach(
        [&] {
            host.serial.port = &both;
            Store(1, file);
            RemakeDriver();
            ConfigureAndStart();
            listReply = Value(Hex("34 12"));
            expectedList = ReadOf(16, 2);
            EXPECT_TRUE(Read({Tag("1?A?M?0?short")}).ok);
            expectedList = ReadOf(200, 2);
            EXPECT_TRUE(Read({Tag("2?A?M?0?short")}).ok);
            late = Tag("1?B?M?0?short");
            expectedList = ReadOf(32, 2);
            ok = false;
        },
        [&] {
            ITag const* const tags[] = {late};
            ok = driver->ReadDatagramWithStatus(tags, 1, value.data(), &status);
        },
        [&](bool refused) { EXPECT_TRUE(refused || ok) << driver->GetLastErrorString(); });
}

TEST_F(AllocationFailureTest, OnlyTheConstructorThrows) {
    DeleteDriver();
    ASSERT_TRUE(Module()->Init(&host));
    std::size_t thrown = 0;
    for (std::size_t at = 1;; ++at) {
        IProtocol* made = nullptr;
        {
            AllocationGate const gate(at);
            try {
                made = Protocols()->CreateProtocol("VELK");
            } catch (std::bad_alloc const&) {
                ++thrown;
            }
        }
        std::size_t const seen = AllocationGate::Seen();
        std::size_t const freed = AllocationGate::Freed();
        if (made != nullptr) {
            Protocols()->DeleteProtocol(made);
            break;
        }
        EXPECT_EQ(seen, freed + 1) << "what was made until allocation " << at << " was given back";
    }
    EXPECT_GT(thrown, 2U);
    Module()->Close();
    MakeDriver();
}

TEST_F(AllocationFailureTest, Init) {
    DeleteDriver();
    for (char const* lacking : {"", "ISerialFactory"}) {
        host.lacking = {lacking};
        for (std::size_t at = 1; at < 4; ++at) {
            bool ok = false;
            {
                AllocationGate const gate(at, true);
                EXPECT_NO_THROW(ok = Module()->Init(&host));
            }
            EXPECT_EQ(ok, std::string(lacking).empty());
            if (ok) {
                AllocationGate const gate(at, true);
                EXPECT_NO_THROW(Module()->Close());
            }
        }
    }
    host.lacking.clear();
    MakeDriver();
}

TEST_F(AllocationFailureTest, ShortMemoryIsReportedInOneWay) {
    ConfigureAndStart();
    ITag* const tag = Tag("1?A?M?0?string-300");
    ITag const* const tags[] = {tag};
    Bytes value(300);
    idal_error_t status = 77;
    std::string const config = ConfigText().Set("uart", "a_serial_port_with_a_long_name").Build();
    std::vector<std::function<bool()>> const calls{
        [&] { return driver->Config(config.c_str()); },
        [&] { return driver->ReadBlock(tag, value.data(), 300); },
        [&] { return driver->ReadDatagram(tags, 1, value.data()); },
        [&] { return driver->ReadDatagramWithStatus(tags, 1, value.data(), &status); },
        [&] { return driver->Write(tag, value.data()); },
        [&] { return driver->WriteDatagramWithStatus(tags, 1, value.data(), &status); },
    };
    for (std::size_t i = 0; i < calls.size(); ++i) {
        driver->Config("none");
        bool ok = true;
        {
            AllocationGate const gate(1);
            ok = calls[i]();
        }
        EXPECT_FALSE(ok) << i;
        EXPECT_EQ(driver->GetLastError(), 0) << i;
        EXPECT_STREQ(driver->GetLastErrorString(), "Out of memory") << i;
    }
}

} // namespace
