#pragma once

#include "tools/velk/context/ExitCode.h"
#include "tools/velk/line/SymbolTable.h"
#include "tools/velk/project/Settings.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace velk {

struct Context;

/** Says what is wrong in a project file, or that nothing is; asks the driver too when the module is there. */
ExitCode runConfigCheck(std::string const& file, Context& context);

/** Shows the driver's configuration string and the tag addresses that a project file stands for. */
ExitCode runConfigShow(std::string const& file, Context& context);

/** The symbol files of the nodes; each is loaded once, when it is first asked for. */
class StoredTables {
public:
    using Load = std::function<base::Result<SymbolTable>(int node)>;

    explicit StoredTables(Load load) : load_(std::move(load)) {}

    /** Null where there is none. */
    SymbolTable const* of(int node);

private:
    Load load_;
    std::map<int, std::unique_ptr<SymbolTable>> tables_;
};

/** The tag address of a tag of the project file, as far as it is known without the PLC. */
std::string addressText(NamedTag const& tag, Settings const& settings, StoredTables& tables);

void addConfigCommand(CLI::App& app, Context& context);

} // namespace velk
