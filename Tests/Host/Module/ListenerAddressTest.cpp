#include "Host/Module/ListenerAddress.h"

#include "Host/Module/InstanceFixture.h"
#include "ZuApi/Properties/Value.h"

namespace ZuHost
{

using ListenerAddressTest = ZuTest::InstanceFixture;

TEST_F(ListenerAddressTest, IsWhatTheMetricsSay)
{
    Zu::Properties::Value<std::string> listening("127.0.0.1:1502");
    protocol->metrics.Register("listening", listening);

    EXPECT_EQ(WaitForListenerAddress(*instance), "127.0.0.1:1502");
}

TEST_F(ListenerAddressTest, IsWaitedForWhileThereIsNoneYet)
{
    Zu::Properties::Value<std::string> listening;
    protocol->metrics.Register("listening", listening);
    protocol->on["UpdateMetrics"] = [&] {
        if (calls.Count("UpdateMetrics") == 3)
        {
            listening.Set("127.0.0.1:9");
        }
    };

    EXPECT_EQ(WaitForListenerAddress(*instance), "127.0.0.1:9");
    EXPECT_EQ(calls.Count("UpdateMetrics"), 3u);
}

TEST_F(ListenerAddressTest, IsEmptyForAProtocolThatDoesNotSay)
{
    EXPECT_EQ(WaitForListenerAddress(*instance), "");

    Zu::Properties::Value<uint64> number(1502);
    protocol->metrics.Register("listening", number);
    EXPECT_EQ(WaitForListenerAddress(*instance), "");
}

} // namespace ZuHost
