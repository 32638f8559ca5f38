#pragma once

/** Texts of last errors that are recorded in more than one place. */
namespace _VELK {

inline constexpr char const* kNotStarted = "Protocol not started";
inline constexpr char const* kInvalidArgument = "Invalid argument";
inline constexpr char const* kTxExceeded = "Tx Buffer dimension exceeded";
inline constexpr char const* kRxExceeded = "Rx Buffer dimension exceeded";
inline constexpr char const* kSymbolFileCorrupted = "Symbol file is corrupted";
inline constexpr char const* kSymbolFileMissing = "Symbol file not present";

} // namespace _VELK
