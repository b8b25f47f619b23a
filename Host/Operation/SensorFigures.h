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
    struct Digital
    {
        bool isEnabled = false;
        bool isHigh = false;
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
    double rateHz = 0;                     ///< as measured
    uint64 taken = 0;                      ///< profiles since the start of the scan
    uint64 missed = 0;                     ///< the same
    uint64 droppedSets = 0;                ///< result sets that no protocol got, since the start of the host
    std::vector<Digital> digitalOutputs{}; ///< what each output drives now
    std::vector<Analog> analogOutputs{};
    std::vector<Serial> serialOutputs{};
    std::vector<Digital> digitalInputs{};

    /// Any thread may call.
    static SensorFigures Of(SensorModule& module);
};

} // namespace ZuHost
