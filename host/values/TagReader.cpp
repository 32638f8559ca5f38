#include "host/values/TagReader.h"

#include "host/instance/DriverFailure.h"
#include "host/values/Counted.h"
#include "host/values/TagLength.h"
#include "interfaces/IProtocol.h"
#include "interfaces/ITag.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <set>
#include <utility>

namespace host {

namespace {

using Items = std::span<std::size_t const>;
using base::FailureKind;

std::size_t valueLength(ITag const& tag) {
    return static_cast<std::size_t>(std::max(0, tag.GetVarLength()));
}

base::Failure itemFailure(idal_error_t status) {
    if (status == kItemNotInSymbolFile) {
        return {FailureKind::Missing, "the PLC program has no such variable"};
    }
    if (status == kItemNotProcessed) {
        return base::Failure{FailureKind::LeftOut, "the driver did not process the tag"};
    }
    return base::Failure{FailureKind::LeftOut, "the driver gave the tag the status " + std::to_string(status)};
}

/**
 * How many calls in succession may bring no value while a list is searched for a failure that may also be the line's.
 * 16 find one tag of 90; after that, the PLC may well refuse whatever it is asked.
 */
constexpr int kCallsInVain = 16;

/** Whose failure it is that a list failed. */
enum class Blame {
    Tag,       ///< one of its tags
    TagOrLine, ///< perhaps one of its tags
    Nobody,    ///< no tag; or trying the others does harm
};

/** What is due to one tag of a list, and is found before anything is sent; but a read's conversions come last. */
bool isOfTheRequest(FailureKind kind) {
    switch (kind) {
    case FailureKind::Request:
    case FailureKind::Configuration:
    case FailureKind::Missing:
    case FailureKind::TooLarge:
    case FailureKind::Conversion:
        return true;
    default:
        return false;
    }
}

/** Failures that one tag of a list may cause in the PLC's reply. */
bool isOfTheReply(FailureKind kind) {
    switch (kind) {
    case FailureKind::Garbled:
    case FailureKind::WrongReply:
    case FailureKind::WrongSize:
    case FailureKind::WrongLength:
    case FailureKind::ReadRefused:
    case FailureKind::WriteRefused:
    case FailureKind::OtherProject:
        return true;
    default:
        return false;
    }
}

/** A way to move the values of some tags in one call. */
class Transfer {
public:
    Transfer(IProtocol3& protocol, std::vector<TagResult>& results) : protocol_(protocol), results_(results) {}
    virtual ~Transfer() = default;
    Transfer(Transfer const&) = delete;
    Transfer& operator=(Transfer const&) = delete;

    /** Moves the values of a datagram; returns false, with no result changed, when the call failed. */
    virtual bool datagram(Items items) = 0;

    /** The same for one tag, through the driver's operation for a single tag. */
    virtual bool single(std::size_t item) = 0;

    [[nodiscard]] virtual Blame blame(base::Failure const& failure) const = 0;
    [[nodiscard]] virtual ITag const* tag(std::size_t item) const = 0;

    void fail(Items items, base::Failure const& failure) {
        for (std::size_t const item : items) {
            results_[item].failure = failure;
        }
    }

    [[nodiscard]] IProtocol3& protocol() const { return protocol_; }

protected:
    TagResult& result(std::size_t item) { return results_[item]; }

private:
    IProtocol3& protocol_;
    std::vector<TagResult>& results_;
};

class Reading final : public Transfer {
public:
    Reading(IProtocol3& protocol, std::span<ITag* const> tags, std::vector<TagResult>& results)
        : Transfer(protocol, results), tags_(tags) {}

    bool datagram(Items items) override {
        std::vector<ITag const*> list;
        std::size_t length = 0;
        for (std::size_t const item : items) {
            list.push_back(tags_[item]);
            length += valueLength(*tags_[item]);
        }
        ValueBytes values(length);
        std::vector<idal_error_t> statuses(items.size(), kItemNotProcessed);
        if (!protocol().ReadDatagramWithStatus(list.data(), static_cast<int>(list.size()), values.data(),
                                               statuses.data())) {
            return false;
        }
        std::span<unsigned char const> rest(values);
        for (std::size_t i = 0; i < items.size(); ++i) {
            auto const value = rest.first(valueLength(*list[i]));
            rest = rest.subspan(value.size());
            note(result(items[i]), statuses[i], value);
        }
        return true;
    }

    bool single(std::size_t item) override {
        ValueBytes value(valueLength(*tags_[item]));
        if (!protocol().Read(tags_[item], value.data())) {
            return false;
        }
        note(result(item), kItemGood, value);
        return true;
    }

    [[nodiscard]] Blame blame(base::Failure const& failure) const override {
        if (isOfTheRequest(failure.kind) || failure.kind == FailureKind::BadQuality) {
            return Blame::Tag;
        }
        return isOfTheReply(failure.kind) ? Blame::TagOrLine : Blame::Nobody;
    }

    [[nodiscard]] ITag const* tag(std::size_t item) const override { return tags_[item]; }

private:
    static void note(TagResult& result, idal_error_t status, std::span<unsigned char const> value) {
        result.status = status;
        result.good = status == kItemGood;
        if (result.good) {
            result.value.assign(value.begin(), value.end());
        } else {
            result.failure = itemFailure(status); // the value there is not the variable's
        }
    }

    std::span<ITag* const> tags_;
};

class Writing final : public Transfer {
public:
    Writing(IProtocol3& protocol, std::span<TagWrite const> writes, std::vector<TagResult>& results)
        : Transfer(protocol, results), writes_(writes) {}

    bool datagram(Items items) override {
        std::vector<ITag const*> list;
        ValueBytes values;
        for (std::size_t const item : items) {
            TagWrite const& write = writes_[item];
            list.push_back(write.tag);
            values.insert(values.end(), write.value.begin(), write.value.end());
        }
        std::vector<idal_error_t> statuses(items.size(), kItemNotProcessed);
        if (!protocol().WriteDatagramWithStatus(list.data(), static_cast<int>(list.size()), values.data(),
                                                statuses.data())) {
            return false;
        }
        for (std::size_t i = 0; i < items.size(); ++i) {
            note(result(items[i]), statuses[i]);
        }
        return true;
    }

    bool single(std::size_t item) override {
        if (!protocol().Write(writes_[item].tag, writes_[item].value.data())) {
            return false;
        }
        note(result(item), kItemGood);
        return true;
    }

    // What the PLC itself refused, or answered at too great a length, may be half written: not again.
    [[nodiscard]] Blame blame(base::Failure const& failure) const override {
        return isOfTheRequest(failure.kind) ? Blame::Tag : Blame::Nobody;
    }

    [[nodiscard]] ITag const* tag(std::size_t item) const override { return writes_[item].tag; }

private:
    static void note(TagResult& result, idal_error_t status) {
        result.status = status;
        result.good = status == kItemGood;
        if (!result.good) {
            result.failure = itemFailure(status);
        }
    }

    std::span<TagWrite const> writes_;
};

/** Why a tag is left out of every datagram, or success. */
base::Outcome checkTag(ITag const* tag) {
    if (tag == nullptr) {
        return base::Failure{FailureKind::LeftOut, "there is no such tag"};
    }
    return checkLength(*tag);
}

base::Outcome checkWrite(TagWrite const& write) {
    base::Outcome checked = checkTag(write.tag);
    if (!checked.ok()) {
        return checked;
    }
    if (write.tag->IsReadOnly()) {
        return base::Failure{FailureKind::LeftOut, "the tag is read-only"};
    }
    if (write.value.size() != valueLength(*write.tag)) {
        return base::Failure{FailureKind::LeftOut, "the value has " + counted(write.value.size(), "byte") +
                                                       " instead of " + std::to_string(valueLength(*write.tag))};
    }
    return {};
}

/** Carries out a plan and assigns every failure to the tags concerned. */
class Execution {
public:
    Execution(Transfer& transfer, TransferPolicy const& policy, BadTags& known)
        : transfer_(transfer), policy_(policy), known_(known) {}

    void run(Datagram const& datagram) {
        node_ = datagram.node;
        if (!policy_.skipNodeAfterTimeout) {
            silentNodes_.clear();
        }
        if (datagram.single) {
            runSingle(datagram.items);
        } else {
            runApart(datagram.items);
        }
    }

private:
    void runSingle(Items items) {
        for (std::size_t const item : items) {
            if (isSilent(items)) {
                return;
            }
            if (!guarded([&] { return transfer_.single(item); })) {
                noteFailure(items);
            }
        }
    }

    /** Tags that are known to be bad are asked alone, after all the others. */
    void runApart(Items items) {
        std::vector<std::size_t> ordered(items.begin(), items.end());
        auto const bad = std::stable_partition(ordered.begin(), ordered.end(),
                                               [&](std::size_t item) { return !known_.contains(transfer_.tag(item)); });
        auto const together = static_cast<std::size_t>(bad - ordered.begin());
        callsInVain_ = kCallsInVain;
        if (together > 0) {
            runItems(Items(ordered).first(together));
        }
        for (std::size_t i = together; i < ordered.size(); ++i) {
            runItems(Items(ordered).subspan(i, 1));
        }
    }

    void runItems(Items items) {
        if (isSilent(items)) {
            return;
        }
        if (guarded([&] { return transfer_.datagram(items); })) {
            return noteSuccess(items);
        }
        if (items.size() > 1 && goesOn()) {
            runItems(items.first(items.size() / 2));
            runItems(items.subspan(items.size() / 2));
            return;
        }
        noteFailure(items);
    }

    /** Whether a list that failed is cut in halves, which costs two calls. */
    bool goesOn() {
        Blame const blame = policy_.findBadTags ? transfer_.blame(failure_) : Blame::Nobody;
        if (blame != Blame::TagOrLine) {
            return blame == Blame::Tag;
        }
        callsInVain_ -= 2;
        return callsInVain_ >= 0;
    }

    /** Runs a call and keeps the reason when it fails. A value too big for the memory fails it as well. */
    template <typename Call>
    bool guarded(Call&& call) {
        try {
            if (call()) {
                return true;
            }
            failure_ = driverFailure(transfer_.protocol());
        } catch (std::exception const&) {
            failure_ = base::Failure{FailureKind::Memory, "there is not enough memory for the values"};
        }
        return false;
    }

    /** Fails what would only wait for another time-out. */
    bool isSilent(Items items) {
        if (!silentNodes_.contains(node_)) {
            return false;
        }
        transfer_.fail(items, silence_);
        return true;
    }

    void noteSuccess(Items items) {
        callsInVain_ = kCallsInVain;
        for (std::size_t const item : items) {
            known_.remove(transfer_.tag(item));
        }
    }

    void noteFailure(Items items) {
        transfer_.fail(items, failure_);
        if (items.size() == 1 && transfer_.blame(failure_) == Blame::Tag) {
            known_.add(transfer_.tag(items.front()));
        }
        if (failure_.kind == FailureKind::Timeout) {
            silentNodes_.insert(node_);
            silence_ = failure_;
        }
    }

    Transfer& transfer_;
    TransferPolicy const& policy_;
    BadTags& known_;
    base::Failure failure_;
    std::set<int> silentNodes_; ///< in the rest of the datagram; in the rest of the plan where the policy says so
    base::Failure silence_;
    int node_ = 0;
    int callsInVain_ = 0; ///< that may still follow
};

} // namespace

TagReader::TagReader(IProtocol3& protocol, TransferPolicy policy) : protocol_(protocol), policy_(policy) {}

std::vector<TagResult> TagReader::read(std::span<ITag* const> tags) {
    return read(tags, planDatagrams(protocol_, tags, Purpose::Read));
}

std::vector<TagResult> TagReader::read(std::span<ITag* const> tags, BadTags& known) {
    return read(tags, planDatagrams(protocol_, tags, Purpose::Read), known);
}

std::vector<TagResult> TagReader::read(std::span<ITag* const> tags, std::vector<Datagram> const& plan) {
    BadTags none;
    return read(tags, plan, none);
}

std::vector<TagResult> TagReader::read(std::span<ITag* const> tags, std::vector<Datagram> const& plan, BadTags& known) {
    std::vector<TagResult> results(tags.size());
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (base::Outcome const checked = checkTag(tags[i]); !checked.ok()) {
            results[i].failure = checked.failure();
        }
    }
    Reading reading(protocol_, tags, results);
    Execution execution(reading, policy_, known);
    std::for_each(plan.begin(), plan.end(), [&](Datagram const& datagram) { execution.run(datagram); });
    return results;
}

std::vector<TagResult> TagReader::write(std::span<TagWrite const> writes) {
    std::vector<TagResult> results(writes.size());
    std::vector<ITag*> tags(writes.size(), nullptr);
    for (std::size_t i = 0; i < writes.size(); ++i) {
        base::Outcome const checked = checkWrite(writes[i]);
        if (checked.ok()) {
            tags[i] = writes[i].tag;
        } else {
            results[i].failure = checked.failure();
        }
    }
    Writing writing(protocol_, writes, results);
    BadTags none; // what was bad for one value may take another
    Execution execution(writing, policy_, none);
    for (Datagram const& datagram : planDatagrams(protocol_, tags, Purpose::Write)) {
        execution.run(datagram);
    }
    return results;
}

} // namespace host
