#pragma once

#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Export.h"
#include "ZuPlugin/IPlugin.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuControl
{

class IControlFactory;

/// The protocol types that a plug-in offers.
///
/// A plug-in derives from this class and fills both lists in its constructor; they are only read afterwards, on the
/// host's main thread. Do not override `GetObject`: the catalogue casts its result to ControlPlugin.
class ZUCONTROL_API ControlPlugin : public ZuPlugin::IPlugin
{
public:
    static constexpr char const* TYPE = "ZuControl.ControlPlugin";

    /// A plug-in object that offers no types.
    static std::shared_ptr<ControlPlugin> Create();

    // First of the slots that others call through: never move one.
    ~ControlPlugin() override;
    std::string Type() const override;
    void const* GetObject() const override;

    ControlPlugin(ControlPlugin const&) = delete;
    ControlPlugin& operator=(ControlPlugin const&) = delete;

    uint64 ControlInfoCount() const;

    /// Throws std::out_of_range for a bad index.
    ControlInfo const& ControlInfoAt(uint64 index) const;

protected:
    ControlPlugin();

    std::vector<ControlInfo> infos;
    std::vector<std::shared_ptr<IControlFactory>> factories; // kept alive for the records, which only point to them
};

} // namespace ZuControl
