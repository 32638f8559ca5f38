#pragma once

#include "base/FileDescriptor.h"
#include "plc/frames/Bytes.h"

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace velk::simulation {

/**
 * Lines from the thread that serves the line to the one that prints. put() never waits for a reader: what does not fit
 * is dropped and counted, until everything before it was taken.
 */
class EventQueue {
public:
    /** The line that replaces @p count others, the last of which was put at @p time. */
    using LeftOut = std::function<std::string(std::size_t count, plc::Micros time)>;

    EventQueue(std::size_t mostBytes, LeftOut leftOut);

    /** Readable while there is something to take. */
    [[nodiscard]] int descriptor() const { return filled_.get(); }

    /** From any thread. */
    void put(std::string_view line, plc::Micros time);

    /** All lines in their order; empty when there is none. */
    [[nodiscard]] std::string take();

private:
    std::size_t mostBytes_;
    LeftOut leftOut_;
    base::FileDescriptor filled_;
    std::mutex mutex_;
    std::string lines_;
    std::size_t leftOutCount_ = 0;
    plc::Micros leftOutTime_{};
};

} // namespace velk::simulation
