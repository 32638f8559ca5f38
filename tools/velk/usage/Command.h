#pragma once

#include "tools/velk/context/ExitCode.h"

#include <charconv>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace velk {

/** What a shell offers for a value without fixed choices. */
enum class Offer {
    Nothing,
    Files,
    Folders,
    Ports,
    Stations,
    Variables,
    Commands,    ///< of velk
    CommandLine, ///< of velk, after "--"
};

/** Numbers from the least to the most. */
struct Range {
    int least;
    int most;
};

/** What a value is; nothing for a flag without one. */
struct Value {
    Value() = default;
    Value(char const* name, Offer offered = Offer::Nothing) : placeholder(name), offer(offered) {}
    Value(Offer offered) : offer(offered) {}
    Value(std::vector<std::string> words) : choices(std::move(words)) {}
    Value(Range numbers) : range(numbers) {}

    std::string placeholder{};          ///< "FILE"
    std::vector<std::string> choices{}; ///< when only these are taken, whatever the case of their letters
    std::optional<Range> range{};       ///< when only these are taken
    Offer offer = Offer::Nothing;

    /** How the help shows it: "FILE", "none|even|odd", "1..2"; empty for none. */
    [[nodiscard]] std::string text() const;
};

/** When an argument is allowed, and its default. */
struct Rules {
    std::string byDefault{}; ///< in words
    std::string oneOf{};     ///< of the arguments with the same word here only one may be given
    std::string needs{};     ///< the flag without which this one has no meaning
    bool required = false;
    bool repeats = false;
};

/** What is wrong with a value; empty when nothing is. */
using Check = std::function<std::string(std::string const&)>;

/** Stores a value, or returns what is wrong with it. */
using Take = Check;

/** A flag of a command, or a word that is not a flag: what help, manual, completions and the parser know of it. */
struct Argument {
    std::string name;      ///< "--file" of a flag, "NAME" of a word
    std::string shortName; ///< "-f", or empty
    Value value;
    std::string description; ///< without a full stop
    Take take;               ///< of each value; "true" for a flag without one
    Rules rules{};
    std::string group = "Options"; ///< the heading in the help

    /** The description with the default: "Line speed in bit/s; 19200 by default". */
    [[nodiscard]] std::string text() const;

    /** "-f" and "--file". */
    [[nodiscard]] std::vector<std::string> names() const;

    /** Stores a valid value; returns what is wrong with any other. */
    [[nodiscard]] std::string accept(std::string const& given) const;
};

/** @p names are "-f,--file", or "--file" without a short one */
Argument flag(std::string const& names, Value value, std::string description, Take take, Rules rules = {});

Argument word(std::string name, Value value, std::string description, Take take, Rules rules = {});

/** A command of velk, or velk itself: either with commands below it or with an action. */
struct Command {
    std::string name;
    std::string description; ///< without a full stop
    std::vector<Argument> words{};
    std::vector<Argument> flags{};
    std::function<ExitCode()> action{}; ///< what is left to do when all arguments are taken
    std::vector<Command> commands{};

    /** Null when there is none of that name. */
    [[nodiscard]] Command const* findCommand(std::string const& called) const;
    [[nodiscard]] Argument const* findFlag(std::string const& called) const;

    [[nodiscard]] std::vector<std::string> commandNames() const;
};

/** "velk read [OPTION]... [NAME]..." */
std::string usageLine(Command const& command, std::string const& path);

/** The flag called @p name; it must exist. */
Argument& flagNamed(std::vector<Argument>& flags, std::string const& name);

/** Appends flags to others, under a separate heading in the help when one is given. */
void appendFlags(std::vector<Argument>& flags, std::vector<Argument> more, std::string const& group = "");

/** The number that a text consists of, or nothing. */
template <typename Number>
std::optional<Number> wholeNumber(std::string const& text) {
    Number number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/** Stores a value that passes the check in a text, a number, a list or a switch, which must outlive the parsing. */
template <typename Target>
Take into(Target& target, Check check = {}) {
    return [&target, check = std::move(check)](std::string const& text) -> std::string {
        if (std::string fault = check ? check(text) : std::string(); !fault.empty()) {
            return fault;
        }
        if constexpr (std::is_same_v<Target, bool>) {
            target = true;
        } else if constexpr (std::is_same_v<Target, std::vector<std::string>>) {
            target.push_back(text);
        } else if constexpr (std::is_assignable_v<Target&, std::string const&>) {
            target = text;
        } else if (auto const number = wholeNumber<typename Target::value_type>(text)) {
            target = number;
        } else {
            return "'" + text + "' is not a whole number";
        }
        return "";
    };
}

/** Stores the result of @p parse in a target or at the end of a list; @p fault ends the message when it fails.
 */
template <typename Target, typename Parse>
Take parsed(Target& target, Parse parse, std::string fault) {
    return [&target, parse, fault = std::move(fault)](std::string const& text) -> std::string {
        auto value = parse(text);
        if (!value) {
            return "'" + text + "' " + fault;
        }
        if constexpr (requires { target.push_back(*value); }) {
            target.push_back(*value);
        } else {
            target = *value;
        }
        return "";
    };
}

/** Sets a target to @p chosen when the flag is given. */
template <typename Target>
Take choose(Target& target, Target chosen) {
    return [&target, chosen](std::string const&) {
        target = chosen;
        return std::string();
    };
}

} // namespace velk
