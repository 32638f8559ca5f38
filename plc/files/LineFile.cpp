#include "plc/files/LineFile.h"

#include "base/TomlSection.h"
#include "plc/files/FaultTable.h"
#include "plc/files/ProgramTable.h"
#include "plc/frames/Text.h"
#include "plc/program/Program.h"

#include <algorithm>

namespace plc {

namespace {

using base::TomlNode;
using base::TomlSection;

constexpr std::int64_t kLargestSeed = 0xFFFFFFFF;
constexpr std::int64_t kMostCoupler = 255;
constexpr std::int64_t kLongestTime = 3'600'000;

Micros readTime(TomlSection& table, std::string_view key, Micros usual) {
    auto const milliseconds = table.number(key, 0, kLongestTime);
    return milliseconds ? std::chrono::milliseconds(*milliseconds) : usual;
}

std::optional<ByteOrder> modelNamed(std::string_view name) {
    if (name == "Intel") {
        return ByteOrder::kLittle;
    }
    return name == "Motorola" ? std::optional(ByteOrder::kBig) : std::nullopt;
}

RouteLevel readLevel(TomlSection& table, std::string const& number) {
    RouteLevel level;
    level.coupler = table.number("coupler" + number, 0, kMostCoupler).value_or(0);
    level.channel = table.number("channel" + number, 0, 19).value_or(0);
    level.address =
        table.named("address" + number, addressFromText, "four numbers from 0 to 255 with dots between them")
            .value_or(level.address);
    return level;
}

/// A program in the file itself, in a separate file, or none.
ProgramDescription readProgram(TomlSection& table, std::filesystem::path const& folder) {
    TomlNode const* const node = table.node("program");
    if (auto const* const file = node == nullptr ? nullptr : node->as<std::string>()) {
        return readProgramFile(folder / *file);
    }
    ProgramDescription program;
    table.section("program", [&](TomlSection& inner) { program = readProgramTable(inner); });
    return program;
}

/// A rule of a station whose program is known.
FaultRule readFaultOf(TomlSection& table, ProgramDescription const& program) {
    FaultRule rule = readFault(table);
    if (table.complaints().empty() && !rule.variable.empty() && !Program(program).find(rule.variable)) {
        table.complain("variable", textOf("the program has no variable ", rule.variable));
    }
    return rule;
}

/// Runs a check of the description that was read, if it has no errors so far.
template <typename Check>
void tryCheck(TomlSection& table, base::TextPlace place, Check check) {
    if (!table.complaints().empty()) {
        return;
    }
    try {
        check();
    } catch (DescriptionError const& fault) {
        table.complaints().add(place, fault.what());
    }
}

StationDescription readStation(TomlSection& table, std::filesystem::path const& folder) {
    StationDescription station;
    station.name = table.text("name").value_or(station.name);
    station.byteOrder = table.named("model", modelNamed, "Intel or Motorola").value_or(ByteOrder::kLittle);
    station.blockSize = table.number<std::size_t>("block_size", 128, 1460).value_or(128);
    station.route.levels = table.number("routing_levels", 0, 2).value_or(0);
    station.route.level = {readLevel(table, "1"), readLevel(table, "2")};
    station.filePieceSize = table.number<std::size_t>("file_piece_size", 1, 0xFFFF).value_or(512);
    station.mismatchWord = table.number<std::uint16_t>("mismatch_word", 0x33, 0x48).value_or(0x48);
    station.ackDelay = readTime(table, "ack_delay_ms", station.ackDelay);
    station.answerDelay = readTime(table, "answer_delay_ms", station.answerDelay);
    station.exchangeTimeout = readTime(table, "exchange_timeout_ms", station.exchangeTimeout);
    station.faultSeed = table.number<std::uint32_t>("fault_seed", 0, kLargestSeed).value_or(1);
    station.program = readProgram(table, folder);
    table.sections("fault", [&](TomlSection& one) { station.faults.push_back(readFaultOf(one, station.program)); });
    tryCheck(table, table.place(), [&] { checkStation(station); });
    return station;
}

LineSpeed readSpeed(TomlSection& table) {
    LineSpeed speed;
    speed.baud = table.number<std::uint32_t>("baud", kLeastBaud, kMostBaud).value_or(0);
    speed.parity = table.named("parity", parityNamed, "none, even, odd or mark").value_or(speed.parity);
    speed.stopBits = table.number("stop_bits", 1, 2).value_or(1);
    for (std::string_view const key : {"parity", "stop_bits"}) {
        if (table.has(key) && !table.has("baud")) {
            table.complain(key, textOf("'", key, "' also needs 'baud'"));
        }
    }
    return speed;
}

LineDescription readLine(TomlSection& table, std::filesystem::path const& folder) {
    LineDescription line;
    table.need("framing");
    line.framing = table.named("framing", framingNamed, "Serial_RS232 or ABB_RS232_AC").value_or(line.framing);
    line.frameSilence = readTime(table, "frame_silence_ms", line.frameSilence);
    line.speed = readSpeed(table);
    line.bytesPerSecond =
        table.number<std::uint32_t>("bytes_per_second", 0, 1'000'000).value_or(bytesPerSecond(line.speed));
    table.sections("station", [&](TomlSection& one) { line.stations.push_back(readStation(one, folder)); });
    tryCheck(table, {}, [&] { checkLine(line); });
    return line;
}

} // namespace

LineDescription readLineFile(std::filesystem::path const& file) {
    return readLineText(readDescription(file), file.string(), file.parent_path());
}

LineDescription readLineText(std::string_view text, std::string const& name, std::filesystem::path const& folder) {
    return base::readToml(text, base::Complaints(name), "a line",
                          [&](TomlSection& table) { return readLine(table, folder); });
}

bool isLineText(std::string_view text, std::string const& name) {
    return hasAnyKey(text, name, {"framing", "station"});
}

bool hasAnyKey(std::string_view text, std::string const& name, std::initializer_list<std::string_view> keys) {
    base::Complaints complaints(name);
    TomlNode const whole = base::parseToml(text, complaints);
    TomlSection const top(whole, "", complaints);
    return std::any_of(keys.begin(), keys.end(), [&top](std::string_view key) { return top.has(key); });
}

FaultRule readFaultText(std::string_view text, std::string const& name) {
    constexpr std::string_view kBefore = "fault = {";
    FaultRule rule;
    return base::readToml(textOf(kBefore, text, "}"), base::Complaints(name, static_cast<int>(kBefore.size())),
                          "a fault", [&](TomlSection& table) {
                              table.section("fault", [&](TomlSection& fault) { rule = readFault(fault); });
                              return rule;
                          });
}

} // namespace plc
