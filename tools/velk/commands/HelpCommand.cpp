#include "tools/velk/commands/HelpCommand.h"

#include "tools/velk/Context.h"

#include <memory>
#include <string>
#include <vector>

namespace velk {

void addHelpCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("help", "Show what velk or one of its commands takes");
    auto const words = std::make_shared<std::vector<std::string>>();
    command->add_option("command", *words, "The command")->type_name("COMMAND");
    command->callback([&context, words] {
        context.action = [&context, words] {
            std::vector<std::string> line = *words;
            line.emplace_back("--help");
            return context.runCommandLine(line);
        };
    });
}

} // namespace velk
