#include "tools/velk/project/DriverType.h"

#include "host/values/ValueTypes.h"
#include "tools/velk/text/Names.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace velk {
namespace {

constexpr int kMostElements = 75'000; // bytes of the driver's largest message

constexpr std::array kScalars{ICU_BOOLEAN,        ICU_BYTE,         ICU_SHORT, ICU_INT,   ICU_UNSIGNED_BYTE,
                              ICU_UNSIGNED_SHORT, ICU_UNSIGNED_INT, ICU_FLOAT, ICU_DOUBLE};

struct ArrayOf {
    ICU_Type element;
    ICU_Type array;
};
constexpr std::array<ArrayOf, 9> kArrays{{{ICU_BOOLEAN, ICU_BOOLEAN_ARRAY},
                                          {ICU_BYTE, ICU_BYTE_ARRAY},
                                          {ICU_SHORT, ICU_SHORT_ARRAY},
                                          {ICU_INT, ICU_INT_ARRAY},
                                          {ICU_UNSIGNED_BYTE, ICU_UNSIGNED_BYTE_ARRAY},
                                          {ICU_UNSIGNED_SHORT, ICU_UNSIGNED_SHORT_ARRAY},
                                          {ICU_UNSIGNED_INT, ICU_UNSIGNED_INT_ARRAY},
                                          {ICU_FLOAT, ICU_FLOAT_ARRAY},
                                          {ICU_DOUBLE, ICU_DOUBLE_ARRAY}}};

std::string_view trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(" \t");
    std::size_t const last = text.find_last_not_of(" \t");
    return first == std::string_view::npos ? std::string_view() : text.substr(first, last - first + 1);
}

std::vector<std::string> scalarNames() {
    std::vector<std::string> names;
    for (ICU_Type const type : kScalars) {
        names.emplace_back(host::typeName(type));
    }
    return names;
}

base::Failure unknownType(std::string_view text) {
    std::vector<std::string> names = scalarNames();
    std::string const hint = didYouMean(text.substr(0, text.find('-')), names);
    names.emplace_back("string-20");
    return base::Failure{base::FailureKind::Usage, "'" + std::string(text) + "' is not a data type" + hint +
                                                       (hint.empty() ? ": use " : " Use ") + orList(names) +
                                                       ", and arrays such as short-10"};
}

ICU_Type scalarNamed(std::string_view name) {
    auto const* const found =
        std::find_if(kScalars.begin(), kScalars.end(), [&](ICU_Type type) { return name == host::typeName(type); });
    return found == kScalars.end() ? ICU_NONE : *found;
}

ICU_Type arrayOf(ICU_Type element) {
    auto const* const found =
        std::find_if(kArrays.begin(), kArrays.end(), [&](ArrayOf const& each) { return each.element == element; });
    return found == kArrays.end() ? ICU_NONE : found->array;
}

/** "short-6", "string-20". */
base::Result<DriverType> parseCounted(std::string_view text, std::size_t hyphen) {
    std::string_view const name = text.substr(0, hyphen);
    std::string_view const digits = text.substr(hyphen + 1);
    ICU_Type const type = name == "string" ? ICU_STRING : arrayOf(scalarNamed(name));
    if (type == ICU_NONE) {
        return unknownType(text);
    }
    int count = 0;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (error != std::errc() || end != digits.data() + digits.size() || count < 1 || count > kMostElements) {
        return base::Failure{base::FailureKind::Usage, "'" + std::string(text) +
                                                           "': the count after the hyphen is 1 to " +
                                                           std::to_string(kMostElements)};
    }
    return DriverType{type, count, {}};
}

base::Outcome parseConversions(std::string_view list, std::vector<std::string>& conversions) {
    static std::vector<std::string> const kKnown{"swap2", "swap4", "swap8", "swapnibble", "bcd", "inv", "neg"};
    while (true) {
        std::size_t const comma = list.find(',');
        std::string const word(trimmed(list.substr(0, comma)));
        if (std::find(kKnown.begin(), kKnown.end(), word) == kKnown.end()) {
            return base::Failure{base::FailureKind::Usage, "'" + word + "' is not a conversion: use " + orList(kKnown)};
        }
        conversions.push_back(word);
        if (comma == std::string_view::npos) {
            return {};
        }
        list.remove_prefix(comma + 1);
    }
}

base::Result<DriverType> parseName(std::string_view name) {
    if (std::size_t const hyphen = name.find('-'); hyphen != std::string_view::npos) {
        return parseCounted(name, hyphen);
    }
    ICU_Type const type = scalarNamed(name);
    if (type != ICU_NONE) {
        return DriverType{type, 1, {}};
    }
    if (name == "string") {
        return base::Failure{base::FailureKind::Usage, "'string' needs its length in bytes, as in string-20"};
    }
    return unknownType(name);
}

} // namespace

base::Result<DriverType> parseDriverType(std::string_view text) {
    text = trimmed(text);
    std::size_t const opening = text.find('(');
    base::Result<DriverType> parsed = parseName(trimmed(text.substr(0, opening)));
    if (!parsed.ok() || opening == std::string_view::npos) {
        return parsed;
    }
    if (text.find(')') != text.size() - 1) {
        return base::Failure{base::FailureKind::Usage,
                             "'" + std::string(text) + "': the conversions end with one closing parenthesis"};
    }
    base::Outcome const conversions =
        parseConversions(text.substr(opening + 1, text.size() - opening - 2), parsed.value().conversions);
    return conversions.ok() ? parsed : conversions.failure();
}

std::string driverTypeText(ICU_Type type, std::size_t count) {
    bool const counted = type == ICU_STRING || host::arrayElement(type) != ICU_NONE;
    ICU_Type const named = host::arrayElement(type) != ICU_NONE ? host::arrayElement(type) : type;
    return host::typeName(named) + (counted ? "-" + std::to_string(count) : std::string());
}

} // namespace velk
