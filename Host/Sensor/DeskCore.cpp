#include "Host/Sensor/DeskCore.h"

#include "Host/Sensor/Sensor.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "wApi/wMutex.h"

namespace ZuHost
{

DeskCore::DeskCore(Sensor& controlledSensor, bool scansAtPowerUp)
    : sensor(controlledSensor), startsAtPowerUp(scansAtPowerUp)
{
}

DeskCore::~DeskCore() = default;

void DeskCore::Start(bool /*userRequest*/)
{
    Zu::MutexLock const guard(operationLock);
    CheckOpen();
    StartScan();
}

void DeskCore::Stop(bool /*force*/)
{
    Zu::MutexLock const guard(operationLock);
    CheckOpen();
    StopScan();
}

void DeskCore::FactoryRestore()
{
    Zu::MutexLock const guard(operationLock);
    CheckOpen();
    ZU_LOG_INFO("Restoring the factory settings");
    StopScan();
    ipConfig = {};
    nextIpConfig = {};
    ZU_GUARD_BOUNDARY([this] { factoryRestoreEvent.Fire(); });
}

void DeskCore::Restart()
{
    Zu::MutexLock const guard(operationLock);
    CheckOpen();
    ZU_LOG_INFO("Restarting the sensor");
    StopScan();
    ipConfig = nextIpConfig;
    reporter.Metrics().Restart();
    if (startsAtPowerUp)
    {
        StartScan();
    }
}

void DeskCore::SetNextIpConfig(wIpConfig const& config)
{
    Zu::MutexLock const guard(operationLock);
    CheckOpen();
    nextIpConfig = config;
}

ZuCore::RunState DeskCore::GetRunState()
{
    if (sensor.HasFailed())
    {
        return ZuCore::RunState::ERROR;
    }
    return sensor.IsScanning() ? ZuCore::RunState::RUNNING : ZuCore::RunState::READY;
}

ZuCommon::IMetricsReporter<>& DeskCore::GetMetricsReporter()
{
    return reporter;
}

void DeskCore::Close()
{
    Zu::MutexLock const guard(operationLock);
    if (!isClosed)
    {
        StopScan();
        isClosed = true;
    }
}

Zu::Event<bool>& DeskCore::ScanStartStopEvent()
{
    return scanStartStopEvent;
}

Zu::Event<>& DeskCore::FactoryRestoreEvent()
{
    return factoryRestoreEvent;
}

wIpConfig DeskCore::IpConfig() const
{
    Zu::MutexLock const guard(operationLock);
    return ipConfig;
}

wIpConfig DeskCore::NextIpConfig() const
{
    Zu::MutexLock const guard(operationLock);
    return nextIpConfig;
}

void DeskCore::CheckOpen() const
{
    if (isClosed)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "The sensor is being shut down");
    }
}

void DeskCore::StartScan()
{
    if (sensor.HasFailed())
    {
        StopScan(); // so that each start event follows a stop event
    }
    if (isScanning)
    {
        return;
    }
    ZU_LOG_INFO("Starting the scan");
    // Before the first frame, so that handlers count the scan from its beginning.
    ZU_GUARD_BOUNDARY([this] { scanStartStopEvent.Fire(true); });
    isScanning = true;
    try
    {
        sensor.Start();
    }
    catch (...)
    {
        StopScan();
        ZU_THROW_NESTED("The scan cannot be started");
    }
}

void DeskCore::StopScan()
{
    if (!isScanning)
    {
        return;
    }
    sensor.Stop();
    isScanning = false;
    ZU_LOG_INFO("Scan stopped");
    ZU_GUARD_BOUNDARY([this] { scanStartStopEvent.Fire(false); });
}

} // namespace ZuHost
