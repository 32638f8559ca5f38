#pragma once

#include "plc/files/ProgramFile.h"

#include <toml++/toml.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace plc {

/// The whole of a description file. FileErrors for a text that is no TOML.
[[nodiscard]] toml::table parseToml(std::string_view text, std::string_view name);
/// The content of a file or of what comes through a pipe, up to 16 MiB. FileError when there is more, when it cannot be
/// read, or for what is neither: a device may have no end.
[[nodiscard]] std::string readWholeFile(std::string const& file);

/// One table of a description file, read key by key. Every complaint is a FileError with its line.
class TomlTable {
public:
    TomlTable(toml::table const& table, std::string_view file) : table_(table), file_(file) {}

    [[nodiscard]] bool has(std::string_view key) const { return table_.contains(key); }
    [[nodiscard]] std::optional<std::int64_t> number(std::string_view key, std::int64_t low, std::int64_t high);
    [[nodiscard]] std::optional<double> fraction(std::string_view key);
    [[nodiscard]] std::optional<double> real(std::string_view key);
    [[nodiscard]] std::optional<bool> truth(std::string_view key);
    [[nodiscard]] std::optional<std::string> text(std::string_view key);
    [[nodiscard]] std::string neededText(std::string_view key);
    /// A boolean, a whole number, a real number or a text.
    [[nodiscard]] std::optional<Value> value(std::string_view key);
    /// The same of a node; nothing when it is none of them.
    [[nodiscard]] static std::optional<Value> scalar(toml::node const& node);
    [[nodiscard]] toml::node const* node(std::string_view key);
    [[nodiscard]] std::optional<TomlTable> table(std::string_view key);
    /// Calls `each` for every table of an array of tables.
    void eachTable(std::string_view key, std::function<void(TomlTable&)> const& each);

    /// Complains about the first key that nobody asked for.
    void finish() const;

    [[nodiscard]] int line() const { return lineOf(table_); }
    [[nodiscard]] static int lineOf(toml::node const& node) { return static_cast<int>(node.source().begin.line); }
    [[noreturn]] void refuse(int line, std::string const& text) const { throw FileError(file_, line, text); }
    [[noreturn]] void refuseKey(std::string_view key, std::string const& text) const;
    [[nodiscard]] std::string const& file() const { return file_; }

private:
    toml::table const& table_;
    std::string file_;
    std::set<std::string, std::less<>> asked_;
};

} // namespace plc
