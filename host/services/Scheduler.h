#pragma once

#include "interfaces/HostServices.h"

#include <cstdint>
#include <functional>

namespace host {

/**
 * The scheduler service: counts the module's yields and calls a hook, to show progress during long work.
 *
 * The hook cannot end the work. When it throws it is not called again.
 */
class Scheduler final : public IMultiTask2 {
public:
    /** @param hook gets the number of yields so far; empty for none */
    explicit Scheduler(std::function<void(std::uint64_t)> hook = {});

    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override;
    [[nodiscard]] int GetImpVersion() const override;
    void HostSlot5() override {}
    void HostSlot6() override {}
    void HostSlot7() override {}
    void HostSlot8() override {}
    void Yield(int amount) override;

    [[nodiscard]] std::uint64_t yields() const { return yields_; }

private:
    std::function<void(std::uint64_t)> hook_;
    std::uint64_t yields_ = 0;
};

} // namespace host
