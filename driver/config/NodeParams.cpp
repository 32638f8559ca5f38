#include "driver/config/NodeParams.h"

#include "protlib/config/ConfigParser.h"

namespace _VELK {

namespace {

constexpr int kMinTimeout = 100;
constexpr int kMaxTimeout = 20000;
constexpr int kMaxRoutingLevels = 2;
constexpr int kMaxChannel = 19;
constexpr int kDefaultRepeat = 2;
constexpr char const* kDefaultAddress = "0.0.0.0";

bool readRequired(CfgParser& parser, char const* name, int node, std::string& value, std::string& error) {
    return readParam(parser, name, node, value, 0, false, error);
}

bool readRanged(CfgParser& parser, char const* name, int node, int& value, int minimum, int maximum,
                std::string& error) {
    if (!readParam(parser, name, node, value, 0, false, error)) {
        return false;
    }
    if (value < minimum || value > maximum) {
        error = "parameter '" + std::string(name) + "' out of range";
        return false;
    }
    return true;
}

/** Reads a key that may be missing: then the built-in value applies, not that of the defaults record. */
template <typename Value>
bool readOptional(CfgParser& parser, char const* name, int node, Value& value, Value const& builtIn,
                  std::string& error) {
    value = builtIn;
    return readParam(parser, name, node, value, 0, true, error);
}

} // namespace

bool NodeParams::isBigEndian() const {
    return model != "Intel";
}

bool NodeParams::parse(CfgParser& parser, int node, std::string& error) {
    return parsePrefix(parser, node, error) &&
           readRanged(parser, "BlockSize", node, BlockSize, kMinBlockSize, kMaxBlockSize, error) &&
           parseTimeout(parser, node, error) && readOptional(parser, "repeat", node, repeat, kDefaultRepeat, error) &&
           readRequired(parser, "model", node, model, error) && parseRouting(parser, node, error);
}

bool NodeParams::parsePrefix(CfgParser& parser, int node, std::string& error) {
    prefix.clear();
    return readParam(parser, "prefix", node, prefix, CfgParser::kNodeOnly, true, error);
}

/** Does not keep a time-out that is out of range: a host that continues after the failure could wait for days. */
bool NodeParams::parseTimeout(CfgParser& parser, int node, std::string& error) {
    int timeout = Timeout;
    if (!readRanged(parser, "Timeout", node, timeout, kMinTimeout, kMaxTimeout, error)) {
        return false;
    }
    Timeout = timeout;
    return true;
}

bool NodeParams::parseRouting(CfgParser& parser, int node, std::string& error) {
    std::string const noAddress = kDefaultAddress;
    return readRanged(parser, "RoutingLevels", node, RoutingLevels, 0, kMaxRoutingLevels, error) &&
           readRequired(parser, "CouplerLV1", node, CouplerLV1, error) &&
           readRanged(parser, "ChannelLV1", node, ChannelLV1, 0, kMaxChannel, error) &&
           readOptional(parser, "AddressLV1", node, AddressLV1, noAddress, error) &&
           readRequired(parser, "CouplerLV2", node, CouplerLV2, error) &&
           readRanged(parser, "ChannelLV2", node, ChannelLV2, 0, kMaxChannel, error) &&
           readOptional(parser, "AddressLV2", node, AddressLV2, noAddress, error);
}

} // namespace _VELK
