#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuPlugin
{

/// An event in the life of a plug-in library.
enum class PluginEvent : uint32
{
    LOAD = 0,
    UNLOAD = 1
};

/// One plug-in object that a plug-in library offers.
class ZUPLATFORM_API IPlugin
{
public:
    virtual ~IPlugin(); // slot order is part of the plug-in interface: append only

    /// The purpose of the plug-in, for example "ZuControl.ControlPlugin".
    virtual std::string Type() const = 0;

    /// Returns the plug-in's object. Its class follows from the type. The plug-in owns it.
    virtual void const* GetObject() const = 0;
};

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
