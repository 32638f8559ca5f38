#pragma once

#include "plc/frames/Bytes.h"

namespace plc {

class Station;

/// The activity of a station's program, for example counting. Called in the line's time. It must not replace itself.
class Behaviour {
public:
    Behaviour() = default;
    Behaviour(Behaviour const&) = delete;
    Behaviour& operator=(Behaviour const&) = delete;
    virtual ~Behaviour() = default;

    virtual void onTick(Station& station, Micros now) = 0;
};

} // namespace plc
