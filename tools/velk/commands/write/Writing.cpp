#include "tools/velk/commands/write/Writing.h"

#include "host/values/DatagramPlanner.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace velk {

void Writing::run(std::vector<Change>& changes, std::span<Tag const> tags) {
    write(changes);
    readBack(changes, tags);
    noteReplacedPrograms(changes);
}

void Writing::write(std::vector<Change>& changes) {
    std::vector<ITag*> tags;
    std::transform(changes.begin(), changes.end(), std::back_inserter(tags),
                   [](Change const& change) { return change.tag->tag; });
    IProtocol3& protocol = session_.panel().driver().protocol();
    for (host::Datagram const& list : host::planDatagrams(protocol, tags, host::Purpose::Write)) {
        writeList(changes, list.items);
    }
}

/** Once the line has failed, further lists are not tried. */
void Writing::writeList(std::vector<Change>& changes, std::span<std::size_t const> items) {
    std::vector<host::TagWrite> writes;
    for (std::size_t const item : items) {
        writes.push_back({changes[item].tag->tag, changes[item].wanted});
    }
    // In one piece or not at all: after splitting a list it would be unknown which half the PLC received.
    host::TransferPolicy const policy{.findBadTags = false};
    watch_.begin();
    std::vector<host::TagResult> results =
        end_ ? std::vector<host::TagResult>(items.size())
             : host::TagReader(session_.panel().driver().protocol(), policy).write(writes);
    for (std::size_t i = 0; i < items.size(); ++i) {
        Change& change = changes[items[i]];
        change.written = std::move(results[i]);
        bool const leftOut = !change.written.good && change.written.failure.kind == base::FailureKind::LeftOut;
        change.delivery = leftOut ? Delivery::NotSent : watch_.delivery(); // the others may have been sent
        Judgement const judgement = judge(change.written);
        change.written.failure = judgement.failure;
        change.writeCode = judgement.code;
        change.advice = judgement.advice;
    }
}

void Writing::readBack(std::vector<Change>& changes, std::span<Tag const> tags) {
    std::vector<Reading> readings = end_ ? std::vector<Reading>(tags.size()) : readWhileItWorks(session_, tags);
    for (std::size_t i = 0; i < changes.size(); ++i) {
        Change& change = changes[i];
        change.after = std::move(readings[i]);
        Judgement const judgement = judge(change.after.result);
        change.after.result.failure = judgement.failure;
        change.readBackCode = judgement.code;
        change.advice = change.advice.empty() ? judgement.advice : change.advice;
    }
}

Writing::Judgement Writing::judge(host::TagResult const& result) {
    if (result.good) {
        return {};
    }
    ExitCode const code = end_ ? end_->code() : session_.exitCode(result);
    CommandError const error = session_.error(result.failure);
    if (endsEverything(code)) { // reported once, for all of them
        end_ = end_ ? end_ : error;
        return {code, result.failure};
    }
    return {code, session_.explained(result.failure), error.what()};
}

/** After the read, which makes the driver fetch a new program's symbols: only then the change shows. */
void Writing::noteReplacedPrograms(std::vector<Change>& changes) {
    std::map<int, bool> replaced; // by node; the session reports it once
    for (Change& change : changes) {
        int const node = change.tag->node;
        if (!replaced.contains(node)) {
            replaced[node] = session_.isProgramReplaced(node);
        }
        change.programReplaced = replaced[node];
    }
}

} // namespace velk
