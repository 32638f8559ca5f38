#pragma once

#include <string>
#include <vector>

namespace velk {

// The words of project files and flags, and the driver's configuration values for them.

inline constexpr int kLeastBlockSize = 128;
inline constexpr int kMostBlockSize = 1460;
inline constexpr int kLeastTimeoutMs = 100;
inline constexpr int kMostTimeoutMs = 20'000;
inline constexpr int kMostNode = 256;
inline constexpr int kMostStopBits = 2;
inline constexpr int kMostRepeats = 100;
inline constexpr int kMostRoutingLevels = 2;
inline constexpr int kMostCoupler = 6;
inline constexpr int kMostChannel = 19;

std::vector<std::string> const& parities();
std::vector<std::string> const& modes();

/** "bare", "routed", and the configuration's own values. */
std::vector<std::string> const& framings();

/** "big", "little", and the configuration's own values. */
std::vector<std::string> const& byteOrders();

/** The address spaces of tags. */
std::vector<std::string> const& areas();

/** The configuration value for one of framings(). */
std::string protocolType(std::string const& framing);

/** The configuration value for one of byteOrders(). */
std::string modelName(std::string const& byteOrder);

/** "bare" or "routed" for a configuration value. */
std::string framingWord(std::string const& protocolType);

/** "big" or "little" for a configuration value. */
std::string byteOrderWord(std::string const& model);

} // namespace velk
