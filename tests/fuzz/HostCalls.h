#pragma once

#include "tests/fuzz/FuzzedDriver.h"
#include "tests/support/AllocationGate.h"

#include <utility>
#include <vector>

namespace velktest {

/** The calls of a host, in the order that the input chooses: tags, reads, writes, stops, other configurations. */
class HostCalls {
public:
    /** Configures and starts the driver. */
    HostCalls(FuzzedDriver& driver, FuzzInput& input);

    /** Makes calls until the end of the input. */
    void Run();

    /**
     * On a faultless line, a variable can be read again within a few calls, whatever happened before. Its node is 1.
     */
    void ExpectRecovery(char const* address);

private:
    void Configure();
    ITag* MakeTag();
    std::vector<ITag*> SomeTags();
    void Call();

    void Read(std::vector<ITag*> const& tags);
    void ReadWithoutStatus(std::vector<ITag*> const& tags);
    void Write(std::vector<ITag*> const& tags);
    void ReadOne(ITag* tag);
    void WriteOne(ITag* tag);
    void ReadBlock(ITag* tag);
    void Plan(std::vector<ITag*> const& tags);
    void Command();
    void ForgetTag();
    void StoreFile();
    void Trouble();
    void Restart();

    /** The driver's part of a call; the allocation chosen before may fail. */
    template <typename Part>
    auto Driver(Part part) {
        AllocationGate const gate(std::exchange(refusedAllocation_, 0));
        return part();
    }

    FuzzedDriver& driver_;
    FuzzInput& input_;
    std::vector<ITag*> tags_;
    bool emptyList_ = false;
    std::size_t refusedAllocation_ = 0; ///< of the next call, counted from 1; 0 for none
};

} // namespace velktest
