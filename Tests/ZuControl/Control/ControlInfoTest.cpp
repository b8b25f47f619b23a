#include "ZuControl/Control/ControlInfo.h"

#include "ZuControl/Control/IControlFactory.h"

#include <gtest/gtest.h>

#include <string>

namespace ZuControl
{

namespace
{

class NoFactory final : public IControlFactory
{
public:
    std::shared_ptr<ControlProtocol::IProtocol>
    Create(ControlProtocol::ControlProtocolEnviron const& /*environ*/) override
    {
        return nullptr;
    }
};

} // namespace

TEST(ControlInfo, ShowsThatItWasNeverDescribed)
{
    ControlInfo const info;

    EXPECT_EQ(std::string(info.TypeName()), "TT-TT-TT!@#$%");
    EXPECT_EQ(std::string(info.DisplayName()), "Dun-Dun!@#$%");
    EXPECT_TRUE(info.SupportedOnPhysicalSensor());
    EXPECT_TRUE(info.SupportedOnPhysicalBrackle());
    EXPECT_TRUE(info.SupportedOnVirtualSensor());
    EXPECT_TRUE(info.SupportedOnVirtualBrackle());
    EXPECT_TRUE(info.SupportedOnTavrinServiceApp());
}

TEST(ControlInfo, KeepsWhatIsSetInOneChain)
{
    NoFactory factory;
    ControlInfo info;

    info.SetTypeName("type").SetDisplayName("A type").SetFactory(factory).SetSupportedEnvironment(
        {true, false, true, false, true});
    ControlInfo copy;
    copy = info;

    EXPECT_EQ(std::string(copy.TypeName()), "type");
    EXPECT_EQ(std::string(copy.DisplayName()), "A type");
    EXPECT_EQ(&copy.Factory(), &factory);
    EXPECT_TRUE(copy.SupportedOnPhysicalSensor());
    EXPECT_FALSE(copy.SupportedOnPhysicalBrackle());
    EXPECT_TRUE(copy.SupportedOnVirtualSensor());
    EXPECT_FALSE(copy.SupportedOnVirtualBrackle());
    EXPECT_TRUE(copy.SupportedOnTavrinServiceApp());
}

TEST(ControlInfo, TakesANullNameForTheEmptyOne)
{
    ControlInfo info;

    info.SetTypeName(nullptr).SetDisplayName(nullptr);

    EXPECT_EQ(std::string(info.TypeName()), "");
    EXPECT_EQ(std::string(info.DisplayName()), "");
}

} // namespace ZuControl
