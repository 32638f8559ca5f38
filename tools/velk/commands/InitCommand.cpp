#include "tools/velk/commands/InitCommand.h"

#include "base/Signals.h"
#include "host/ports/LineSettings.h"
#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/project/ProjectFile.h"
#include "tools/velk/project/ProjectText.h"
#include "tools/velk/project/Settings.h"
#include "tools/velk/project/WholeFile.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <functional>
#include <memory>

namespace velk {
namespace {

/** Ports that an adapter or a board is likely to be, those with a name that stays first. */
std::vector<std::string> likelyPorts() {
    std::vector<std::string> ports;
    std::error_code error;
    for (auto const& entry : std::filesystem::directory_iterator("/dev/serial/by-id", error)) {
        ports.push_back(entry.path().string());
    }
    for (char const* const pattern : {"ttyUSB*", "ttyACM*", "ttyAMA*"}) {
        for (auto const& entry : std::filesystem::directory_iterator("/dev", error)) {
            if (matches(pattern, entry.path().filename().string())) {
                ports.push_back(entry.path().string());
            }
        }
    }
    return ports;
}

/** Asks question after question. */
class Questions {
public:
    using Check = std::function<std::string(std::string&)>; // answers a complaint, or nothing

    explicit Questions(Context& context) : context_(context) {}

    /** The answer that passes the check; the usual one for an empty answer. */
    std::string ask(std::string const& question, std::string const& usual, Check const& check) {
        while (true) {
            std::string const shown = usual.empty() ? question + ": " : fmt::format("{} [{}]: ", question, usual);
            std::optional<std::string> answer = context_.terminal.ask(shown, context_.interrupt);
            if (!answer || context_.terminal.inputEnded()) {
                context_.terminal.error(""); // ends the line of the question
                throw CommandError(ExitCode::Usage, "the answers ended; nothing was written");
            }
            std::string text = answer->empty() ? usual : *answer;
            std::string const complaint = check(text);
            if (complaint.empty()) {
                return text;
            }
            context_.terminal.error("  " + complaint);
        }
    }

    std::string choose(std::string const& question, std::vector<std::string> const& words, std::string const& usual) {
        return ask(question + " (" + orList(words) + ")", usual, [&](std::string& answer) {
            auto const found = std::find_if(words.begin(), words.end(),
                                            [&](std::string const& each) { return sameName(each, answer); });
            answer = found == words.end() ? answer : *found;
            return found == words.end() ? "give " + orList(words) : std::string();
        });
    }

    int number(std::string const& question, int usual, int low, int high) {
        int value = usual;
        ask(question, std::to_string(usual), [&](std::string& answer) {
            auto const [end, error] = std::from_chars(answer.data(), answer.data() + answer.size(), value);
            bool const good =
                error == std::errc() && end == answer.data() + answer.size() && value >= low && value <= high;
            return good ? std::string() : fmt::format("give a number, {} to {}", low, high);
        });
        return value;
    }

private:
    Context& context_;
};

std::string checkPort(std::string& answer) {
    return answer.empty() ? "give the path of a serial port" : portFault(answer);
}

int askBaud(Questions& questions, int usual) {
    constexpr int kDataBits = 8;
    std::string const text =
        questions.ask("Line speed in bit/s", std::to_string(usual), [](std::string& answer) -> std::string {
            int baud = 0;
            auto const [end, error] = std::from_chars(answer.data(), answer.data() + answer.size(), baud);
            if (error != std::errc() || end != answer.data() + answer.size()) {
                return "give a number";
            }
            auto const settings = host::lineSettings(baud, 0, kDataBits, 1);
            return settings.ok() ? std::string() : settings.failure().text;
        });
    return std::stoi(text);
}

void askForLine(host::DriverConfig& config, LineOptions const& options, Questions& questions) {
    if (!options.port) {
        std::vector<std::string> const ports = likelyPorts();
        config.uart = questions.ask("Serial port", ports.empty() ? "" : ports.front(), checkPort);
    }
    if (!options.baud) {
        config.baudrate = askBaud(questions, config.baudrate);
    }
    if (!options.parity) {
        config.parity = questions.choose("Parity", parities(), config.parity);
    }
    if (!options.stopBits) {
        config.stopbits = questions.number("Stop bits", config.stopbits, 1, kMostStopBits);
    }
    if (!options.mode) {
        config.mode = questions.choose("Mode", modes(), config.mode);
    }
    if (!options.framing) {
        config.protType = protocolType(questions.choose("Framing", {"bare", "routed"}, framingWord(config.protType)));
    }
}

void askForCoupler(CouplerOptions const& given, int level, std::string& coupler, int& channel, std::string& address,
                   Questions& questions) {
    std::string const what = fmt::format(" of level {}", level);
    if (!given.coupler) {
        coupler = std::to_string(questions.number("Coupler" + what, std::stoi(coupler), 0, kMostCoupler));
    }
    if (!given.channel) {
        channel = questions.number("Channel of the coupler" + what, channel, 0, kMostChannel);
    }
    if (!given.address) {
        address = questions.ask("Address behind the coupler" + what, address,
                                [](std::string& answer) { return addressFault(answer); });
    }
}

void askForCouplers(host::NodeSettings& nodes, LineOptions const& options, Questions& questions) {
    auto const& [first, second] = options.couplers;
    if (!options.routingLevels) {
        nodes.routingLevels =
            questions.number("Levels of couplers on the way", nodes.routingLevels, 0, kMostRoutingLevels);
    }
    if (nodes.routingLevels >= 1) {
        askForCoupler(first, 1, nodes.coupler1, nodes.channel1, nodes.address1, questions);
    }
    if (nodes.routingLevels >= 2) {
        askForCoupler(second, 2, nodes.coupler2, nodes.channel2, nodes.address2, questions);
    }
}

/** A flag that would have no effect is a misunderstanding. */
void checkCouplers(host::DriverConfig const& config, LineOptions const& options) {
    int const levels = config.nodes.routingLevels;
    if (levels > 0 && framingWord(config.protType) != "routed") {
        throw CommandError(ExitCode::Usage, "couplers need the framing routed");
    }
    for (int level = levels + 1; level <= kMostRoutingLevels; ++level) {
        CouplerOptions const& given = options.couplers.at(static_cast<std::size_t>(level) - 1);
        if (given.coupler || given.channel || given.address) {
            throw CommandError(ExitCode::Usage,
                               fmt::format("--coupler{0}, --channel{0} and --address{0} need {0} or more levels of "
                                           "couplers: give --routing-levels {0}",
                                           level));
        }
    }
}

void askForStation(NewProject& project, InitOptions const& init, LineOptions const& options, Questions& questions) {
    host::NodeSettings& nodes = project.config.nodes;
    if (!options.byteOrder) {
        nodes.model =
            modelName(questions.choose("Byte order of the PLC", {"big", "little"}, byteOrderWord(nodes.model)));
    }
    if (!options.blockSize) {
        nodes.blockSize = questions.number("Bytes of a block", nodes.blockSize, kLeastBlockSize, kMostBlockSize);
    }
    if (!options.timeoutMs) {
        nodes.timeoutMs =
            questions.number("Milliseconds to wait for an answer", nodes.timeoutMs, kLeastTimeoutMs, kMostTimeoutMs);
    }
    if (!options.station) {
        project.node = questions.number("Node number of the PLC", project.node, 0, kMostNode);
    }
    if (!init.name) {
        project.stationName = questions.ask("Name of the PLC, if you like", "",
                                            [](std::string& answer) { return stationNameFault(answer); });
    }
}

std::filesystem::path projectFileOf(LineOptions const& options) {
    return options.file.value_or("velk.toml");
}

/** A folder beside the file is named as it is seen from there, so that both can be moved together. */
std::string storageAsWritten(std::filesystem::path const& storage, std::filesystem::path const& file) {
    std::filesystem::path const folder = std::filesystem::absolute(file).lexically_normal().parent_path();
    std::filesystem::path const whole = std::filesystem::absolute(storage).lexically_normal();
    std::filesystem::path const beside = whole.lexically_relative(folder);
    bool const elsewhere = storage.is_absolute() || beside.empty() || *beside.begin() == "..";
    bool const likeHome = beside.string().starts_with("~/"); // a folder of that name is meant
    return elsewhere ? whole.string() : (likeHome ? "." / beside : beside).string();
}

void refuseOddName(char const* what, std::string const& name) {
    if (displayable(name) != name) {
        throw CommandError(ExitCode::Usage,
                           fmt::format("the name of the {} has to be UTF-8 without control characters", what));
    }
}

NewProject projectFromFlags(InitOptions const& init, LineOptions const& options) {
    Project nothing;
    nothing.config.uart.clear();
    Settings const settings = mergeSettings(nothing, options);
    NewProject project{settings.config, settings.node, init.name.value_or(""), ""};
    if (options.storage) {
        project.storage = storageAsWritten(*options.storage, projectFileOf(options));
        refuseOddName("storage", project.storage);
    }
    refuseOddName("port", project.config.uart);
    for (std::string const& fault :
         {options.port ? portFault(*options.port) : std::string(), stationNameFault(project.stationName)}) {
        if (!fault.empty()) {
            throw CommandError(ExitCode::Usage, fault);
        }
    }
    return project;
}

[[noreturn]] void refuseToReplace(std::filesystem::path const& file) {
    throw CommandError(ExitCode::Usage, file.string() + " is there already; give --force to write over it");
}

void writeFile(std::filesystem::path const& file, std::string const& text, bool force) {
    base::Outcome const written = writeWholeFile(file, text, force);
    if (!written.ok() && written.failure().kind == base::FailureKind::FileExists) {
        refuseToReplace(file);
    }
    if (!written.ok()) {
        throw CommandError(ExitCode::Usage, file.string() + " cannot be written: " + written.failure().text);
    }
}

/** Some flags that other commands read with mean another thing here. */
void describeForWriting(CLI::App& command) {
    command.get_option("--file")->description("Project file to write; velk.toml in the current folder by default");
    command.get_option("--quiet")->description("Say nothing when the file is written");
    command.get_option("--storage")->description("Folder where symbol files are to be kept");
    command.get_option("--node")
        ->description(fmt::format("Node number of the station; {} by default", NewProject().node))
        ->check(CLI::Range(0, kMostNode))
        ->type_name("");
}

} // namespace

ExitCode runInit(InitOptions const& options, Context& context) {
    LineOptions const& flags = context.options;
    std::filesystem::path const file = projectFileOf(flags);
    std::error_code ignored;
    if (!options.force && std::filesystem::exists(file, ignored)) {
        refuseToReplace(file);
    }
    NewProject project = projectFromFlags(options, flags);
    if (context.terminal.kinds().inputIsTerminal) {
        Questions questions(context);
        askForLine(project.config, flags, questions);
        if (framingWord(project.config.protType) == "routed") {
            askForCouplers(project.config.nodes, flags, questions);
        }
        askForStation(project, options, flags, questions);
    } else if (project.config.uart.empty()) {
        throw CommandError(ExitCode::Usage, "there is no terminal to ask on: give at least --port");
    }
    checkCouplers(project.config, flags);
    std::string const text = projectText(project);
    readProjectText(text, file.string()); // what is written can be read
    if (context.interrupt.requested()) {
        throw CommandError(ExitCode::Interrupted, "interrupted");
    }
    writeFile(file, text, options.force);
    context.terminal.note(file.string() +
                          " is written; `velk check` tries the line, `velk symbols` lists the variables");
    return ExitCode::Good;
}

void addInitCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("init", "Write a commented project file; ask on a terminal for what the flags leave out");
    auto const options = std::make_shared<InitOptions>();
    command->add_option("--name", options->name, "What to call the station")->type_name("NAME");
    command->add_flag("--force", options->force, "Write over a file that is there");
    addSettingOptions(*command, context);
    describeForWriting(*command);
    command->callback(
        [options, &context] { context.action = [options, &context] { return runInit(*options, context); }; });
}

} // namespace velk
