#pragma once

#include "Host/Sensor/DeskMetricsReporter.h"
#include "ZuApi/Event.h"
#include "ZuCore/Core.h"
#include "wApi/wIpConfig.h"
#include "wApi/wMutex.h"

namespace ZuHost
{

class Sensor;

/// The core of the sensor on the desk: starts and stops scanning, and does to the device what can be done to one that is
/// none: a restart stops the scan, lets the next network settings come into force and begins the up-times anew.
///
/// Threads: any thread may call. Operations exclude each other and fire the two events while they do, so a handler may call
/// the core again but must not wait for another thread that does. Handlers are added and removed while no operation can
/// run: before the core is handed out, and behind `Close`. What a handler throws is logged and ends no operation.
class DeskCore final : public ZuCore::Core
{
public:
    /// `scansAtPowerUp`: the device scans as soon as it has restarted. The sensor outlives the core.
    DeskCore(Sensor& controlledSensor, bool scansAtPowerUp);
    ~DeskCore() override;

    DeskCore(DeskCore const&) = delete;
    DeskCore& operator=(DeskCore const&) = delete;

    /// Tells of the start, then scans; does nothing while it scans.
    void Start(bool userRequest) override;

    /// Stops scanning, then tells of it; does nothing when it does not scan.
    void Stop(bool force) override;

    /// Stops scanning, forgets all network settings, and tells those who keep others.
    void FactoryRestore() override;

    void Restart() override;
    void SetNextIpConfig(wIpConfig const& config) override;

    /// ERROR when the scan broke down, until the next start or stop. Waits for no operation.
    ZuCore::RunState GetRunState() override;

    ZuCommon::IMetricsReporter<>& GetMetricsReporter() override;

    /// Stops scanning for good: after this each operation is refused with -1000 and no event fires any more.
    void Close();

    /// True when a scan starts, false when it has stopped.
    Zu::Event<bool>& ScanStartStopEvent();
    Zu::Event<>& FactoryRestoreEvent();

    /// The settings in force, and those that the next restart brings.
    wIpConfig IpConfig() const;
    wIpConfig NextIpConfig() const;

private:
    void CheckOpen() const ZU_REQUIRES(operationLock);
    void StartScan() ZU_REQUIRES(operationLock);
    void StopScan() ZU_REQUIRES(operationLock);

    Sensor& sensor;
    bool const startsAtPowerUp;
    DeskMetricsReporter reporter;

    // Held during each operation but for the questions, also while it fires. Taken before the sensor's locks.
    mutable Zu::RecursiveMutex operationLock;
    bool isClosed ZU_GUARDED_BY(operationLock) = false;
    bool isScanning ZU_GUARDED_BY(operationLock) = false; // as the events told it last
    Zu::Event<bool> scanStartStopEvent; // these two fire under operationLock; handlers are added before the sensor runs
    Zu::Event<> factoryRestoreEvent;
    wIpConfig ipConfig ZU_GUARDED_BY(operationLock);
    wIpConfig nextIpConfig ZU_GUARDED_BY(operationLock);
};

} // namespace ZuHost
