#include "tests/module/LoadedModule.h"
#include "tests/support/Bytes.h"
#include "tests/support/SymbolFileBytes.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

/**
 * The binary contract, slot by slot, in both directions.
 *
 * This host uses no class of the module: it calls everything by its number in the virtual table, with the object as
 * first argument, and the services that it offers are arrays of function pointers.
 */
namespace {

using namespace velktest;

/** Calls slot @p slot of @p object. */
template <typename Result, typename... Arguments>
Result Call(void* object, std::size_t slot, Arguments... arguments) {
    void* const* const table = *static_cast<void* const* const*>(object);
    return reinterpret_cast<Result (*)(void*, Arguments...)>(table[slot])(object, arguments...);
}

// --- the host, made by hand ---

std::vector<std::string> hostLog; ///< what the module called, by slot

template <int kSlot>
void UnexpectedCall(void* /*self*/) {
    hostLog.push_back("unexpected slot " + std::to_string(kSlot));
    ADD_FAILURE() << hostLog.back();
}

template <typename Function>
void* Slot(Function* function) {
    return reinterpret_cast<void*>(function);
}

/** An object whose first word points at its table. Two empty words precede the table: it has no type information. */
template <std::size_t kSlots>
struct HandMade {
    void* const* table = words.data() + 2;
    std::array<void*, kSlots + 2> words{};

    explicit HandMade(std::array<void*, kSlots> const& slots) {
        std::copy(slots.begin(), slots.end(), words.begin() + 2);
    }
    HandMade(HandMade const&) = delete;
    HandMade& operator=(HandMade const&) = delete;
};

void* NoConversion(void* /*self*/, char const* /*name*/) {
    return nullptr;
}
int VersionOfAService(void* /*self*/) {
    return 5;
}
char const* NameOfAService(void* /*self*/) {
    return "Service";
}
char const* NameOfTheScheduler(void* /*self*/) {
    return "Scheduler";
}

HandMade<5> plainService({Slot(UnexpectedCall<0>), Slot(UnexpectedCall<1>), Slot(NoConversion), Slot(NameOfAService),
                          Slot(VersionOfAService)});

int yields = 0;
void Yield(void* /*self*/, int amount) {
    EXPECT_EQ(amount, 1);
    ++yields;
}

HandMade<10> scheduler({Slot(UnexpectedCall<0>), Slot(UnexpectedCall<1>), Slot(NoConversion), Slot(NameOfTheScheduler),
                        Slot(VersionOfAService), Slot(UnexpectedCall<5>), Slot(UnexpectedCall<6>),
                        Slot(UnexpectedCall<7>), Slot(UnexpectedCall<8>), Slot(Yield)});

// The port plays a script of writes (true) and answers (false).
std::deque<std::pair<bool, Bytes>> script;

int OpenPort(void* /*self*/, int baud, int parity, int dataBits, int stopBits, int rs485) {
    hostLog.push_back("port slot 5");
    EXPECT_EQ(baud, 57600);
    EXPECT_EQ(parity, 1);
    EXPECT_EQ(dataBits, 8);
    EXPECT_EQ(stopBits, 2);
    EXPECT_EQ(rs485, 1);
    return 1;
}

int PurgePort(void* /*self*/, unsigned char* buffer, int reserved1, int reserved2) {
    hostLog.push_back("port slot 7");
    EXPECT_NE(buffer, nullptr);
    EXPECT_EQ(reserved1, 0);
    EXPECT_EQ(reserved2, 0);
    return 0;
}

int WritePort(void* /*self*/, unsigned char const* bytes, int length, int reserved) {
    EXPECT_EQ(reserved, 0);
    Bytes const written(bytes, bytes + length);
    if (script.empty() || !script.front().first || script.front().second != written) {
        ADD_FAILURE() << "wrote " << ToHex(written);
        return 0;
    }
    script.pop_front();
    return length;
}

int ReadPort(void* /*self*/, unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs,
             int* count, int reserved) {
    EXPECT_EQ(maximum, 1460);
    EXPECT_EQ(firstByteTimeoutMs, 321);
    EXPECT_EQ(interCharTimeoutMs, 20);
    EXPECT_EQ(reserved, 0);
    *count = 0;
    if (script.empty() || script.front().first) {
        return 1;
    }
    Bytes const answer = script.front().second;
    script.pop_front();
    std::memcpy(buffer, answer.data(), answer.size());
    *count = static_cast<int>(answer.size());
    return 1;
}

HandMade<10> handMadePort({Slot(UnexpectedCall<0>), Slot(UnexpectedCall<1>), Slot(NoConversion), Slot(NameOfAService),
                           Slot(VersionOfAService), Slot(OpenPort), Slot(UnexpectedCall<6>), Slot(PurgePort),
                           Slot(WritePort), Slot(ReadPort)});

void* CreatePort(void* /*self*/, char const* name) {
    hostLog.push_back(std::string("serial slot 5 ") + name);
    return &handMadePort;
}
void ReleasePort(void* /*self*/, void* port) {
    EXPECT_EQ(port, &handMadePort);
    hostLog.push_back("serial slot 6");
}

HandMade<7> serialFactory({Slot(UnexpectedCall<0>), Slot(UnexpectedCall<1>), Slot(NoConversion), Slot(NameOfAService),
                           Slot(VersionOfAService), Slot(CreatePort), Slot(ReleasePort)});

std::string storageDirectory;
bool GetFullPath(void* /*self*/, char const* instance, char const* name, char* path, int size) {
    hostLog.push_back(std::string("storage2 slot 5 ") + instance + " " + name);
    EXPECT_EQ(size, 260);
    return std::snprintf(path, static_cast<std::size_t>(size), "%s/%s", storageDirectory.c_str(), name) < size;
}

HandMade<6> storage2({Slot(UnexpectedCall<0>), Slot(UnexpectedCall<1>), Slot(NoConversion), Slot(NameOfAService),
                      Slot(VersionOfAService), Slot(GetFullPath)});

void* ConvertStorage(void* /*self*/, char const* name) {
    return std::strcmp(name, "IPermanentStorage2") == 0 ? &storage2 : nullptr;
}

HandMade<5> storage({Slot(UnexpectedCall<0>), Slot(UnexpectedCall<1>), Slot(ConvertStorage), Slot(NameOfAService),
                     Slot(VersionOfAService)});

std::vector<std::string> acquired;
int released = 0;

void* CreateService(void* /*self*/, char const* name) {
    acquired.emplace_back(name);
    if (acquired.back() == "IMultiTask2") {
        return &scheduler;
    }
    if (acquired.back() == "ISerialFactory") {
        return &serialFactory;
    }
    return acquired.back() == "IPermanentStorage" ? static_cast<void*>(&storage) : &plainService;
}
void ReleaseService(void* /*self*/, void* service) {
    EXPECT_NE(service, nullptr);
    ++released;
}

HandMade<2> handMadeHost({Slot(CreateService), Slot(ReleaseService)});

// --- the module, by numbers ---

class SlotOrderTest : public ::testing::Test {
protected:
    void SetUp() override {
        hostLog.clear();
        acquired.clear();
        script.clear();
        released = 0;
        yields = 0;
        storageDirectory = dir.Path();
        auto const entry = reinterpret_cast<void* (*)()>(library.Symbol("GetInterfaceFactory"));
        factory = entry();
        module = Call<void*>(factory, 0, static_cast<char const*>("IProtModule"));
        protocols = Call<void*>(factory, 0, static_cast<char const*>("IProtocolFactory"));
        ASSERT_NE(module, nullptr);
        ASSERT_NE(protocols, nullptr);
    }

    void Init() { ASSERT_TRUE((Call<bool>(module, 5, static_cast<void*>(&handMadeHost)))); }

    void* Protocol() { return Call<void*>(protocols, 5, static_cast<char const*>("VELK")); }

    /** A driver whose node 1 has project 7 in a stored file. */
    void* StartedProtocol() {
        dir.Put("PLCSymbols_1.sdb", SymbolFileBytes(7).Variable("A", 0, 16).Build());
        void* const protocol = Protocol();
        EXPECT_TRUE((Call<bool>(protocol, 5, kConfiguration)));
        EXPECT_TRUE(Call<bool>(protocol, 9));
        return protocol;
    }

    void* Tag(void* protocol, char const* address) {
        void* const tag = Call<void*>(protocol, 6, address);
        EXPECT_NE(tag, nullptr) << Call<char const*>(protocol, 22);
        return tag;
    }

    static void Exchange(char const* request, char const* reply) {
        script.emplace_back(true, Hex(request));
        script.emplace_back(false, Hex("55 55 0A 00 01 00"));
        script.emplace_back(true, Hex("55 55 0A 00 00 00"));
        script.emplace_back(false, Hex(reply));
        script.emplace_back(true, Hex("55 55 0A 00 01 00"));
        script.emplace_back(false, Hex("55 55 0A 00 00 00"));
    }
    static void ScriptLinkCheck() {
        Exchange("AA AA 09 00 01 00 52 01 42 E0 20 26 29 00 00 5D 05", "AA AA 01 00 01 00 57 01 00");
    }
    static void ScriptLogin() {
        Exchange("AA AA 0E 00 01 00 6D 01 01 02 00 00 00 06 00 00 00 00 00 00 00 00", "AA AA 02 00 01 00 43 01 E8 03");
    }
    /** A read of A as a short: its value is 0x1234. */
    static void ScriptRead() {
        // AA + AA + 14 + 01 + 01 + 2E + 01 + 10 + 02 + 07 = 1B2
        Exchange("AA AA 14 00 01 00 B2 01 2E 00 01 00 00 00 00 00 10 00 00 00 02 00 00 00 07 00 00 00",
                 "AA AA 09 00 01 00 A6 01 00 00 00 00 00 00 01 34 12");
    }
    /** A write of 0x1234 to A as a short. */
    static void ScriptWrite() {
        // AA + AA + 16 + 01 + 01 + 3C + 01 + 10 + 02 + 34 + 12 + 07 = 208
        Exchange("AA AA 16 00 01 00 08 01 3C 00 01 00 00 00 00 00 10 00 00 00 02 00 00 00 34 12 07 00 00 00",
                 "AA AA 02 00 01 00 58 01 00 00");
    }

    static constexpr char const* kConfiguration =
        "CfgVer=1 uart=com3 parity=even baudrate=57600 stopbits=2 mode=RS-485 protType=Serial_RS232 BlockSize=128 "
        "Timeout=321 repeat=1 model=Intel RoutingLevels=0 CouplerLV1=0 ChannelLV1=0 CouplerLV2=0 ChannelLV2=0";

    TempDir dir;
    LoadedModule library;
    void* factory = nullptr;
    void* module = nullptr;
    void* protocols = nullptr;
};

TEST_F(SlotOrderTest, InterfaceFactory) {
    EXPECT_EQ((Call<void*>(factory, 0, static_cast<char const*>("no such thing"))), nullptr);
    Call<void>(factory, 1, module);
    EXPECT_EQ((Call<void*>(factory, 0, static_cast<char const*>("ProtModule"))), module);
}

TEST_F(SlotOrderTest, Module) {
    EXPECT_EQ((Call<void*>(module, 2, static_cast<char const*>("IProtModule"))), module);
    EXPECT_EQ((Call<void*>(module, 2, static_cast<char const*>("ITag"))), nullptr);
    EXPECT_STREQ(Call<char const*>(module, 3), "ProtModule");
    EXPECT_EQ(Call<int>(module, 4), 100);
    EXPECT_STREQ(Call<char const*>(module, 7), "");
    Init();
    EXPECT_EQ(acquired,
              (std::vector<std::string>{"IMultiTask2", "ISerialFactory", "ISocketFactory", "ICDSBuffer", "IDiag",
                                        "IPermanentStorage", "IDriverInterface", "ISmux", "IFastTimer"}));
    Call<void>(module, 6);
    EXPECT_EQ(released, 9);
}

TEST_F(SlotOrderTest, ProtocolFactory) {
    Init();
    EXPECT_EQ((Call<void*>(protocols, 2, static_cast<char const*>("ProtocolFactory"))), protocols);
    EXPECT_STREQ(Call<char const*>(protocols, 3), "ProtFactoryInDLL");
    EXPECT_EQ(Call<int>(protocols, 4), 100);
    EXPECT_EQ((Call<void*>(protocols, 5, static_cast<char const*>("velk"))), nullptr);
    void* const protocol = StartedProtocol();
    hostLog.clear();
    Call<void>(protocols, 6, protocol);
    EXPECT_EQ(hostLog, (std::vector<std::string>{"serial slot 6"})) << "the destructor releases the port";
    Call<void>(protocols, 6, static_cast<void*>(nullptr));
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, ProtocolDestructors) {
    Init();
    void* const deleted = StartedProtocol();
    hostLog.clear();
    Call<void>(deleted, 1);
    EXPECT_EQ(hostLog, (std::vector<std::string>{"serial slot 6"}));
    void* const destroyed = StartedProtocol();
    hostLog.clear();
    Call<void>(destroyed, 0); // the memory stays with the caller
    EXPECT_EQ(hostLog, (std::vector<std::string>{"serial slot 6"}));
    ::operator delete(destroyed);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, ProtocolIdentity) {
    Init();
    void* const protocol = Protocol();
    EXPECT_EQ((Call<void*>(protocol, 2, static_cast<char const*>("IProtocol3"))), protocol);
    EXPECT_EQ((Call<void*>(protocol, 2, static_cast<char const*>("ITag"))), nullptr);
    EXPECT_STREQ(Call<char const*>(protocol, 3), "Protocol_VELK");
    EXPECT_EQ(Call<int>(protocol, 4), 100);
    EXPECT_STREQ(Call<char const*>(protocol, 19), "VELK");
    EXPECT_STREQ(Call<char const*>(protocol, 20), "VELK");
    EXPECT_EQ(Call<int>(protocol, 21), 1);
    EXPECT_STREQ(Call<char const*>(protocol, 22), "");
    EXPECT_EQ(Call<int>(protocol, 23), 144);
    EXPECT_EQ(Call<int>(protocol, 24), 277);
    EXPECT_STREQ(Call<char const*>(protocol, 25), "Velk Serial Link");
    char banner[1024] = {};
    int const length = Call<int>(protocol, 26, static_cast<char*>(banner), 1000);
    EXPECT_STREQ(banner, "Protocol: VELK (277) v.144\nImplementation: Protocol_VELK v.100\nProtocolBase v.100\n"
                         "ProtLib v.200\nScheduler v.5\nService v.5\nService v.5\n");
    EXPECT_EQ(length, static_cast<int>(std::strlen(banner)));
    EXPECT_STREQ(Call<char const*>(protocol, 27), "compressedXML=2055");
    EXPECT_FALSE(Call<bool>(protocol, 28));
    EXPECT_STREQ(Call<char const*>(protocol, 29), "VELK");
    Call<void>(protocol, 30, static_cast<char const*>("instance"));
    EXPECT_STREQ(Call<char const*>(protocol, 29), "instance");
    char reply[64] = {};
    EXPECT_TRUE((Call<bool>(protocol, 31, static_cast<char const*>("getmaxtm"), static_cast<char*>(reply), 64)));
    EXPECT_STREQ(reply, "maxtm = 0 ms\n");
    EXPECT_EQ((Call<int>(protocol, 32, 1, static_cast<void*>(nullptr))), 0);
    EXPECT_FALSE(Call<bool>(protocol, 35));
    EXPECT_FALSE((Call<bool>(protocol, 36, static_cast<void*>(nullptr))));
    EXPECT_FALSE(Call<bool>(protocol, 37));
    EXPECT_FALSE((Call<bool>(protocol, 38, static_cast<void*>(nullptr))));
    EXPECT_EQ((Call<void*>(protocol, 42, static_cast<char const*>("IProtocol"))), nullptr);
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, ProtocolLifecycle) {
    Init();
    void* const protocol = Protocol();
    EXPECT_FALSE((Call<bool>(protocol, 5, static_cast<char const*>("nonsense"))));
    EXPECT_EQ(Call<int>(protocol, 21), -1);
    EXPECT_STREQ(Call<char const*>(protocol, 22), "Parser: unknown format");
    EXPECT_TRUE((Call<bool>(protocol, 5, kConfiguration)));
    EXPECT_TRUE(Call<bool>(protocol, 9));
    EXPECT_EQ(hostLog, (std::vector<std::string>{"serial slot 5 com3", "port slot 5"}));
    hostLog.clear();
    EXPECT_TRUE(Call<bool>(protocol, 10));
    EXPECT_EQ(hostLog, (std::vector<std::string>{"serial slot 6"}));
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, ProtocolPlanning) {
    Init();
    void* const protocol = StartedProtocol();
    void* const one = Tag(protocol, "1?A?M?10?short");
    void* const next = Tag(protocol, "1?A?M?12?short");
    void* const other = Tag(protocol, "2?A?M?12?short");
    void* const tags[] = {one, next};
    auto const list = static_cast<void const*>(tags);
    EXPECT_FALSE((Call<bool>(protocol, 8, one, next, true)));
    EXPECT_EQ((Call<int>(protocol, 15, one)), 90);
    EXPECT_EQ((Call<int>(protocol, 16, one)), 1024);
    EXPECT_TRUE((Call<bool>(protocol, 17, one, next)));
    EXPECT_FALSE((Call<bool>(protocol, 17, one, other)));
    EXPECT_TRUE((Call<bool>(protocol, 33, list, 2, one)));
    EXPECT_FALSE((Call<bool>(protocol, 33, list, 2, other)));
    EXPECT_EQ((Call<int>(protocol, 39, other)), 2);
    EXPECT_FALSE((Call<bool>(protocol, 40, one)));
    EXPECT_EQ((Call<int>(protocol, 43, one)), 16777215);
    EXPECT_TRUE((Call<bool>(protocol, 44, one, next)));
    EXPECT_FALSE((Call<bool>(protocol, 44, next, one)));
    EXPECT_TRUE((Call<bool>(protocol, 45, next, one)));
    EXPECT_FALSE((Call<bool>(protocol, 45, one, next)));
    EXPECT_FALSE((Call<bool>(protocol, 46, one)));
    EXPECT_TRUE((Call<bool>(protocol, 47, one)));
    EXPECT_TRUE((Call<bool>(protocol, 48, list, 2, one)));
    EXPECT_FALSE((Call<bool>(protocol, 48, list, 2, other)));
    EXPECT_FALSE((Call<bool>(protocol, 50, one)));
    EXPECT_EQ((Call<int>(protocol, 53, one)), 0);
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, ProtocolReadsAndWrites) {
    Init();
    void* const protocol = StartedProtocol();
    Call<void>(protocol, 30, static_cast<char const*>("instance"));
    void* const tag = Tag(protocol, "1?A?M?0?short");
    void* const tags[] = {tag};
    auto const list = static_cast<void const*>(tags);
    unsigned char value[2] = {};
    auto* const bytes = static_cast<unsigned char*>(value);
    auto const* const constBytes = static_cast<unsigned char const*>(value);
    auto const expectValue = [&] {
        EXPECT_EQ(Bytes(value, value + 2), Hex("34 12"));
        EXPECT_TRUE(script.empty());
        value[0] = value[1] = 0;
    };
    hostLog.clear();
    ScriptLinkCheck();
    ScriptLogin();
    ScriptRead();
    EXPECT_TRUE((Call<bool>(protocol, 11, tag, bytes))) << Call<char const*>(protocol, 22);
    expectValue();
    EXPECT_EQ(hostLog, (std::vector<std::string>{"port slot 7", "storage2 slot 5 instance PLCSymbols_1.sdb"}));
    EXPECT_EQ(yields, 1) << "after the first record that is parsed";

    ScriptLinkCheck();
    ScriptRead();
    EXPECT_TRUE((Call<bool>(protocol, 13, tag, bytes, 2))) << Call<char const*>(protocol, 22);
    expectValue();

    ScriptLinkCheck();
    ScriptRead();
    EXPECT_TRUE((Call<bool>(protocol, 18, list, 1, bytes))) << Call<char const*>(protocol, 22);
    expectValue();

    int status = 77; // a status is a signed 32-bit number
    ScriptLinkCheck();
    ScriptRead();
    EXPECT_TRUE((Call<bool>(protocol, 34, list, 1, bytes, &status))) << Call<char const*>(protocol, 22);
    EXPECT_EQ(status, 1);
    expectValue();

    value[0] = 0x34;
    value[1] = 0x12;
    ScriptLinkCheck();
    ScriptWrite();
    EXPECT_TRUE((Call<bool>(protocol, 12, tag, constBytes))) << Call<char const*>(protocol, 22);
    EXPECT_TRUE(script.empty());

    status = 77;
    ScriptLinkCheck();
    ScriptWrite();
    EXPECT_TRUE((Call<bool>(protocol, 49, list, 1, constBytes, &status))) << Call<char const*>(protocol, 22);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(script.empty());

    EXPECT_FALSE((Call<bool>(protocol, 14, tag, constBytes, 2)));
    EXPECT_EQ(Call<int>(protocol, 21), -3);
    EXPECT_STREQ(Call<char const*>(protocol, 22), "Optimized writing not supported");
    EXPECT_FALSE((Call<bool>(protocol, 41, tag, bytes, 1)));
    EXPECT_FALSE((Call<bool>(protocol, 51, tag, constBytes, 1)));
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, ProtocolTags) {
    Init();
    void* const protocol = StartedProtocol();
    void* const tag = Tag(protocol, "1?A?M?0?short");
    EXPECT_EQ((Call<void*>(protocol, 6, static_cast<char const*>("nonsense"))), nullptr);
    EXPECT_STREQ(Call<char const*>(protocol, 22), "Tag URI error: nonsense - there must be 5 tag specification fields");
    Call<void>(protocol, 7, tag);
    void* const unregistered = Call<void*>(protocol, 52, static_cast<char const*>("1?A?M?5?short"));
    ASSERT_NE(unregistered, nullptr);
    EXPECT_EQ(Call<int>(unregistered, 3), 5);
    Call<void>(protocol, 7, unregistered);
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, Tag) {
    Init();
    void* const protocol = StartedProtocol();
    void* const tag = Tag(protocol, "1?PLC_PRG/A?M?5.3?boolean-12(inv)");
    EXPECT_EQ(Call<int>(tag, 3), 5);
    EXPECT_EQ(Call<int>(tag, 4), 3);
    EXPECT_STREQ(Call<char const*>(tag, 5), "1?PLC_PRG/A?M?5.3?boolean-12(inv)");
    EXPECT_EQ(Call<int>(tag, 6), 13);
    EXPECT_EQ(Call<int>(tag, 7), 12);
    EXPECT_EQ(Call<int>(tag, 8), 1);
    EXPECT_EQ(Call<int>(tag, 9), 2);
    Bytes const plc = Hex("F7 FF");
    Bytes value(12, 0xCC);
    EXPECT_TRUE((Call<bool>(tag, 10, plc.data(), value.data(), false)));
    EXPECT_EQ(value, Hex("01 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_FALSE(Call<bool>(tag, 11));
    EXPECT_FALSE(Call<bool>(tag, 12));
    value = Bytes(12, 0xCC);
    EXPECT_TRUE((Call<bool>(tag, 13, plc.data(), value.data(), false)));
    EXPECT_EQ(value, Hex("01 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_TRUE((Call<bool>(tag, 14, value.data(), static_cast<char const*>("inv"), true)));
    EXPECT_EQ(value, Hex("00 01 01 01 01 01 01 01 01 01 01 01"));
    EXPECT_FALSE((Call<bool>(tag, 14, value.data(), static_cast<char const*>("INV"), true)));

    void* const copy = Call<void*>(tag, 2);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, tag);
    EXPECT_STREQ(Call<char const*>(copy, 5), "1?PLC_PRG/A?M?5.3?boolean-12(inv)");
    Call<void>(copy, 1);
    void* const second = Call<void*>(tag, 2);
    Call<void>(second, 0);
    ::operator delete(second);
    EXPECT_STREQ(Call<char const*>(tag, 5), "1?PLC_PRG/A?M?5.3?boolean-12(inv)");
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

TEST_F(SlotOrderTest, TagOfAScalar) {
    Init();
    void* const protocol = StartedProtocol();
    void* const tag = Tag(protocol, "1?A?M?5?double");
    EXPECT_EQ(Call<int>(tag, 6), 9);
    EXPECT_EQ(Call<int>(tag, 7), 8);
    EXPECT_EQ(Call<int>(tag, 8), 0);
    EXPECT_EQ(Call<int>(tag, 9), 8);
    Call<void>(protocols, 6, protocol);
    Call<void>(module, 6);
}

} // namespace
