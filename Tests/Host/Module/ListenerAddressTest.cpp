#include "Host/Module/ListenerAddress.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuRest/RequestProcessor.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

namespace
{

/// Returns the metrics that the test has set, and records the requests for them.
class FakeMetrics final : public ZuRest::RequestProcessor
{
public:
    nlohmann::json Read(std::string const& path, nlohmann::json const& /*request*/,
                        std::string const& /*query*/) override
    {
        paths.push_back(path);
        return metrics();
    }

    std::function<nlohmann::json()> metrics;
    std::vector<std::string> paths;
};

} // namespace

TEST(ListenerAddress, IsWhatTheMetricsSay)
{
    FakeMetrics resources;
    resources.metrics = [] { return nlohmann::json({{"listening", "127.0.0.1:1502"}}); };

    EXPECT_EQ(WaitForListenerAddress(resources, "a b"), "127.0.0.1:1502");

    EXPECT_EQ(resources.paths, (std::vector<std::string>{"/controls/a%20b/metrics"}));
}

TEST(ListenerAddress, IsWaitedForWhileThereIsNoneYet)
{
    FakeMetrics resources;
    resources.metrics = [&resources] {
        return nlohmann::json({{"listening", resources.paths.size() < 3 ? "" : "127.0.0.1:9"}});
    };

    EXPECT_EQ(WaitForListenerAddress(resources, "x"), "127.0.0.1:9");

    EXPECT_EQ(resources.paths.size(), 3u);
}

TEST(ListenerAddress, IsEmptyForAProtocolThatDoesNotSay)
{
    FakeMetrics resources;
    resources.metrics = [] { return nlohmann::json::object(); };
    EXPECT_EQ(WaitForListenerAddress(resources, "x"), "");

    resources.metrics = [] { return nlohmann::json({{"listening", 1502}}); };
    EXPECT_EQ(WaitForListenerAddress(resources, "x"), "");
}

TEST(ListenerAddress, IsEmptyForAProtocolWithoutMetrics)
{
    FakeMetrics resources;
    resources.metrics = []() -> nlohmann::json { ZU_THROW(Zu::Status::NOT_FOUND); };

    EXPECT_EQ(WaitForListenerAddress(resources, "x"), "");
}

TEST(ListenerAddress, IsEmptyForMetricsThatFailWithWhatIsNoException)
{
    ZuTest::LogRecorder log;
    FakeMetrics resources;
    resources.metrics = []() -> nlohmann::json { throw 42; };

    EXPECT_EQ(WaitForListenerAddress(resources, "x"), "");

    EXPECT_EQ(log.CountOfText("Service x cannot tell where it listens"), 1u);
}

} // namespace ZuHost
