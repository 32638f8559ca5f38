#pragma once

#include "driver/config/ByteOrder.h"

#include <string>

class CfgParser;

namespace _VELK {

inline constexpr int kNodeCount = 257;    ///< node numbers are 0 to 256
inline constexpr int kMinBlockSize = 128; ///< smallest block frame a node may be configured for, in bytes
inline constexpr int kMaxBlockSize = 1460;

constexpr bool isKnownNode(int node) {
    return node >= 0 && node < kNodeCount;
}

/**
 * Parameters of one PLC. The members are named after their keys in the configuration string and are read by parse() in
 * the order that it lists; ranges are inclusive.
 */
struct NodeParams {
    std::string prefix;                 ///< alias text of the node
    int BlockSize = 0;                  ///< bytes of a block frame with its header, without routing header: 128..1460
    int Timeout = 0;                    ///< wait for the first byte of every expected frame, milliseconds: 100..20000
    int repeat = 2;                     ///< attempts for one request; with 0 or less there are none
    int RoutingLevels = 0;              ///< coupler levels on the route to the PLC: 0..2
    std::string CouplerLV1;             ///< coupler of routing level 1, for example "0" to "6"
    int ChannelLV1 = 0;                 ///< channel of routing level 1: 0..19
    std::string AddressLV1 = "0.0.0.0"; ///< dotted address of routing level 1
    std::string CouplerLV2;             ///< as for level 1
    int ChannelLV2 = 0;                 ///< as for level 1
    std::string AddressLV2 = "0.0.0.0"; ///< as for level 1
    int nodeId = 0;                     ///< set by ParamManager; not used in the record of the defaults
    std::string model;                  ///< byte-order model: "Intel" is little-endian, any other text big-endian

    /** Whether multi-byte numbers are exchanged with this node most significant byte first. */
    [[nodiscard]] bool isBigEndian() const;
    [[nodiscard]] ByteOrder byteOrder() const { return byteOrderOf(isBigEndian()); }

    /**
     * Reads the parameters, those of node @p node or, for -1, those for no particular node.
     *
     * Stops at the first failure with the whole message in @p error; the values read until then are kept, except a
     * time-out that is out of range.
     */
    bool parse(CfgParser& parser, int node, std::string& error);

private:
    bool parseTimeout(CfgParser& parser, int node, std::string& error);
    bool parsePrefix(CfgParser& parser, int node, std::string& error);
    bool parseRouting(CfgParser& parser, int node, std::string& error);
};

} // namespace _VELK
