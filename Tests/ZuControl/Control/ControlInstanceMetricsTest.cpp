#include "ZuControl/Control/ControlInstanceMetrics.h"

#include "Support/ExpectException.h"
#include "Support/FakeProtocol.h"

namespace ZuControl
{

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

    ZuTest::ExpectException(-1000, "No protocol implementation available for the metrics update operation",
                            [&] { metrics.UpdateMetrics(); });
    ZuTest::ExpectException(-1000, "No protocol implementation available for the metrics reset operation",
                            [&] { metrics.ResetMetrics(); });
    ZuTest::ExpectException(-1000, "No protocol implementation available for the metrics fetch operation",
                            [&] { metrics.GetMetrics(); });
    EXPECT_TRUE(calls.All().empty());
}

} // namespace ZuControl
