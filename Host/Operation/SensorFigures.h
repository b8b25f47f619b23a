#pragma once

#include "ZuCore/RunState.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuHost
{

class SensorModule;

/// The numbers of the sensor at one moment.
struct SensorFigures
{
    struct DigitalInput
    {
        bool isEnabled = false;
        bool isHigh = false;
    };

    struct DigitalOutput
    {
        bool isEnabled = false;
        bool isHigh = false;
        uint64 pulses = 0;      ///< so far: a pulse is often too short to be seen
        double pulseAgeSec = 0; ///< of the newest pulse, if there is one
    };

    struct Analog
    {
        bool isEnabled = false;
        double milliamperes = 0;
    };

    struct Serial
    {
        bool isEnabled = false;
        uint64 bytes = 0;   ///< sent so far
        std::string last{}; ///< the end of what was sent; other bytes than printable ASCII are shown as '?'
    };

    ZuCore::RunState state = ZuCore::RunState::READY;
    double setRateHz = 0;
    double rateHz = 0;                           ///< as measured
    uint64 taken = 0;                            ///< profiles since the start of the scan
    uint64 missed = 0;                           ///< the same
    uint64 droppedSets = 0;                      ///< result sets that no protocol got, since the start of the host
    std::vector<DigitalOutput> digitalOutputs{}; ///< what each output drives now
    std::vector<Analog> analogOutputs{};
    std::vector<Serial> serialOutputs{};
    std::vector<DigitalInput> digitalInputs{};

    /// Any thread may call.
    static SensorFigures Of(SensorModule& module);
};

} // namespace ZuHost
