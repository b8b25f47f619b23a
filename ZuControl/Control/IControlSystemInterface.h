#pragma once

#include "ZuControl/Export.h"
#include "ZuCore/RunState.h"
#include "wApi/wIpConfig.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// All that a protocol may do to, or learn about, the system as a whole. Operations run on the caller's thread until they
/// are done and throw what fails; several threads may be inside at once.
class ZUCONTROL_API IControlSystemInterface
{
public:
    /// A snapshot of the system.
    struct SystemStats
    {
        uint64 upTime = 0;     ///< of the system, in the unit of the metric; all ones when it is not told
        uint64 appUpTime = 0;  ///< of the application, likewise
        std::string loadedJob; ///< empty when none is loaded
        ZuCore::RunState runState{};
        std::vector<uint32> linkStatus;   ///< per network interface
        std::vector<uint64> linkCapacity; ///< per network interface, empty when it is not told
    };

    IControlSystemInterface() noexcept;
    virtual ~IControlSystemInterface(); // first of the slots that others call through: never move one

    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void FactoryRestore() = 0;
    virtual void Restart() = 0;
    virtual void LoadJob(std::string const& name) = 0;

    /// Fills `stats`; what was filled before something failed stays filled.
    virtual void Stats(SystemStats& stats) = 0;

    virtual void SetNextIpConfig(wIpConfig const& config) = 0;
};

} // namespace ZuControl
