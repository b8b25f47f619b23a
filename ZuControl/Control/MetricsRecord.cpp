#include "ZuControl/Control/MetricsRecord.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Metrics.h"
#include "wApi/wMutex.h"

#include <utility>

namespace ZuControl
{

namespace
{

std::shared_ptr<MetricsSnapshot const> SnapshotOf(Zu::Properties::Structure const& record)
{
    using Zu::Properties::JsonSerializer;
    return std::make_shared<MetricsSnapshot const>(
        MetricsSnapshot{JsonSerializer::Serialize(record), JsonSerializer::SerializeSchema(record)});
}

} // namespace

MetricsRecord::MetricsRecord()
{
    ZU_CHECK(wLock_Construct(&turn, nullptr));
}

MetricsRecord::~MetricsRecord() = default;

void MetricsRecord::Update(ZuCommon::IMetricsKeeper& keeper)
{
    InTurn(wTIMEOUT_INFINITE, [this, &keeper] {
        isWhole = false;
        Zu::Properties::Structure const& record = keeper.UpdateMetrics();
        isWhole = true;
        try
        {
            Keep(SnapshotOf(record));
        }
        catch (...)
        {
            // The update itself has succeeded. `Read` reports a record that cannot be copied to each reader.
        }
    });
}

void MetricsRecord::Show(ZuCommon::IMetricsSource const& source,
                         std::function<void(ZuCommon::IMetricsSource const&)> const& handler, uint64 patienceUsec)
{
    InTurn(patienceUsec, [&] { handler(source); });
}

std::shared_ptr<MetricsSnapshot const> MetricsRecord::Read(ZuCommon::IMetricsSource const& source, uint64 patienceUsec)
{
    bool const hasSnapshot = LastSnapshot() != nullptr;
    bool const isRead = InTurn(hasSnapshot ? 0 : patienceUsec, [&] {
        if (isWhole || !hasSnapshot)
        {
            Keep(SnapshotOf(source.GetMetrics()));
        }
    });
    auto last = LastSnapshot();
    if (!isRead && last == nullptr)
    {
        ZU_THROW(Zu::Status::TIME_OUT);
    }
    return last;
}

/// Runs `step` while holding `turn`. Returns false without running it when `turn` is not free within `patienceUsec`
/// microseconds.
bool MetricsRecord::InTurn(uint64 patienceUsec, std::function<void()> const& step)
    ZU_NO_THREAD_SAFETY_ANALYSIS // the analysis cannot follow a conditional lock
{
    wStatus const status = wLock_EnterEx(turn, patienceUsec);
    if (status == Zu::Status::TIME_OUT)
    {
        return false;
    }
    ZU_CHECK(status);
    struct Exit
    {
        ~Exit() ZU_NO_THREAD_SAFETY_ANALYSIS
        {
            wLock_Exit(taken);
        }
        wLock& taken;
    } const exit{turn};
    step();
    return true;
}

std::shared_ptr<MetricsSnapshot const> MetricsRecord::LastSnapshot() const
{
    Zu::MutexLock const guard(lock);
    return snapshot;
}

void MetricsRecord::Keep(std::shared_ptr<MetricsSnapshot const> newSnapshot)
{
    Zu::MutexLock const guard(lock);
    snapshot.swap(newSnapshot); // the old snapshot is destroyed with the argument, after the lock
}

} // namespace ZuControl
