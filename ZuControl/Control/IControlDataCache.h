#pragma once

#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Export.h"
#include "ZuCore/RunState.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// State of the system and of a scanner, with a bound on the wait.
///
/// A read starts a fetch, waits for it up to the caller's time-out, in microseconds, and gives the freshest that there is:
/// what this fetch brought, or what an earlier one did. One fetch runs at a time, of either kind and for all protocols: a
/// read that comes meanwhile is refused with -976.
class ZUCONTROL_API IControlDataCache
{
public:
    /// As IControlSystemInterface::SystemStats; all zero and empty until something was fetched.
    struct DataCacheSystemStats
    {
        uint64 upTime = 0;
        uint64 appUpTime = 0;
        std::string loadedJob;
        ZuCore::RunState runState{};
        std::vector<uint32> linkStatus;
        std::vector<uint64> linkCapacity;
    };

    /// As IControlScanEngineInterface::ScannerStateInfo, without the id.
    struct DataCacheScannerInfo
    {
        int64 currentEncoderValue = 0;
        uint64 currentSyncTime = 0;
        IControlScanEngineInterface::ControlAlignmentState alignmentState =
            IControlScanEngineInterface::ALIGNMENT_STATE_0;
        bool laserEnabled = true;
    };

    IControlDataCache() noexcept;
    virtual ~IControlDataCache(); // first of the slots that plug-ins call through: never move one

    virtual DataCacheSystemStats SystemStats(uint64 timeoutUsec) = 0;

    /// The cache holds one scanner at a time: -999 when that is another one than `scannerId`. The empty id takes whatever
    /// is there.
    virtual DataCacheScannerInfo ScannerInfo(std::string const& scannerId, uint64 timeoutUsec) = 0;
};

} // namespace ZuControl
