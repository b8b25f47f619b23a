// Makes nothing where it should make a plug-in.

#include "TestPlugin.h"
#include "ZuPlugin/PluginEntry.h"

namespace
{

std::shared_ptr<TestPlugin> MakeNothing()
{
    return nullptr;
}

} // namespace

ZU_PLUGIN_ENTRY(MakeNothing);
