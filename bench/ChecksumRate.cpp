// Measures how often the driver's check misses a disturbance of a received block, over many trials. Fixed seeds: the
// same numbers on every machine.

#include "driver/link/BlockFrame.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr int kTrials = 1'000'000;
constexpr std::size_t kPayloadLength = 120; // a full block of the default block size
constexpr std::uint16_t kNumber = 1;

using Frame = std::vector<unsigned char>;
using Random = std::mt19937;
using Disturbance = void (*)(Frame&, Random&);

std::size_t pick(Random& random, std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
}

unsigned char anyByte(Random& random) {
    return static_cast<unsigned char>(pick(random, 256));
}

void flipBits(Frame& frame, Random& random, int count) {
    for (int i = 0; i < count; ++i) {
        frame[pick(random, frame.size())] ^= static_cast<unsigned char>(1U << pick(random, 8));
    }
}

void flipOneBit(Frame& frame, Random& random) {
    flipBits(frame, random, 1);
}
void flipTwoBits(Frame& frame, Random& random) {
    flipBits(frame, random, 2);
}
void flipThreeBits(Frame& frame, Random& random) {
    flipBits(frame, random, 3);
}
void flipEightBits(Frame& frame, Random& random) {
    flipBits(frame, random, 8);
}
void replaceTwoBytes(Frame& frame, Random& random) {
    frame[pick(random, frame.size())] = anyByte(random);
    frame[pick(random, frame.size())] = anyByte(random);
}
void swapNeighbours(Frame& frame, Random& random) {
    std::size_t const at = 8 + pick(random, frame.size() - 9);
    std::swap(frame[at], frame[at + 1]);
}
void loseOneByte(Frame& frame, Random& random) {
    frame.erase(frame.begin() + static_cast<std::ptrdiff_t>(pick(random, frame.size())));
}
void replaceAllPayload(Frame& frame, Random& random) {
    std::generate(frame.begin() + 8, frame.end(), [&] { return anyByte(random); });
}

struct Rate {
    int changed = 0; ///< trials that changed the frame at all
    int unseen = 0;
};

Rate measure(Disturbance disturb) {
    Random random(20'26'11'21);
    Rate rate;
    for (int trial = 0; trial < kTrials; ++trial) {
        std::array<unsigned char, kPayloadLength> payload{};
        std::generate(payload.begin(), payload.end(), [&] { return anyByte(random); });
        Frame const sent = [&] {
            Frame frame(8 + kPayloadLength);
            _VELK::writeBlockFrame(frame, payload, kNumber, true, _VELK::ByteOrder::BigEndian);
            return frame;
        }();
        Frame received = sent;
        disturb(received, random);
        if (received == sent) {
            continue;
        }
        ++rate.changed;
        _VELK::ReceivedBlock block;
        bool const accepted =
            _VELK::parseBlockFrame(received, kNumber, _VELK::ByteOrder::BigEndian, block) == _VELK::BlockFault::None;
        rate.unseen += accepted ? 1 : 0;
    }
    return rate;
}

} // namespace

int main() {
    constexpr std::array<std::pair<char const*, Disturbance>, 8> kDisturbances{{
        {"one bit flipped", flipOneBit},
        {"two bits flipped", flipTwoBits},
        {"three bits flipped", flipThreeBits},
        {"eight bits flipped", flipEightBits},
        {"two bytes replaced", replaceTwoBytes},
        {"two neighbouring payload bytes swapped", swapNeighbours},
        {"one byte lost", loseOneByte},
        {"the whole payload replaced", replaceAllPayload},
    }};
    std::printf("%-40s %10s %10s\n", "disturbance of a 128-byte block", "unseen", "of 1,000,000");
    for (auto const& [name, disturb] : kDisturbances) {
        Rate const rate = measure(disturb);
        std::printf("%-40s %9.3f%% %10d\n", name, 100.0 * rate.unseen / std::max(rate.changed, 1), rate.changed);
    }
    return 0;
}
