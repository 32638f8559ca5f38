#include "tools/velk/commands/simulate/PlcFlags.h"

#include "tools/velk/text/Interval.h"

#include <charconv>
#include <chrono>

namespace velk::simulation {
namespace {

constexpr plc::Micros kForEver = std::chrono::hours(1'000'000);

/** The text before and after a character; nothing after it when it is missing. */
struct Parts {
    std::string_view before;
    std::optional<std::string_view> behind;
};

Parts split(std::string_view text, char sign) {
    std::size_t const at = text.find(sign);
    if (at == std::string_view::npos) {
        return {.before = text, .behind = std::nullopt};
    }
    return {.before = text.substr(0, at), .behind = text.substr(at + 1)};
}

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace

std::optional<double> parseShare(std::string_view text) {
    constexpr double kHundred = 100;
    bool const percent = !text.empty() && text.back() == '%';
    std::string_view const number = percent ? withoutBlanks(text.substr(0, text.size() - 1)) : text;
    double value = 0;
    auto const [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size()) {
        return std::nullopt;
    }
    double const share = percent ? value / kHundred : value;
    return share >= 0 && share <= 1 ? std::optional(share) : std::nullopt;
}

std::string shareFault(std::string const& text) {
    if (parseShare(text)) {
        return "";
    }
    bool const percentIsMissing = parseShare(text + "%").has_value();
    return percentIsMissing ? "'" + text + "' is above 1: a percentage is written " + text + "%"
                            : "'" + text + "' is not a share such as 1% or 0.01";
}

std::optional<plc::Micros> parseTime(std::string_view text) {
    auto const time = parseInterval(text);
    return time ? std::optional(plc::Micros(*time)) : std::nullopt;
}

std::optional<plc::TimeWindow> parseSilence(std::string_view text) {
    if (text == "always") {
        return plc::TimeWindow{.from = plc::Micros{0}, .lasts = kForEver};
    }
    Parts const parts = split(text, '@');
    auto const lasts = parseTime(parts.before);
    if (!lasts || !parts.behind) {
        return std::nullopt;
    }
    Parts const times = split(*parts.behind, '/');
    bool const atOnce = times.before == "0" || times.before == "0s";
    auto const from = atOnce ? std::optional(plc::Micros{0}) : parseTime(times.before);
    if (!from) {
        return std::nullopt;
    }
    plc::TimeWindow window{.from = *from, .lasts = *lasts, .every = from};
    if (atOnce) {
        window.every.reset(); // the start comes once
    }
    if (times.behind == "once") {
        window.every.reset();
    } else if (times.behind) {
        window.every = parseTime(*times.behind);
        if (!window.every) {
            return std::nullopt;
        }
    }
    return window;
}

std::optional<Replacement> parseReplacement(std::string_view text) {
    Parts const parts = split(text, ':');
    auto const after = parseTime(parts.before);
    if (!after || (parts.behind && parts.behind->empty())) {
        return std::nullopt;
    }
    return Replacement{.after = *after, .file = std::string(parts.behind.value_or(""))};
}

} // namespace velk::simulation
