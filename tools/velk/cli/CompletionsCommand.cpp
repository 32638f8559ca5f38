#include "tools/velk/cli/CompletionsCommand.h"

#include "tools/velk/cli/Completions.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"

#include <memory>
#include <string>

namespace velk {
namespace {

std::string completionFor(std::string const& shell, CommandInfo const& tree) {
    if (shell == "zsh") {
        return zshCompletion(tree);
    }
    return shell == "fish" ? fishCompletion(tree) : bashCompletion(tree);
}

} // namespace

void addCompletionsCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("completions", "Print a script that lets a shell complete the words of velk");
    auto const shell = std::make_shared<std::string>();
    command->add_option("shell", *shell, "The shell")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>{"bash", "zsh", "fish"}));
    command->callback([&app, &context, shell] {
        context.action = [&app, &context, shell] {
            context.terminal.out(completionFor(*shell, describeCommand(app)));
            return ExitCode::Good;
        };
    });
}

} // namespace velk
