#include "tools/velk/commands/watch/WatchList.h"

#include "tools/velk/line/Session.h"

#include <algorithm>
#include <iterator>

namespace velk {
namespace {

Reading failedReading(Tag const& tag, base::Failure const& failure) {
    Reading reading;
    reading.tag = &tag;
    reading.result.failure = failure;
    reading.at = std::chrono::system_clock::now();
    return reading;
}

/** What is wrong with the station, and not only with one of its variables. */
bool isOfTheStation(ExitCode code) {
    return code != ExitCode::Good && code != ExitCode::ItemNotGood;
}

} // namespace

WatchList::WatchList(std::vector<TagRequest> const& requests) {
    std::transform(requests.begin(), requests.end(), std::back_inserter(list_), [](TagRequest const& request) {
        return Watched{request, {}, {}, false};
    });
}

std::set<int> WatchList::nodes() const {
    std::set<int> nodes;
    for (Watched const& watched : list_) {
        nodes.insert(watched.request.node);
    }
    return nodes;
}

base::Outcome WatchList::read(Session& session, int node) {
    if (base::Outcome made = make(session, node); !made.ok()) {
        return made;
    }
    base::Outcome answered = readTags(session, node);
    if (!session.isProgramReplaced(node)) {
        return answered;
    }
    unmake(session, node);
    base::Outcome const made = make(session, node);
    return made.ok() ? readTags(session, node) : made;
}

/** Creates the missing tags. */
base::Outcome WatchList::make(Session& session, int node) {
    for (Watched& watched : list_) {
        if (watched.request.node != node || watched.made) {
            continue;
        }
        base::Result<std::vector<Tag>> tags = session.createTags(watched.request);
        if (!tags.ok()) {
            fail(node, session.settings(), session.explained(tags.failure()));
            return tags.failure();
        }
        watched.tags = std::move(tags.value());
        watched.readings.assign(watched.tags.size(), {});
        watched.made = true;
    }
    return {};
}

void WatchList::unmake(Session& session, int node) {
    for (Watched& watched : list_) {
        if (watched.request.node == node && watched.made) {
            session.freeTags(watched.tags);
            watched.made = false;
        }
    }
}

/** Keeps the rows of the station; one that was never read has the name that the user gave. */
void WatchList::fail(int node, Settings const& settings, base::Failure const& failure) {
    for (Watched& watched : list_) {
        if (watched.request.node != node) {
            continue;
        }
        if (watched.tags.empty()) {
            watched.tags = {missingTag(watched.request, settings, failure)};
        }
        watched.readings.clear();
        for (Tag const& tag : watched.tags) {
            watched.readings.push_back(failedReading(tag, failure));
        }
    }
}

base::Outcome WatchList::readTags(Session& session, int node) {
    std::vector<Tag> wanted;
    for (Watched const& watched : list_) {
        if (watched.request.node == node) {
            wanted.insert(wanted.end(), watched.tags.begin(), watched.tags.end());
        }
    }
    std::vector<host::TagResult> results = session.read(wanted, {.skipNodeAfterTimeout = true});
    auto next = results.begin();
    base::Outcome outcome;
    ExitCode worst = ExitCode::Good;
    for (Watched& watched : list_) {
        for (std::size_t i = 0; watched.request.node == node && i < watched.tags.size(); ++i, ++next) {
            ExitCode const code = session.exitCode(*next);
            if (isOfTheStation(code) && worse(worst, code) != worst) {
                worst = code;
                outcome = next->failure;
            }
            next->failure = session.explained(next->failure);
            watched.readings[i] = {&watched.tags[i], std::move(*next), std::chrono::system_clock::now()};
        }
    }
    return outcome;
}

void WatchList::forgetTags() {
    for (Watched& watched : list_) {
        for (Tag& tag : watched.tags) {
            tag.tag = nullptr;
        }
        watched.made = false;
    }
}

std::vector<Reading> WatchList::readings(std::set<int> const& nodes) const {
    std::vector<Reading> wanted;
    for (Watched const& watched : list_) {
        if (nodes.contains(watched.request.node)) {
            wanted.insert(wanted.end(), watched.readings.begin(), watched.readings.end());
        }
    }
    return wanted;
}

} // namespace velk
