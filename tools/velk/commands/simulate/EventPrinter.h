#pragma once

#include "plc/frames/LineObserver.h"
#include "tools/velk/commands/simulate/EventQueue.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velk::simulation {

enum class EventStyle { None, Text, Json };

/** "    12.345  press    list read: 1 item read: PLC_PRG.Level". */
std::string eventText(plc::LineEvent const& event, std::vector<std::string> const& stations);

/** The same as a JSON object on one line. */
std::string eventJson(plc::LineEvent const& event, std::vector<std::string> const& stations);

/** Replaces events that were not read in time. */
std::string leftOutText(std::size_t count, plc::Micros time);
std::string leftOutJson(std::size_t count, plc::Micros time);

/** The final counts. */
std::string endText(plc::EventCounters const& counters, plc::Micros time);
std::string endJson(plc::EventCounters const& counters, plc::Micros time);

/** Prints the requests to the stations, one line each, and finished exchanges only on request. */
class EventPrinter final : public plc::LineObserver {
public:
    /** @p queue must outlive the printer. */
    EventPrinter(EventStyle style, bool exchanges, std::vector<std::string> stations, EventQueue& queue);

    void onEvent(plc::LineEvent const& event) override;

private:
    EventStyle style_;
    bool exchanges_;
    std::vector<std::string> stations_;
    EventQueue& queue_;
};

} // namespace velk::simulation
