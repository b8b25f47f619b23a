#pragma once

#include "ZuCommon/IMetricsReporter.h"
#include "ZuCore/RunState.h"
#include "wApi/wExport.h"

struct wIpConfig;

namespace ZuCore
{

/// The application's core: the sensor as a whole. The host implements it.
///
/// Operations return when they are done and throw when they fail. Any thread may call, several at once.
class ZUPLATFORM_API Core
{
public:
    virtual ~Core();

    /// Starts scanning. `userRequest` is true when somebody asked for it, in contrast to a start at power-up.
    virtual void Start(bool userRequest) = 0;

    /// Stops scanning. `force` does not wait for data on its way.
    virtual void Stop(bool force) = 0;

    /// Back to the settings of the factory; everything else is lost.
    virtual void FactoryRestore() = 0;

    /// Restarts the device.
    virtual void Restart() = 0;

    /// The network settings that the next restart brings into force.
    virtual void SetNextIpConfig(wIpConfig const& config) = 0;

    virtual RunState GetRunState() = 0;

    /// Reports "upTime" and "appUpTime" and, under "networkIfs", "linkStatus" and "linkCapacity" of each interface.
    virtual ZuCommon::IMetricsReporter<>& GetMetricsReporter() = 0;
};

} // namespace ZuCore
