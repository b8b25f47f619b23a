#pragma once

#include "Host/Sensor/Aligner.h"
#include "Host/Sensor/CommandTable.h"
#include "ZuScan/Sensor.h"

namespace ZuScan::Internal
{
class ScanEngineManager;
}

namespace ZuHost
{

class DeskIo;
class Sensor;

/// The only scanner of the simulated sensor. Any thread may call.
///
/// Actions: "trigger" takes one extra frame while scanning; "scannerInfo" returns the state of laser, encoder and time.
/// Commands: "align" begins an alignment; "clearAlign" takes the alignment back. Its only sensor takes the commands of
/// the inputs and outputs (see IoCommands).
class DeskScanner final : public ZuScan::IScanner
{
public:
    static constexpr char const* ENGINE_ID = "engine-0";
    static constexpr char const* SCANNER_ID = "scanner-0";
    static constexpr char const* SENSOR_ID = "sensor-0";

    /// The sensor outlives the scanner.
    explicit DeskScanner(Sensor& scanningSensor, uint64 alignmentUsec = Aligner::DEFAULT_DURATION_USEC);
    ~DeskScanner() override;

    DeskScanner(DeskScanner const&) = delete;
    DeskScanner& operator=(DeskScanner const&) = delete;

    ZuScan::IActionTarget* ActionTarget() override;
    Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent() override;
    ZuScan::AlignState GetAlignState() override;

    /// Adds an engine with this scanner and its sensor, which outlive the manager.
    void AddTo(ZuScan::Internal::ScanEngineManager& manager);

    /// Clears the alignment and restores the inputs and outputs.
    void RestoreFactoryState();

private:
    /// The scanner's camera, which carries the inputs and outputs.
    class Camera final : public ZuScan::ISensor
    {
    public:
        explicit Camera(DeskIo& io);
        ~Camera() override;
        ZuScan::ICommandTarget* CommandTarget() override;

    private:
        CommandTable commands;
    };

    using Result = std::shared_ptr<Zu::Params::Group>; // null if an action has no result

    Result Trigger();
    Result Info() const;
    Result Align();
    Result ClearAlign();

    Sensor& sensor;
    Aligner aligner;
    ActionTable actions;
    ActionTable commands;
    Camera camera;
};

} // namespace ZuHost
