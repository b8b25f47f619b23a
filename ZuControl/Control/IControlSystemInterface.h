#pragma once

#include "ZuControl/Export.h"
#include "ZuCore/RunState.h"
#include "wApi/wIpConfig.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// The operations on the system as a whole that the module carries out for protocols.
///
/// Protocols do not call this: they use ControlProtocolOperations and IControlDataCache. The workers of these call it,
/// several at once. An operation blocks until it is done and throws the exceptions of the core and of the jobs.
/// `LoadJob`, `Start`, `Stop` and `FactoryRestore` call protocols on the calling thread.
class ZUCONTROL_API IControlSystemInterface
{
public:
    /// A snapshot of the system.
    struct SystemStats
    {
        uint64 upTime = 0;     ///< of the system, in the unit of the metric; all ones when the metric is missing
        uint64 appUpTime = 0;  ///< of the application, likewise
        std::string loadedJob; ///< empty when none is loaded
        ZuCore::RunState runState{};
        std::vector<uint32> linkStatus;   ///< per network interface
        std::vector<uint64> linkCapacity; ///< per network interface, empty when the metric is missing
    };

    IControlSystemInterface() noexcept;
    virtual ~IControlSystemInterface(); // first of the slots that others call through: never move one

    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void FactoryRestore() = 0;
    virtual void Restart() = 0;
    virtual void LoadJob(std::string const& name) = 0;

    /// Fills `stats`. Members that are filled before an exception stay filled.
    virtual void Stats(SystemStats& stats) = 0;

    virtual void SetNextIpConfig(wIpConfig const& config) = 0;
};

} // namespace ZuControl
