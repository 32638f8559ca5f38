#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace base {

/** A place in a text file, both counted from 1; 0 means unknown. */
struct TextPlace {
    int line = 0;
    int column = 0;
};

/** A text file that cannot be used; what() has a line for each thing that is wrong in it. */
class FileError : public std::runtime_error {
public:
    explicit FileError(std::vector<std::string> complaints);

    /** "velk.toml:12:7: ...", without the unknown numbers. */
    [[nodiscard]] std::vector<std::string> const& complaints() const { return complaints_; }

private:
    std::vector<std::string> complaints_;
};

/** What is wrong in a text file, each with its place. */
class Complaints {
public:
    /** @p columnsBefore is the number of columns before the user's own text in the first line. */
    explicit Complaints(std::string file, int columnsBefore = 0)
        : file_(std::move(file)), columnsBefore_(columnsBefore) {}

    void add(TextPlace place, std::string text);

    [[nodiscard]] bool empty() const { return complaints_.empty(); }

    /** All complaints, in the order of the file. */
    [[nodiscard]] FileError error() const;

private:
    struct Complaint {
        TextPlace place;
        std::string text;
    };

    std::string file_;
    int columnsBefore_;
    std::vector<Complaint> complaints_;
};

} // namespace base
