#include "tools/velk/commands/check/CheckText.h"

#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Wrapping.h"

#include <fmt/format.h>

namespace velk {
namespace {

struct Word {
    char const* text;
    Colour colour;
};

Word wordFor(StepOutcome outcome) {
    switch (outcome) {
    case StepOutcome::Ok:
        return {"good", Colour::Green};
    case StepOutcome::Failed:
        return {"FAILED", Colour::Red};
    case StepOutcome::Skipped:
        return {"skipped", Colour::Yellow};
    case StepOutcome::NotReached:
        break;
    }
    return {"not reached", Colour::Dim};
}

} // namespace

std::string stepLabel(CheckStep step) {
    constexpr int kWidth = 26;
    return fmt::format("{:{}} ", stepText(step), kWidth);
}

std::string stepLine(StepReport const& step, Terminal const& terminal) {
    constexpr int kWordWidth = 7;
    Word const word = wordFor(step.outcome);
    std::string const& text = step.text();
    std::string const padded = fmt::format("{:{}}", word.text, text.empty() ? 0 : kWordWidth);
    return stepLabel(step.step) + terminal.coloured(word.colour, padded) + (text.empty() ? "" : " " + text) + "\n";
}

std::string failureText(CheckReport const& report, std::size_t columns) {
    StepReport const* const failed = report.failed();
    if (failed == nullptr) {
        return "";
    }
    std::string text = "\n";
    if (failed->step != CheckStep::Port) {
        for (std::string const& line : lastWordsText(failed->words, report.line.settings)) {
            text += line + "\n";
        }
        text += "\n";
    }
    text += "Most likely causes:\n";
    constexpr std::size_t kIndent = 5;
    int number = 0;
    for (std::string const& cause : report.causes) {
        text += fmt::format("  {}. {}\n", ++number, wrapped(cause, kIndent, columns));
    }
    return text;
}

} // namespace velk
