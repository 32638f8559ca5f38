#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace base {
class Signals;
}

namespace velk {

enum class Colour { None, Red, Green, Yellow, Cyan, Bold, Dim };

/** Where the standard streams go. */
struct StreamKinds {
    bool inputIsTerminal = false;
    bool outputIsTerminal = false;
    bool errorIsTerminal = false;
    bool coloursWanted = true; ///< NO_COLOR is not set, and the terminal is not dumb
    bool canRedraw = true;     ///< TERM does not say "dumb": the cursor can be moved

    static StreamKinds ofThisProcess();
};

/**
 * The three standard streams. Data goes to standard output, everything else to standard error; colours and lines
 * that redraw themselves go to terminals only.
 */
class Terminal {
public:
    explicit Terminal(StreamKinds kinds) : kinds_(kinds) {}

    /** Removes the status line, so that the shell's prompt does not follow it. */
    ~Terminal() { clearStatus(); }
    Terminal(Terminal const&) = delete;
    Terminal& operator=(Terminal const&) = delete;

    [[nodiscard]] StreamKinds const& kinds() const { return kinds_; }

    /** Silences note() and status(). */
    void setQuiet(bool quiet) { quiet_ = quiet; }
    [[nodiscard]] bool quiet() const { return quiet_; }

    /** Columns of the terminal at standard output, or else at standard error; 80 without one. */
    [[nodiscard]] int width() const;

    /** Lines of the terminal at standard output; 24 without one. */
    [[nodiscard]] int height() const;

    /** Data, as it is. Throws CommandError when it cannot be written. */
    void out(std::string_view data);

    /** A line for the user; silenced by quiet. */
    void note(std::string_view line);

    /** A line for the user; never silenced. */
    void error(std::string_view line);

    /** An error message: "velk: " and the text; never silenced. */
    void complain(std::string_view text);

    /**
     * A line on standard error that the next one replaces; only on a terminal that can redraw. Empty removes it.
     * A line wider than the terminal is cut: one that wraps could not be replaced.
     */
    void status(std::string_view line);

    /** @p text in a colour when standard output shows colours. */
    [[nodiscard]] std::string coloured(Colour colour, std::string_view text) const;

    /** The same for standard error. */
    [[nodiscard]] std::string colouredError(Colour colour, std::string_view text) const;

    /**
     * Asks on standard error and reads a line from standard input, without its line end. Nothing at the end of the
     * input. Throws CommandError when interrupted.
     */
    std::optional<std::string> ask(std::string_view question, base::Signals& interrupt);

    /** Whether ask() reached the end of the input; the last answer may be half a line then. */
    [[nodiscard]] bool inputEnded() const { return inputEnded_; }

private:
    void clearStatus();

    StreamKinds kinds_;
    bool quiet_ = false;
    bool statusShown_ = false;
    bool inputEnded_ = false;
};

} // namespace velk
