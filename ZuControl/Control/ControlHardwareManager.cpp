#include "ZuControl/Control/ControlHardwareManager.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuControl/Control/HardwareResult.h"
#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"

#include <algorithm>
#include <array>

namespace ZuControl
{

using namespace ZuStdScanners::ZucSensor;

namespace
{

using Kind = IControlHardware::ZuHardwareIOType;

constexpr std::array KINDS{Kind::ANALOG_OUTPUT, Kind::SERIAL_OUTPUT, Kind::DIGITAL_OUTPUT, Kind::DIGITAL_INPUT};

} // namespace

ControlHardwareManager::ControlHardwareManager(IControlScanEngineInterface& usedScanEngines)
    : scanEngines(usedScanEngines)
{
    Zu::GuardStep(__LINE__, __FILE__, ZU_FUNCTION_LABEL, "Exception thrown in self testing",
                  [this] { ClearAllHardwareLists(); });
}

ControlHardwareManager::~ControlHardwareManager()
{
    ZU_GUARD_DESTRUCTOR([this] { ClearAllHardwareLists(); });
}

std::list<Kind> ControlHardwareManager::SupportedHardwareInterfaces() const
{
    return kinds;
}

uint64 ControlHardwareManager::GetInterfaceCount(Kind kind) const
{
    switch (kind)
    {
    case Kind::ANALOG_OUTPUT:
        return analogOutputs.size();
    case Kind::SERIAL_OUTPUT:
        return serialOutputs.size();
    case Kind::DIGITAL_OUTPUT:
        return digitalOutputs.size();
    case Kind::DIGITAL_INPUT:
        return digitalInputs.size();
    }
    ZU_THROW(Zu::Status::NOT_FOUND);
}

IControlHardware& ControlHardwareManager::GetHardwareInterface(Kind kind, uint64 index)
{
    if (std::find(KINDS.begin(), KINDS.end(), kind) == KINDS.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    if (index >= GetInterfaceCount(kind))
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    switch (kind)
    {
    case Kind::ANALOG_OUTPUT:
        return *analogOutputs[index];
    case Kind::SERIAL_OUTPUT:
        return *serialOutputs[index];
    case Kind::DIGITAL_OUTPUT:
        return *digitalOutputs[index];
    case Kind::DIGITAL_INPUT:
        break;
    }
    return *digitalInputs[index];
}

void ControlHardwareManager::FindHardware()
{
    Refresh();
}

ZuScan::ISensor* ControlHardwareManager::GetISensor()
{
    return scanEngines.FindSupportedSensor();
}

void ControlHardwareManager::Refresh()
{
    try
    {
        if (ZuScan::ISensor* const sensor = GetISensor(); sensor != nullptr)
        {
            UpdateAllHardwareLists(*sensor);
        }
    }
    catch (Zu::Exception const&)
    {
        ZU_LOG_CAUGHT("Exception thrown in refreshing hardware mappings");
    }
}

void ControlHardwareManager::UpdateAllHardwareLists(ZuScan::ISensor& sensor)
{
    for (Kind const kind : KINDS)
    {
        UpdateHardwareList(sensor, kind);
    }
    UpdateHardwareAvailabilityList();
}

void ControlHardwareManager::UpdateHardwareList(ZuScan::ISensor& sensor, Kind kind)
{
    ZuScan::ICommandTarget* const target = sensor.CommandTarget(); // asked for each kind: it may change
    if (target == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    auto const params = std::make_shared<QueryIoOutputCountParams>();
    params->ioType.Set(IoType{static_cast<uint8>(kind)});
    auto const result = target->InvokeAction("queryIoOutputCount", params);
    uint64 const count = HardwareResult<QueryIoOutputCountResult>(result).count.Get();
    ZU_LOG_INFO("type:%d, interfaceCount:%d", static_cast<int>(kind), static_cast<int>(count));
    for (uint64 index = 0; index < count; ++index)
    {
        AddObject(sensor, kind, index);
    }
}

void ControlHardwareManager::UpdateHardwareAvailabilityList()
{
    for (Kind const kind : KINDS)
    {
        if (GetInterfaceCount(kind) > 0)
        {
            kinds.push_back(kind);
        }
    }
}

void ControlHardwareManager::ClearAllHardwareLists()
{
    kinds.clear();
    analogOutputs.clear();
    serialOutputs.clear();
    digitalOutputs.clear();
    digitalInputs.clear();
}

void ControlHardwareManager::AddObject(ZuScan::ISensor& sensor, Kind kind, uint64 index)
{
    switch (kind)
    {
    case Kind::ANALOG_OUTPUT:
        analogOutputs.push_back(std::make_shared<ControlAnalogOutput>(index, sensor));
        break;
    case Kind::SERIAL_OUTPUT:
        serialOutputs.push_back(std::make_shared<ControlSerialOutput>(index, sensor));
        break;
    case Kind::DIGITAL_OUTPUT:
        digitalOutputs.push_back(std::make_shared<ControlDigitalOutput>(index, sensor));
        break;
    case Kind::DIGITAL_INPUT:
        digitalInputs.push_back(std::make_shared<ControlDigitalInput>(index, sensor));
        break;
    }
}

} // namespace ZuControl
