#pragma once

#include "tools/velk/commands/check/CheckReport.h"

#include <functional>

namespace velk {

struct Context;

/** Finds the settings of a line by trying them. */
class Scan {
public:
    /** Called before each attempt with its number and the total. */
    using Tell = std::function<void(LineCandidate const& candidate, std::size_t number, std::size_t count)>;

    Scan(Settings settings, Context& context, Tell tell);

    /** Ends with the settings that the PLC answers to. Throws CommandError for a port that cannot be opened. */
    ScanReport run();

private:
    Answer tryOne(LineCandidate const& candidate);

    Context& context_;
    Settings settings_;
    Tell tell_;
    int timeoutMs_;
    bool triedAny_ = false;
};

} // namespace velk
