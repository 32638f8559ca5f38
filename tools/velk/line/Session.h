#pragma once

#include "base/Result.h"
#include "host/instance/Panel.h"
#include "host/values/BadTags.h"
#include "host/values/TagReader.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/ExitCode.h"
#include "tools/velk/context/Observers.h"
#include "tools/velk/line/LineWatch.h"
#include "tools/velk/line/SymbolTable.h"
#include "tools/velk/line/Tag.h"
#include "tools/velk/line/TagRequest.h"
#include "tools/velk/line/UploadLine.h"
#include "tools/velk/project/Settings.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velk {

struct Context;

/**
 * A line in use: the driver module with its configuration, the symbol tables of the stations, and tags.
 *
 * Nothing here throws for what happens on the line: failures are returned, and exitCode() or error() says what they
 * mean for the program. The context's observers see the port. When the user asks to stop, the port fails at once and
 * every operation ends.
 */
class Session {
public:
    /** @p context must outlive the session. */
    Session(Settings settings, Context& context, UploadStyle uploads = {});
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    [[nodiscard]] Settings const& settings() const { return settings_; }

    /** Loads and configures the module, if not yet done, and opens the port. */
    base::Outcome open();

    /** Closes the port; open() opens it again, and the tags stay. */
    void close();

    /** Whether open() has loaded the module, though perhaps not opened the port. */
    [[nodiscard]] bool hasModule() const { return panel_ != nullptr; }

    /** Only when the module is loaded. */
    [[nodiscard]] host::Panel& panel() { return *panel_; }

    /** Where the module keeps the symbol file of a node. */
    [[nodiscard]] std::filesystem::path symbolFile(int node) const;

    /**
     * The symbols of the program that the PLC runs now. The module fetches the symbol file when none is stored or
     * when the PLC runs another program. The table stays valid until the symbols of the same node are
     * requested again with another result.
     */
    base::Result<SymbolTable const*> symbols(int node);

    /** Fetches the symbol file, whatever is stored; the stored file stays when this fails. Earlier tags are deleted. */
    base::Result<SymbolTable const*> fetchSymbols(int node);

    /** The stored symbols of a node, without using the line: they may be of another program. */
    base::Result<SymbolTable const*> storedSymbols(int node);

    /**
     * The tags of a request: one, or as many as its pattern finds. Where the symbols of the node are needed, for a
     * pattern and for a tag without a type, they are requested once in a session.
     *
     * A tag that cannot be created is still listed, with its failure, and so is a pattern that finds nothing.
     */
    base::Result<std::vector<Tag>> createTags(TagRequest const& request);

    /** Gives tags back to the driver. */
    void freeTags(std::span<Tag> tags);

    /**
     * Whether the module has fetched the symbols of another program since those of the node were requested. Tags made
     * from the earlier symbols have old types and places, and must be created again.
     */
    bool isProgramReplaced(int node);

    /** Reads tags, asking apart those that were found bad before; failures name a dead port where there is one. */
    std::vector<host::TagResult> read(std::span<Tag const> tags, host::TransferPolicy policy = {});

    /** The exit code for the result of one tag. */
    [[nodiscard]] ExitCode exitCode(host::TagResult const& result) const;

    /** The exit code for a failure. */
    [[nodiscard]] ExitCode exitCode(base::Failure const& failure) const;

    /**
     * A failure with all that is known of the line: a failed port, a coupler's fault or an interruption gives its kind
     * and its text, which can be shown.
     */
    [[nodiscard]] base::Failure explained(base::Failure const& failure) const;

    /** The text of explained(). */
    [[nodiscard]] std::string describe(base::Failure const& failure) const;

    /** The same as an error that ends the command, with the likely cause in its text. */
    [[nodiscard]] CommandError error(base::Failure const& failure) const;

    /** Throws error() for a failure. */
    void require(base::Outcome const& outcome) const;
    template <typename Value>
    Value require(base::Result<Value> result) const {
        if (!result.ok()) {
            throw error(result.failure());
        }
        return std::move(result.value());
    }

    /** The latest upload; no bytes when there was none. */
    [[nodiscard]] tools::Upload const& upload() const { return uploadLine_.upload(); }

private:
    using FileStamp = std::pair<std::filesystem::file_time_type, std::uint64_t>; ///< time of the last change, and size

    /** Whether the PLC accepts a symbol file as that of its program. */
    struct Probe {
        bool accepted = false;
        base::Failure failure; ///< only when not accepted
    };

    base::Outcome prepare();
    base::Outcome makeStorage();
    [[nodiscard]] std::optional<FileStamp> stampOf(int node) const;
    [[nodiscard]] base::Failure whyNoSymbols(base::Failure const& failure, int node) const;
    [[nodiscard]] base::Failure causeOf(base::Failure const& failure) const;
    [[nodiscard]] std::optional<base::Failure> portFault() const;
    base::Result<SymbolTable const*> symbolsAskedOnce(int node);
    Probe probe(int node);
    base::Result<host::TagResult> readProbe(int node, SymbolTable const* stored);
    std::vector<Tag> createMatching(TagRequest const& request, SymbolTable const& table);
    Tag createTag(TagRequest const& request, Variable const* variable);
    void addressTag(Tag& tag, std::string const& offset);
    [[nodiscard]] bool bigEndian(int node) const;

    Settings settings_;
    Context& context_;
    LineWatch lineWatch_;
    UploadLine uploadLine_;
    std::unique_ptr<host::PortObserver> tracer_;
    std::vector<std::unique_ptr<Attachment>> attachments_;
    std::unique_ptr<host::Panel> panel_;
    host::BadTags badTags_; ///< of the panel
    bool portOpen_ = false;
    std::map<int, SymbolTable> symbols_; ///< by node
    std::map<int, FileStamp> stamps_;    ///< of the files that they are from
    std::set<int> current_;              ///< nodes whose symbols the PLC has accepted in this session
};

/** A tag for a request that has no value, with the reason. */
Tag missingTag(TagRequest const& request, Settings const& settings, base::Failure const& failure);

} // namespace velk
