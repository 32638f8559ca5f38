#include "tools/velk/trace/TraceOutput.h"

#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/context/Observers.h"
#include "tools/velk/terminal/Terminal.h"

#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace velk::trace {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

[[noreturn]] void refuse(std::string const& text) {
    throw CommandError(ExitCode::Usage, text);
}

/** Every frame is written to the disk or the pipe before the next one arrives. */
Sink fileSink(std::string const& name) {
    std::unique_ptr<std::FILE, FileCloser> opened(std::fopen(name.c_str(), "wbe"));
    if (!opened) {
        refuse(fmt::format("the trace {} cannot be written: {}", name, std::generic_category().message(errno)));
    }
    std::shared_ptr<std::FILE> const file(std::move(opened));
    return [file, name](std::string_view text) {
        if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() || std::fflush(file.get()) != 0) {
            throw std::runtime_error(fmt::format("the trace {} cannot be written any more: {}", name,
                                                 std::generic_category().message(errno)));
        }
    };
}

Sink errorSink(Terminal& terminal) {
    return [&terminal](std::string_view text) {
        terminal.status(""); // a line that redraws itself makes room
        if (std::fwrite(text.data(), 1, text.size(), stderr) != text.size()) {
            throw std::runtime_error("the trace cannot be written to standard error any more");
        }
    };
}

std::int64_t unixNow() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::shared_ptr<TraceRecorder> startRecorder(TraceOptions const& options, Context& context) {
    TraceKind const kind = chooseKind(options);
    Sink sink = options.file ? fileSink(*options.file) : errorSink(context.terminal);
    auto const complain = [&terminal = context.terminal](std::string_view text) { terminal.complain(text); };
    std::int64_t const now = context.clock.microseconds();
    auto recorder = std::make_shared<TraceRecorder>(makeTraceFormat(kind), std::move(sink), complain, unixNow() - now);
    recorder->begin(now, "velk " VELK_VERSION);
    return recorder;
}

/** Shows a session to a trace that outlives it, and to one that was requested before. */
class SessionTracer final : public Observers {
public:
    SessionTracer(std::shared_ptr<TraceRecorder> recorder, std::unique_ptr<host::PortObserver> other)
        : recorder_(std::move(recorder)), other_(std::move(other)) {
        attach(*recorder_);
        if (other_) {
            attach(*other_);
        }
    }

private:
    std::shared_ptr<TraceRecorder> recorder_;
    std::unique_ptr<host::PortObserver> other_;
};

} // namespace

TraceKind chooseKind(TraceOptions const& options) {
    if (options.format == TraceKind::Pcapng && !options.file) {
        refuse("a pcapng trace cannot be printed: give a file name");
    }
    if (options.format) {
        return *options.format;
    }
    auto const kind = options.file ? traceKindOf(*options.file) : TraceKind::Text;
    if (!kind) {
        refuse(fmt::format("the format of the trace is not clear from the name {}: use .txt, .jsonl or .pcapng, or "
                           "give the format",
                           *options.file));
    }
    return *kind;
}

std::function<bool()> wantTrace(Context& context, std::shared_ptr<TraceOptions const> options) {
    auto const recorder = std::make_shared<std::shared_ptr<TraceRecorder>>();
    auto before = std::exchange(context.makeTracer, {});
    context.tracesToError = context.tracesToError || !options->file;
    context.makeTracer = [&context, options = std::move(options), recorder,
                          before = std::move(before)](Settings const& settings) -> std::unique_ptr<host::PortObserver> {
        auto other = before ? before(settings) : nullptr;
        if (!*recorder) {
            *recorder = startRecorder(*options, context);
        }
        return std::make_unique<SessionTracer>(*recorder, std::move(other));
    };
    return [recorder] { return *recorder != nullptr; };
}

} // namespace velk::trace
