#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace base {
class Signals;
}

namespace velk {

/**
 * Reads lines from standard input: on a terminal with editing, history and completion, else as they are.
 *
 * Only one object may exist at a time.
 */
class LineEditor {
public:
    /**
     * @param editing whether standard input and output are a terminal
     * @param history file that keeps the lines for the next time; empty for none
     * @param words what the first word of a line is completed to
     */
    LineEditor(bool editing, std::filesystem::path history, std::vector<std::string> words, base::Signals& interrupt);
    ~LineEditor();
    LineEditor(LineEditor const&) = delete;
    LineEditor& operator=(LineEditor const&) = delete;

    /** The next line without its end; nothing at the end of the input or when the user asks to stop. */
    std::optional<std::string> next(std::string const& prompt);

private:
    std::optional<std::string> edit(std::string const& prompt);
    std::optional<std::string> readPlain();

    bool editing_;
    std::filesystem::path history_;
    base::Signals& interrupt_;
    std::string unread_; ///< bytes after the last line
    bool inputEnded_ = false;
};

} // namespace velk
