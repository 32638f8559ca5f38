#pragma once

#include <CLI/CLI.hpp>

#include <span>
#include <string>

namespace velk {

/**
 * What is wrong with a flag that stands where a command is expected: it belongs behind one, or there is none such.
 * Empty when the flag may stand there.
 *
 * @param at takes commands; the words begin with those behind it, the first of which is the flag
 * @param path how @p at is called: "velk config"
 */
std::string misplacedFlag(CLI::App const& at, std::string const& path, std::span<std::string const> words);

} // namespace velk
