#include "ZuControl/Control/ControlPlugin.h"

#include "ZuControl/Control/IControlFactory.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZuControl
{

namespace
{

class OfferingPlugin final : public ControlPlugin
{
public:
    OfferingPlugin()
    {
        infos.push_back(ControlInfo().SetTypeName("a"));
        infos.push_back(ControlInfo().SetTypeName("b"));
    }
};

} // namespace

TEST(ControlPlugin, OffersNothingWhenItIsCreatedAsItIs)
{
    auto const plugin = ControlPlugin::Create();

    EXPECT_EQ(plugin->ControlInfoCount(), 0u);
    EXPECT_EQ(plugin->Type(), "ZuControl.ControlPlugin");
    EXPECT_EQ(plugin->GetObject(), static_cast<ControlPlugin const*>(plugin.get()));
}

TEST(ControlPlugin, GivesTheRecordsThatItWasFilledWith)
{
    OfferingPlugin const plugin;

    ASSERT_EQ(plugin.ControlInfoCount(), 2u);
    EXPECT_EQ(std::string(plugin.ControlInfoAt(0).TypeName()), "a");
    EXPECT_EQ(std::string(plugin.ControlInfoAt(1).TypeName()), "b");
    EXPECT_THROW(plugin.ControlInfoAt(2), std::out_of_range);
}

} // namespace ZuControl
