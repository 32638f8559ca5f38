#include "tools/velk/line/Values.h"

#include "host/values/ValueText.h"
#include "host/values/ValueTypes.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <span>

namespace velk {
namespace {

using Bytes = std::span<unsigned char const>;

/** The bytes of a text up to its first zero. */
std::string_view textOf(Bytes bytes) {
    auto const end = std::find(bytes.begin(), bytes.end(), 0);
    return {reinterpret_cast<char const*>(bytes.data()), static_cast<std::size_t>(end - bytes.begin())};
}

std::string formatted(ICU_Type type, Bytes bytes) {
    base::Result<std::string> const text = host::formatValue(type, bytes);
    return text.ok() ? text.value() : text.failure().text;
}

std::string quotedText(Bytes bytes) {
    return "\"" + displayable(formatted(ICU_STRING, bytes)) + "\"";
}

/** Calls @p step with the bytes of each of the texts. */
template <typename Step>
void forEachText(Bytes bytes, std::size_t length, Step&& step) {
    for (; bytes.size() >= length; bytes = bytes.subspan(length)) {
        step(bytes.first(length));
    }
}

nlohmann::json scalarJson(ICU_Type type, Bytes bytes) {
    if (type == ICU_BOOLEAN) {
        return !bytes.empty() && bytes.front() != 0;
    }
    // Through the shortest text that gives the value again: 36.6 and not 36.599998474121094.
    return nlohmann::json::parse(formatted(type, bytes), nullptr, false);
}

nlohmann::json arrayJson(ICU_Type element, Bytes bytes) {
    nlohmann::json list = nlohmann::json::array();
    std::size_t const width = host::scalarWidth(element);
    for (; width > 0 && bytes.size() >= width; bytes = bytes.subspan(width)) {
        nlohmann::json one = scalarJson(element, bytes.first(width));
        list.push_back(one.is_discarded() ? nlohmann::json() : std::move(one));
    }
    return list;
}

std::string_view withoutQuotes(std::string_view text) {
    bool const quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return lower;
}

/** 16#FF, as PLC programs write it, in the form that the parser knows: 0xFF. */
std::string withUsualHex(std::string text) {
    for (std::size_t at = text.find("16#"); at != std::string::npos; at = text.find("16#", at)) {
        text.replace(at, 3, "0x");
    }
    return text;
}

base::Failure withType(base::Failure failure, std::string const& typeName) {
    if (!typeName.empty()) {
        bool const time = typeName == "TIME" || typeName.ends_with(" TIME"); // an array of them
        failure.text += " (the type is " + typeName + (time ? ": give milliseconds" : "") + ")";
    }
    return failure;
}

/** A text in the PLC ends with a zero byte, for which there must be room. */
base::Result<host::ValueBytes> parseText(std::string_view text, std::size_t length) {
    if (length == 0) {
        return base::Failure{base::FailureKind::Value, "there is no room for a text"};
    }
    base::Result<host::ValueBytes> bytes = host::parseValue(withoutQuotes(text), ICU_STRING, length - 1);
    if (bytes.ok()) {
        bytes.value().resize(length, 0);
    }
    return bytes;
}

base::Result<host::ValueBytes> parseTexts(std::string_view text, std::size_t each, std::size_t length) {
    nlohmann::json const list = nlohmann::json::parse(text, nullptr, false);
    bool const texts =
        list.is_array() && std::all_of(list.begin(), list.end(), [](auto const& one) { return one.is_string(); });
    if (!texts || list.size() != length / each) {
        return base::Failure{base::FailureKind::Value,
                             "give " + std::to_string(length / each) + R"( texts as ["one", "two", ...])"};
    }
    host::ValueBytes all;
    for (nlohmann::json const& one : list) {
        auto const bytes = one.get<std::string>();
        if (bytes.size() >= each) {
            return base::Failure{base::FailureKind::Value, "'" + bytes + "' has " +
                                                               counted(bytes.size(), "byte", "bytes") +
                                                               ", there is room for " + std::to_string(each - 1)};
        }
        all.insert(all.end(), bytes.begin(), bytes.end());
        all.resize(all.size() + each - bytes.size(), 0);
    }
    return all;
}

base::Result<host::ValueBytes> parseOther(ICU_Type type, std::string_view text, std::size_t length) {
    bool const truth = type == ICU_BOOLEAN || type == ICU_BOOLEAN_ARRAY;
    return host::parseValue(truth ? lowerCase(text) : withUsualHex(std::string(text)), type, length);
}

} // namespace

std::string valueText(Access const& access, host::ValueBytes const& bytes) {
    host::ValueBytes const turned = inOtherOrder(access, bytes);
    if (access.textLength > 0) {
        std::string list;
        forEachText(turned, access.textLength,
                    [&](Bytes each) { list += (list.empty() ? "" : ", ") + quotedText(each); });
        return "[" + list + "]";
    }
    return access.shownAs == ICU_STRING ? quotedText(turned) : formatted(access.shownAs, turned);
}

nlohmann::json valueJson(Access const& access, host::ValueBytes const& bytes) {
    host::ValueBytes const turned = inOtherOrder(access, bytes);
    if (access.textLength > 0) {
        nlohmann::json list = nlohmann::json::array();
        forEachText(turned, access.textLength, [&](Bytes each) { list.push_back(toUtf8(textOf(each))); });
        return list;
    }
    if (access.shownAs == ICU_STRING) {
        return toUtf8(textOf(turned));
    }
    if (access.shownAs == ICU_BINARY) {
        return formatted(ICU_BINARY, turned);
    }
    if (ICU_Type const element = host::arrayElement(access.shownAs); element != ICU_NONE) {
        return arrayJson(element, turned);
    }
    nlohmann::json one = scalarJson(access.shownAs, turned);
    return one.is_discarded() ? nlohmann::json() : one;
}

base::Result<host::ValueBytes> parseValue(Access const& access, std::string_view text, std::size_t length,
                                          std::string const& typeName) {
    base::Result<host::ValueBytes> const bytes = access.textLength > 0 ? parseTexts(text, access.textLength, length)
                                                 : access.shownAs == ICU_STRING
                                                     ? parseText(text, length)
                                                     : parseOther(access.shownAs, text, length);
    return bytes.ok() ? base::Result(inOtherOrder(access, bytes.value())) : withType(bytes.failure(), typeName);
}

} // namespace velk
