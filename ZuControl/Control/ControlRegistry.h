#pragma once

#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Export.h"
#include "ZuPlugin/IPlugin.h"

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

/// The catalogue of protocol types. The constructor fills it from the loaded plug-ins; later any thread may read it,
/// and it does not change. A plug-in that is loaded later has no entry.
class ZUCONTROL_API ControlRegistry final
{
public:
    /// `usedPluginManager` outlives the catalogue. A type that cannot be added is logged and skipped; an exception of a
    /// plug-in reaches the caller.
    explicit ControlRegistry(ZuPlugin::PluginManager& usedPluginManager);
    ~ControlRegistry();

    ControlRegistry(ControlRegistry const&) = delete;
    ControlRegistry& operator=(ControlRegistry const&) = delete;

    /// Null when the name is unknown. The record lives as long as the catalogue.
    ControlInfo const* FindByTypeName(std::string const& typeName) const;

    /// All types in byte-wise order of their names, "ab" after "a".
    std::vector<ControlInfo const*> List() const;

private:
    friend class ControlRegistryTest; // only the test removes a type or sends events other than a load

    void AttachPlugins();
    void DetachPlugins();
    void ProcessPluginLoad(ZuPlugin::PluginLib const& lib, ZuPlugin::PluginEvent event);
    void Add(ControlInfo const& info);
    void Remove(std::string const& typeName);

    ZuPlugin::PluginManager& pluginManager;
    std::map<std::string, ControlInfo> types;
};

} // namespace ZuControl
