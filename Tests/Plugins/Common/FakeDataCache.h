#pragma once

#include "Support/CallLog.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlDataCache.h"

#include <mutex>
#include <string>

namespace PluginCommon
{

/// Returns the records that the test has set, without waiting, or throws the status that the test has set.
class FakeDataCache final : public ZuControl::IControlDataCache
{
public:
    DataCacheSystemStats SystemStats(uint64) override
    {
        calls.Add("SystemStats");
        std::scoped_lock const guard(lock);
        if (failure != 0)
        {
            ZU_THROW(failure, "the cache fails");
        }
        return stats;
    }

    DataCacheScannerInfo ScannerInfo(std::string const& scannerId, uint64) override
    {
        calls.Add("ScannerInfo(" + scannerId + ")");
        std::scoped_lock const guard(lock);
        if (failure != 0)
        {
            ZU_THROW(failure, "the cache fails");
        }
        return info;
    }

    void Set(DataCacheSystemStats const& newStats, DataCacheScannerInfo const& newInfo)
    {
        std::scoped_lock const guard(lock);
        stats = newStats;
        info = newInfo;
    }

    void SetFailure(int32 status)
    {
        std::scoped_lock const guard(lock);
        failure = status;
    }

    ZuTest::CallLog calls;

private:
    std::mutex lock; // guards the members that a test sets and the fetching thread reads
    DataCacheSystemStats stats;
    DataCacheScannerInfo info;
    int32 failure = 0;
};

} // namespace PluginCommon
