#include "ZuPlugin/IPlugin.h"

#include <algorithm>
#include <iterator>

namespace ZuPlugin
{

IPlugin::~IPlugin() = default;

PluginLib::PluginLib(std::string libraryPath, std::vector<std::shared_ptr<IPlugin>> offeredPlugins)
    : path(std::move(libraryPath)), plugins(std::move(offeredPlugins))
{
}

PluginLib::~PluginLib() = default;

std::string const& PluginLib::Path() const
{
    return path;
}

std::vector<std::shared_ptr<IPlugin>> PluginLib::PluginsByType(std::string const& type) const
{
    std::vector<std::shared_ptr<IPlugin>> found;
    std::ranges::copy_if(plugins, std::back_inserter(found),
                         [&type](auto const& plugin) { return plugin->Type() == type; });
    return found;
}

} // namespace ZuPlugin
