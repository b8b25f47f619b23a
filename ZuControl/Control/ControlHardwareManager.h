#pragma once

#include "ZuControl/Control/IControlHardwareManager.h"
#include "ZuControl/Export.h"

#include <list>
#include <memory>
#include <vector>

namespace ZuScan
{
class ISensor;
}

namespace ZuControl
{

class ControlAnalogOutput;
class ControlDigitalInput;
class ControlDigitalOutput;
class ControlSerialOutput;
class IControlScanEngineInterface;

/// The catalogue of the sensor's inputs and outputs.
///
/// It is empty until `FindHardware` has asked the sensor, and has no lock: that happens before any protocol can look something
/// up, and once.
class ZUCONTROL_API ControlHardwareManager final : public IControlHardwareManager
{
public:
    /// `usedScanEngines` outlives the manager and is not asked here.
    explicit ControlHardwareManager(IControlScanEngineInterface& usedScanEngines);
    ~ControlHardwareManager() override;

    ControlHardwareManager(ControlHardwareManager const&) = delete;
    ControlHardwareManager& operator=(ControlHardwareManager const&) = delete;

    std::list<ZuHardwareIOType> SupportedHardwareInterfaces() const override;
    uint64 GetInterfaceCount(ZuHardwareIOType kind) const override;
    IControlHardware& GetHardwareInterface(ZuHardwareIOType kind, uint64 index) override;

    /// The host's sensor is there: asks it what it has. What the sensor refuses is logged, and the kinds before that stay. Call
    /// it once, before protocols start: the lists must not grow under those who read them, and a second call adds every object
    /// a second time. Throws std::bad_cast for an answer that is none.
    void FindHardware();

private:
    friend class ControlHardwareManagerTest; // asking a given sensor, and clearing, comes from nowhere else

    ZuScan::ISensor* GetISensor();
    void Refresh();
    void UpdateAllHardwareLists(ZuScan::ISensor& sensor);
    void UpdateHardwareList(ZuScan::ISensor& sensor, ZuHardwareIOType kind);
    void UpdateHardwareAvailabilityList();
    void ClearAllHardwareLists();
    void AddObject(ZuScan::ISensor& sensor, ZuHardwareIOType kind, uint64 index);

    IControlScanEngineInterface& scanEngines;
    std::vector<std::shared_ptr<ControlAnalogOutput>> analogOutputs;
    std::vector<std::shared_ptr<ControlSerialOutput>> serialOutputs;
    std::vector<std::shared_ptr<ControlDigitalOutput>> digitalOutputs;
    std::vector<std::shared_ptr<ControlDigitalInput>> digitalInputs;
    std::list<ZuHardwareIOType> kinds; // those of which there is any
};

} // namespace ZuControl
