#include "Host/Sensor/DeskMetrics.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuHost
{

TEST(DeskMetrics, ShowsTheUpTimesAndTheLinkOfOneInterface)
{
    DeskMetrics const metrics;

    nlohmann::json const document = Zu::Properties::JsonSerializer::Serialize(metrics.GetMetrics());

    EXPECT_TRUE(document.at("upTime").is_number_unsigned());
    EXPECT_TRUE(document.at("appUpTime").is_number_unsigned());
    EXPECT_LE(document.at("upTime").get<uint64>(), 60u);
    EXPECT_EQ(document.at("networkIfs").dump(), R"({"linkCapacity":[1000000000],"linkStatus":[1]})");
}

TEST(DeskMetrics, DescribesItself)
{
    DeskMetrics const metrics;

    nlohmann::json const schema = Zu::Properties::JsonSerializer::SerializeSchema(metrics.GetMetrics());

    EXPECT_EQ(schema.at("properties").at("upTime").at("type"), "integer");
    EXPECT_EQ(schema.at("properties").at("networkIfs").at("properties").at("linkStatus").at("type"), "array");
}

TEST(DeskMetrics, TakesNothingIn)
{
    UpTimeValue upTime;
    UpTimeValue const other;

    EXPECT_THROW(upTime.CopyValues(other), Zu::Exception);
    EXPECT_THROW(Zu::Properties::JsonSerializer::Deserialize(upTime, nlohmann::json(5)), Zu::Exception);
    EXPECT_THROW(Zu::Properties::JsonSerializer::Validate(upTime, nlohmann::json(5)), Zu::Exception);
}

} // namespace ZuHost
