#pragma once

#include "tools/velk/project/Settings.h"

#include <string>
#include <vector>

namespace velk {

/** Settings of a line that may be those of the PLC; in the words of project files. */
struct LineCandidate {
    int baud = 0;
    std::string parity;
    std::string framing;
    std::string byteOrder;

    bool operator==(LineCandidate const&) const = default;
};

/** The candidate equal to the present settings, for the chosen station. */
LineCandidate candidateOf(Settings const& settings);

/**
 * The usual settings, each once, in the best order to try: the present ones first, then the other
 * framings and byte orders at the present speed and parity, then the other parities and speeds.
 */
std::vector<LineCandidate> scanCandidates(LineCandidate const& present);

/** The settings with a candidate's values for every station, one attempt and a short time-out. */
Settings settingsFor(Settings settings, LineCandidate const& candidate, int timeoutMs);

/** "19200 bit/s, parity even, bare framing, big-endian". */
std::string candidateText(LineCandidate const& candidate);

/** The text for a project file. */
std::string projectLines(Settings const& settings, LineCandidate const& candidate);

} // namespace velk
