#include "tools/velk/commands/HelpCommand.h"

#include "tools/velk/CommandError.h"
#include "tools/velk/Context.h"

#include <memory>
#include <string>
#include <vector>

namespace velk {

void addHelpCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("help", "Show what velk or one of its commands takes");
    auto const words = std::make_shared<std::vector<std::string>>();
    command->add_option("command", *words, "The command")->type_name("COMMAND");
    command->callback([&app, &context, words] {
        context.action = [&app, &context, words] {
            CLI::App const* described = &app;
            for (std::string const& word : *words) {
                auto const named =
                    described->get_subcommands([&](CLI::App const* each) { return each->check_name(word); });
                if (named.empty()) {
                    throw CommandError(ExitCode::Usage, "there is no command '" + word + "'; velk help lists them");
                }
                described = named.front();
            }
            std::vector<std::string> line = *words;
            line.emplace_back("--help");
            return context.runCommandLine(line);
        };
    });
}

} // namespace velk
