#include "tools/velk/context/Observers.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

/** Notes what it sees, or throws it. */
class Witness final : public host::PortObserver {
public:
    void onFrame(host::PortFrame const& frame) override {
        seen += static_cast<char>(frame.bytes[0]);
        if (throws) {
            throw std::runtime_error("no room");
        }
    }
    void onTimeout(std::int64_t at) override { seen += "t" + std::to_string(at); }
    void onDropped(std::span<unsigned char const> bytes, std::int64_t /*at*/) override {
        seen += "d" + std::to_string(bytes.size());
    }
    void onFault(std::string_view reason, std::int64_t /*at*/) override { seen += reason; }

    std::string seen;
    bool throws = false;
};

TEST(Observers, AllSeeEverything) {
    velk::Observers observers;
    Witness one;
    Witness other;
    one.throws = true;
    velk::Attachment const first(observers, one);
    {
        velk::Attachment const second(observers, other);
        unsigned char const bytes[] = {'a', 'b'};
        observers.onFrame({host::FrameDirection::Sent, bytes, 0, 0});
        observers.onTimeout(5);
        observers.onDropped(bytes, 0);
        observers.onFault("gone", 0);
    }
    observers.onTimeout(6);
    EXPECT_EQ(one.seen, "at5d2gonet6");
    EXPECT_EQ(other.seen, "at5d2gone") << "what the first one throws disturbs nobody, and it is detached by now";
}

} // namespace
