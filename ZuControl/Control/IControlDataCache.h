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
/// A read starts a fetch, waits for it up to the caller's time-out, in microseconds, and returns the freshest record:
/// that of this fetch, or that of an earlier one when the time-out passes first. A time-out is no error. One fetch runs
/// at a time, of either kind and for all protocols: a read throws `Zu::Status::BUSY` at once while another fetch runs,
/// also after the caller of that fetch has stopped waiting.
///
/// Ownership: the module owns the cache, which outlives the protocols. Threads: any; a read blocks its caller for the
/// time-out at most. Do not read in `IProtocol::ProcessResultSets` or `UpdateMetrics`, which must not block. States:
/// any, also before the protocol is started. Exceptions: beside `BUSY`, the status of the queue when that fails. A
/// fetch that fails is not reported to the caller, which waits for the whole time-out and gets the older record.
class ZUCONTROL_API IControlDataCache
{
public:
    /// As IControlSystemInterface::SystemStats; all zero and empty until the first fetch has ended.
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

    /// The cache holds one scanner at a time. Throws `Zu::Status::NOT_FOUND` when it holds none, or another one than
    /// `scannerId`. The empty id takes the scanner that the cache holds, and a default record when it holds none.
    virtual DataCacheScannerInfo ScannerInfo(std::string const& scannerId, uint64 timeoutUsec) = 0;
};

} // namespace ZuControl
