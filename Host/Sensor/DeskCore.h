#pragma once

#include "Host/Sensor/DeskMetrics.h"
#include "ZuApi/Event.h"
#include "ZuCore/Core.h"
#include "wApi/wIpConfig.h"
#include "wApi/wMutex.h"

namespace ZuHost
{

class Sensor;

/// The core of the simulated sensor: starts and stops scanning, and simulates the operations on a device. A restart
/// stops the scan, puts the next network settings into force and restarts the up-times.
///
/// Threads: any thread may call. Operations run one at a time and fire the two events while they hold the lock. A
/// handler may call the core again, but must not wait for another thread that calls it. Add handlers before the core is
/// handed out and remove them after `Close`, so that none runs while it is removed. An exception of a handler is logged
/// and does not end the operation.
class DeskCore final : public ZuCore::Core
{
public:
    /// `scansAtPowerUp`: whether the device scans after a restart. The sensor outlives the core.
    DeskCore(Sensor& controlledSensor, bool scansAtPowerUp);
    ~DeskCore() override;

    DeskCore(DeskCore const&) = delete;
    DeskCore& operator=(DeskCore const&) = delete;

    /// Fires the start event, then scans. Does nothing while scanning.
    void Start(bool userRequest) override;

    /// Stops scanning, then fires the stop event. Does nothing while not scanning.
    void Stop(bool force) override;

    /// Stops scanning, clears all network settings, and fires `FactoryRestoreEvent`.
    void FactoryRestore() override;

    /// Stops scanning, applies the next network settings and restarts the up-times. Then scans if the device scans at
    /// power-up.
    void Restart() override;
    void SetNextIpConfig(wIpConfig const& config) override;

    /// Returns ERROR after the scan has failed, until the next start or stop. Does not wait for a running operation.
    ZuCore::RunState GetRunState() override;

    ZuCommon::IMetricsReporter<>& GetMetricsReporter() override;

    /// Stops scanning for good. Afterwards each operation throws `Zu::Status::WRONG_STATE` and no event fires.
    void Close();

    /// Fires true when a scan starts, and false when it has stopped.
    Zu::Event<bool>& ScanStartStopEvent();
    Zu::Event<>& FactoryRestoreEvent();

    /// The network settings in force, and the settings that the next restart applies.
    wIpConfig IpConfig() const;
    wIpConfig NextIpConfig() const;

private:
    void CheckOpen() const ZU_REQUIRES(operationLock);
    void StartScan() ZU_REQUIRES(operationLock);
    void StopScan() ZU_REQUIRES(operationLock);

    Sensor& sensor;
    bool const startsAtPowerUp;
    DeskMetricsReporter reporter;

    // Held during each operation except GetRunState, also while events fire. Lock order: this, the sensor's locks.
    mutable Zu::RecursiveMutex operationLock;
    bool isClosed ZU_GUARDED_BY(operationLock) = false;
    bool isScanning ZU_GUARDED_BY(operationLock) = false; // as last reported by the event
    Zu::Event<bool> scanStartStopEvent;                   // both events fire under operationLock
    Zu::Event<> factoryRestoreEvent;
    wIpConfig ipConfig ZU_GUARDED_BY(operationLock);
    wIpConfig nextIpConfig ZU_GUARDED_BY(operationLock);
};

} // namespace ZuHost
