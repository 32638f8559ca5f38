#include "tools/velk/cli/HelpCommand.h"

#include "tools/velk/cli/UsageText.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace velk {
namespace {

/** The parser would show the help of the first command and leave the rest away. */
void refuseMoreThanOne(CLI::App& app, std::vector<std::string> const& words) {
    CLI::App* at = &app;
    for (std::string const& word : words) {
        std::vector<std::string> const commands = commandsOf(*at);
        if (commands.empty()) {
            throw CommandError(ExitCode::Usage, "'" + displayable(word) +
                                                    "' is one word too many\nvelk help --help tells what it takes");
        }
        if (std::find(commands.begin(), commands.end(), word) == commands.end()) {
            return; // which the command line tells
        }
        at = at->get_subcommand(word);
    }
}

} // namespace

void addHelpCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("help", "Show what velk or one of its commands takes");
    auto const words = std::make_shared<std::vector<std::string>>();
    command->add_option("command", *words, "The command")->type_name("COMMAND");
    command->callback([&app, &context, words] {
        context.action = [&app, &context, words] {
            refuseMoreThanOne(app, *words);
            std::vector<std::string> line = *words;
            line.emplace_back("--help");
            return context.runCommandLine(line);
        };
    });
}

} // namespace velk
