#pragma once

#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Export.h"
#include "ZuScan/Sensor.h"

namespace Zu::Params
{
class Group;
}

namespace ZuScan
{

class IActionTarget;
class ICommandTarget;

namespace Internal
{
class ScanEngineInstance;
class ScanEngineManager;
class ScannerInstance;
} // namespace Internal

} // namespace ZuScan

namespace ZuControl
{

/// Operates the scanners by the names of their actions and commands.
///
/// Only the first engine that has a scanner is searched, also for the id of a scanner on another engine. Without an
/// engine manager every operation throws `Zu::Status::WRONG_STATE`.
class ZUCONTROL_API ControlScanEngineInterface final : public IControlScanEngineInterface
{
public:
    /// The manager is not owned and outlives the object.
    explicit ControlScanEngineInterface(ZuScan::Internal::ScanEngineManager* usedScanEngines);
    ~ControlScanEngineInterface() override;

    ControlScanEngineInterface(ControlScanEngineInterface const&) = delete;
    ControlScanEngineInterface& operator=(ControlScanEngineInterface const&) = delete;

    void SoftwareTrigger(std::string const& scannerId) override;
    void Alignment(std::string const& scannerId) override;
    void ClearAlignment(std::string const& scannerId) override;
    Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent(std::string const& scannerId) override;
    void ScannerInfo(std::string const& scannerId, ScannerStateInfo& info) override;
    ZuScan::ISensor* FindSupportedSensor() override;

private:
    ZuScan::Internal::ScanEngineManager& Engines() const;
    static ZuScan::Internal::ScanEngineInstance& GetEngineInstance(ZuScan::Internal::ScanEngineManager& manager);
    static ZuScan::Internal::ScannerInstance& GetScannerInstance(ZuScan::Internal::ScanEngineManager& manager,
                                                                 std::string const& scannerId);
    static ZuScan::IActionTarget& GetActionTarget(ZuScan::Internal::ScannerInstance& instance);
    static ZuScan::ICommandTarget& GetCommandTarget(ZuScan::Internal::ScannerInstance& instance);
    static bool IsGoodEngine(ZuScan::Internal::ScanEngineInstance& instance);
    static bool IsGoodScanner(ZuScan::Internal::ScannerInstance& instance);
    static bool IsActionSupported(ZuScan::IActionTarget* target, char const* name);
    void AlignmentCommandHelper(std::string const& scannerId, char const* actionName, char const* label);
    static ControlAlignmentState MapScannerAlignState(ZuScan::AlignState state);
    static void ParseScannerInfo(Zu::Params::Group const& group, ScannerStateInfo& info);

    ZuScan::Internal::ScanEngineManager* const scanEngines;
};

} // namespace ZuControl
