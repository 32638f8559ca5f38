#pragma once

#include "tools/velk/line/Readings.h"

#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace velk {

/** A table for spreadsheets (CSV) that grows from round to round and from run to run. */
class ValueFile {
public:
    /** Throws CommandError when the file cannot be written. */
    explicit ValueFile(std::string name);

    /** Appends a line for each reading and flushes the file. Throws like the constructor. */
    void append(std::span<Reading const> readings);

private:
    struct Closer {
        void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
    };

    void write(std::string const& text);
    [[noreturn]] void refuse() const;

    std::string name_;
    std::unique_ptr<std::FILE, Closer> file_;
};

} // namespace velk
