#pragma once

#include "plc/LineObserver.h"

#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::simulation {

enum class EventStyle { None, Text, Json };

/** "    12.345  press    list read: 1 item read: PLC_PRG.Level". */
std::string eventText(plc::LineEvent const& event, std::vector<std::string> const& stations);

/** The same as a JSON object on a line of its own. */
std::string eventJson(plc::LineEvent const& event, std::vector<std::string> const& stations);

/** What was counted until the end. */
std::string endText(plc::EventCounters const& counters, plc::Micros time);
std::string endJson(plc::EventCounters const& counters, plc::Micros time);

/** Prints what the stations are asked, a line an event. Finished exchanges are left out unless they are wanted. */
class EventPrinter final : public plc::LineObserver {
public:
    using Print = std::function<void(std::string_view)>;
    using Failed = std::function<void()>;

    /**
     * @param print what throws is kept, and nothing is printed any more
     * @param failed told when @p print has thrown
     */
    EventPrinter(EventStyle style, bool exchanges, std::vector<std::string> stations, Print print, Failed failed);

    void onEvent(plc::LineEvent const& event) override;

    /** Throws what printing has thrown. */
    void check() const;

private:
    EventStyle style_;
    bool exchanges_;
    std::vector<std::string> stations_;
    Print print_;
    Failed failed_;
    std::exception_ptr problem_;
};

} // namespace velk::simulation
