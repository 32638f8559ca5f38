#include "tools/velk/commands/ConfigCommand.h"

#include "host/instance/ConfigText.h"
#include "host/instance/DriverInstance.h"
#include "host/instance/ModuleFile.h"
#include "host/instance/ModuleLoader.h"
#include "host/serial/SerialFactory.h"
#include "host/services/HostFactory.h"
#include "host/services/PermanentStorage.h"
#include "host/services/Scheduler.h"
#include "host/values/TagAddress.h"
#include "tools/common/TextTable.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Access.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <memory>
#include <utility>

namespace velk {
namespace {

constexpr char const* kFromSymbolFile = "";

/** The symbol files that earlier commands left in the storage. */
StoredTables storedTables(Settings const& settings) {
    return StoredTables([&settings](int node) {
        return settings.storage.empty()
                   ? base::Result<SymbolTable>(base::Failure{base::FailureKind::Storage, "there is no storage"})
                   : SymbolTable::load(storedSymbolFile(settings, node));
    });
}

base::Result<Access> accessOf(NamedTag const& tag, Settings const& settings, int node, StoredTables& tables) {
    SymbolTable const* const table = tables.of(node);
    Variable const* const variable = table != nullptr ? table->find(tag.variable) : nullptr;
    if (!tag.type.empty()) {
        return chosenAccess(tag.type, tag.area.value_or(""), variable);
    }
    if (tag.area == "PROJ_ID") {
        return chosenAccess("unsignedInt", "PROJ_ID", nullptr);
    }
    if (variable == nullptr) {
        return Access{kFromSymbolFile, tag.area.value_or("M"), ICU_NONE, false, 0};
    }
    return inferAccess(*variable, byteOrderWord(settings.nodeSettings(node).model) == "big");
}

base::Result<std::string> addressOf(NamedTag const& tag, Settings const& settings, StoredTables& tables) {
    int const node = tag.node.value_or(settings.node);
    base::Result<Access> const access = accessOf(tag, settings, node, tables);
    if (!access.ok()) {
        return access.failure();
    }
    return host::tagAddress(
        {node, tag.variable, access.value().addressSpace, tag.offset.value_or("0"), access.value().dataType});
}

/** The driver's own check of the configuration and the tags; no line is used. */
class DriverOpinion {
public:
    static base::Result<std::vector<std::string>> ask(std::filesystem::path const& module, Settings const& settings) {
        base::Result<host::LoadedModule> const loaded = host::LoadedModule::load(module);
        if (!loaded.ok()) {
            return loaded.failure();
        }
        host::SteadyClock clock;
        host::Scheduler scheduler;
        host::SerialFactory serial(clock);
        host::HostFactory services(scheduler, serial, nullptr);
        base::Result<host::DriverInstance> driver = host::DriverInstance::create(loaded.value().factory(), services);
        if (!driver.ok()) {
            return driver.failure();
        }
        return complaints(driver.value(), settings);
    }

private:
    static std::vector<std::string> complaints(host::DriverInstance& driver, Settings const& settings) {
        std::vector<std::string> lines;
        base::Result<std::string> const text = host::configText(settings.config);
        base::Outcome const configured = text.ok() ? driver.configure(text.value()) : base::Outcome(text.failure());
        if (!configured.ok()) {
            return {"the driver rejects the configuration: " + configured.failure().text};
        }
        StoredTables tables = storedTables(settings);
        for (NamedTag const& tag : settings.tags) {
            base::Result<std::string> const address = addressOf(tag, settings, tables);
            bool const open = address.ok() && address.value().ends_with('?'); // the symbol file has the type
            base::Outcome const made = !address.ok() ? base::Outcome(address.failure())
                                       : open        ? base::Outcome()
                                                     : create(driver, address.value());
            if (!made.ok()) {
                lines.push_back("tag " + displayable(tag.name) + ": " + displayable(made.failure().text));
            }
        }
        return lines;
    }

    static base::Outcome create(host::DriverInstance& driver, std::string const& address) {
        base::Result<ITag*> const tag = driver.createTag(address);
        return tag.ok() ? base::Outcome() : base::Outcome(tag.failure());
    }
};

Settings settingsFor(std::string const& file, Context const& context) {
    LineOptions options = context.options;
    options.file = file;
    return loadSettings(options);
}

ExitCode runConfigCheck(std::string const& file, Context& context) {
    Settings const settings = settingsFor(file, context);
    base::Result<std::filesystem::path> const module = host::findModule();
    base::Result<std::vector<std::string>> const opinion =
        module.ok() ? DriverOpinion::ask(module.value(), settings) : module.failure();
    if (!opinion.ok()) {
        context.terminal.note("the driver was not asked: " + opinion.failure().text);
    } else if (!opinion.value().empty()) {
        for (std::string const& line : opinion.value()) {
            context.terminal.error(fmt::format("{}: {}", file, line));
        }
        return ExitCode::Usage;
    }
    context.terminal.out(fmt::format("{}: good; {}, {}\n", file,
                                     counted(settings.stations.size(), "station", "stations"),
                                     counted(settings.tags.size(), "tag", "tags")));
    return ExitCode::Good;
}

ExitCode runConfigShow(std::string const& file, Context& context) {
    Settings const settings = settingsFor(file, context);
    base::Result<std::string> const text = host::configText(settings.config);
    if (!text.ok()) {
        throw CommandError(ExitCode::Usage, file + ": " + text.failure().text);
    }
    std::string shown = "configuration:\n  " + text.value() + "\n";
    if (!settings.tags.empty()) {
        tools::TextTable table({"tag", "address"});
        StoredTables tables = storedTables(settings);
        for (NamedTag const& tag : settings.tags) {
            table.add({displayable(tag.name), displayable(addressText(tag, settings, tables))});
        }
        shown += "\n" + table.text();
    }
    context.terminal.out(shown);
    return ExitCode::Good;
}

Command fileCommand(char const* name, char const* description, ExitCode (*run)(std::string const&, Context&),
                    Context& context) {
    auto const file = std::make_shared<std::string>("velk.toml");
    return {.name = name,
            .description = description,
            .words = {word("FILE", Offer::Files, "Project file; without it velk.toml in the current folder",
                           into(*file), {.oneOf = "file"})},
            .flags = {flag("-f,--file", {"FILE", Offer::Files}, "The same, as other commands take it", into(*file),
                           {.oneOf = "file"})},
            .action = [file, run, &context] { return run(*file, context); }};
}

} // namespace

SymbolTable const* StoredTables::of(int node) {
    auto const known = tables_.find(node);
    if (known != tables_.end()) {
        return known->second.get();
    }
    base::Result<SymbolTable> table = load_(node);
    auto loaded = table.ok() ? std::make_unique<SymbolTable>(std::move(table.value())) : nullptr;
    return tables_.emplace(node, std::move(loaded)).first->second.get();
}

std::string addressText(NamedTag const& tag, Settings const& settings, StoredTables& tables) {
    base::Result<std::string> const address = addressOf(tag, settings, tables);
    if (!address.ok()) {
        return "- (" + address.failure().text + ")";
    }
    bool const open = address.value().ends_with('?');
    return address.value() + (open ? "  (the type comes from the PLC's symbol file)" : "");
}

Command configCommand(Context& context) {
    return {
        .name = "config",
        .description = "Check a project file, or show the driver configuration made from it",
        .commands = {
            fileCommand("check", "Say what is wrong in a project file, with line and column", runConfigCheck, context),
            fileCommand("show", "Show the driver's configuration string and tag addresses", runConfigShow, context)}};
}

} // namespace velk
