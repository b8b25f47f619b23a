#pragma once

#include "ZuPlugin/IPlugin.h"
#include "wApi/wExport.h"

#include <memory>
#include <vector>

namespace ZuPlugin
{

/// A plug-in library that is loaded, and what it offers. Its code stays in the process until the end, so that nothing made by
/// it outlives it.
class ZUPLATFORM_API PluginLib final
{
public:
    /// `libraryPath` is for messages; `offeredPlugins` in the order in which the library numbers them, none of them null.
    PluginLib(std::string libraryPath, std::vector<std::shared_ptr<IPlugin>> offeredPlugins);
    ~PluginLib();

    PluginLib(PluginLib const&) = delete;
    PluginLib& operator=(PluginLib const&) = delete;

    std::string const& Path() const;

    /// Those whose `Type()` is `type`, in the library's order.
    std::vector<std::shared_ptr<IPlugin>> PluginsByType(std::string const& type) const;

private:
    std::string const path;
    std::vector<std::shared_ptr<IPlugin>> const plugins;
};

} // namespace ZuPlugin
