#include "tools/velk/commands/InitCommand.h"

#include "base/Signals.h"
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
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <utility>

namespace velk {
namespace {

struct InitOptions {
    std::optional<std::string> name; ///< of the station
    bool force = false;              ///< overwrite an existing file
};

/** Ports that are likely an adapter or a board, those with a stable name first. */
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

/** Asks for settings not given as flags; the answers are stored like the flags' values. */
class Questions {
public:
    Questions(std::vector<Argument> flags, Context& context) : flags_(std::move(flags)), context_(context) {}

    /** The flag is given. */
    void leaveOut(std::string const& flag) { given_.insert(flag); }

    /** @p usual is the meaning of an empty answer; the flag's default when none is given */
    void ask(std::string const& flag, std::string const& question, std::string const& usual = "") const {
        Argument const& argument =
            *std::find_if(flags_.begin(), flags_.end(), [&](Argument const& each) { return each.name == flag; });
        std::string const standard = usual.empty() ? argument.rules.byDefault : usual;
        std::string const choices = argument.value.choices.empty() ? "" : " (" + orList(ourWords(argument)) + ")";
        std::string const shown = question + choices + (standard.empty() ? ": " : " [" + standard + "]: ");
        std::string fault;
        while (!given_.contains(flag) && !(fault = argument.accept(answer(shown, standard))).empty()) {
            context_.terminal.error("  " + fault);
        }
    }

private:
    /** Without those that occur only in the driver's configuration. */
    static std::vector<std::string> ourWords(Argument const& argument) {
        std::vector<std::string> words = argument.value.choices;
        std::erase_if(words,
                      [](std::string const& each) { return each == protocolType(each) || each == modelName(each); });
        return words;
    }

    [[nodiscard]] std::string answer(std::string const& question, std::string const& usual) const {
        std::optional<std::string> const answer = context_.terminal.ask(question, context_.interrupt);
        if (!answer || context_.terminal.inputEnded()) {
            context_.terminal.error(""); // ends the line of the question
            throw CommandError(ExitCode::Usage, "the answers ended; nothing was written");
        }
        return answer->empty() ? usual : *answer;
    }

    std::vector<Argument> flags_;
    std::set<std::string> given_;
    Context& context_;
};

bool isRouted(LineOptions const& options) {
    return framingWord(protocolType(options.framing.value_or(host::DriverConfig().protType))) == "routed";
}

void askForAll(Questions const& questions, LineOptions const& options) {
    std::vector<std::string> const ports = likelyPorts();
    questions.ask("--port", "Serial port", ports.empty() ? "" : ports.front());
    questions.ask("--baud", "Line speed in bit/s");
    questions.ask("--parity", "Parity");
    questions.ask("--stopbits", "Stop bits");
    questions.ask("--mode", "Mode");
    questions.ask("--framing", "Framing");
    if (isRouted(options)) {
        questions.ask("--routing-levels", "Levels of couplers on the route");
        for (int level = 1; level <= options.routingLevels.value_or(0); ++level) {
            questions.ask(fmt::format("--coupler{}", level), fmt::format("Coupler of level {}", level));
            questions.ask(fmt::format("--channel{}", level), fmt::format("Channel of the coupler of level {}", level));
            questions.ask(fmt::format("--address{}", level),
                          fmt::format("Address behind the coupler of level {}", level));
        }
    }
    questions.ask("--byte-order", "Byte order of the PLC");
    questions.ask("--block-size", "Bytes of a block");
    questions.ask("--timeout", "Milliseconds to wait for an answer");
    questions.ask("--node", "Node number of the PLC");
    questions.ask("--name", "Name of the PLC, if you like");
}

/** Refuses flags that would have no effect. */
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

std::filesystem::path projectFileOf(LineOptions const& options) {
    return options.file.value_or("velk.toml");
}

/** A folder near the file is written relative to it, so that both can be moved together. */
std::string storageAsWritten(std::filesystem::path const& storage, std::filesystem::path const& file) {
    std::filesystem::path const folder = std::filesystem::absolute(file).lexically_normal().parent_path();
    std::filesystem::path const whole = std::filesystem::absolute(storage).lexically_normal();
    std::filesystem::path const beside = whole.lexically_relative(folder);
    bool const elsewhere = storage.is_absolute() || beside.empty() || *beside.begin() == "..";
    bool const likeHome = beside.string().starts_with("~/"); // a folder that is really called "~"
    return elsewhere ? whole.string() : (likeHome ? "." / beside : beside).string();
}

void refuseOddName(char const* what, std::string const& name) {
    if (displayable(name) != name) {
        throw CommandError(ExitCode::Usage,
                           fmt::format("the name of the {} must be UTF-8 without control characters", what));
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
    return project;
}

[[noreturn]] void refuseToReplace(std::filesystem::path const& file) {
    throw CommandError(ExitCode::Usage, file.string() + " exists already; give --force to overwrite it");
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

std::string portToUse(std::string const& answer) {
    return answer.empty() ? "give the path of a serial port" : portFault(answer);
}

/** Some flags have a different meaning here than in other commands. */
std::vector<Argument> flagsToWrite(InitOptions& options, Context& context) {
    std::vector<Argument> flags{flag("--name", "NAME", "Name of the station", into(options.name, stationNameFault)),
                                flag("--force", {}, "Overwrite an existing file", into(options.force))};
    appendFlags(flags, settingFlags(context));
    flagNamed(flags, "--file").description = "Project file to write; velk.toml in the current folder by default";
    flagNamed(flags, "--quiet").description = "Say nothing when the file is written";
    flagNamed(flags, "--storage").description = "Folder where symbol files are to be kept";
    flagNamed(flags, "--port").take = into(context.options.port, portToUse);
    Argument& node = flagNamed(flags, "--node");
    node.description = "Node number of the station";
    node.value = Range{0, kMostNode};
    node.rules.byDefault = std::to_string(NewProject().node);
    return flags;
}

ExitCode runInit(InitOptions const& options, Questions const& questions, Context& context) {
    LineOptions const& flags = context.options;
    std::filesystem::path const file = projectFileOf(flags);
    std::error_code ignored;
    if (!options.force && std::filesystem::exists(file, ignored)) {
        refuseToReplace(file);
    }
    if (context.terminal.kinds().inputIsTerminal) {
        askForAll(questions, flags);
    } else if (!flags.port) {
        throw CommandError(ExitCode::Usage, "no terminal for questions: give at least --port");
    }
    NewProject const project = projectFromFlags(options, flags);
    checkCouplers(project.config, flags);
    std::string const text = projectText(project);
    readProjectText(text, file.string()); // make sure that the written file can be read
    if (context.interrupt.requested()) {
        throw CommandError(ExitCode::Interrupted, "interrupted");
    }
    writeFile(file, text, options.force);
    context.terminal.note(file.string() +
                          " is written; `velk check` tries the line, `velk symbols` lists the variables");
    return ExitCode::Good;
}

} // namespace

Command initCommand(Context& context) {
    auto const options = std::make_shared<InitOptions>();
    std::vector<Argument> flags = flagsToWrite(*options, context);
    auto const questions = std::make_shared<Questions>(flags, context);
    for (Argument& each : flags) {
        each.take = [questions, name = each.name, take = each.take](std::string const& value) {
            questions->leaveOut(name);
            return take(value);
        };
    }
    return {.name = "init",
            .description = "Write a commented project file; ask on a terminal for settings not given as flags",
            .flags = std::move(flags),
            .action = [options, questions, &context] { return runInit(*options, *questions, context); }};
}

} // namespace velk
