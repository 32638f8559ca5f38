// A demonstration: the driver module, loaded as a host loads it, talks to the simulated PLC over a pseudo-terminal.
// Everything shown was received over the line.

#include "host/instance/ModuleFile.h"
#include "host/instance/Panel.h"
#include "host/serial/TrafficMeter.h"
#include "host/services/Clock.h"
#include "plc/files/LineFile.h"
#include "plc/files/ProgramFile.h"
#include "tools/common/UploadProgress.h"
#include "tools/demo/PlcOnTerminal.h"
#include "tools/demo/Screen.h"
#include "tools/demo/Variables.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace demo {
namespace {

constexpr int kNode = 1;
constexpr int kBaudRate = 115'200;
constexpr int kBlockSize = 1'024;
constexpr int kTimeoutMs = 2'000;

/** A directory that is removed with this object. */
class WorkDirectory {
public:
    WorkDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "velk-demo-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory could be made");
        }
        path_ = name;
    }
    WorkDirectory(WorkDirectory const&) = delete;
    WorkDirectory& operator=(WorkDirectory const&) = delete;
    ~WorkDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    [[nodiscard]] std::filesystem::path const& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/** Shows frames to the meter and to the watcher of uploads. */
class Watchers final : public host::PortObserver {
public:
    explicit Watchers(Screen& screen)
        : progress_(0, [&screen](tools::Upload const& upload) { screen.progress(upload); }) {}

    void onFrame(host::PortFrame const& frame) override {
        meter_.onFrame(frame);
        progress_.onFrame(frame);
    }
    void onTimeout(std::int64_t at) override { meter_.onTimeout(at); }
    void onDropped(std::span<unsigned char const> bytes, std::int64_t at) override { meter_.onDropped(bytes, at); }
    void onFault(std::string_view reason, std::int64_t at) override { meter_.onFault(reason, at); }

    [[nodiscard]] host::Traffic const& traffic() const { return meter_.traffic(); }

private:
    host::TrafficMeter meter_;
    tools::UploadProgress progress_;
};

/** Real programs have hundreds of variables; enough that fetching the symbol file takes a moment. */
void addCells(plc::ProgramDescription& program) {
    constexpr int kCells = 400;
    for (int cell = 1; cell <= kCells; ++cell) {
        program.variables.push_back({.name = "Hall.Cell" + std::to_string(cell) + ".Setpoint", .type = "INT"});
    }
}

void fillArrays(plc::Station& station) {
    for (int i = 0; i < 4; ++i) {
        std::string const element = "[" + std::to_string(i) + "]";
        station.setValue("PLC_PRG.Levels" + element, 100 * (i - 2));
        station.setValue("PLC_PRG.Stations" + element, 10 * (i + 1));
        station.setValue("PLC_PRG.Curve" + element, 0.25 * i);
    }
    station.setValue("PLC_PRG.Positions[1]", -2'000'000'000);
    station.setValue("PLC_PRG.Positions[3]", 2'000'000'000);
    station.setValue("PLC_PRG.Speeds[0]", 65'535);
    station.setValue("PLC_PRG.Consumption[0]", 1234.5);
    station.setValue("PLC_PRG.Totals[1]", 4'294'967'295U);
    station.setValue("PLC_PRG.Pump.Speed", 2'950);
    station.setValue("PLC_PRG.Pump.Name", "P-101");
}

void require(base::Outcome const& outcome) {
    if (!outcome.ok()) {
        throw std::runtime_error(outcome.failure().text);
    }
}

class Demonstration {
public:
    explicit Demonstration(std::filesystem::path const& folder) : folder_(folder), watchers_(screen_) {}

    /** Returns whether everything went as expected. */
    bool run();

private:
    void startPlc();
    void loadModule();
    void read();
    void write();
    void replaceProgram();
    void figures();

    void writeAndReadBack(std::string const& name, std::string const& value);
    void expect(bool condition, std::string const& complaint);

    std::filesystem::path folder_;
    Screen screen_;
    Watchers watchers_;
    host::SteadyClock clock_;
    WorkDirectory work_;
    std::unique_ptr<PlcOnTerminal> plc_;
    std::unique_ptr<host::Panel> panel_;
    std::vector<Variable> variables_ = demonstrationVariables();
    int failedCalls_ = 0;
    bool asExpected_ = true;
};

bool Demonstration::run() {
    screen_.title("VELK: PLC variables by name over a serial line");
    startPlc();
    loadModule();
    read();
    write();
    replaceProgram();
    figures();
    return asExpected_;
}

void Demonstration::startPlc() {
    screen_.step("A simulated PLC on a pseudo-terminal");
    plc::LineDescription line = plc::readLineFile(folder_ / "line.toml");
    addCells(line.stations.front().program);
    plc_ = std::make_unique<PlcOnTerminal>(std::move(line));
    plc_->locked([](plc::Line& running) { fillArrays(running.station()); });
    screen_.say("port " + plc_->port() + ", bytes paced as at 115,200 bit/s, byte order Motorola");
}

void Demonstration::loadModule() {
    screen_.step("The driver module, loaded as a host loads it");
    base::Result<std::filesystem::path> const module = host::findModule();
    if (!module.ok()) {
        throw std::runtime_error(module.failure().text);
    }
    host::PanelSettings settings;
    settings.module = module.value();
    settings.storage = work_.path();
    settings.ident = "demo";
    settings.config.uart = plc_->port();
    settings.config.baudrate = kBaudRate;
    settings.config.protType = "Serial_RS232";
    settings.config.nodes.blockSize = kBlockSize;
    settings.config.nodes.timeoutMs = kTimeoutMs;
    settings.config.nodes.repeat = 1; // so that each failure is visible
    base::Result<std::unique_ptr<host::Panel>> panel = host::Panel::create(settings, clock_, &watchers_);
    if (!panel.ok()) {
        throw std::runtime_error(panel.failure().text);
    }
    panel_ = std::move(panel.value());
    screen_.good("dlopen, GetInterfaceFactory, Init, CreateProtocol(\"VELK\"), Config");
    require(panel_->start());
    require(panel_->makeStorage());
    screen_.good("Start: the port is open");
    require(createTags(*panel_, kNode, variables_));
    screen_.good(std::to_string(variables_.size()) + " tags created");
}

void Demonstration::read() {
    screen_.step("The first read fetches the PLC's symbol file, binds the tags and reads the values");
    Reading const reading = readAll(*panel_, variables_);
    screen_.print(reading.table);
    expect(reading.failed == 0, "a datagram failed: " + reading.failure);
    expect(reading.missing == 1, "exactly one variable should be missing");
}

void Demonstration::write() {
    screen_.step("Writing, and reading back what the PLC has then");
    writeAndReadBack("PLC_PRG.Counter", "-1234567");
    writeAndReadBack("PLC_PRG.Temperature", "21.5");
    writeAndReadBack("PLC_PRG.Recipe", "Anodise, 25 µm");
    writeAndReadBack("PLC_PRG.Levels", "[1, -2, 3, -4, 5, -6]");
    writeAndReadBack("Horn", "true");
}

void Demonstration::writeAndReadBack(std::string const& name, std::string const& value) {
    Variable const& variable = find(variables_, name);
    base::Result<std::string> const before = readOne(*panel_, variable);
    require(writeOne(*panel_, variable, value));
    base::Result<std::string> const after = readOne(*panel_, variable);
    if (!before.ok() || !after.ok()) {
        expect(false, name + ": " + (before.ok() ? after : before).failure().text);
        return;
    }
    screen_.good(name + ": " + before.value() + " -> " + after.value());
    expect(after.value() == value || after.value() == '"' + value + '"', name + " was not written as asked");
}

void Demonstration::replaceProgram() {
    screen_.step("The PLC program is replaced while everything runs: variables move, the symbol file is another one");
    plc::ProgramDescription next = plc::readProgramFile(folder_ / "program-2.toml");
    addCells(next);
    plc_->locked([&](plc::Line& line) {
        line.station().replaceProgram(next);
        fillArrays(line.station());
    });

    Reading const refused = readAll(*panel_, variables_);
    ++failedCalls_;
    screen_.bad("read refused: " + refused.failure + "; the driver fetches the new symbol file at once");
    expect(refused.good == 0, "no value may be taken from another program");

    Reading const again = readAll(*panel_, variables_);
    screen_.good("read again, " + std::to_string(again.good) + " good, " + std::to_string(again.missing) + " missing:");
    screen_.print(again.table);
    expect(again.failed == 0, "a datagram failed: " + again.failure);
    expect(again.missing == 1, "exactly one variable should be missing");
}

void Demonstration::figures() {
    require(panel_->stop());
    host::Traffic const& traffic = watchers_.traffic();
    std::uint64_t const exchanges =
        plc_->locked([](plc::Line& line) { return line.counters().of(plc::Cause::kExchangeDone); });
    std::uint64_t const complaints = plc_->locked([](plc::Line& line) { return line.counters().complaints(); });
    screen_.title("");
    screen_.print(std::to_string(exchanges) + " exchanges, " + std::to_string(traffic.bytesSent) + " bytes sent, " +
                  std::to_string(traffic.bytesReceived) + " bytes received, " + std::to_string(traffic.timeouts) +
                  " time-outs, " + std::to_string(failedCalls_) + " failed call (the replaced program), " +
                  std::to_string(complaints) + " complaints of the PLC\n");
    expect(complaints == 0, "the PLC complained about what it got");
    expect(traffic.timeouts == 0, "the PLC did not always answer in time");
}

void Demonstration::expect(bool condition, std::string const& complaint) {
    if (!condition) {
        asExpected_ = false;
        screen_.bad("NOT AS EXPECTED: " + complaint);
    }
}

} // namespace
} // namespace demo

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr,
                     "usage: velk-demo FOLDER\n  FOLDER holds line.toml and program-2.toml, the simulated PLC\n");
        return 2;
    }
    try {
        return demo::Demonstration(arguments[1]).run() ? 0 : 1;
    } catch (std::exception const& problem) {
        std::fprintf(stderr, "velk-demo: %s\n", problem.what());
        return 1;
    }
}
