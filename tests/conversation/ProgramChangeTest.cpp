#include "tests/support/ConversationTest.h"

#include <filesystem>
#include <string>

/** PLCs whose program changes, whose power fails, and whose symbol files have all valid forms. */
namespace {

using namespace velktest;

class ProgramChangeTest : public ConversationTest {
protected:
    static plc::ProgramDescription Program(std::uint32_t id, std::uint32_t offset) {
        plc::ProgramDescription program;
        program.projectId = id;
        program.variables = {{.name = "PLC_PRG.Counter", .type = "DINT", .offset = offset},
                             {.name = "PLC_PRG.Other", .type = "DINT", .offset = offset + 4}};
        return program;
    }

    static plc::LineDescription OneStation(plc::ProgramDescription const& program) {
        plc::StationDescription station;
        station.program = program;
        return {.stations = {station}};
    }

    plc::Station& Plc() { return line->station(); }
};

TEST_F(ProgramChangeTest, ReadsFollowTheVariable) {
    Begin(OneStation(Program(1, 16)), {});
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    Plc().setValue("PLC_PRG.Counter", 100);
    ExpectNumber<std::int32_t>(counter, 100);
    Plc().replaceProgram(Program(2, 200));
    Plc().setValue("PLC_PRG.Counter", 200);
    EXPECT_FALSE(Read({counter}).ok) << "the first read after the change finds out";
    ExpectError(-6, "Project ID mismatch");
    ExpectNumber<std::int32_t>(counter, 200);
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 2U);
    ExpectNoComplaints();
}

TEST_F(ProgramChangeTest, BothMismatchWords) {
    for (std::uint16_t const word : {std::uint16_t{0x48}, std::uint16_t{0x33}}) {
        plc::LineDescription stations = OneStation(Program(1, 16));
        stations.stations[0].mismatchWord = word;
        Begin(stations, ConfigText().Set("repeat", "2"));
        ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
        Read({counter});
        Plc().replaceProgram(Program(2, 200));
        Plc().setValue("PLC_PRG.Counter", 200);
        ExpectNumber<std::int32_t>(counter, 200); // the second attempt of the same read
    }
}

TEST_F(ProgramChangeTest, NothingIsWrittenToAnOldAddress) {
    Begin(OneStation(Program(1, 16)), {});
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    EXPECT_TRUE(Write({counter}, HostValue<std::int32_t>(5)));
    Plc().replaceProgram(Program(2, 200));
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(Write({counter}, HostValue<std::int32_t>(6)));
        ExpectError(-6, "Wrong reply length or ack in WriteData operation");
    }
    for (std::uint8_t const byte : Plc().memory().area(0)) {
        ASSERT_EQ(byte, 0) << "nothing of the new program's memory was touched";
    }
    EXPECT_FALSE(Read({counter}).ok);
    EXPECT_TRUE(Write({counter}, HostValue<std::int32_t>(6))) << driver->GetLastErrorString();
    EXPECT_EQ(Plc().get<int>("PLC_PRG.Counter"), 6);
}

TEST_F(ProgramChangeTest, VariableThatIsGone) {
    Begin(OneStation(Program(1, 16)), {});
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    ExpectNumber<std::int32_t>(counter, 0);
    plc::ProgramDescription without;
    without.projectId = 2;
    without.variables = {{.name = "PLC_PRG.Other", .type = "DINT"}};
    Plc().replaceProgram(without);
    EXPECT_FALSE(Read({counter}).ok);
    ReadOutcome const outcome = Read({counter});
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.status[0], -1);
    ExpectError(-1, "tag PLC_PRG.Counter not present in symbol file");
    EXPECT_FALSE(Write({counter}, HostValue<std::int32_t>(6)));
    ExpectError(-1, "1?PLC_PRG/Counter?M?0?int not present in Symbols files");
}

TEST_F(ProgramChangeTest, StoredFileSparesTheUpload) {
    Begin(OneStation(Program(1, 16)), {});
    Read({Tag("1?PLC_PRG/Counter?M?0?int")});
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 1U);
    Begin(OneStation(Program(1, 16)), {});
    Plc().setValue("PLC_PRG.Counter", 3);
    ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Counter?M?0?int"), 3);
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 0U);
}

TEST_F(ProgramChangeTest, OutdatedStoredFileIsReplaced) {
    Begin(OneStation(Program(1, 16)), {});
    Read({Tag("1?PLC_PRG/Counter?M?0?int")});
    Begin(OneStation(Program(2, 200)), {});
    Plc().setValue("PLC_PRG.Counter", 3);
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    EXPECT_FALSE(Read({counter}).ok);
    ExpectNumber<std::int32_t>(counter, 3);
}

TEST_F(ProgramChangeTest, DeclaredProjectNeedsNoFile) {
    Begin(OneStation(Program(7, 16)), {});
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    Plc().setValue("PLC_PRG.Counter", 42);
    ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Counter?M?16?int"), 42);
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 0U);
}

TEST_F(ProgramChangeTest, WronglyDeclaredProjectIsFoundOut) {
    Begin(OneStation(Program(8, 200)), {});
    Tag("1?ID?PROJ_ID?7?unsignedInt");
    Plc().setValue("PLC_PRG.Counter", 42);
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?16?int");
    EXPECT_FALSE(Read({counter}).ok);
    ExpectNumber<std::int32_t>(counter, 42);
    EXPECT_EQ(Count(plc::Cause::kFileOpened), 1U);
    ExpectNoComplaints();
}

TEST_F(ProgramChangeTest, RestartedPlcIsServedAgainAtTheSixthCall) {
    Begin(OneStation(Program(1, 16)), {});
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    Plc().setValue("PLC_PRG.Counter", 42);
    ExpectNumber<std::int32_t>(counter, 42);
    Plc().restart();
    for (int call = 1; call <= 5; ++call) {
        EXPECT_FALSE(Read({counter}).ok) << call;
        ExpectError(-6, "Command not acknowledged by PLC");
    }
    ExpectNumber<std::int32_t>(counter, 42);
    EXPECT_EQ(Count(plc::Cause::kNotLoggedIn), 5U);
    EXPECT_EQ(Count(plc::Cause::kLoggedIn), 2U);
}

TEST_F(ProgramChangeTest, PlcThatComesBackAfterADeadWhileNeedsNoMoreThanACall) {
    Begin(OneStation(Program(1, 16)), {});
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    ExpectNumber<std::int32_t>(counter, 0);
    Plc().faults().add({.kind = plc::FaultKind::kSilent});
    for (int call = 0; call < 20; ++call) {
        EXPECT_FALSE(Read({counter}).ok);
    }
    Plc().faults().clear();
    Plc().restart();
    ExpectNumber<std::int32_t>(counter, 0);
}

TEST_F(ProgramChangeTest, PulledOutAdapterFailsAtOnceAndWorksAgainWhenItIsBack) {
    Begin(OneStation(Program(1, 16)), ConfigText().Set("repeat", "3"));
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    ExpectNumber<std::int32_t>(counter, 0);
    port->pulledOut = true;
    long long const reads = port->reads;
    plc::Micros const before = port->now;
    EXPECT_FALSE(Read({counter}).ok);
    ExpectError(0, "Generic error on receiving");
    EXPECT_EQ(port->reads - reads, 3) << "one read an attempt, no spinning";
    EXPECT_EQ(port->now, before);
    port->pulledOut = false;
    port->Wait(std::chrono::seconds(2));
    ExpectNumber<std::int32_t>(counter, 0);
}

TEST_F(ProgramChangeTest, EveryFormOfTheSymbolFile) {
    for (int form = 0; form < 32; ++form) {
        plc::ProgramDescription program = Program(static_cast<std::uint32_t>(form) + 1, 16);
        program.structures = {{.name = "PUMP", .members = {{"Speed", "INT"}, {"Log", "ARRAY [0..3] OF REAL"}}}};
        program.variables.push_back({.name = "PLC_PRG.Pump", .type = "PUMP"});
        program.variables.push_back({.name = "PLC_PRG.Pumps", .type = "ARRAY [1..2] OF PUMP"});
        program.symbolFile = {.variant = (form & 1) != 0 ? 1U : 0U,
                              .headerExtra = (form & 2) != 0 ? 7U : 0U,
                              .foreignSections = (form & 4) != 0,
                              .placeholders = (form & 8) != 0,
                              .spacedNames = (form & 16) != 0};
        std::filesystem::remove(dir.Path("PLCSymbols_1.sdb"));
        Begin(OneStation(program), {});
        Plc().setValue("PLC_PRG.Other", form);
        Plc().setValue("PLC_PRG.Pump.Speed", 7);
        ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Other?M?0?int"), form);
        ExpectNumber<std::int16_t>(Tag("1?plc_prg/pump/SPEED?M?0?short"), 7);
        ExpectNoComplaints();
    }
}

TEST_F(ProgramChangeTest, ThousandsOfVariablesInSmallPieces) {
    plc::ProgramDescription program;
    program.projectId = 99;
    program.areaSizes[0] = 20'000;
    for (int i = 0; i < 3'000; ++i) {
        program.variables.push_back({.name = "PLC_PRG.Variable_" + std::to_string(i), .type = "DINT"});
    }
    Begin(OneStation(program), {});
    Plc().setValue("PLC_PRG.Variable_0", 10);
    Plc().setValue("PLC_PRG.Variable_2999", 11);
    ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Variable_2999?M?0?int"), 11);
    ExpectNumber<std::int32_t>(Tag("1?PLC_PRG/Variable_0?M?0?int"), 10);
    EXPECT_EQ(host.scheduler.yields, 30 + 1500) << "every 100th record, every second symbol";
    EXPECT_GT(Count(plc::Cause::kFilePieceRead), 200U);
    ExpectNoComplaints();
}

TEST_F(ProgramChangeTest, VariablesThatCannotBeAddressed) {
    plc::ProgramDescription program = Program(1, 16);
    program.variables.push_back({.name = "Ghost", .type = "INT", .area = 6, .offset = 4, .listedOnly = true});
    program.variables.push_back({.name = "Beyond", .type = "INT", .area = 0, .offset = 0xFFFFFFFF, .listedOnly = true});
    program.variables.push_back({.name = "Nowhere", .type = "INT", .area = 0, .offset = 0x10000, .listedOnly = true});
    Begin(OneStation(program), {});
    Plc().memory().area(0)[8] = 5;
    for (char const* address : {"1?Ghost?M?8?short", "1?Beyond?M?8?short"}) {
        ReadOutcome const outcome = Read({Tag(address)});
        EXPECT_TRUE(outcome.ok);
        EXPECT_EQ(outcome.status[0], -1);
        EXPECT_EQ(outcome.values, Hex("05 00")) << "the default address";
        EXPECT_FALSE(Write({Tag(address)}, Hex("01 00")));
    }
    EXPECT_FALSE(Read({Tag("1?Nowhere?M?8?short")}).ok);
    ExpectError(-6, "One of the values has bad quality");
}

TEST_F(ProgramChangeTest, DeadPlcCostsItsTimeoutForEachAttempt) {
    plc::LineDescription stations = OneStation(Program(1, 16));
    stations.stations[0].faults = {{.kind = plc::FaultKind::kSilent}};
    Begin(stations, ConfigText().Set("Timeout", "1234").Set("repeat", "3"));
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    plc::Micros const before = port->now;
    EXPECT_FALSE(Read({counter}).ok);
    EXPECT_EQ(port->now - before, std::chrono::milliseconds(3 * 1234));
}

TEST_F(ProgramChangeTest, SlowLineNeedsNoLongerTimeout) {
    plc::LineDescription stations = OneStation(Program(1, 16));
    stations.bytesPerSecond = 120; // 1200 bit/s
    Begin(stations, ConfigText().Set("Timeout", "100"));
    ITag* const counter = Tag("1?PLC_PRG/Counter?M?0?int");
    Plc().setValue("PLC_PRG.Counter", 42);
    ExpectNumber<std::int32_t>(counter, 42);
    ExpectNoComplaints();
}

} // namespace
