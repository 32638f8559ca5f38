#include "host/services/HostFactory.h"

#include "host/serial/SerialFactory.h"
#include "host/services/Clock.h"
#include "host/services/PermanentStorage.h"
#include "host/services/Scheduler.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace hosttest {
namespace {

class HostFactory : public testing::Test {
protected:
    host::SteadyClock clock;
    host::Scheduler scheduler;
    host::SerialFactory serial{clock};
    host::PermanentStorage storage{"/velk-no-such-directory"};
    host::HostFactory factory{scheduler, serial, &storage};
};

TEST_F(HostFactory, OffersTheRequiredServices) {
    EXPECT_EQ(factory.CreateInterface("IMultiTask2"), &scheduler);
    EXPECT_EQ(factory.CreateInterface("ISerialFactory"), &serial);
    EXPECT_EQ(factory.CreateInterface("IPermanentStorage"), &storage);
    for (char const* const name : {"ISocketFactory", "ICDSBuffer", "IDiag"}) {
        IInterface* const service = factory.CreateInterface(name);
        ASSERT_NE(service, nullptr) << name;
        EXPECT_STREQ(service->GetImpName(), name);
        EXPECT_EQ(service->ConvertTo(name), service);
        EXPECT_EQ(service->ConvertTo("IInterface"), nullptr);
    }
}

TEST_F(HostFactory, OffersNothingElse) {
    for (char const* const name : {"IDriverInterface", "ISmux", "IFastTimer", "imultitask2", "IMultiTask2 ", ""}) {
        EXPECT_EQ(factory.CreateInterface(name), nullptr) << name;
    }
    EXPECT_EQ(factory.CreateInterface(nullptr), nullptr);
}

TEST_F(HostFactory, AServiceCanBeLeftOut) {
    factory.withdraw("ISocketFactory");
    EXPECT_EQ(factory.CreateInterface("ISocketFactory"), nullptr);
    EXPECT_NE(factory.CreateInterface("ICDSBuffer"), nullptr);
    host::HostFactory withoutStorage(scheduler, serial, nullptr);
    EXPECT_EQ(withoutStorage.CreateInterface("IPermanentStorage"), nullptr);
}

TEST_F(HostFactory, AServiceCanBeAddedOrReplaced) {
    host::IdleService timer("IFastTimer");
    factory.offer("IFastTimer", timer);
    EXPECT_EQ(factory.CreateInterface("IFastTimer"), &timer);
}

TEST_F(HostFactory, CountsWhatTheModuleHolds) {
    IInterface* const task = factory.CreateInterface("IMultiTask2");
    factory.CreateInterface("IMultiTask2");
    IInterface* const buffer = factory.CreateInterface("ICDSBuffer");
    EXPECT_EQ(factory.held(), 3);
    factory.ReleaseInterface(task);
    factory.ReleaseInterface(buffer);
    EXPECT_EQ(factory.held(), 1);
    factory.ReleaseInterface(buffer);
    factory.ReleaseInterface(nullptr);
    EXPECT_EQ(factory.held(), 1);
    factory.ReleaseInterface(task);
    EXPECT_EQ(factory.held(), 0);
}

TEST(Scheduler, CountsYieldsAndTellsTheHook) {
    std::uint64_t told = 0;
    host::Scheduler scheduler([&](std::uint64_t yields) { told = yields; });
    IMultiTask2& service = scheduler;
    service.Yield(1);
    service.Yield(1);
    EXPECT_EQ(scheduler.yields(), 2U);
    EXPECT_EQ(told, 2U);
    EXPECT_EQ(scheduler.ConvertTo("IMultiTask2"), &scheduler);
    EXPECT_EQ(scheduler.ConvertTo("IMultiTask"), nullptr);
}

TEST(Scheduler, AHookThatThrowsDoesNotReachTheModule) {
    int calls = 0;
    host::Scheduler scheduler([&](std::uint64_t) {
        ++calls;
        throw std::runtime_error("window closed");
    });
    scheduler.Yield(1);
    scheduler.Yield(1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(scheduler.yields(), 2U);
}

} // namespace
} // namespace hosttest
