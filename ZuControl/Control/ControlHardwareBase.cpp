#include "ZuControl/Control/ControlHardwareBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/HardwareResult.h"
#include "ZuScan/Sensor.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"

namespace ZuControl
{

using namespace ZuStdScanners::ZucSensor;

ControlHardwareBase::ControlHardwareBase(uint64 newIndex, ZuScan::ISensor& usedSensor)
    : index(newIndex), sensor(usedSensor)
{
}

ControlHardwareBase::~ControlHardwareBase() = default;

bool ControlHardwareBase::IsEnabled()
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<QueryIoOutputEnabledParams>();
    params->ioType.Set(IoType{static_cast<uint8>(HardwareIoType())});
    ZU_LOG_INFO("ioType:%d, index:%d", static_cast<int>(HardwareIoType()), ShownIndex());
    auto const result = target.InvokeAction("queryIoOutputEnabledAt", params);
    bool const isEnabled = HardwareResult<QueryIoOutputEnabledResult>(result).enabled.Get();
    ZU_LOG_INFO("isEnabled:%d", isEnabled);
    return isEnabled;
}

void ControlHardwareBase::Enable(bool enable)
{
    ZuScan::ICommandTarget& target = RequireCommandTarget(ZU_FUNCTION_LABEL);
    auto const params = MakeParams<EnableIoOutputAtParams>();
    params->ioType.Set(IoType{static_cast<uint8>(HardwareIoType())});
    params->enable.Set(enable);
    ZU_LOG_INFO("ioType:%d, index:%d, enable:%d", static_cast<int>(HardwareIoType()), ShownIndex(), enable);
    target.InvokeAction("enableIoOutputAt", params);
}

uint64 ControlHardwareBase::GetIndex() const
{
    return index;
}

int ControlHardwareBase::ShownIndex() const
{
    return static_cast<int>(index); // fits: sensors have few inputs and outputs
}

ZuScan::ICommandTarget& ControlHardwareBase::RequireCommandTarget(char const* label) const
{
    ZuScan::ICommandTarget* const target = sensor.CommandTarget();
    if (target == nullptr)
    {
        throw Zu::Exception(__LINE__, __FILE__, Zu::Status::WRONG_STATE, label);
    }
    return *target;
}

} // namespace ZuControl
