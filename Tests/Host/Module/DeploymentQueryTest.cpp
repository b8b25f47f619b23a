#include "Host/Module/DeploymentQuery.h"

#include <gtest/gtest.h>

#include <array>

namespace ZuHost
{

TEST(DeploymentQuery, AnswersYesToOneQuestionOnly)
{
    using Answers = std::array<bool, 5>;
    auto const answers = [](Deployment kind) {
        DeploymentQuery query(kind);
        return Answers{query.IsPhysicalSensor(), query.IsPhysicalBrackle(), query.IsVirtualSensor(),
                       query.IsVirtualBrackle(), query.IsTavrinServiceApp()};
    };

    EXPECT_EQ(answers(Deployment::PHYSICAL_SENSOR), (Answers{true, false, false, false, false}));
    EXPECT_EQ(answers(Deployment::PHYSICAL_BRACKLE), (Answers{false, true, false, false, false}));
    EXPECT_EQ(answers(Deployment::VIRTUAL_SENSOR), (Answers{false, false, true, false, false}));
    EXPECT_EQ(answers(Deployment::VIRTUAL_BRACKLE), (Answers{false, false, false, true, false}));
    EXPECT_EQ(answers(Deployment::TAVRIN_SERVICE_APP), (Answers{false, false, false, false, true}));
}

} // namespace ZuHost
