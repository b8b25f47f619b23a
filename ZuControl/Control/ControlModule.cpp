#include "ZuControl/Control/ControlModule.h"

namespace ZuControl
{

ControlModule::ControlModule(ZuPlugin::PluginManager& pluginManager, ZuRest::ResourceRouter& router,
                             ControlModuleEnviron const& environ)
    : registry(pluginManager),
      scanResults(environ.resultHub, environ.allocator),
      manager(registry, scanResults, environ),
      metrics(manager),
      dir(router, manager, metrics)
{
}

ControlModule::~ControlModule() = default;

} // namespace ZuControl
