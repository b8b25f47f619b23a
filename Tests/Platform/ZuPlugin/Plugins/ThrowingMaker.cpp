// Fails while it makes its second plug-in.

#include "TestPlugin.h"
#include "ZuPlugin/PluginEntry.h"

#include <stdexcept>

namespace
{

std::shared_ptr<TestPlugin> MakeFirst()
{
    return std::make_shared<TestPlugin>("Test.Text", "first");
}

std::shared_ptr<TestPlugin> FailToMake()
{
    throw std::runtime_error("no licence for 100%s");
}

} // namespace

ZU_PLUGIN_ENTRY(MakeFirst, FailToMake);
