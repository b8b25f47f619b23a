#include "Plugins/SparkplugMqtt/SourceLimits.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"

#include <gtest/gtest.h>

#include <string>

namespace SparkplugMqtt
{

namespace
{

/// Gives a text, or throws a status.
class FakeResources final : public ZuControl::IControlResourceAdaptor
{
public:
    void Read(std::string const& path, std::string& output, uint64 timeout) override
    {
        ++reads;
        EXPECT_EQ(path, "/sensor/limits");
        EXPECT_EQ(timeout, SourceLimits::READ_TIMEOUT_USEC);
        if (status != Zu::Status::SUCCESS)
        {
            ZU_THROW(status);
        }
        output = text;
    }

    std::string text = R"({"zMax": {"enabled": true, "minimum": 1, "maximum": 2.5}})";
    int32 status = Zu::Status::SUCCESS;
    uint64 reads = 0;
};

} // namespace

TEST(SourceLimits, AreThoseThatAreEnabled)
{
    EXPECT_EQ(SourceLimits::In(R"({"zMax": {"enabled": true, "minimum": -1, "maximum": 2.5},
                                   "zMin": {"enabled": false, "minimum": 1, "maximum": 2},
                                   "width": {"minimum": 1, "maximum": 2},
                                   "points": {"enabled": true, "minimum": 1},
                                   "meanZ": {"enabled": true, "minimum": "1", "maximum": 2},
                                   "_links": {"self": {"href": "/sensor/limits"}}, "text": "x"})"),
              (SourceLimits::BySource{{"profile/zMax", {-1, 2.5}}}));
    for (char const* odd : {"", "{", "[]", "1", "null", "{}"})
    {
        EXPECT_TRUE(SourceLimits::In(odd).empty()) << odd;
    }
}

TEST(SourceLimits, AreReadAgainAfterAPeriod)
{
    FakeResources resources;
    SourceLimits limits(&resources);
    EXPECT_EQ(limits.Look(5), (SourceLimits::BySource{{"profile/zMax", {1, 2.5}}}));
    EXPECT_EQ(limits.Look(5), std::nullopt);
    EXPECT_EQ(limits.Look(5 + SourceLimits::PERIOD_USEC - 1), std::nullopt);
    resources.text = "{}";
    EXPECT_EQ(limits.Look(5 + SourceLimits::PERIOD_USEC), SourceLimits::BySource());
    EXPECT_EQ(resources.reads, 2u);
}

TEST(SourceLimits, AReadThatIsRefusedForNowIsRepeated)
{
    FakeResources resources;
    SourceLimits limits(&resources);
    for (int32 const status : {Zu::Status::BUSY, Zu::Status::NOT_OFFERED})
    {
        resources.status = status;
        EXPECT_EQ(limits.Look(resources.reads * SourceLimits::PERIOD_USEC), std::nullopt);
    }
    resources.status = Zu::Status::SUCCESS;
    EXPECT_TRUE(limits.Look(resources.reads * SourceLimits::PERIOD_USEC).has_value());
}

TEST(SourceLimits, ASystemWithoutLimitsIsAskedOnce)
{
    FakeResources resources;
    resources.status = Zu::Status::NOT_FOUND;
    SourceLimits limits(&resources);
    EXPECT_EQ(limits.Look(0), std::nullopt);
    EXPECT_EQ(limits.Look(SourceLimits::PERIOD_USEC), std::nullopt);
    EXPECT_EQ(resources.reads, 1u);
    EXPECT_EQ(SourceLimits(nullptr).Look(0), std::nullopt);
}

} // namespace SparkplugMqtt
