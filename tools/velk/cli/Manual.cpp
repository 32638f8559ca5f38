#include "tools/velk/cli/Manual.h"

#include "host/instance/ConfigText.h"
#include "tools/velk/context/Choices.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>

namespace velk {
namespace {

/** Groups whose flags every command with a line has; they are explained once. */
constexpr std::array<std::string_view, 4> kCommonGroups{"Line", "Station", "Couplers", "Trace"};
constexpr std::array<std::string_view, 3> kCommonFlags{"--file", "--quiet", "--help"};

bool isHelp(FlagInfo const& flag) {
    return std::find(flag.names.begin(), flag.names.end(), "--help") != flag.names.end();
}

/** Whether a flag may be one of those that are explained once. */
bool mayBeCommon(FlagInfo const& flag) {
    auto const isOneOfThem = [&](std::string_view name) {
        return std::find(flag.names.begin(), flag.names.end(), name) != flag.names.end();
    };
    return std::find(kCommonGroups.begin(), kCommonGroups.end(), flag.group) != kCommonGroups.end() ||
           std::any_of(kCommonFlags.begin(), kCommonFlags.end(), isOneOfThem);
}

bool sameMeaning(FlagInfo const& one, FlagInfo const& other) {
    return one.names == other.names && one.description == other.description;
}

bool isAmong(std::vector<FlagInfo> const& flags, FlagInfo const& flag) {
    return std::any_of(flags.begin(), flags.end(), [&](FlagInfo const& each) { return sameMeaning(each, flag); });
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

/** @p common are the flags that are explained elsewhere. */
std::string commandEntry(CommandInfo const& command, std::string const& path, std::vector<FlagInfo> const& common) {
    std::string text = ".SS \"" + manText(usageLine(command, path)) + "\"\n" + manText(command.description) + ".\n";
    for (WordInfo const& word : command.words) {
        text += wordEntry(word);
    }
    for (FlagInfo const& flag : command.flags) {
        text += isHelp(flag) || isAmong(common, flag) ? std::string() : flagEntry(flag);
    }
    if (hasLine(command)) {
        text += ".PP\nTakes the options of every command with a line.\n";
    }
    for (CommandInfo const& each : command.commands) {
        text += commandEntry(each, path + " " + each.name, common);
    }
    return text;
}

void collect(CommandInfo const& command, std::vector<FlagInfo>& flags) {
    std::copy_if(command.flags.begin(), command.flags.end(), std::back_inserter(flags), mayBeCommon);
    for (CommandInfo const& each : command.commands) {
        collect(each, flags);
    }
}

/** The flags of the commands with a line, each with what it means to most of them. */
std::vector<FlagInfo> commonFlags(CommandInfo const& tree) {
    std::vector<FlagInfo> all;
    for (CommandInfo const& command : tree.commands) {
        if (hasLine(command)) {
            collect(command, all);
        }
    }
    auto const times = [&](FlagInfo const& flag) {
        return std::count_if(all.begin(), all.end(), [&](FlagInfo const& each) { return sameMeaning(each, flag); });
    };
    std::vector<FlagInfo> common;
    for (FlagInfo const& flag : all) {
        auto const known =
            std::find_if(common.begin(), common.end(), [&](FlagInfo const& each) { return each.names == flag.names; });
        if (known == common.end()) {
            common.push_back(flag);
        } else if (times(flag) > times(*known)) {
            *known = flag;
        }
    }
    return common;
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
    std::vector<FlagInfo> const common = commonFlags(tree);
    std::string text;
    for (CommandInfo const& command : tree.commands) {
        text += commandEntry(command, tree.name + " " + command.name, common);
    }
    return text;
}

std::string manCommonOptions(CommandInfo const& tree) {
    std::string text;
    for (FlagInfo const& flag : commonFlags(tree)) {
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
