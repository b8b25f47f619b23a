#pragma once

#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

namespace ZuCommon
{
class IMetricsKeeper;
class IMetricsSource;
} // namespace ZuCommon

namespace ZuControl
{

/// A copy of a metrics record, as clients get it. It never changes.
struct MetricsSnapshot
{
    nlohmann::json values;
    nlohmann::json schema;
};

/// Guards the metrics record of one service. Updates and readers of the record exclude each other; the last snapshot is
/// kept for readers that must not wait for an update.
///
/// All operations are thread-safe. A nested call on the same thread, from `keeper`, `handler` or `source`, does not
/// wait.
class MetricsRecord final
{
public:
    MetricsRecord();
    ~MetricsRecord();

    MetricsRecord(MetricsRecord const&) = delete;
    MetricsRecord& operator=(MetricsRecord const&) = delete;

    /// Calls `keeper` to update the record, and takes a snapshot of it. Passes on the exceptions of `keeper`; the
    /// snapshot then stays that of the last successful update.
    void Update(ZuCommon::IMetricsKeeper& keeper);

    /// Calls `handler` with `source`, the live record, while no update runs. Waits for a running update for
    /// `patienceUsec` microseconds at most, and then does nothing.
    void Show(ZuCommon::IMetricsSource const& source,
              std::function<void(ZuCommon::IMetricsSource const&)> const& handler, uint64 patienceUsec);

    /// A new snapshot of `source` when no update runs, else the last one. Waits only when there is no snapshot yet, for
    /// at most `patienceUsec` microseconds, and then throws `Zu::Status::TIME_OUT`. Passes on the exceptions of
    /// `source`.
    std::shared_ptr<MetricsSnapshot const> Read(ZuCommon::IMetricsSource const& source, uint64 patienceUsec);

private:
    bool InTurn(uint64 patienceUsec, std::function<void()> const& step);
    std::shared_ptr<MetricsSnapshot const> LastSnapshot() const;
    void Keep(std::shared_ptr<MetricsSnapshot const> newSnapshot);

    wLock turn;          // held while the live record is written or read; handlers run under it
    bool isWhole = true; // guarded by `turn`; false when the last update has thrown or is running

    mutable Zu::Mutex lock; // a leaf
    std::shared_ptr<MetricsSnapshot const> snapshot ZU_GUARDED_BY(lock);
};

} // namespace ZuControl
