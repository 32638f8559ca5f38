#pragma once

#include "protlib/protocol/ProtocolBase.h"
#include "tests/protlib/TestTag.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <vector>

/** The smallest driver that can be built on ProtocolBase: it implements only the abstract operations. */
class TestDriver : public ProtocolBase {
public:
    char const* GetImpName() const override { return impName; }
    int GetImpVersion() const override { return 7; }
    bool Config(char const* /*configuration*/) override { return true; }
    bool CanBeOptimized(ITag const* /*a*/, ITag const* /*b*/, bool /*write*/) const override { return false; }
    bool Write(ITag const* tag, unsigned char const* value) override {
        written.assign(value, value + tag->GetVarLength());
        ++writes;
        if (!writeSucceeds) {
            SetError(-6, "the PLC refused");
        }
        return writeSucceeds;
    }
    bool ReadBlock(ITag const* tag, unsigned char* bytes, int length) override {
        ++blockReads;
        lastTag = tag;
        lastLength = length;
        bufferWasZero = std::all_of(bytes, bytes + length, [](unsigned char byte) { return byte == 0; });
        std::copy_n(image.begin(), std::min(image.size(), static_cast<std::size_t>(length)), bytes);
        if (!readSucceeds) {
            SetError(-4, "Timeout on data receiving");
        }
        return readSucceeds;
    }
    char const* GetName() const override { return driverName; }
    int GetProtocolVersion() const override { return 144; }
    int GetProtocolType() const override { return 277; }
    char const* GetProtocolName() const override { return "Mini Protocol"; }
    int GetNodeID(ITag const* /*tag*/) const override { return 5; }
    TagBase* CreateTagBase(char const* address) override {
        addresses.emplace_back(address);
        if (created.empty()) {
            SetError(-1, "Tag URI error: refused");
            return nullptr;
        }
        TagBase* const tag = created.front();
        created.pop_front();
        return tag;
    }
    int GetMaxTm(ITag const* tag) const override {
        lastTag = tag;
        return maxTm;
    }

    /** The next tag that CreateTagBase() returns; its destruction is recorded in deletions under the given name. */
    TestTag* offer(TestTag const& model, std::string name = "tag") {
        auto* const tag = new TestTag(model);
        tag->name = std::move(name);
        tag->deletions = log;
        created.push_back(tag);
        return tag;
    }

    char const* impName = "MiniImp";
    char const* driverName = "MINI";
    int maxTm = 0;
    std::vector<unsigned char> image; ///< the PLC's memory
    bool readSucceeds = true;
    bool writeSucceeds = true;

    int blockReads = 0;
    int writes = 0;
    int lastLength = -1;
    bool bufferWasZero = false;
    mutable ITag const* lastTag = nullptr;
    std::vector<unsigned char> written;
    std::vector<std::string> addresses;
    std::deque<TestTag*> created;
    /// Outlives the driver, whose base destroys the last tags after these members are destroyed.
    std::shared_ptr<std::vector<std::string>> const log = std::make_shared<std::vector<std::string>>();
    std::vector<std::string>& deletions = *log;
};
