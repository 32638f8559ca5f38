#pragma once

#include "base/Result.h"
#include "host/instance/Panel.h"

#include <span>
#include <string>
#include <vector>

class ITag;

namespace demo {

/** A variable that the demonstration reads. */
struct Variable {
    std::string name;     ///< in the PLC
    std::string space;    ///< address space: "M", "MB", "I", ...
    std::string dataType; ///< the driver's, conversions included
    ITag* tag = nullptr;
};

/** The variables of the demonstration: every data type, arrays, texts, bits, and one that the PLC does not have. */
std::vector<Variable> demonstrationVariables();

/** Creates the tags of @p variables on @p node. */
base::Outcome createTags(host::Panel& panel, int node, std::span<Variable> variables);

/** Reads all of them, in as few datagrams as the driver allows, and returns a table. */
struct Reading {
    std::string table;
    int good = 0;
    int missing = 0; ///< not in the PLC's program
    int failed = 0;
    std::string failure; ///< of the first one that failed
};
Reading readAll(host::Panel& panel, std::span<Variable const> variables);

/** The value of one variable as text. */
base::Result<std::string> readOne(host::Panel& panel, Variable const& variable);

/** Writes a value given as text. */
base::Outcome writeOne(host::Panel& panel, Variable const& variable, std::string const& value);

/** Finds a variable by its name; it must exist. */
Variable const& find(std::span<Variable const> variables, std::string const& name);

} // namespace demo
