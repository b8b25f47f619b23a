#pragma once

#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Export.h"
#include "ZuPlugin/PluginEvent.h"

#include <map>
#include <string>
#include <vector>

namespace ZuPlugin
{
class PluginLib;
class PluginManager;
} // namespace ZuPlugin

namespace ZuControl
{

/// The catalogue of protocol types. It is filled from the loaded plug-ins when it is built and only read afterwards, from any
/// thread; a plug-in that is loaded later is not seen.
class ZUCONTROL_API ControlRegistry final
{
public:
    /// `usedPluginManager` outlives the catalogue. A type that cannot be entered is logged and passed over; what a plug-in
    /// throws while it is asked goes on to the caller.
    explicit ControlRegistry(ZuPlugin::PluginManager& usedPluginManager);
    ~ControlRegistry();

    ControlRegistry(ControlRegistry const&) = delete;
    ControlRegistry& operator=(ControlRegistry const&) = delete;

    /// Null when the name is unknown. The record lives as long as the catalogue.
    ControlInfo const* FindByTypeName(std::string const& typeName) const;

    /// All types in byte-wise order of their names, "ab" behind "a".
    std::vector<ControlInfo const*> List() const;

private:
    friend class ControlRegistryTest; // removal, and events other than a load, come from nowhere else

    void AttachPlugins();
    void DetachPlugins();
    void ProcessPluginLoad(ZuPlugin::PluginLib const& lib, ZuPlugin::PluginEvent event);
    void Add(ControlInfo const& info);
    void Remove(std::string const& typeName);

    ZuPlugin::PluginManager& pluginManager;
    std::map<std::string, ControlInfo> types;
};

} // namespace ZuControl
