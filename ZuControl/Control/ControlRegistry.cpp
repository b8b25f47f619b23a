#include "ZuControl/Control/ControlRegistry.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuPlugin/IPlugin.h"
#include "ZuPlugin/PluginManager.h"

namespace ZuControl
{

ControlRegistry::ControlRegistry(ZuPlugin::PluginManager& usedPluginManager) : pluginManager(usedPluginManager)
{
    AttachPlugins();
}

ControlRegistry::~ControlRegistry()
{
    ZU_GUARD_DESTRUCTOR([this] { DetachPlugins(); });
}

ControlInfo const* ControlRegistry::FindByTypeName(std::string const& typeName) const
{
    auto const position = types.find(typeName);
    return position != types.end() ? &position->second : nullptr;
}

std::vector<ControlInfo const*> ControlRegistry::List() const
{
    std::vector<ControlInfo const*> list;
    list.reserve(types.size());
    for (auto const& entry : types)
    {
        list.push_back(&entry.second);
    }
    return list;
}

void ControlRegistry::AttachPlugins()
{
    ZU_LOG_INFO("ControlRegistry loading plugins...");
    for (uint64 i = 0; i < pluginManager.Count(); ++i) // a library may be loaded while the one before it is read
    {
        ProcessPluginLoad(pluginManager.At(i), ZuPlugin::PluginEvent::LOAD);
    }
}

void ControlRegistry::DetachPlugins()
{
    // Nothing to detach: the libraries stay loaded.
}

void ControlRegistry::ProcessPluginLoad(ZuPlugin::PluginLib const& lib, ZuPlugin::PluginEvent event)
{
    for (std::shared_ptr<ZuPlugin::IPlugin> const& plugin : lib.PluginsByType(ControlPlugin::TYPE))
    {
        auto const* const offer = plugin != nullptr ? static_cast<ControlPlugin const*>(plugin->GetObject()) : nullptr;
        uint64 const count = offer != nullptr ? offer->ControlInfoCount() : 0;
        for (uint64 i = 0; i < count; ++i)
        {
            ControlInfo const& info = offer->ControlInfoAt(i);
            if (event != ZuPlugin::PluginEvent::LOAD)
            {
                continue; // the catalogue keeps the types of a plug-in that is unloaded
            }
            try
            {
                Add(info);
            }
            catch (...)
            {
                ZU_LOG_CAUGHT("Failed to load control protocol \"%s\" (%s)", info.TypeName(), Zu::CaughtText().c_str());
            }
        }
    }
}

void ControlRegistry::Add(ControlInfo const& info)
{
    if (types.contains(info.TypeName())) // the first plug-in to offer a type wins
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS);
    }
    types[info.TypeName()] = info;
}

void ControlRegistry::Remove(std::string const& typeName)
{
    auto const position = types.find(typeName);
    if (position == types.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    types.erase(position);
}

} // namespace ZuControl
