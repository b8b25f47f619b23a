#include "ZuControl/Control/ControlDataCache.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"

#include <utility>

namespace ZuControl
{

ControlDataCache::ControlDataCache(IControlSystemInterface& usedSystemInterface,
                                   IControlScanEngineInterface& usedScanEngineInterface)
    : systemInterface(usedSystemInterface), scanEngineInterface(usedScanEngineInterface)
{
    ZU_CHECK(wLock_Construct(&systemLock, nullptr));
    ZU_CHECK(wLock_Construct(&scannerLock, nullptr));
    systemQueue.SetMaxCount(systemQueueMaxCount);
    scannerQueue.SetMaxCount(scannerQueueMaxCount);
    runner = std::make_unique<Zu::AsyncRunner>();
}

ControlDataCache::~ControlDataCache()
{
    ZU_GUARD_DESTRUCTOR([this] {
        runner.reset(); // first: its task puts records into the queues
        systemQueue.Clear();
        scannerQueue.Clear();
    });
}

IControlDataCache::DataCacheSystemStats ControlDataCache::SystemStats(uint64 timeoutUsec)
{
    if (!OperationBegin())
    {
        ZU_THROW(Zu::Status::BUSY,
                 "System data cache fetch operation failed. Another operation is already in progress.");
    }
    try
    {
        UpdateSystemStatsCache(0); // takes in the record of an earlier, late fetch
        GetLatestSystemStats();
    }
    catch (...)
    {
        OperationFinish(); // no fetch has begun that would clear the flag
        throw;
    }
    UpdateSystemStatsCache(timeoutUsec);
    DataCacheSystemStats stats;
    CopyDataFromSystemCache(stats);
    return stats;
}

IControlDataCache::DataCacheScannerInfo ControlDataCache::ScannerInfo(std::string const& scannerId, uint64 timeoutUsec)
{
    if (!OperationBegin())
    {
        ZU_THROW(Zu::Status::BUSY,
                 "Scanner data cache fetch operation for scanner \"%s\" failed. Another operation is already in "
                 "progress.",
                 scannerId.c_str());
    }
    try
    {
        UpdateScannerInfoCache(0);
        GetLatestScannerInfo(scannerId);
    }
    catch (...)
    {
        OperationFinish();
        throw;
    }
    UpdateScannerInfoCache(timeoutUsec);
    if (!scannerId.empty() && scannerId != CachedScannerId())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "No data found for scanner %s", scannerId.c_str());
    }
    DataCacheScannerInfo info;
    CopyDataFromScannerCache(info);
    return info;
}

bool ControlDataCache::OperationBegin()
{
    int32 idle = 0;
    return operationFlag.compare_exchange_strong(idle, 1);
}

int ControlDataCache::OperationFinish()
{
    return operationFlag.exchange(0);
}

void ControlDataCache::FinishFetch()
{
    if (OperationFinish() != 1)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
}

void ControlDataCache::GetLatestSystemStats()
{
    runner->Run([this] {
        try
        {
            FetchSystemStats();
        }
        catch (...)
        {
            ZU_LOG_CAUGHT("Exception getting system stats");
            FinishFetch();
        }
    });
}

void ControlDataCache::GetLatestScannerInfo(std::string const& scannerId)
{
    runner->Run([this, scannerId] {
        try
        {
            FetchScannerInfo(scannerId);
        }
        catch (...)
        {
            FinishFetch(); // nothing is logged: protocols ask again and again, also a scanner that cannot answer
        }
    });
}

void ControlDataCache::FetchSystemStats()
{
    IControlSystemInterface::SystemStats fresh;
    systemInterface.Stats(fresh);
    std::unique_ptr<IControlSystemInterface::SystemStats> record;
    wStatus const status = systemQueue.Remove(record, 0);
    if (status == Zu::Status::TIME_OUT)
    {
        record = std::make_unique<IControlSystemInterface::SystemStats>();
    }
    else if (status != Zu::Status::SUCCESS)
    {
        ZU_THROW(status, "Failed to remove item from system stats queue");
    }
    *record = std::move(fresh); // reuses a leftover record
    FinishFetch();              // before the record is queued: the reader that takes it may read again at once
    systemQueue.Add(std::move(record));
}

void ControlDataCache::FetchScannerInfo(std::string const& scannerId)
{
    IControlScanEngineInterface::ScannerStateInfo fresh;
    scanEngineInterface.ScannerInfo(scannerId, fresh);
    std::unique_ptr<IControlScanEngineInterface::ScannerStateInfo> record;
    wStatus const status = scannerQueue.Remove(record, 0);
    if (status == Zu::Status::TIME_OUT)
    {
        record = std::make_unique<IControlScanEngineInterface::ScannerStateInfo>();
    }
    else if (status != Zu::Status::SUCCESS)
    {
        ZU_THROW(status, "Failed to remove item from scanner stats queue");
    }
    *record = std::move(fresh);
    FinishFetch();
    scannerQueue.Add(std::move(record));
}

void ControlDataCache::UpdateSystemStatsCache(uint64 timeoutUsec)
{
    std::unique_ptr<IControlSystemInterface::SystemStats> record;
    wStatus const status = systemQueue.Remove(record, timeoutUsec);
    if (status == Zu::Status::TIME_OUT)
    {
        return;
    }
    if (status != Zu::Status::SUCCESS)
    {
        ZU_THROW(status, "Error %d emptying system stats queue", status);
    }
    Zu::Locker const guard(systemLock);
    systemCache.upTime = record->upTime;
    systemCache.appUpTime = record->appUpTime;
    systemCache.loadedJob = std::move(record->loadedJob);
    systemCache.runState = record->runState;
    systemCache.linkStatus = std::move(record->linkStatus);
    systemCache.linkCapacity = std::move(record->linkCapacity);
}

void ControlDataCache::UpdateScannerInfoCache(uint64 timeoutUsec)
{
    std::unique_ptr<IControlScanEngineInterface::ScannerStateInfo> record;
    wStatus const status = scannerQueue.Remove(record, timeoutUsec);
    if (status == Zu::Status::TIME_OUT)
    {
        return;
    }
    if (status != Zu::Status::SUCCESS)
    {
        ZU_THROW(status, "Error %d emptying scanner stats queue", status);
    }
    Zu::Locker const guard(scannerLock);
    cachedScannerId = std::move(record->id);
    scannerCache.currentEncoderValue = record->currentEncoderValue;
    scannerCache.currentSyncTime = record->currentSyncTime;
    scannerCache.alignmentState = record->alignmentState;
    scannerCache.laserEnabled = record->laserEnabled;
}

void ControlDataCache::CopyDataFromSystemCache(DataCacheSystemStats& stats)
{
    Zu::Locker const guard(systemLock);
    stats = systemCache;
}

void ControlDataCache::CopyDataFromScannerCache(DataCacheScannerInfo& info)
{
    Zu::Locker const guard(scannerLock);
    info = scannerCache;
}

std::string ControlDataCache::CachedScannerId()
{
    Zu::Locker const guard(scannerLock);
    return cachedScannerId;
}

} // namespace ZuControl
