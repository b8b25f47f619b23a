#pragma once

#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <memory>

namespace Zu::Params
{
class Group;
}

namespace ZuScan
{
class ICommandTarget;
class ISensor;
} // namespace ZuScan

namespace ZuControl
{

/// The base of all inputs and outputs: the index and the sensor. The object has no other state, so a copy is equivalent
/// to the original.
class ZUCONTROL_API ControlHardwareBase : public IControlHardware
{
public:
    ~ControlHardwareBase() override;

    ControlHardwareBase(ControlHardwareBase const&) = default;
    ControlHardwareBase& operator=(ControlHardwareBase const&) = delete;

    /// Asks the sensor. Throws std::bad_cast for an answer of another class, or for none.
    bool IsEnabled() override;
    void Enable(bool enable) override;

protected:
    /// `usedSensor` outlives the object and is not called here.
    ControlHardwareBase(uint64 newIndex, ZuScan::ISensor& usedSensor);

    uint64 GetIndex() const;

    /// The index as the log shows it.
    int ShownIndex() const;

    /// The sensor's command target. When the sensor has none, throws `Zu::Status::WRONG_STATE` with no text, under the
    /// name of the function `label`.
    ZuScan::ICommandTarget& RequireCommandTarget(char const* label) const;

    /// The arguments of a command, with the index of this object; the other members are at their defaults.
    template <typename Params>
    std::shared_ptr<Params> MakeParams() const
    {
        auto params = std::make_shared<Params>();
        params->index.Set(index);
        return params;
    }

private:
    uint64 const index; // within the kind
    ZuScan::ISensor& sensor;
};

} // namespace ZuControl
