#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace velk {
namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;
constexpr unsigned char kFirstOfMany = 0x80;
constexpr unsigned char kPastControls = 0xA0; // 0x80 to 0x9F are control characters again

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

/** Bytes of the UTF-8 character at the start of @p text; 0 when none is there. */
std::size_t utf8Length(std::string_view text) {
    struct Form {
        unsigned char first;
        unsigned char last;
        std::size_t length;
    };
    constexpr Form kForms[]{{0x00, 0x7F, 1}, {0xC2, 0xDF, 2}, {0xE0, 0xEF, 3}, {0xF0, 0xF4, 4}};
    unsigned char const lead = byteAt(text, 0);
    auto const* const form = std::find_if(std::begin(kForms), std::end(kForms),
                                          [=](Form const& f) { return f.first <= lead && lead <= f.last; });
    if (form == std::end(kForms) || text.size() < form->length) {
        return 0;
    }
    for (std::size_t i = 1; i < form->length; ++i) {
        if ((byteAt(text, i) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    unsigned char const second = form->length > 2 ? byteAt(text, 1) : kFirstOfMany;
    bool const tooLong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    bool const noCharacter = (lead == 0xED && second >= 0xA0) || (lead == 0xF4 && second >= 0x90);
    return tooLong || noCharacter ? 0 : form->length;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        std::size_t const length = utf8Length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

bool isControl(unsigned char lead, unsigned char second) {
    constexpr unsigned char kLeadOfHighControls = 0xC2;
    return lead < kFirstPrintable || lead == kDelete || (lead == kLeadOfHighControls && second < kPastControls);
}

} // namespace

std::string toUtf8(std::string_view bytes) {
    if (isUtf8(bytes)) {
        return std::string(bytes);
    }
    std::string text;
    for (char const each : bytes) {
        auto const byte = static_cast<unsigned char>(each);
        if (byte < kFirstOfMany) {
            text += each;
        } else {
            text += static_cast<char>(0xC0U | (byte >> 6U));
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

std::string displayable(std::string_view bytes) {
    std::string const text = toUtf8(bytes);
    std::string shown;
    for (std::string_view rest = text; !rest.empty();) {
        std::size_t const length = std::max<std::size_t>(1, utf8Length(rest));
        unsigned char const second = length > 1 ? byteAt(rest, 1) : 0;
        if (isControl(byteAt(rest, 0), length > 1 ? second : kPastControls)) {
            shown += fmt::format("\\x{:02X}", length > 1 ? second : byteAt(rest, 0));
        } else {
            shown += rest.substr(0, length);
        }
        rest.remove_prefix(length);
    }
    return shown;
}

std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string field = "\"";
    for (char const each : text) {
        field += each;
        if (each == '"') {
            field += '"';
        }
    }
    return field + "\"";
}

std::string shellQuoted(std::string_view text) {
    std::string inside;
    for (char const each : text) {
        inside += each == '\'' ? std::string("'\\''") : std::string(1, each);
    }
    return "'" + inside + "'";
}

std::string shellWord(std::string_view text) {
    auto const isPlain = [](unsigned char each) {
        return std::isalnum(each) != 0 ||
               std::string_view("-_=.,:/@%+").find(static_cast<char>(each)) != std::string_view::npos || each > '~';
    };
    bool const plain = !text.empty() && std::all_of(text.begin(), text.end(), isPlain);
    return plain ? std::string(text) : shellQuoted(text);
}

std::string grouped(unsigned long long number) {
    constexpr std::size_t kGroup = 3;
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > kGroup;) {
        at -= kGroup;
        text.insert(at, ",");
    }
    return text;
}

std::string counted(unsigned long long number, std::string_view one, std::string_view many) {
    return grouped(number) + " " + std::string(number == 1 ? one : many);
}

} // namespace velk
