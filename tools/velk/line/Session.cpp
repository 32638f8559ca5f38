#include "tools/velk/line/Session.h"

#include "base/Signals.h"
#include "host/instance/ModuleFile.h"
#include "host/values/TagAddress.h"
#include "host/values/TagLength.h"
#include "interfaces/ITag.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/line/Access.h"
#include "tools/velk/line/Advice.h"
#include "tools/velk/line/SetAside.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <unistd.h>

namespace velk {
namespace {

using base::FailureKind;

/** A name that no program has: reading it still makes the PLC compare the project. */
constexpr char const* kNoVariable = "VELK_ASKS_FOR_THE_PROJECT";

/** The name of a variable that can be read, or one that does not exist. */
std::string probeName(SymbolTable const* table) {
    if (table == nullptr) {
        return kNoVariable;
    }
    auto const& variables = table->variables();
    auto const readable = std::find_if(variables.begin(), variables.end(), [](Variable const& each) {
        return each.area < kAddressableAreas && each.size > 0 && each.name.find('?') == std::string::npos;
    });
    return readable == variables.end() ? kNoVariable : readable->name;
}

std::optional<std::uint64_t> fileSize(std::filesystem::path const& file) {
    std::error_code error;
    std::uint64_t const size = std::filesystem::file_size(file, error);
    return error ? std::nullopt : std::optional(size);
}

/** Why a file cannot be stored, as far as its folder shows. */
std::optional<std::string> whyNotKept(std::filesystem::path const& file) {
    std::filesystem::path const folder = file.parent_path();
    std::error_code error;
    if (std::filesystem::exists(file, error) && !std::filesystem::is_regular_file(file, error)) {
        return file.string() + " is not a file";
    }
    if (::access(folder.c_str(), W_OK | X_OK) != 0) {
        return folder.string() + ": " + std::strerror(errno);
    }
    std::filesystem::space_info const space = std::filesystem::space(folder, error);
    return !error && space.available == 0 ? std::optional(folder.string() + ": no space is left") : std::nullopt;
}

WatchedLine watchedLine(Settings const& settings) {
    return {.routingHeaderLength = routingHeaderLength(settings.config), .couplers = settings.passesCouplers()};
}

bool sameTable(SymbolTable const& one, SymbolTable const& other) {
    return one.projectId() == other.projectId() && one.variables() == other.variables();
}

} // namespace

Tag missingTag(TagRequest const& request, Settings const& settings, base::Failure const& failure) {
    Tag tag;
    tag.name = request.shown;
    tag.node = request.node;
    tag.station = settings.stationName(request.node);
    tag.variable = request.variable;
    tag.failure = failure;
    return tag;
}

Session::Session(Settings settings, Context& context, UploadStyle uploads)
    : settings_(std::move(settings)), context_(context), lineWatch_(watchedLine(settings_)),
      uploadLine_(settings_, context.terminal, std::move(uploads)) {
    attachments_.push_back(std::make_unique<Attachment>(context.observers, lineWatch_));
    attachments_.push_back(std::make_unique<Attachment>(context.observers, uploadLine_));
    if (context.makeTracer) {
        tracer_ = context.makeTracer(settings_);
        attachments_.push_back(std::make_unique<Attachment>(context.observers, *tracer_));
    }
}

Session::~Session() = default;

// ---- the line

base::Outcome Session::prepare() {
    if (panel_) {
        return {};
    }
    base::Result<std::filesystem::path> const module = host::findModule();
    if (!module.ok()) {
        return module.failure();
    }
    host::PanelSettings const panelSettings{.module = module.value(),
                                            .storage = settings_.storage,
                                            .ident = settings_.instance,
                                            .ports = {},
                                            .config = settings_.config,
                                            .interruption = context_.interrupt.descriptor()};
    auto panel = host::Panel::create(panelSettings, context_.clock, &context_.observers);
    if (!panel.ok()) {
        return panel.failure();
    }
    panel_ = std::move(panel.value());
    return {};
}

base::Outcome Session::open() {
    if (base::Outcome prepared = prepare(); !prepared.ok()) {
        return prepared;
    }
    base::Outcome started = panel_->start();
    portOpen_ = started.ok();
    return portOpen_ ? makeStorage() : started;
}

base::Outcome Session::makeStorage() {
    base::Outcome made = panel_->makeStorage();
    if (made.ok()) {
        return made;
    }
    close();
    return made.failure().withText(made.failure().text + "; give another folder for the symbol files with --storage");
}

void Session::close() {
    if (portOpen_) {
        static_cast<void>(panel_->stop());
        portOpen_ = false;
    }
}

// ---- symbols

std::filesystem::path Session::symbolFile(int node) const {
    return storedSymbolFile(settings_, node);
}

std::optional<Session::FileStamp> Session::stampOf(int node) const {
    std::error_code error;
    auto const changed = std::filesystem::last_write_time(symbolFile(node), error);
    auto const size = fileSize(symbolFile(node));
    return error || !size ? std::nullopt : std::optional(FileStamp(changed, *size));
}

base::Result<SymbolTable const*> Session::storedSymbols(int node) {
    std::optional<FileStamp> const stamp = stampOf(node);
    base::Result<SymbolTable> loaded = SymbolTable::load(symbolFile(node));
    if (!loaded.ok()) {
        return loaded.failure();
    }
    if (stamp) {
        stamps_.insert_or_assign(node, *stamp);
    }
    auto const known = symbols_.find(node);
    if (known != symbols_.end() && sameTable(known->second, loaded.value())) {
        return &known->second;
    }
    return &symbols_.insert_or_assign(node, std::move(loaded.value())).first->second;
}

base::Result<host::TagResult> Session::readProbe(int node, SymbolTable const* stored) {
    base::Result<std::string> const address = host::tagAddress({node, probeName(stored), "M", "0", "unsignedByte"});
    if (!address.ok()) {
        return address.failure();
    }
    base::Result<ITag*> const tag = panel_->driver().createTag(address.value());
    if (!tag.ok()) {
        return tag.failure();
    }
    ITag* const tags[] = {tag.value()};
    std::vector<host::TagResult> results = host::TagReader(panel_->driver().protocol()).read(tags);
    panel_->driver().freeTag(tag.value());
    return std::move(results.front());
}

Session::Probe Session::probe(int node) {
    base::Result<SymbolTable const*> const stored = storedSymbols(node);
    uploadLine_.expect(fileSize(symbolFile(node)));
    base::Result<host::TagResult> const read = readProbe(node, stored.ok() ? stored.value() : nullptr);
    if (!read.ok()) {
        return {false, read.failure()};
    }
    host::TagResult const& result = read.value();
    bool const accepted =
        result.good || result.failure.kind == FailureKind::Missing || result.failure.kind == FailureKind::BadQuality;
    return {accepted, result.failure};
}

base::Result<SymbolTable const*> Session::symbols(int node) {
    constexpr int kAttempts = 3; // a program that is replaced, the first variable of the new one, and one to spare
    Probe asked;
    for (int attempt = 0; attempt < kAttempts && !asked.accepted; ++attempt) {
        bool const hadFile = fileSize(symbolFile(node)).has_value();
        asked = probe(node);
        bool const hasNewFile = !hadFile && fileSize(symbolFile(node)).has_value();
        if (!asked.accepted && !hasNewFile && asked.failure.kind != FailureKind::OtherProject) {
            break;
        }
    }
    if (!asked.accepted) {
        return whyNoSymbols(asked.failure, node);
    }
    current_.insert(node);
    return storedSymbols(node);
}

/** The driver reports a file that it cannot store like one that the PLC does not have. */
base::Failure Session::whyNoSymbols(base::Failure const& failure, int node) const {
    bool const came = uploadLine_.upload().bytes > 0 && !lineWatch_.silent();
    std::optional<std::string> const reason =
        failure.kind == FailureKind::NoSymbolFile && came ? whyNotKept(symbolFile(node)) : std::nullopt;
    return reason
               ? base::Failure{FailureKind::Storage, "the symbol file was received, but cannot be stored: " + *reason}
               : failure;
}

bool Session::isProgramReplaced(int node) {
    auto const known = symbols_.find(node);
    std::optional<FileStamp> const stamp = stampOf(node);
    if (known == symbols_.end() || !stamp || stamps_[node] == *stamp) {
        return false;
    }
    SymbolTable const before = known->second;
    base::Result<SymbolTable const*> const now = storedSymbols(node);
    return now.ok() && !sameTable(before, *now.value());
}

base::Result<SymbolTable const*> Session::symbolsAskedOnce(int node) {
    auto const known = symbols_.find(node);
    return current_.contains(node) && known != symbols_.end() ? &known->second : symbols(node);
}

base::Result<SymbolTable const*> Session::fetchSymbols(int node) {
    current_.clear();
    badTags_.clear();
    panel_.reset(); // with the symbols that it knows
    portOpen_ = false;
    std::optional<std::uint64_t> const size = fileSize(symbolFile(node));
    SetAside before(symbolFile(node));
    if (base::Outcome const opened = open(); !opened.ok()) {
        return opened.failure();
    }
    uploadLine_.expect(size);
    base::Result<SymbolTable const*> fetched = symbols(node);
    if (fetched.ok()) {
        before.drop();
    }
    return fetched;
}

// ---- tags

bool Session::bigEndian(int node) const {
    return byteOrderWord(settings_.nodeSettings(node).model) == "big";
}

void Session::addressTag(Tag& tag, std::string const& offset) {
    base::Result<std::string> const address =
        host::tagAddress({tag.node, tag.variable, tag.access.addressSpace, offset, tag.access.dataType});
    base::Result<ITag*> const made =
        address.ok() ? panel_->driver().createTag(address.value()) : base::Result<ITag*>(address.failure());
    if (!made.ok()) {
        tag.failure = made.failure();
        return;
    }
    tag.tag = made.value();
    if (base::Outcome const checked = host::checkLength(*tag.tag); !checked.ok()) {
        freeTags({&tag, 1});
        tag.failure = checked.failure();
    }
}

Tag Session::createTag(TagRequest const& request, Variable const* variable) {
    Tag tag;
    tag.name = request.shown;
    tag.node = request.node;
    tag.station = settings_.stationName(request.node);
    tag.variable = variable != nullptr ? variable->name : request.variable;
    tag.plcType = variable != nullptr && request.type.empty() ? variable->type : "";
    base::Result<Access> access = request.type.empty() ? inferAccess(*variable, bigEndian(request.node))
                                                       : chosenAccess(request.type, request.area, variable);
    if (!access.ok()) {
        tag.failure = access.failure();
        return tag;
    }
    tag.access = std::move(access.value());
    addressTag(tag, request.offset);
    return tag;
}

std::vector<Tag> Session::createMatching(TagRequest const& request, SymbolTable const& table) {
    std::vector<Tag> tags;
    for (Variable const* const variable : table.matching(request.variable)) {
        TagRequest one = request;
        one.shown = variable->name;
        tags.push_back(createTag(one, variable));
    }
    return tags;
}

base::Result<std::vector<Tag>> Session::createTags(TagRequest const& request) {
    bool const bitWithoutArea = request.type == "bit" && request.area.empty();
    if (!request.isPattern && !request.type.empty() && !bitWithoutArea) {
        return std::vector<Tag>{createTag(request, nullptr)};
    }
    base::Result<SymbolTable const*> const table = symbolsAskedOnce(request.node);
    if (!table.ok()) {
        return table.failure();
    }
    if (request.isPattern) {
        std::vector<Tag> tags = createMatching(request, *table.value());
        return tags.empty()
                   ? std::vector<Tag>{missingTag(request, settings_, nothingMatches(*table.value(), request.variable))}
                   : std::move(tags);
    }
    Variable const* const variable = table.value()->find(request.variable);
    if (variable != nullptr) {
        return std::vector<Tag>{createTag(request, variable)};
    }
    return std::vector<Tag>{missingTag(request, settings_, missingVariable(*table.value(), request.variable))};
}

void Session::freeTags(std::span<Tag> tags) {
    for (Tag& tag : tags) {
        if (tag.tag != nullptr) {
            badTags_.remove(tag.tag);
            panel_->driver().freeTag(tag.tag);
            tag.tag = nullptr;
        }
    }
}

std::vector<host::TagResult> Session::read(std::span<Tag const> tags, host::TransferPolicy policy) {
    std::vector<ITag*> list;
    for (Tag const& tag : tags) {
        list.push_back(tag.tag);
    }
    std::vector<host::TagResult> results = host::TagReader(panel_->driver().protocol(), policy).read(list, badTags_);
    for (std::size_t i = 0; i < results.size(); ++i) {
        if (tags[i].tag == nullptr) {
            results[i].failure = tags[i].failure;
        }
    }
    return results;
}

// ---- failures

/** The driver reports a failed port and a coupler's fault like silence, or not at all. */
base::Failure Session::causeOf(base::Failure const& failure) const {
    bool const ofTheVariable = failure.kind == FailureKind::Missing || failure.kind == FailureKind::Unreachable;
    if (ofTheVariable) {
        return failure;
    }
    if (std::optional<base::Failure> const fault = portFault()) {
        return {fault->kind, fault->text, failure.driverCode};
    }
    if (int const status = lineWatch_.couplerStatus(); status != 0) {
        return {FailureKind::Coupler, fmt::format("a coupler could not pass the frame on: status {}", status),
                failure.driverCode};
    }
    if (std::size_t const stray = lineWatch_.strayBytes(); stray != 0) {
        return {FailureKind::Garbled, fmt::format("{} bytes came that begin no frame", stray), failure.driverCode};
    }
    if (failure.kind == FailureKind::LoginRefused) {
        return failure.withText("the PLC refused the login, or the logout of another station");
    }
    // The driver reports only a missing symbol file, not that the PLC stopped answering while it was fetched.
    if (failure.kind == FailureKind::NoSymbolFile && lineWatch_.silent()) {
        return {FailureKind::Timeout, failure.text, failure.driverCode};
    }
    return failure;
}

std::optional<base::Failure> Session::portFault() const {
    if (!panel_) {
        return std::nullopt;
    }
    std::optional<base::Failure> fault = panel_->serial().lastFault();
    return fault ? fault : panel_->serial().lastError();
}

base::Failure Session::explained(base::Failure const& failure) const {
    base::Failure cause = causeOf(failure);
    cause.text = displayable(cause.text);
    if (context_.interrupt.requested()) {
        cause.kind = FailureKind::Interrupted;
    }
    return cause;
}

ExitCode Session::exitCode(host::TagResult const& result) const {
    return result.good ? ExitCode::Good : exitCode(result.failure);
}

ExitCode Session::exitCode(base::Failure const& failure) const {
    return exitCodeFor(explained(failure).kind);
}

std::string Session::describe(base::Failure const& failure) const {
    return explained(failure).text;
}

CommandError Session::error(base::Failure const& failure) const {
    base::Failure const cause = explained(failure);
    std::string const hint = advice(cause.kind, lineWatch_.received() > 0);
    return {exitCodeFor(cause.kind), cause.text + (hint.empty() ? "" : ". " + hint)};
}

void Session::require(base::Outcome const& outcome) const {
    if (!outcome.ok()) {
        throw error(outcome.failure());
    }
}

} // namespace velk
