// Needs a library that cannot be found.

#include "TestPlugin.h"
#include "ZuPlugin/PluginEntry.h"

extern "C" int TestDependencyNumber();

namespace
{

std::shared_ptr<TestPlugin> Make()
{
    return std::make_shared<TestPlugin>("Test.Text", std::to_string(TestDependencyNumber()));
}

} // namespace

ZU_PLUGIN_ENTRY(Make);
