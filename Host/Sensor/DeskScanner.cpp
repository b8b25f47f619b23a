#include "Host/Sensor/DeskScanner.h"

#include "Host/Sensor/CommandTable.h"
#include "Host/Sensor/Sensor.h"
#include "Host/Sensor/ShownValues.h"
#include "ZuScan/ScanEngines.h"
#include "wApi/wTime.h"

namespace ZuHost
{

DeskScanner::DeskScanner(Sensor& scanningSensor, uint64 alignmentUsec)
    : sensor(scanningSensor),
      aligner(alignmentUsec),
      actions{{"trigger", [this] { return Trigger(); }}, {"scannerInfo", [this] { return Info(); }}},
      commands{{"align", [this] { return Align(); }}, {"clearAlign", [this] { return ClearAlign(); }}},
      camera(sensor.Io())
{
}

DeskScanner::~DeskScanner() = default;

ZuScan::IActionTarget* DeskScanner::ActionTarget()
{
    return &actions;
}

Zu::Event<ZuScan::AlignCompletionStatus>& DeskScanner::AlignmentCompletedEvent()
{
    return aligner.CompletedEvent();
}

ZuScan::AlignState DeskScanner::GetAlignState()
{
    return aligner.State();
}

void DeskScanner::AddTo(ZuScan::Internal::ScanEngineManager& manager)
{
    manager.AddEngine(ENGINE_ID).AddScanner(SCANNER_ID, *this, &commands).AddSensor(SENSOR_ID, camera);
}

void DeskScanner::RestoreFactoryState()
{
    aligner.Clear();
    sensor.Io().RestoreFactoryState();
}

DeskScanner::Camera::Camera(DeskIo& io)
{
    OfferIoCommands(commands, io);
}

DeskScanner::Camera::~Camera() = default;

ZuScan::ICommandTarget* DeskScanner::Camera::CommandTarget()
{
    return &commands;
}

DeskScanner::Result DeskScanner::Trigger()
{
    sensor.Trigger();
    return nullptr;
}

DeskScanner::Result DeskScanner::Align()
{
    aligner.Begin();
    return nullptr;
}

DeskScanner::Result DeskScanner::ClearAlign()
{
    aligner.Clear();
    return nullptr;
}

DeskScanner::Result DeskScanner::Info() const
{
    constexpr uint64 TICKS_PER_MILLISECOND = 1024;
    constexpr uint64 USEC_PER_MILLISECOND = 1000;
    auto result = std::make_shared<ScannerInfoResult>();
    result->laserEnabled = sensor.IsScanning();
    result->currentEncoderValue = static_cast<uint64>(sensor.EncoderValue()); // the encoder is never negative
    result->currentSyncTime = wTime_NowUsec() * TICKS_PER_MILLISECOND / USEC_PER_MILLISECOND;
    return result;
}

} // namespace ZuHost
