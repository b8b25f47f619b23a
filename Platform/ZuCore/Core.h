#pragma once

#include "ZuCommon/Metrics.h"
#include "ZuCore/RunState.h"
#include "wApi/wExport.h"

struct wIpConfig;

namespace ZuCore
{

/// The application's core: the sensor as a whole. The host implements it.
///
/// Operations return when they are complete and throw if they fail. Any thread may call; several threads may call at
/// the same time.
class ZUPLATFORM_API Core
{
public:
    virtual ~Core();

    /// Starts scanning. `userRequest` is true for a start on request, false for the start at power-up.
    virtual void Start(bool userRequest) = 0;

    /// Stops scanning. With `force` it does not wait for data in transit.
    virtual void Stop(bool force) = 0;

    /// Restores the factory settings. All other settings are lost.
    virtual void FactoryRestore() = 0;

    /// Restarts the device.
    virtual void Restart() = 0;

    /// Sets the network configuration that takes effect at the next restart.
    virtual void SetNextIpConfig(wIpConfig const& config) = 0;

    virtual RunState GetRunState() = 0;

    /// Reports "upTime" and "appUpTime" and, under "networkIfs", "linkStatus" and "linkCapacity" of each interface.
    virtual ZuCommon::IMetricsReporter<>& GetMetricsReporter() = 0;
};

} // namespace ZuCore
