#include "plc/files/TomlTable.h"

#include "plc/frames/Text.h"
#include "plc/ports/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plc {

namespace {

constexpr std::size_t kMostBytes = 16U * 1024 * 1024;

void checkKind(std::string const& file, mode_t mode) {
    if (S_ISDIR(mode)) {
        throw FileError(file, 0, std::strerror(EISDIR));
    }
    if (!S_ISREG(mode) && !S_ISFIFO(mode)) {
        throw FileError(file, 0, "is neither a file nor a pipe");
    }
}

/// Looks before it opens: to open a device may already do something to it.
int openFile(std::string const& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        throw FileError(file, 0, std::strerror(errno));
    }
    checkKind(file, status.st_mode);
    int const opened = ::open(file.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
    if (opened < 0) {
        throw FileError(file, 0, std::strerror(errno));
    }
    return opened;
}

} // namespace

toml::table parseToml(std::string_view text, std::string_view name) {
    try {
        return toml::parse(text, name);
    } catch (toml::parse_error const& fault) {
        throw FileError(std::string(name), static_cast<int>(fault.source().begin.line),
                        std::string(fault.description()));
    }
}

std::string readWholeFile(std::string const& file) {
    Descriptor const opened(openFile(file), file);
    std::string text;
    std::array<char, 65'536> piece{};
    while (true) {
        ssize_t const count = ::read(opened.get(), piece.data(), piece.size());
        if (count < 0) {
            throw FileError(file, 0, std::strerror(errno));
        }
        if (count == 0) {
            return text;
        }
        text.append(piece.data(), static_cast<std::size_t>(count));
        if (text.size() > kMostBytes) {
            throw FileError(file, 0, "is larger than 16 MiB: too large for a description");
        }
    }
}

std::optional<std::int64_t> TomlTable::number(std::string_view key, std::int64_t low, std::int64_t high) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    if (!found->is_integer() || found->as_integer()->get() < low || found->as_integer()->get() > high) {
        refuseKey(key, textOf("must be a whole number from ", low, " to ", high));
    }
    return found->as_integer()->get();
}

std::optional<double> TomlTable::fraction(std::string_view key) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    double const fraction = found->is_number() ? found->value_or(-1.0) : -1.0;
    if (!(fraction >= 0 && fraction <= 1)) {
        refuseKey(key, "must be a number from 0 to 1");
    }
    return fraction;
}

std::optional<double> TomlTable::real(std::string_view key) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    std::optional<double> const number = found->is_number() ? found->value<double>() : std::nullopt;
    if (!number) {
        refuseKey(key, "must be a number");
    }
    return number;
}

std::optional<bool> TomlTable::truth(std::string_view key) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    if (!found->is_boolean()) {
        refuseKey(key, "must be true or false");
    }
    return found->as_boolean()->get();
}

std::optional<std::string> TomlTable::text(std::string_view key) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    if (!found->is_string()) {
        refuseKey(key, "must be a text");
    }
    return found->as_string()->get();
}

std::string TomlTable::neededText(std::string_view key) {
    auto const found = text(key);
    if (!found) {
        refuse(line(), textOf("\"", key, "\" is missing"));
    }
    return *found;
}

std::optional<Value> TomlTable::value(std::string_view key) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    auto scalarValue = scalar(*found);
    if (!scalarValue) {
        refuseKey(key, "must be a number, true, false or a text");
    }
    return scalarValue;
}

std::optional<Value> TomlTable::scalar(toml::node const& node) {
    if (node.is_boolean()) {
        return Value(node.as_boolean()->get());
    }
    if (node.is_integer()) {
        return Value(node.as_integer()->get());
    }
    if (node.is_floating_point()) {
        return Value(node.as_floating_point()->get());
    }
    if (node.is_string()) {
        return Value(node.as_string()->get());
    }
    return std::nullopt;
}

toml::node const* TomlTable::node(std::string_view key) {
    asked_.emplace(key);
    return table_.get(key);
}

std::optional<TomlTable> TomlTable::table(std::string_view key) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return std::nullopt;
    }
    if (!found->is_table()) {
        refuseKey(key, "must be a table");
    }
    return TomlTable(*found->as_table(), file_);
}

void TomlTable::eachTable(std::string_view key, std::function<void(TomlTable&)> const& each) {
    toml::node const* const found = node(key);
    if (found == nullptr) {
        return;
    }
    if (!found->is_array()) {
        refuseKey(key, "must be a list of tables");
    }
    for (toml::node const& element : *found->as_array()) {
        if (!element.is_table()) {
            refuse(lineOf(element), textOf("\"", key, "\" must hold tables only"));
        }
        TomlTable table(*element.as_table(), file_);
        each(table);
        table.finish();
    }
}

void TomlTable::finish() const {
    for (auto const& [key, found] : table_) {
        if (!asked_.contains(key.str())) {
            refuse(static_cast<int>(key.source().begin.line), textOf("unknown key \"", key.str(), "\""));
        }
    }
}

void TomlTable::refuseKey(std::string_view key, std::string const& text) const {
    toml::node const* const found = table_.get(key);
    refuse(found == nullptr ? line() : lineOf(*found), textOf("\"", key, "\" ", text));
}

} // namespace plc
