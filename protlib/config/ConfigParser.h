#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/**
 * Reads the configuration string of one driver instance.
 *
 * The string holds "CfgVer=1" followed by entries separated by white space: `name=value` for every node, or
 * `Node<n>::name=value` for the node n alone. A value ends at white space. Names are case-sensitive, the first of
 * several equal entries counts, and everything from the next "CfgVer=" on is ignored.
 *
 * Built for one configuration and discarded afterwards. Operations may throw std::bad_alloc.
 */
class CfgParser {
public:
    /** Result of a lookup; the numbers are fixed. */
    enum parseResult : int {
        kFound = 0,
        kNotApplicable = 1, ///< node-only, looked up without a node, no general entry, but nodes exist; not an error
        kNotFound = 2,
        kIllegalValue = 3,
        kCannotBePrefixed = 4,        ///< a node entry for a parameter of the whole line
        kCannotBeNodeIndependent = 5, ///< a general entry for a node-only parameter while nodes exist
        kInvalidSpecification = 6     ///< the caller requested both restrictions
    };

    static constexpr int kGeneralOnly = 1; ///< flag: the parameter must not have a node prefix
    static constexpr int kNodeOnly = 2;    ///< flag: the parameter must have a node prefix
    static constexpr int kAnyNode = -1;    ///< node id for a lookup without a particular node

    /** A null configuration is an empty one. */
    explicit CfgParser(char const* configuration);

    /** Whether the configuration holds "CfgVer=1". */
    [[nodiscard]] bool KnownFormat() const;

    /** Number of different nodes that have their own entries. */
    [[nodiscard]] int GetNodeCount() const;

    /** Number of the node at @p index, in the order of first appearance; 0 outside 0 to GetNodeCount() - 1. */
    [[nodiscard]] int GetNodeID(int index) const;

    /** Value of the entry called exactly @p name, or null. Valid until the next lookup. */
    char const* GetParam(char const* name);

    /**
     * Looks a parameter up for one node: the node's entry, else the general one.
     *
     * @param nodeId the node, or kAnyNode
     * @param value written only when the result is kFound
     * @param flags 0, kGeneralOnly or kNodeOnly
     */
    parseResult getParam(char const* name, int nodeId, std::string& value, int flags);

private:
    /** Where the name of an entry is in the text. */
    struct Entry {
        std::size_t begin;
        std::size_t length;
    };

    void collectEntries();
    void collectNodeIds();
    void addNodeId(int nodeId);
    [[nodiscard]] std::string_view nameOf(Entry const& entry) const;

    /** Where the value begins, or npos. */
    [[nodiscard]] std::string::size_type valueOfEntry(std::string_view name) const;

    /** The same for a key that no entry can have but that the text may contain. */
    [[nodiscard]] std::string::size_type valueBehind(std::string const& key) const;

    std::string text_;
    std::vector<Entry> entries_; ///< by name, those of one name in the order of the text
    std::string lastValue_;
    std::vector<int> nodeIds_;
    bool knownFormat_ = false;
};

namespace CfgParserN {

/** Copies @p raw with a blank for every "&nbsp;". Always true. */
bool parseValue(std::string const& raw, std::string& value);

/** What is wrong with the parameter @p name: "Parser: parameter '<name>' is not found", and so on. */
std::string getErrorString(CfgParser::parseResult result, char const* name);

} // namespace CfgParserN

/**
 * Reads a parameter as text (with "&nbsp;" turned into blanks) or as a number.
 *
 * Numbers: "0x" introduces hexadecimal, a leading "0" octal, what follows the number is ignored, no number is 0,
 * and a number that does not fit becomes the nearest int.
 *
 * @param value unchanged when there is no entry
 * @param flags as for CfgParser::getParam()
 * @param optional a missing entry is not an error
 * @return false with the reason in @p error
 */
template <typename Value>
bool readParam(CfgParser& parser, char const* name, int nodeId, Value& value, int flags, bool optional,
               std::string& error);

template <>
bool readParam<std::string>(CfgParser& parser, char const* name, int nodeId, std::string& value, int flags,
                            bool optional, std::string& error);

template <>
bool readParam<int>(CfgParser& parser, char const* name, int nodeId, int& value, int flags, bool optional,
                    std::string& error);
