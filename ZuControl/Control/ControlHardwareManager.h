#pragma once

#include "ZuControl/Control/IControlHardware.h"
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
/// It is empty until `FindHardware` has asked the sensor. It has no lock: `FindHardware` is called once, before any
/// protocol can look something up.
class ZUCONTROL_API ControlHardwareManager final : public IControlHardwareManager
{
public:
    /// `usedScanEngines` outlives the manager and is not called here.
    explicit ControlHardwareManager(IControlScanEngineInterface& usedScanEngines);
    ~ControlHardwareManager() override;

    ControlHardwareManager(ControlHardwareManager const&) = delete;
    ControlHardwareManager& operator=(ControlHardwareManager const&) = delete;

    std::list<ZuHardwareIOType> SupportedHardwareInterfaces() const override;
    uint64 GetInterfaceCount(ZuHardwareIOType kind) const override;
    IControlHardware& GetHardwareInterface(ZuHardwareIOType kind, uint64 index) override;

    /// Asks the host's sensor for its inputs and outputs. A `Zu::Exception` of the sensor is logged; the kinds that are
    /// read before it stay. Call this once, before protocols start: the lists have no lock, and a second call adds
    /// every object a second time. Throws std::bad_cast for an answer of another class, or for none.
    void FindHardware();

private:
    friend class ControlHardwareManagerTest; // only the test asks a sensor of its own and clears the lists

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
    std::list<ZuHardwareIOType> kinds; // those with at least one object
};

} // namespace ZuControl
