#pragma once

/** Codes that IProtocol::GetLastError() returns; they tell the host what kind of failure it was. */
inline constexpr int kErrorNone = 1;        ///< nothing failed yet
inline constexpr int kErrorPort = 0;        ///< fault of the serial port, or no memory
inline constexpr int kErrorRequest = -1;    ///< configuration, address, buffer and symbol faults
inline constexpr int kErrorState = -3;      ///< not started, not supported, local file faults
inline constexpr int kErrorTimeout = -4;    ///< the PLC did not answer in time
inline constexpr int kErrorReply = -6;      ///< the PLC gave a wrong answer or refused
inline constexpr int kErrorConversion = -9; ///< a value does not fit its conversions
