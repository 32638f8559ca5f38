#pragma once

#include "tools/velk/line/SymbolTable.h"
#include "tools/velk/project/Settings.h"
#include "tools/velk/usage/Command.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace velk {

struct Context;

/** The symbol files of the nodes; each is loaded once, when it is first needed. */
class StoredTables {
public:
    using Load = std::function<base::Result<SymbolTable>(int node)>;

    explicit StoredTables(Load load) : load_(std::move(load)) {}

    /** Null when there is none. */
    SymbolTable const* of(int node);

private:
    Load load_;
    std::map<int, std::unique_ptr<SymbolTable>> tables_;
};

/** The tag address of a tag of the project file, as far as it is known without the PLC. */
std::string addressText(NamedTag const& tag, Settings const& settings, StoredTables& tables);

/** Checks a project file, or shows the driver configuration made from it. */
Command configCommand(Context& context);

} // namespace velk
