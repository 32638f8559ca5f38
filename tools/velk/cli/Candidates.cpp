#include "tools/velk/cli/Candidates.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace velk {
namespace {

/** Lines for the candidates that begin like a word. */
class Lines {
public:
    explicit Lines(std::string word) : word_(std::move(word)) {}

    void add(std::string const& candidate, std::string const& description = "") {
        if (candidate.starts_with(word_)) {
            text_ += candidate + (description.empty() ? "" : "\t" + description) + "\n";
        }
    }

    /** The terminals of this machine, or whatever begins like the word. */
    void addPorts() {
        std::filesystem::path const begin = word_.empty() ? "/dev/tty" : word_;
        std::error_code error;
        for (auto const& entry : std::filesystem::directory_iterator(begin.parent_path(), error)) {
            if (entry.path().string().starts_with(begin.string())) {
                add(entry.path().string());
            }
        }
    }

    [[nodiscard]] std::string const& text() const { return text_; }

private:
    std::string word_;
    std::string text_;
};

std::string commandsLike(Command const& command, std::string const& word) {
    Lines lines(word);
    for (Command const& each : command.commands) {
        lines.add(each.name, each.description);
    }
    return lines.text();
}

std::string flagsLike(Command const& command, std::string const& word) {
    Lines lines(word);
    for (Argument const& flag : command.flags) {
        for (std::string const& name : flag.names()) {
            lines.add(name, flag.text());
        }
    }
    return lines.text();
}

/** @p before precedes the value in the same word: "--file=". */
std::string valuesLike(Argument const& argument, std::string const& word, std::string const& before = "") {
    Lines lines(word);
    for (std::string const& choice : argument.value.choices) {
        lines.add(before + choice);
    }
    switch (argument.value.offer) {
    case Offer::Files:
        return ":files\n";
    case Offer::Folders:
        return ":folders\n";
    case Offer::Ports:
        lines.addPorts();
        break;
    case Offer::CommandLine:
        lines.add("--", argument.text());
        break;
    case Offer::Nothing:
    case Offer::Commands: // depends on the position
    case Offer::Stations:
    case Offer::Variables:
        break;
    }
    return lines.text();
}

/** Goes through the words before the one to complete. */
class Place {
public:
    explicit Place(Command const& root) : root_(root), command_(&root) {}

    void pass(std::string const& word) {
        if (open_ != nullptr) {
            open_ = nullptr; // that was its value
        } else if (word == "--" && takes(Offer::CommandLine)) {
            command_ = &root_;
        } else if (isFlag(word)) {
            onlyWords_ = word == "--";
            open_ = flagWithValue(word);
        } else if (Command const* const next = command_->findCommand(word); next != nullptr) {
            command_ = next;
            command_ = takes(Offer::Commands) ? &root_ : next;
        } else {
            ++wordCount_;
        }
    }

    [[nodiscard]] std::string offers(std::string const& word) const {
        std::string const name = word.substr(0, word.find('='));
        Argument const* const flag = isFlag(word) && name != word ? command_->findFlag(name) : nullptr;
        if (flag != nullptr) {
            return valuesLike(*flag, word, name + "=");
        }
        auto const& words = command_->words;
        bool const wordMayStand = !words.empty() && (words.back().rules.repeats || wordCount_ < words.size());
        return open_ != nullptr ? valuesLike(*open_, word)
               : isFlag(word)   ? flagsLike(*command_, word)
               : wordMayStand   ? valuesLike(words[std::min(wordCount_, words.size() - 1)], word)
                                : commandsLike(*command_, word);
    }

private:
    [[nodiscard]] bool isFlag(std::string const& word) const { return !onlyWords_ && word.starts_with('-'); }

    [[nodiscard]] bool takes(Offer offer) const {
        return !onlyWords_ && !command_->words.empty() && command_->words.front().value.offer == offer;
    }

    /** The flag of "--file" or "-qf", when its value is the next word; else null. */
    [[nodiscard]] Argument const* flagWithValue(std::string const& word) const {
        Argument const* const flag = command_->findFlag(word.starts_with("--") ? word : std::string{'-', word.back()});
        return flag != nullptr && !flag->value.text().empty() ? flag : nullptr;
    }

    Command const& root_;
    Command const* command_;
    Argument const* open_ = nullptr; ///< the flag whose value comes next
    std::size_t wordCount_ = 0;
    bool onlyWords_ = false; ///< after "--"
};

} // namespace

std::string candidates(Command const& root, std::span<std::string const> words) {
    if (words.empty()) {
        return "";
    }
    Place place(root);
    for (std::string const& word : words.first(words.size() - 1)) {
        place.pass(word);
    }
    return place.offers(words.back());
}

} // namespace velk
