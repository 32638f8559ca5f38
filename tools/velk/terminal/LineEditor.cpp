#include "tools/velk/terminal/LineEditor.h"

#include "base/Signals.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <utility>

// These need <cstdio> before them.
#include <readline/history.h>
#include <readline/readline.h>

namespace velk {
namespace {

constexpr int kHistoryLines = 500;

/** State for the library's callbacks, which get no pointer to an object. */
struct Edited {
    std::vector<std::string> words;
    std::string line;
    bool hasLine = false;
    bool ended = false;
};

Edited& edited() {
    static Edited state;
    return state;
}

void takeLine(char* line) {
    edited().ended = line == nullptr;
    edited().hasLine = line != nullptr;
    edited().line = line != nullptr ? line : "";
    std::free(line); // the library allocates it with malloc()
    rl_callback_handler_remove();
}

char* nextWord(char const* begin, int again) {
    static std::size_t position;
    position = again == 0 ? 0 : position;
    while (position < edited().words.size()) {
        std::string const& word = edited().words[position++];
        if (word.rfind(begin, 0) == 0) {
            return strdup(word.c_str());
        }
    }
    return nullptr;
}

char** completeFirstWord(char const* begin, int start, int /*end*/) {
    rl_attempted_completion_over = 1; // no file names
    return start == 0 ? rl_completion_matches(begin, nextWord) : nullptr;
}

/** The shell has changed the terminal's settings meanwhile. */
void takeTerminalBack() {
    constexpr int kEightBits = 1;
    rl_deprep_terminal(); // or the library assumes that its settings still hold
    rl_prep_terminal(kEightBits);
    rl_forced_update_display();
}

} // namespace

LineEditor::LineEditor(bool editing, std::filesystem::path history, std::vector<std::string> words,
                       base::Signals& interrupt)
    : editing_(editing), history_(std::move(history)), interrupt_(interrupt) {
    edited() = {};
    edited().words = std::move(words);
    if (editing_) {
        rl_catch_signals = 0; // the program handles signals itself
        rl_attempted_completion_function = completeFirstWord;
        using_history();
        if (!history_.empty()) {
            read_history(history_.c_str());
        }
    }
}

LineEditor::~LineEditor() {
    if (editing_ && !history_.empty()) {
        stifle_history(kHistoryLines);
        write_history(history_.c_str());
    }
}

std::optional<std::string> LineEditor::next(std::string const& prompt) {
    return editing_ ? edit(prompt) : readPlain();
}

std::optional<std::string> LineEditor::edit(std::string const& prompt) {
    edited().hasLine = false;
    rl_callback_handler_install(prompt.c_str(), takeLine);
    while (!edited().hasLine && !edited().ended) {
        if (!interrupt_.waitForInputOrResumption(STDIN_FILENO)) {
            rl_callback_handler_remove(); // gives the terminal back
            return std::nullopt;
        }
        if (interrupt_.takeResumption()) {
            takeTerminalBack();
        } else {
            rl_callback_read_char();
        }
    }
    if (edited().ended) {
        return std::nullopt;
    }
    if (!edited().line.empty()) {
        add_history(edited().line.c_str());
    }
    return edited().line;
}

std::optional<std::string> LineEditor::readPlain() {
    for (;;) {
        if (std::size_t const end = unread_.find('\n'); end != std::string::npos) {
            std::string line = unread_.substr(0, end);
            unread_.erase(0, end + 1);
            return line;
        }
        if (inputEnded_) {
            return unread_.empty() ? std::nullopt : std::optional(std::exchange(unread_, {}));
        }
        if (!interrupt_.waitForInput(STDIN_FILENO)) {
            return std::nullopt;
        }
        std::array<char, 4096> bytes;
        ssize_t const count = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count > 0) {
            unread_.append(bytes.data(), static_cast<std::size_t>(count));
        } else {
            inputEnded_ = count == 0 || errno != EINTR;
        }
    }
}

} // namespace velk
