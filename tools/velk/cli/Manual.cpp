#include "tools/velk/cli/Manual.h"

#include "host/instance/ConfigText.h"
#include "tools/velk/context/Choices.h"

#include <algorithm>
#include <map>

namespace velk {
namespace {

std::string flagEntry(Argument const& flag) {
    std::string names;
    for (std::string const& name : flag.names()) {
        names += (names.empty() ? "" : ", ") + ("\\fB" + manText(name) + "\\fR");
    }
    std::string const value = flag.value.text().empty() ? "" : " \\fI" + manText(flag.value.text()) + "\\fR";
    return ".TP\n" + names + value + "\n" + manText(flag.text()) + ".\n";
}

bool isAmong(std::vector<Argument> const& flags, Argument const& flag) {
    return std::any_of(flags.begin(), flags.end(), [&](Argument const& each) {
        return each.names() == flag.names() && each.text() == flag.text();
    });
}

std::string commandEntry(Command const& command, std::string const& path, std::vector<Argument> const& common) {
    std::string text = ".SS \"" + manText(usageLine(command, path)) + "\"\n" + manText(command.description) + ".\n";
    for (Argument const& word : command.words) {
        text += ".TP\n\\fI" + manText(word.name) + "\\fR\n" + manText(word.text()) + ".\n";
    }
    bool hasLine = false;
    for (Argument const& flag : command.flags) {
        text += isAmong(common, flag) ? "" : flagEntry(flag);
        hasLine = hasLine || flag.group == "Line";
    }
    text += hasLine ? ".PP\nTakes the options of every command that uses a line.\n" : "";
    for (Command const& each : command.commands) {
        text += commandEntry(each, path + " " + each.name, common);
    }
    return text;
}

void replaceAll(std::string& text, std::string const& mark, std::string const& content) {
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + content.size())) {
        text.replace(at, mark.size(), content);
    }
}

/** The defaults, by their marks in the template. */
std::map<std::string, std::string> usualSettings() {
    host::DriverConfig const line;
    host::NodeSettings const& node = line.nodes;
    return {{"@BAUD@", std::to_string(line.baudrate)},
            {"@PARITY@", line.parity},
            {"@STOPBITS@", std::to_string(line.stopbits)},
            {"@MODE@", line.mode},
            {"@FRAMING@", framingWord(line.protType)},
            {"@BYTE_ORDER@", byteOrderWord(node.model)},
            {"@BLOCK_SIZE@", std::to_string(node.blockSize)},
            {"@TIMEOUT_MS@", std::to_string(node.timeoutMs)},
            {"@REPEAT@", std::to_string(node.repeat)},
            {"@ROUTING_LEVELS@", std::to_string(node.routingLevels)},
            {"@COUPLER@", node.coupler1},
            {"@CHANNEL@", std::to_string(node.channel1)},
            {"@ADDRESS@", node.address1}};
}

} // namespace

std::string manText(std::string_view text) {
    std::string escaped;
    for (char const each : text) {
        bool const atStart = escaped.empty() || escaped.back() == '\n';
        if (each == '\\') {
            escaped += "\\e";
        } else if (each == '-') {
            escaped += "\\-";
        } else if (atStart && (each == '.' || each == '\'')) {
            escaped += std::string("\\&") + each;
        } else if (each == '"') {
            escaped += "\\(dq";
        } else {
            escaped += each;
        }
    }
    return escaped;
}

std::string manOptions(std::vector<Argument> const& flags) {
    std::string text;
    for (Argument const& flag : flags) {
        text += flagEntry(flag);
    }
    return text;
}

std::string manCommands(Command const& root, std::vector<Argument> const& common) {
    std::string text;
    for (Command const& command : root.commands) {
        text += commandEntry(command, root.name + " " + command.name, common);
    }
    return text;
}

std::string fillManual(std::string text, Command const& root, std::vector<Argument> const& common,
                       std::string const& version) {
    replaceAll(text, "@VERSION@", version);
    for (auto const& [mark, value] : usualSettings()) {
        replaceAll(text, mark, manText(value));
    }
    replaceAll(text, "@COMMON_OPTIONS@\n", manOptions(common));
    replaceAll(text, "@COMMANDS@\n", manCommands(root, common));
    return text;
}

} // namespace velk
