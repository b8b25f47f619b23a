#pragma once

#include "ZuPlugin/IPlugin.h"
#include "wApi/wExport.h"

#include <memory>
#include <vector>

namespace ZuPlugin
{

/// A loaded plug-in library and its plug-ins. Its code stays in the process until the end, so no object that it made
/// outlives it.
class ZUPLATFORM_API PluginLib final
{
public:
    /// `libraryPath` is for messages. `offeredPlugins` are in the library's order; none of them is null.
    PluginLib(std::string libraryPath, std::vector<std::shared_ptr<IPlugin>> offeredPlugins);
    ~PluginLib();

    PluginLib(PluginLib const&) = delete;
    PluginLib& operator=(PluginLib const&) = delete;

    std::string const& Path() const;

    /// Returns the plug-ins with this `Type()`, in the library's order.
    std::vector<std::shared_ptr<IPlugin>> PluginsByType(std::string const& type) const;

private:
    std::string const path;
    std::vector<std::shared_ptr<IPlugin>> const plugins;
};

} // namespace ZuPlugin
