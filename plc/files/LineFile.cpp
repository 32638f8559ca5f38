#include "plc/files/LineFile.h"

#include "plc/files/FaultTable.h"
#include "plc/files/ProgramTable.h"
#include "plc/files/TomlTable.h"
#include "plc/frames/Text.h"
#include "plc/program/Program.h"

namespace plc {

namespace {

constexpr std::int64_t kLargestSeed = 0xFFFFFFFF;
constexpr std::int64_t kMostCoupler = 255;
constexpr std::int64_t kLongestTime = 3'600'000;

Micros readTime(TomlTable& table, std::string_view key, Micros usual) {
    auto const milliseconds = table.number(key, 0, kLongestTime);
    return milliseconds ? std::chrono::milliseconds(*milliseconds) : usual;
}

ByteOrder readModel(TomlTable& table) {
    std::string const model = table.text("model").value_or("Intel");
    if (model != "Intel" && model != "Motorola") {
        table.refuseKey("model", "must be Intel or Motorola");
    }
    return model == "Intel" ? ByteOrder::kLittle : ByteOrder::kBig;
}

RouteLevel readLevel(TomlTable& table, std::string const& number) {
    RouteLevel level;
    level.coupler = static_cast<int>(table.number("coupler" + number, 0, kMostCoupler).value_or(0));
    level.channel = static_cast<int>(table.number("channel" + number, 0, 19).value_or(0));
    std::string const key = "address" + number;
    if (auto const text = table.text(key)) {
        auto const address = addressFromText(*text);
        if (!address) {
            table.refuseKey(key, "must be four numbers from 0 to 255 with dots between them");
        }
        level.address = *address;
    }
    return level;
}

/// A program in the file itself, in a file of its own, or none.
ProgramDescription readProgram(TomlTable& table, std::filesystem::path const& folder) {
    toml::node const* const node = table.node("program");
    if (node != nullptr && node->is_string()) {
        return readProgramFile(folder / table.neededText("program"));
    }
    auto program = table.table("program");
    if (!program) {
        return {};
    }
    ProgramDescription description = readProgramTable(*program);
    program->finish();
    return description;
}

/// A rule of a station whose program is known.
FaultRule readFaultOf(TomlTable& table, ProgramDescription const& program) {
    FaultRule rule = readFault(table);
    if (!rule.variable.empty() && !Program(program).find(rule.variable)) {
        table.refuseKey("variable", textOf("names no variable of the program: ", rule.variable));
    }
    return rule;
}

StationDescription readStation(TomlTable& table, std::filesystem::path const& folder) {
    StationDescription station;
    station.name = table.text("name").value_or(station.name);
    station.byteOrder = readModel(table);
    station.blockSize = static_cast<std::size_t>(table.number("block_size", 128, 1460).value_or(128));
    station.route.levels = static_cast<int>(table.number("routing_levels", 0, 2).value_or(0));
    station.route.level = {readLevel(table, "1"), readLevel(table, "2")};
    station.filePieceSize = static_cast<std::size_t>(table.number("file_piece_size", 1, 0xFFFF).value_or(512));
    station.mismatchWord = static_cast<std::uint16_t>(table.number("mismatch_word", 0x33, 0x48).value_or(0x48));
    station.ackDelay = readTime(table, "ack_delay_ms", station.ackDelay);
    station.answerDelay = readTime(table, "answer_delay_ms", station.answerDelay);
    station.exchangeTimeout = readTime(table, "exchange_timeout_ms", station.exchangeTimeout);
    station.faultSeed = static_cast<std::uint32_t>(table.number("fault_seed", 0, kLargestSeed).value_or(1));
    station.program = readProgram(table, folder);
    table.eachTable("fault", [&](TomlTable& one) { station.faults.push_back(readFaultOf(one, station.program)); });
    try {
        checkStation(station);
    } catch (DescriptionError const& fault) {
        table.refuse(table.line(), fault.what());
    }
    return station;
}

LineSpeed readSpeed(TomlTable& table) {
    LineSpeed speed;
    speed.baud = static_cast<std::uint32_t>(table.number("baud", kLeastBaud, kMostBaud).value_or(0));
    auto const parity = parityNamed(table.text("parity").value_or("none"));
    if (!parity) {
        table.refuseKey("parity", "must be none, even, odd or mark");
    }
    speed.parity = *parity;
    speed.stopBits = static_cast<int>(table.number("stop_bits", 1, 2).value_or(1));
    for (std::string_view const key : {"parity", "stop_bits"}) {
        if (speed.baud == 0 && table.has(key)) {
            table.refuseKey(key, "needs \"baud\" beside it");
        }
    }
    return speed;
}

Framing readFraming(TomlTable& table) {
    auto const framing = framingNamed(table.neededText("framing"));
    if (!framing) {
        table.refuseKey("framing", "must be Serial_RS232 or ABB_RS232_AC");
    }
    return *framing;
}

} // namespace

LineDescription readLineFile(std::filesystem::path const& file) {
    return readLineText(readWholeFile(file.string()), file.string(), file.parent_path());
}

LineDescription readLineText(std::string_view text, std::string_view name, std::filesystem::path const& folder) {
    toml::table const whole = parseToml(text, name);
    TomlTable table(whole, name);
    LineDescription line;
    line.framing = readFraming(table);
    line.frameSilence = readTime(table, "frame_silence_ms", line.frameSilence);
    line.speed = readSpeed(table);
    line.bytesPerSecond =
        static_cast<std::uint32_t>(table.number("bytes_per_second", 0, 1'000'000).value_or(bytesPerSecond(line.speed)));
    table.eachTable("station", [&](TomlTable& one) { line.stations.push_back(readStation(one, folder)); });
    table.finish();
    try {
        checkLine(line);
    } catch (DescriptionError const& fault) {
        table.refuse(0, fault.what());
    }
    return line;
}

bool isLineText(std::string_view text, std::string_view name) {
    toml::table const whole = parseToml(text, name);
    return whole.contains("framing") || whole.contains("station");
}

bool hasKey(std::string_view text, std::string_view name, std::string_view key) {
    return parseToml(text, name).contains(key);
}

std::string readDescription(std::filesystem::path const& file) {
    return readWholeFile(file.string());
}

FaultRule readFaultText(std::string_view text, std::string_view name) {
    toml::table const whole = parseToml(textOf("fault = {", text, "}"), name);
    TomlTable table(whole, name);
    auto fault = table.table("fault");
    FaultRule const rule = readFault(*fault);
    fault->finish();
    table.finish();
    return rule;
}

} // namespace plc
