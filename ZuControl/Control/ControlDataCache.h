#pragma once

#include "ZuApi/AsyncRunner.h"
#include "ZuApi/Threads/MsgQueue.h"
#include "ZuControl/Control/IControlDataCache.h"
#include "ZuControl/Control/IControlSystemInterface.h"
#include "ZuControl/Export.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <memory>

namespace ZuControl
{

/// The cache behind IControlDataCache: one system record, one scanner record, and a worker that fetches them.
///
/// The worker never touches the two records: it puts a fetched record into a queue of one element, and the reading
/// thread takes it from there. No lock is held during a wait or a fetch.
class ZUCONTROL_API ControlDataCache final : public IControlDataCache
{
public:
    /// Both interfaces outlive the object.
    ControlDataCache(IControlSystemInterface& usedSystemInterface,
                     IControlScanEngineInterface& usedScanEngineInterface);

    /// Waits for a running fetch, without a bound.
    ~ControlDataCache() override;

    ControlDataCache(ControlDataCache const&) = delete;
    ControlDataCache& operator=(ControlDataCache const&) = delete;

    DataCacheSystemStats SystemStats(uint64 timeoutUsec) override;
    DataCacheScannerInfo ScannerInfo(std::string const& scannerId, uint64 timeoutUsec) override;

private:
    bool OperationBegin();
    int OperationFinish();
    void FinishFetch();
    void GetLatestSystemStats();
    void GetLatestScannerInfo(std::string const& scannerId);
    void FetchSystemStats();
    void FetchScannerInfo(std::string const& scannerId);
    void UpdateSystemStatsCache(uint64 timeoutUsec);
    void UpdateScannerInfoCache(uint64 timeoutUsec);
    void CopyDataFromSystemCache(DataCacheSystemStats& stats);
    void CopyDataFromScannerCache(DataCacheScannerInfo& info);
    std::string CachedScannerId();

    uint64 const systemQueueMaxCount = 1;
    uint64 const scannerQueueMaxCount = 1;
    IControlSystemInterface& systemInterface;
    IControlScanEngineInterface& scanEngineInterface;

    // Leaf lock, held for a copy. Never held together with scannerLock.
    wLock systemLock;
    DataCacheSystemStats systemCache ZU_GUARDED_BY(systemLock);
    Zu::MsgQueue<IControlSystemInterface::SystemStats> systemQueue;

    // Leaf lock, held for a copy.
    wLock scannerLock;
    std::string cachedScannerId ZU_GUARDED_BY(scannerLock);
    DataCacheScannerInfo scannerCache ZU_GUARDED_BY(scannerLock);
    Zu::MsgQueue<IControlScanEngineInterface::ScannerStateInfo> scannerQueue;

    std::atomic<int32> operationFlag{0};     // 1 while a fetch of either kind runs
    std::unique_ptr<Zu::AsyncRunner> runner; // last: its tasks use all of the above
};

} // namespace ZuControl
