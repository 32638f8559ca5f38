#include "tools/velk/Session.h"

#include "host/PermanentStorage.h"
#include "tools/common/ModuleFile.h"
#include "tools/velk/Context.h"
#include "tools/velk/Interrupt.h"

namespace velk {

Session::Session(Settings settings, Context& context) : settings_(std::move(settings)), context_(context) {}

Session::~Session() = default;

host::Outcome Session::prepare() {
    if (panel_) {
        return {};
    }
    host::Result<std::filesystem::path> const module = tools::findModule();
    if (!module.ok()) {
        return module.failure();
    }
    tools::PanelSettings const panelSettings{.module = module.value(),
                                             .storage = settings_.storage,
                                             .ident = settings_.instance,
                                             .ports = {},
                                             .config = settings_.config};
    auto panel = tools::Panel::create(panelSettings, context_.clock, &context_.observers);
    if (!panel.ok()) {
        return panel.failure();
    }
    panel_ = std::move(panel.value());
    return {};
}

host::Outcome Session::open() {
    if (host::Outcome const prepared = prepare(); !prepared.ok()) {
        return prepared;
    }
    host::Outcome const started = panel_->start();
    portOpen_ = started.ok();
    return started;
}

void Session::close() {
    if (portOpen_) {
        static_cast<void>(panel_->stop());
        portOpen_ = false;
    }
}

std::filesystem::path Session::symbolFile(int node) const {
    return settings_.storage / host::instanceFolder(settings_.instance).value_or("velk") /
           ("PLCSymbols_" + std::to_string(node) + ".sdb");
}

host::Outcome Session::askForProject(int /*node*/) {
    return {};
}

host::Result<SymbolTable const*> Session::symbols(int node) {
    if (host::Outcome const asked = askForProject(node); !asked.ok()) {
        return asked.failure();
    }
    return storedSymbols(node);
}

host::Result<SymbolTable const*> Session::fetchSymbols(int node) {
    return symbols(node);
}

host::Result<SymbolTable const*> Session::storedSymbols(int node) {
    host::Result<SymbolTable> table = SymbolTable::load(symbolFile(node));
    if (!table.ok()) {
        return table.failure();
    }
    return &symbols_.insert_or_assign(node, std::move(table.value())).first->second;
}

host::Result<std::vector<Tag>> Session::createTags(TagRequest const& /*request*/) {
    return std::vector<Tag>{};
}

std::vector<host::TagResult> Session::read(std::span<Tag const> tags, host::TransferPolicy policy) {
    std::vector<ITag*> list;
    for (Tag const& tag : tags) {
        list.push_back(tag.tag);
    }
    return host::TagReader(panel_->driver().protocol(), policy).read(list);
}

ExitCode Session::exitCode(host::Failure const& failure) const {
    if (context_.interrupt.requested()) {
        return ExitCode::Interrupted;
    }
    bool const dead = panel_ && (!panel_->serial().lastError().empty() || !panel_->serial().lastFault().empty());
    return exitCodeFor(failure, dead ? PortState::Dead : PortState::Fine);
}

CommandError Session::error(host::Failure const& failure) const {
    return {exitCode(failure), panel_ ? panel_->explain(failure).text : failure.text};
}

void Session::require(host::Outcome const& outcome) const {
    if (!outcome.ok()) {
        throw error(outcome.failure());
    }
}

} // namespace velk
