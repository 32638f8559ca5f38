#pragma once

#include "base/Result.h"
#include "tools/velk/commands/check/CheckSteps.h"
#include "tools/velk/commands/check/Diagnosis.h"
#include "tools/velk/commands/check/LineScan.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velk {

enum class StepOutcome { Ok, Failed, NotReached, Skipped };

/** The result of one step. */
struct StepReport {
    CheckStep step = CheckStep::Port;
    StepOutcome outcome = StepOutcome::NotReached;
    std::string found{};                                       ///< when it succeeded, or was skipped
    std::optional<base::Failure> failure{};                    ///< when it failed
    LastWords words{};                                         ///< the frames of the step
    std::optional<std::chrono::system_clock::time_point> at{}; ///< empty when it was not reached

    /** What was found, or why it failed. */
    [[nodiscard]] std::string const& text() const { return failure ? failure->text : found; }
};

/** The program that the PLC runs. */
struct FoundProgram {
    std::uint32_t project = 0;
    std::size_t variables = 0;
    std::uint64_t pieces = 0; ///< of its symbol file's upload; 0 when it was stored already
};

/** The checked line. */
struct CheckedLine {
    std::string port;
    std::string station;
    int node = 0;
    CheckedSettings settings{};
};

/** A check of a line, step by step. */
struct CheckReport {
    CheckedLine line;
    std::vector<StepReport> steps;
    std::vector<std::string> causes; ///< of the step that failed, the most likely first
    std::optional<FoundProgram> program;

    /** The step that failed, or null. */
    [[nodiscard]] StepReport const* failed() const;
};

/** How far the PLC answers to one candidate of a scan. */
enum class Answer {
    NotPossible, ///< the port does not support such settings
    None,
    Bytes,
    LinkCheck,
};

struct ScanAttempt {
    LineCandidate candidate;
    Answer answer = Answer::None;
    std::chrono::system_clock::time_point at;
};

/** A search for the settings of a line; it ends with the ones that the PLC answers to. */
struct ScanReport {
    CheckedLine line;
    std::vector<ScanAttempt> attempts;

    /** The settings that the PLC answers to, or null. */
    [[nodiscard]] LineCandidate const* found() const;

    /** Those with which something was received, but no answer. */
    [[nodiscard]] std::vector<LineCandidate> stirred() const;
};

CheckedLine checkedLine(Settings const& settings);

} // namespace velk
