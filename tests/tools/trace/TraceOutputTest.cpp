#include "tools/velk/trace/TraceOutput.h"

#include "base/Signals.h"
#include "tests/support/TempDir.h"
#include "tests/tools/trace/Frames.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/project/Settings.h"
#include "tools/velk/terminal/Terminal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

using namespace tracetest;
using velk::trace::chooseKind;
using velk::trace::TraceKind;
using velk::trace::TraceOptions;
using velk::trace::TraceRecorder;

TEST(TraceOptions, TheFilesEndingTellsTheFormat) {
    EXPECT_EQ(chooseKind({.file = "a/b.txt", .format = {}}), TraceKind::Text);
    EXPECT_EQ(chooseKind({.file = "b.log", .format = {}}), TraceKind::Text);
    EXPECT_EQ(chooseKind({.file = "b.jsonl", .format = {}}), TraceKind::JsonLines);
    EXPECT_EQ(chooseKind({.file = "b.json", .format = {}}), TraceKind::JsonLines);
    EXPECT_EQ(chooseKind({.file = "b.pcapng", .format = {}}), TraceKind::Pcapng);
}

TEST(TraceOptions, TheFormatCountsMoreThanTheEnding) {
    EXPECT_EQ(chooseKind({.file = "b.txt", .format = TraceKind::Pcapng}), TraceKind::Pcapng);
    EXPECT_EQ(chooseKind({.file = "b", .format = TraceKind::Text}), TraceKind::Text);
}

TEST(TraceOptions, WithoutAFileItIsText) {
    EXPECT_EQ(chooseKind({}), TraceKind::Text);
    EXPECT_EQ(chooseKind({.file = {}, .format = TraceKind::JsonLines}), TraceKind::JsonLines);
}

std::string Complaint(TraceOptions const& options) {
    try {
        static_cast<void>(chooseKind(options));
        return "";
    } catch (velk::CommandError const& error) {
        EXPECT_EQ(error.code(), velk::ExitCode::Usage);
        return error.what();
    }
}

TEST(TraceOptions, WhatCannotBeIsRefused) {
    EXPECT_EQ(
        Complaint({.file = "trace.xyz", .format = {}}),
        "the format of the trace is not clear from the name trace.xyz: use .txt, .jsonl or .pcapng, or give the "
        "format");
    EXPECT_EQ(Complaint({.file = {}, .format = TraceKind::Pcapng}),
              "a pcapng trace cannot be printed: give a file name");
}

host::PortFrame Sent(Bytes const& bytes, std::int64_t at) {
    return {.direction = host::FrameDirection::Sent, .bytes = bytes, .firstByteAt = at, .lastByteAt = at + 3};
}

TEST(TraceRecorder, GivesTheTimesOfDayAndTheDuration) {
    std::string written;
    TraceRecorder recorder(
        velk::trace::makeTraceFormat(TraceKind::JsonLines), [&](std::string_view text) { written += text; },
        [](std::string_view text) { ADD_FAILURE() << text; }, 1'000'000);
    recorder.onFrame(Sent(Hex(kAck0), 500));
    EXPECT_EQ(written, R"({"event":"frame","time":"1970-01-01T00:00:01.000500Z","lasts_us":3,"direction":"to_plc",)"
                       R"("kind":"turnaround","byte_order":"little","number":0,"code":10,)"
                       R"("bytes":"55 55 0A 00 00 00","faults":[]})"
                       "\n");
    EXPECT_FALSE(recorder.failed());
}

TEST(TraceRecorder, AFailureIsToldOnceAndEndsTheTrace) {
    int attempts = 0;
    std::string complaints;
    TraceRecorder recorder(
        velk::trace::makeTraceFormat(TraceKind::Text),
        [&](std::string_view /*text*/) {
            ++attempts;
            throw std::runtime_error("the disk is full");
        },
        [&](std::string_view text) { complaints += text; }, 0);
    recorder.onTimeout(1);
    recorder.onFault("hang-up", 2);
    EXPECT_TRUE(recorder.failed());
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(complaints, "the disk is full");
}

class StillClock final : public host::Clock {
public:
    std::int64_t microseconds() override { return 0; }
};

/** A context in a folder that goes with the test. */
class InContext : public testing::Test {
protected:
    void want(std::string const& name) {
        auto options = std::make_shared<TraceOptions>();
        options->file = (folder / name).string();
        velk::trace::wantTrace(context, options);
    }

    [[nodiscard]] std::string content(std::string const& name) const {
        std::ifstream file(folder / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    velktest::TempDir temporary;
    std::filesystem::path folder = temporary.Path();
    velk::Terminal terminal{velk::StreamKinds{}};
    base::Signals interrupt;
    StillClock clock;
    velk::Context context{.terminal = terminal, .interrupt = interrupt, .clock = clock};
    velk::Settings settings;
};

long CountOf(std::string_view what, std::string const& text) {
    long count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(InContext, SessionsOfOneCommandShareATrace) {
    want("trace.jsonl");
    EXPECT_FALSE(std::filesystem::exists(folder / "trace.jsonl")); // no session, no file
    for (int session = 0; session < 2; ++session) {
        auto const tracer = context.makeTracer(settings);
        tracer->onTimeout(1);
    }
    std::string const text = content("trace.jsonl");
    EXPECT_EQ(CountOf("\"begin\"", text), 1);
    EXPECT_EQ(CountOf("\"timeout\"", text), 2);
}

TEST_F(InContext, TwoTracesSeeTheSame) {
    want("outer.jsonl");
    want("inner.txt");
    auto const tracer = context.makeTracer(settings);
    tracer->onFrame(Sent(Hex(kAck0), 500));
    tracer->onDropped(Hex("01"), 600);
    EXPECT_EQ(CountOf("turnaround", content("outer.jsonl")), 1);
    EXPECT_EQ(CountOf("turnaround", content("inner.txt")), 1);
    EXPECT_EQ(CountOf("dropped", content("outer.jsonl")), 1);
    EXPECT_EQ(CountOf("dropped", content("inner.txt")), 1);
}

TEST_F(InContext, AFileThatCannotBeMadeIsRefusedBeforeTheWorkBegins) {
    want("none/trace.txt");
    try {
        static_cast<void>(context.makeTracer(settings));
        FAIL() << "there is no such folder";
    } catch (velk::CommandError const& error) {
        EXPECT_EQ(error.code(), velk::ExitCode::Usage);
        EXPECT_EQ(std::string(error.what()), "the trace " + (folder / "none/trace.txt").string() +
                                                 " cannot be written: No such file or directory");
    }
}

} // namespace
