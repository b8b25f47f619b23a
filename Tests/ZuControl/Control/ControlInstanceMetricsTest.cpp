#include "ZuControl/Control/ControlInstanceMetrics.h"

#include "Support/FakeProtocol.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <gtest/gtest.h>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(ControlInstanceMetrics, ForwardsToTheProtocolThatIsBound)
{
    ZuTest::CallLog calls;
    ZuTest::FakeProtocol protocol(calls, 3);
    ControlInstanceMetrics metrics;

    metrics.BindProtocol(&protocol);

    EXPECT_EQ(&metrics.UpdateMetrics(), &protocol.metrics);
    metrics.ResetMetrics();
    EXPECT_EQ(&metrics.GetMetrics(), &protocol.metrics);
    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"UpdateMetrics", "ResetMetrics", "GetMetrics"}));
}

TEST(ControlInstanceMetrics, RefusesEveryOperationWithoutAProtocol)
{
    ZuTest::CallLog calls;
    ZuTest::FakeProtocol protocol(calls, 3);
    ControlInstanceMetrics metrics;
    metrics.BindProtocol(&protocol);

    metrics.ClearProtocol();

    EXPECT_EQ(RefusalOf([&] { metrics.UpdateMetrics(); }),
              (Refusal{-1000, "No protocol implementation available for the metrics update operation"}));
    EXPECT_EQ(RefusalOf([&] { metrics.ResetMetrics(); }),
              (Refusal{-1000, "No protocol implementation available for the metrics reset operation"}));
    EXPECT_EQ(RefusalOf([&] { metrics.GetMetrics(); }),
              (Refusal{-1000, "No protocol implementation available for the metrics fetch operation"}));
    EXPECT_TRUE(calls.All().empty());
}

} // namespace ZuControl
