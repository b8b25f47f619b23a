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

/// What all inputs and outputs have in common: which one it is, and the way to the sensor. It keeps nothing else, so that every
/// call starts afresh and a copy is as good as the original.
class ZUCONTROL_API ControlHardwareBase : public IControlHardware
{
public:
    ~ControlHardwareBase() override;

    ControlHardwareBase(ControlHardwareBase const&) = default;
    ControlHardwareBase& operator=(ControlHardwareBase const&) = delete;

    /// Asks the sensor. Throws std::bad_cast for an answer that is none.
    bool IsEnabled() override;
    void Enable(bool enable) override;

protected:
    /// `usedSensor` outlives the object and is not asked here.
    ControlHardwareBase(uint64 newIndex, ZuScan::ISensor& usedSensor);

    uint64 GetIndex() const;

    /// As the lines of the log show it.
    int ShownIndex() const;

    /// Where commands go; -1000 with no text, in the name of the function `label`, when the sensor takes none.
    ZuScan::ICommandTarget& RequireCommandTarget(char const* label) const;

    /// The arguments of a command to this object; its others are at their defaults.
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
