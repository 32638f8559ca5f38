#include "tools/velk/commands/symbols/SymbolsCommand.h"

#include "tools/velk/commands/flags/LineFlags.h"
#include "tools/velk/commands/symbols/SymbolsText.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Session.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <memory>
#include <set>

namespace velk {
namespace {

struct SymbolsOptions {
    std::vector<std::string> patterns;
    SymbolsFormat format = SymbolsFormat::Table;
    bool stored = false; ///< without using the line
    bool fetch = false;  ///< even if a file is stored
};

/** The variables that the patterns find, each once, in the order of the file; all of them without a pattern. */
std::vector<Variable const*> chosen(SymbolTable const& table, std::vector<std::string> const& patterns) {
    std::set<Variable const*> wanted;
    for (std::string const& pattern : patterns) {
        for (Variable const* const variable : table.matching(pattern)) {
            wanted.insert(variable);
        }
    }
    std::vector<Variable const*> variables;
    for (Variable const& variable : table.variables()) {
        if (patterns.empty() || wanted.contains(&variable)) {
            variables.push_back(&variable);
        }
    }
    return variables;
}

/** Reports each pattern that finds nothing; false when there is one. */
bool tellWhatFindsNothing(SymbolTable const& table, std::vector<std::string> const& patterns, Terminal& terminal) {
    bool allFound = true;
    for (std::string const& pattern : patterns) {
        if (table.matching(pattern).empty()) {
            base::Failure const failure =
                isPattern(pattern) ? nothingMatches(table, pattern) : missingVariable(table, pattern);
            terminal.complain(displayable(pattern + ": " + failure.text));
            allFound = false;
        }
    }
    return allFound;
}

SymbolTable const& provide(SymbolsOptions const& options, Session& session) {
    int const node = session.settings().node;
    if (options.stored) {
        return *session.require(session.storedSymbols(node));
    }
    session.require(session.open());
    return *session.require(options.fetch ? session.fetchSymbols(node) : session.symbols(node));
}

ExitCode runSymbols(SymbolsOptions const& options, Context& context) {
    Settings const settings = readSettings(context);
    echoSettings(settings, context);
    Session session(settings, context);
    SymbolTable const& table = provide(options, session);
    std::vector<Variable const*> const variables = chosen(table, options.patterns);
    context.terminal.out(symbolsText(variables, table.projectId(), options.format));
    context.terminal.note(fmt::format("{} of {} variables of the project {:#010x}{}", variables.size(),
                                      table.variables().size(), table.projectId(),
                                      options.stored ? ", as stored: the PLC was not asked" : ""));
    bool const allFound = tellWhatFindsNothing(table, options.patterns, context.terminal);
    return allFound ? ExitCode::Good : ExitCode::ItemNotGood;
}

} // namespace

Command symbolsCommand(Context& context) {
    auto const options = std::make_shared<SymbolsOptions>();
    auto const form = [&](char const* name, SymbolsFormat format, char const* description) {
        Argument one = flag(name, {}, description, choose(options->format, format), {.oneOf = "format"});
        one.group = "Output";
        return one;
    };
    return {.name = "symbols",
            .description = "List the variables of the PLC's program",
            .words = {word("PATTERN", Offer::Variables, "Only the variables of these names; * and ? are patterns",
                           into(options->patterns), {.repeats = true})},
            .flags = withLineFlags({flag("--stored", {}, "Show what an earlier run has stored, without using the line",
                                         into(options->stored), {.oneOf = "source"}),
                                    flag("--fetch", {}, "Fetch the symbol file even when the stored one is right",
                                         into(options->fetch), {.oneOf = "source"}),
                                    form("--tree", SymbolsFormat::Tree, "As a tree of the parts of names"),
                                    form("--json", SymbolsFormat::Json, "As a JSON document"),
                                    form("--csv", SymbolsFormat::Csv, "As comma-separated values")},
                                   context),
            .action = [options, &context] { return runSymbols(*options, context); }};
}

} // namespace velk
