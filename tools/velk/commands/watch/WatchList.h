#pragma once

#include "base/Result.h"
#include "tools/velk/line/Readings.h"
#include "tools/velk/line/TagRequest.h"

#include <set>
#include <vector>

namespace velk {

class Session;

/**
 * The watched variables and their latest readings.
 *
 * The tags of a station are created when it is first asked, and again when its PLC's program was replaced: their types
 * and places are those of one program.
 */
class WatchList {
public:
    explicit WatchList(std::vector<TagRequest> const& requests);

    [[nodiscard]] std::set<int> nodes() const;

    /**
     * Reads the variables of a station. When the program was replaced, the values of the old one are dropped and those
     * of the new one are read.
     *
     * The failure is that of the station; what is wrong with one variable is in its reading.
     */
    base::Outcome read(Session& session, int node);

    /** The session is gone, and its tags with it. The readings stay. */
    void forgetTags();

    /** Marks the variables of a station that cannot be asked as failed. The text of @p failure can be shown. */
    void fail(int node, Settings const& settings, base::Failure const& failure);

    /** The latest readings, in the order of the requests. */
    [[nodiscard]] std::vector<Reading> readings() const { return readings(nodes()); }

    /** The same of some stations only. */
    [[nodiscard]] std::vector<Reading> readings(std::set<int> const& nodes) const;

private:
    /** One request with its variables. */
    struct Watched {
        TagRequest request;
        std::vector<Tag> tags;
        std::vector<Reading> readings; ///< of the tags, in their order
        bool made = false;             ///< the tags exist in the driver, for the running program
    };

    base::Outcome make(Session& session, int node);
    void unmake(Session& session, int node);
    base::Outcome readTags(Session& session, int node);

    std::vector<Watched> list_;
};

} // namespace velk
