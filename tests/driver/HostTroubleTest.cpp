#include "tests/support/AnsweringPort.h"
#include "tests/support/Cancellation.h"
#include "tests/support/VelkTest.h"

#include <functional>
#include <stdexcept>
#include <string>

/** Host services that throw, and threads that the host cancels inside them, at every call of a service. */
namespace {

using namespace velktest;

/** A PLC that answers everything, on a port that can fail. */
class TroubledPort : public AnsweringPort {
public:
    TroubledPort(Trouble& trouble, Answer answer) : AnsweringPort(Framing{}, std::move(answer)), trouble_(&trouble) {}

    int Open(int baud, int parity, int dataBits, int stopBits, int rs485) override {
        (*trouble_)();
        return AnsweringPort::Open(baud, parity, dataBits, stopBits, rs485);
    }
    int Purge(unsigned char* buffer, int reserved1, int reserved2) override {
        (*trouble_)();
        return AnsweringPort::Purge(buffer, reserved1, reserved2);
    }
    int Write(unsigned char const* bytes, int length, int reserved) override {
        (*trouble_)();
        return AnsweringPort::Write(bytes, length, reserved);
    }
    int Read(unsigned char* buffer, int maximum, int first, int inter, int* count, int reserved) override {
        (*trouble_)();
        return AnsweringPort::Read(buffer, maximum, first, inter, count, reserved);
    }

private:
    Trouble* trouble_;
};

class HostTroubleTest : public VelkTest {
protected:
    void SetUp() override {
        VelkTest::SetUp();
        host.scheduler.trouble = &trouble;
        host.serial.trouble = &trouble;
        host.storage.trouble = &trouble;
        host.serial.port = &plc;
    }

    Bytes Answer(Bytes const& request) const {
        Bytes const file = SymbolFileBytes(7).Variable("A", 0, 16).Variable("B", 0, 32).Build();
        switch (request[0]) {
        case 0x01:
            return Hex("E8 03");
        case 0x31:
            return Hex("00 00 00 00") + Little(file.size(), 2) + file;
        case 0x2E:
            return Hex("00 00 | 00 00 00 00 | 01 34 12");
        default:
            return Hex("00 00"); // link check, logout, write
        }
    }

    bool ReadsWell() {
        ReadOutcome const outcome = Read({tag});
        return outcome.ok && outcome.values == Hex("34 12") && outcome.status[0] == 1;
    }

    /** The calls of a driver that reach services of the host. */
    std::vector<std::pair<std::string, std::function<bool()>>> Calls() {
        return {
            {"Start", [this] { return driver->Start(); }},
            {"ReadDatagram", [this] { return driver->ReadDatagram(&tag, 1, value.data()); }},
            {"ReadDatagramWithStatus",
             [this] { return driver->ReadDatagramWithStatus(&tag, 1, value.data(), &status); }},
            {"Read", [this] { return driver->Read(tag, value.data()); }},
            {"ReadBlock", [this] { return driver->ReadBlock(tag, value.data(), 2); }},
            {"Write", [this] { return driver->Write(tag, value.data()); }},
            {"WriteDatagramWithStatus",
             [this] { return driver->WriteDatagramWithStatus(&tag, 1, value.data(), &status); }},
        };
    }

    /** A new driver that is about to make the call @p name for the first time, with nothing stored. */
    void Prepare(std::string const& name) {
        trouble.at = 0;
        DeleteDriver();
        std::remove(dir.Path("PLCSymbols_1.sdb").c_str());
        host.serial.created.clear();
        host.serial.released.clear();
        MakeDriver();
        ASSERT_TRUE(driver->Config(ConfigText().Build().c_str()));
        ASSERT_TRUE(name == "Start" || driver->Start());
        tag = Tag("1?A?M?0?short");
        trouble.calls = 0;
    }

    /** The driver can continue, and can be stopped and deleted. */
    void ExpectHealthy(std::string const& where) {
        trouble.at = 0;
        EXPECT_TRUE(driver->Stop()) << where;
        ASSERT_TRUE(driver->Start()) << where << ": " << driver->GetLastErrorString();
        EXPECT_TRUE(ReadsWell()) << where << ": " << driver->GetLastErrorString();
        EXPECT_TRUE(driver->Stop()) << where;
        EXPECT_EQ(host.serial.created.size(), host.serial.released.size()) << where;
    }

    Trouble trouble;
    TroubledPort plc{trouble, [this](Bytes const& request) { return Answer(request); }};
    ITag* tag = nullptr;
    Bytes value = Bytes(2);
    idal_error_t status = 77;
};

TEST_F(HostTroubleTest, ExceptionOfAServiceEndsTheCallWithATextOfItsOwn) {
    trouble.strike = [] { throw std::runtime_error("a fault of the host"); };
    for (auto const& [name, call] : Calls()) {
        bool struck = true;
        int strikes = 0;
        for (int at = 1; struck; ++at) {
            ASSERT_NO_FATAL_FAILURE(Prepare(name));
            trouble.at = at;
            bool ok = true;
            EXPECT_NO_THROW(ok = call()) << name << " " << at;
            struck = trouble.HasStruck();
            EXPECT_EQ(ok, !struck) << name << " " << at;
            if (struck) {
                ExpectError(0, "Exception in a host service");
                ++strikes;
            }
            ASSERT_NO_FATAL_FAILURE(ExpectHealthy(name + " " + std::to_string(at)));
        }
        EXPECT_GE(strikes, 2) << name;
    }
}

TEST_F(HostTroubleTest, AfterFiveCallsInARowThatAnExceptionEndsTheLoginIsForgotten) {
    ASSERT_NO_FATAL_FAILURE(Prepare("ReadDatagram"));
    ASSERT_TRUE(ReadsWell());
    trouble.strike = [] { throw std::runtime_error("a fault of the host"); };
    for (int failed = 1; failed <= 5; ++failed) {
        ASSERT_TRUE(LoginState().isLoggedIn()) << failed;
        trouble.calls = 0;
        trouble.at = 3; // after the port is emptied and the link check is sent
        ASSERT_FALSE(driver->ReadDatagram(&tag, 1, value.data()));
        ASSERT_TRUE(trouble.HasStruck());
    }
    trouble.calls = 0; // in the sixth call the link check fails, before it could log in again
    ASSERT_FALSE(driver->ReadDatagram(&tag, 1, value.data()));
    EXPECT_FALSE(LoginState().isLoggedIn());
}

TEST_F(HostTroubleTest, CancelledThreadUnwindsThroughTheCall) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    trouble.strike = CancelThisThread;
    for (auto const& [name, call] : Calls()) {
        bool struck = true;
        int strikes = 0;
        for (int at = 1; struck; ++at) {
            ASSERT_NO_FATAL_FAILURE(Prepare(name));
            trouble.at = at;
            bool const cancelled = IsCancelledIn([&step = call] { step(); });
            struck = trouble.HasStruck();
            EXPECT_EQ(cancelled, struck) << name << " " << at;
            strikes += struck ? 1 : 0;
            ASSERT_NO_FATAL_FAILURE(ExpectHealthy(name + " " + std::to_string(at)));
        }
        EXPECT_GE(strikes, 2) << name;
    }
}

TEST_F(HostTroubleTest, PortThatThrowsWhenItIsReleasedIsGivenUp) {
    ASSERT_NO_FATAL_FAILURE(Prepare("Stop"));
    trouble.strike = [] { throw std::runtime_error("a fault of the host"); };
    trouble.at = 1;
    EXPECT_NO_THROW(EXPECT_TRUE(driver->Stop()));
    ExpectError(0, "Exception in a host service");
    EXPECT_EQ(host.serial.released.size(), 1U);
    ASSERT_NO_FATAL_FAILURE(ExpectHealthy("Stop"));
}

TEST_F(HostTroubleTest, ThreadThatIsCancelledInStopLeavesADriverThatCanBeDeleted) {
    if (velktest::kNotShownOnArm) {
        GTEST_SKIP() << "a thread cancelled in a call ends the process on ARM";
    }
    ASSERT_NO_FATAL_FAILURE(Prepare("Stop"));
    trouble.strike = CancelThisThread;
    trouble.at = 1;
    EXPECT_TRUE(IsCancelledIn([&] { driver->Stop(); }));
    ASSERT_NO_FATAL_FAILURE(ExpectHealthy("Stop"));
}

TEST_F(HostTroubleTest, DriverThatIsDeletedWhileItsPortThrowsIsDeleted) {
    ASSERT_NO_FATAL_FAILURE(Prepare("Delete"));
    trouble.strike = [] { throw std::runtime_error("a fault of the host"); };
    trouble.at = 1;
    EXPECT_NO_THROW(DeleteDriver());
    EXPECT_EQ(host.serial.released.size(), 1U);
    trouble.at = 0;
    MakeDriver();
}

} // namespace
