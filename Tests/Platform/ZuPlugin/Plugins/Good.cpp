// Offers three plug-ins of two types.

#include "TestPlugin.h"
#include "ZuPlugin/PluginEntry.h"

namespace
{

std::shared_ptr<TestPlugin> MakeFirst()
{
    return std::make_shared<TestPlugin>("Test.Text", "first");
}

std::shared_ptr<TestPlugin> MakeOther()
{
    return std::make_shared<TestPlugin>("Test.Other", "other");
}

std::shared_ptr<TestPlugin> MakeSecond()
{
    return std::make_shared<TestPlugin>("Test.Text", "second");
}

} // namespace

ZU_PLUGIN_ENTRY(MakeFirst, MakeOther, MakeSecond);
