#include "protlib/config/ConfigParser.h"

#include "protlib/text/TextUtils.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view kSectionMarker = "CfgVer=1";
constexpr std::string_view kAnySectionMarker = "CfgVer=";
constexpr std::string_view kNodeMarker = "Node";
constexpr std::string_view kNodeSeparator = "::";
constexpr std::string_view kBlank = "&nbsp;";

bool isWhiteSpace(char character) {
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/** The name of an entry contains neither white space nor "=". */
bool isEntryName(std::string_view name) {
    return std::none_of(name.begin(), name.end(), [](char each) { return each == '=' || isWhiteSpace(each); });
}

/** "Node3::name" */
std::string nodeKey(int nodeId, char const* name) {
    std::array<char, 12> digits{};
    return std::string(kNodeMarker).append(itoa(nodeId, digits.data(), 10)).append(kNodeSeparator).append(name);
}

bool isAccepted(CfgParser::parseResult result, bool optional) {
    return result == CfgParser::kFound || result == CfgParser::kNotApplicable ||
           (result == CfgParser::kNotFound && optional);
}

bool report(CfgParser::parseResult result, char const* name, bool optional, std::string& error) {
    if (isAccepted(result, optional)) {
        return true;
    }
    error = CfgParserN::getErrorString(result, name);
    return false;
}

} // namespace

CfgParser::CfgParser(char const* configuration) : text_(configuration == nullptr ? "" : configuration) {
    auto const marker = text_.find(kSectionMarker);
    knownFormat_ = marker != std::string::npos;
    if (knownFormat_) {
        auto const begin = marker + kSectionMarker.size();
        auto const end = text_.find(kAnySectionMarker, begin);
        text_ = text_.substr(begin, end == std::string::npos ? end : end - begin);
        collectNodeIds();
    }
    collectEntries();
}

/** Sorted, because every node reads every parameter: a lookup must not search the whole text. */
void CfgParser::collectEntries() {
    auto behind = text_.cbegin();
    for (auto begin = behind; begin != text_.cend(); begin = std::find_if_not(behind, text_.cend(), isWhiteSpace)) {
        behind = std::find_if(begin, text_.cend(), isWhiteSpace);
        auto const equals = std::find(begin, behind, '=');
        if (equals != behind) {
            entries_.push_back(
                {static_cast<std::size_t>(begin - text_.cbegin()), static_cast<std::size_t>(equals - begin)});
        }
    }
    auto const isBefore = [this](Entry const& a, Entry const& b) {
        int const order = nameOf(a).compare(nameOf(b));
        return order < 0 || (order == 0 && a.begin < b.begin);
    };
    std::make_heap(entries_.begin(), entries_.end(), isBefore);
    std::sort_heap(entries_.begin(), entries_.end(), isBefore); // a quarter of the code of std::sort
}

std::string_view CfgParser::nameOf(Entry const& entry) const {
    return std::string_view(text_).substr(entry.begin, entry.length);
}

void CfgParser::collectNodeIds() {
    auto node = text_.find(kNodeMarker);
    while (node != std::string::npos) {
        auto const number = text_.begin() + static_cast<std::ptrdiff_t>(node + kNodeMarker.size());
        auto const behind = std::find_if_not(number, text_.end(), isDigit);
        auto position = static_cast<std::string::size_type>(number - text_.begin());
        if (std::string_view(behind, text_.end()).starts_with(kNodeSeparator)) {
            addNodeId(ProtUtilsN::clampToInt(ProtUtilsN::parseInteger(std::string(number, behind).c_str(), 10)));
            position = static_cast<std::string::size_type>(behind - text_.begin());
        }
        node = text_.find(kNodeMarker, position);
    }
}

void CfgParser::addNodeId(int nodeId) {
    if (std::find(nodeIds_.begin(), nodeIds_.end(), nodeId) == nodeIds_.end()) {
        nodeIds_.push_back(nodeId);
    }
}

bool CfgParser::KnownFormat() const {
    return knownFormat_;
}

int CfgParser::GetNodeCount() const {
    return static_cast<int>(nodeIds_.size());
}

int CfgParser::GetNodeID(int index) const {
    return index >= 0 && index < GetNodeCount() ? nodeIds_[static_cast<std::size_t>(index)] : 0;
}

std::string::size_type CfgParser::valueOfEntry(std::string_view name) const {
    auto const entry = std::lower_bound(entries_.begin(), entries_.end(), name,
                                        [this](Entry const& each, std::string_view key) { return nameOf(each) < key; });
    return entry == entries_.end() || nameOf(*entry) != name ? std::string::npos : entry->begin + entry->length + 1;
}

std::string::size_type CfgParser::valueBehind(std::string const& key) const {
    auto position = text_.find(key);
    while (position != std::string::npos && position != 0 && !isWhiteSpace(text_[position - 1])) {
        position = text_.find(key, position + 1);
    }
    return position == std::string::npos ? position : position + key.size();
}

char const* CfgParser::GetParam(char const* name) {
    if (name == nullptr) {
        return nullptr;
    }
    auto const value = isEntryName(name) ? valueOfEntry(name) : valueBehind(std::string(name).append("="));
    if (value == std::string::npos) {
        return nullptr;
    }
    auto const begin = text_.begin() + static_cast<std::ptrdiff_t>(value);
    lastValue_.assign(begin, std::find_if(begin, text_.end(), isWhiteSpace));
    return lastValue_.c_str();
}

CfgParser::parseResult CfgParser::getParam(char const* name, int nodeId, std::string& value, int flags) {
    bool const generalOnly = (flags & kGeneralOnly) != 0;
    bool const nodeOnly = (flags & kNodeOnly) != 0;
    if (generalOnly && nodeOnly) {
        return kInvalidSpecification;
    }
    char const* found = nullptr;
    if (nodeId != kAnyNode) {
        found = GetParam(nodeKey(nodeId, name).c_str());
        if (found != nullptr && generalOnly) {
            return kCannotBePrefixed;
        }
    }
    if (found == nullptr) {
        found = GetParam(name);
    }
    if (nodeId == kAnyNode && nodeOnly && !nodeIds_.empty()) {
        return found != nullptr ? kCannotBeNodeIndependent : kNotApplicable;
    }
    if (found == nullptr) {
        return kNotFound;
    }
    value = found;
    return kFound;
}

namespace CfgParserN {

bool parseValue(std::string const& raw, std::string& value) {
    std::string text;
    std::string::size_type begin = 0;
    for (auto end = raw.find(kBlank); end != std::string::npos; end = raw.find(kBlank, begin)) {
        text.append(raw, begin, end - begin).append(1, ' ');
        begin = end + kBlank.size();
    }
    text.append(raw, begin);
    value = std::move(text);
    return true;
}

std::string getErrorString(CfgParser::parseResult result, char const* name) {
    auto const* reason = "has unknown error";
    switch (result) {
    case CfgParser::kNotFound:
        reason = "is not found";
        break;
    case CfgParser::kIllegalValue:
        reason = "has illegal value";
        break;
    case CfgParser::kCannotBePrefixed:
        reason = "can't be prefixed";
        break;
    case CfgParser::kCannotBeNodeIndependent:
        reason = "can't be node independent";
        break;
    case CfgParser::kInvalidSpecification:
        reason = "has invalid internal specification";
        break;
    default:
        break;
    }
    return std::string("Parser: parameter '").append(name).append("' ").append(reason);
}

} // namespace CfgParserN

template <>
bool readParam<std::string>(CfgParser& parser, char const* name, int nodeId, std::string& value, int flags,
                            bool optional, std::string& error) {
    std::string raw;
    auto result = parser.getParam(name, nodeId, raw, flags);
    if (result == CfgParser::kFound && !CfgParserN::parseValue(raw, value)) {
        result = CfgParser::kIllegalValue;
    }
    return report(result, name, optional, error);
}

template <>
bool readParam<int>(CfgParser& parser, char const* name, int nodeId, int& value, int flags, bool optional,
                    std::string& error) {
    std::string raw;
    auto const result = parser.getParam(name, nodeId, raw, flags);
    if (result == CfgParser::kFound) {
        value = ProtUtilsN::clampToInt(ProtUtilsN::parseInteger(raw.c_str(), 0));
    }
    return report(result, name, optional, error);
}
