#include "tools/velk/Manual.h"

#include "host/ConfigText.h"
#include "tools/velk/Choices.h"

#include <algorithm>
#include <array>
#include <map>

namespace velk {
namespace {

/** Groups whose flags every command with a line has; they are explained once. */
constexpr std::array<std::string_view, 4> kCommonGroups{"Line", "Station", "Couplers", "Trace"};
constexpr std::array<std::string_view, 3> kCommonFlags{"--file", "--quiet", "--help"};

bool isCommon(FlagInfo const& flag) {
    auto const isOneOfThem = [&](std::string_view name) {
        return std::find(flag.names.begin(), flag.names.end(), name) != flag.names.end();
    };
    return std::find(kCommonGroups.begin(), kCommonGroups.end(), flag.group) != kCommonGroups.end() ||
           std::any_of(kCommonFlags.begin(), kCommonFlags.end(), isOneOfThem);
}

bool hasLine(CommandInfo const& command) {
    return std::any_of(command.flags.begin(), command.flags.end(),
                       [](FlagInfo const& flag) { return flag.group == kCommonGroups.front(); });
}

std::string flagEntry(FlagInfo const& flag) {
    std::string names;
    for (std::string const& name : flag.names) {
        names += (names.empty() ? "" : ", ") + ("\\fB" + manText(name) + "\\fR");
    }
    std::string const value = flag.value.placeholder.empty() ? "" : " \\fI" + manText(flag.value.placeholder) + "\\fR";
    return ".TP\n" + names + value + "\n" + manText(flag.description) + ".\n";
}

std::string wordEntry(WordInfo const& word) {
    return ".TP\n\\fI" + manText(word.name) + "\\fR\n" + manText(word.description) + ".\n";
}

std::string commandEntry(CommandInfo const& command, std::string const& path) {
    std::string text = ".SS \"" + manText(usageLine(command, path)) + "\"\n" + manText(command.description) + ".\n";
    for (WordInfo const& word : command.words) {
        text += wordEntry(word);
    }
    for (FlagInfo const& flag : command.flags) {
        text += isCommon(flag) ? std::string() : flagEntry(flag);
    }
    if (hasLine(command)) {
        text += ".PP\nTakes the options of every command with a line.\n";
    }
    for (CommandInfo const& each : command.commands) {
        text += commandEntry(each, path + " " + each.name);
    }
    return text;
}

void collectCommon(CommandInfo const& command, std::vector<FlagInfo>& flags) {
    for (FlagInfo const& flag : command.flags) {
        auto const same = [&](FlagInfo const& other) { return other.names == flag.names; };
        if (isCommon(flag) && std::none_of(flags.begin(), flags.end(), same)) {
            flags.push_back(flag);
        }
    }
    for (CommandInfo const& each : command.commands) {
        collectCommon(each, flags);
    }
}

void replaceAll(std::string& text, std::string const& mark, std::string const& content) {
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + content.size())) {
        text.replace(at, mark.size(), content);
    }
}

/** What counts where nothing else is said, by the marks for it. */
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

std::string manCommands(CommandInfo const& tree) {
    std::string text;
    for (CommandInfo const& command : tree.commands) {
        text += commandEntry(command, tree.name + " " + command.name);
    }
    return text;
}

std::string manCommonOptions(CommandInfo const& tree) {
    std::vector<FlagInfo> flags;
    for (CommandInfo const& command : tree.commands) {
        if (hasLine(command)) {
            collectCommon(command, flags);
        }
    }
    std::string text;
    for (FlagInfo const& flag : flags) {
        text += flagEntry(flag);
    }
    return text;
}

std::string fillManual(std::string text, CommandInfo const& tree, std::string const& version) {
    replaceAll(text, "@VERSION@", version);
    for (auto const& [mark, value] : usualSettings()) {
        replaceAll(text, mark, manText(value));
    }
    replaceAll(text, "@COMMON_OPTIONS@\n", manCommonOptions(tree));
    replaceAll(text, "@COMMANDS@\n", manCommands(tree));
    return text;
}

} // namespace velk
