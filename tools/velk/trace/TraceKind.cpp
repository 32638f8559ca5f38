#include "tools/velk/trace/TraceKind.h"

#include "tools/velk/trace/JsonTrace.h"
#include "tools/velk/trace/PcapngTrace.h"
#include "tools/velk/trace/TextTrace.h"

#include <algorithm>
#include <array>

namespace velk::trace {
namespace {

struct Named {
    std::string_view name;
    TraceKind kind;
};

constexpr std::array kNames{Named{"text", TraceKind::Text}, Named{"jsonl", TraceKind::JsonLines},
                            Named{"pcapng", TraceKind::Pcapng}};

constexpr std::array kEndings{Named{".txt", TraceKind::Text}, Named{".log", TraceKind::Text},
                              Named{".jsonl", TraceKind::JsonLines}, Named{".json", TraceKind::JsonLines},
                              Named{".pcapng", TraceKind::Pcapng}};

template <std::size_t count>
std::optional<TraceKind> find(std::array<Named, count> const& table, std::string_view name) {
    auto const* const found =
        std::find_if(table.begin(), table.end(), [name](Named const& one) { return one.name == name; });
    return found == table.end() ? std::nullopt : std::optional(found->kind);
}

} // namespace

std::optional<TraceKind> traceKindNamed(std::string_view name) {
    return find(kNames, name);
}

std::optional<TraceKind> traceKindOf(std::filesystem::path const& file) {
    return find(kEndings, file.extension().string());
}

std::unique_ptr<TraceFormat> makeTraceFormat(TraceKind kind) {
    switch (kind) {
    case TraceKind::JsonLines:
        return std::make_unique<JsonTrace>();
    case TraceKind::Pcapng:
        return std::make_unique<PcapngTrace>();
    case TraceKind::Text:
        break;
    }
    return std::make_unique<TextTrace>();
}

} // namespace velk::trace
