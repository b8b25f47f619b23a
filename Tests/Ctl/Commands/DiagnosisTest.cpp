#include "Ctl/Commands/Diagnosis.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

namespace
{

using nlohmann::json;
using Grade = Finding::Grade;

constexpr std::time_t NOON = 1800014400; // 2027-01-15 12:00:00 UTC
constexpr std::time_t DAY_SEC = 86400;

} // namespace

TEST(Diagnosis, ComparesTheClocks)
{
    EXPECT_EQ(JudgeClock("Fri, 15 Jan 2027 12:00:04 GMT", NOON).grade, Grade::GOOD);
    EXPECT_EQ(JudgeClock("Fri, 15 Jan 2027 11:59:54 GMT", NOON).grade, Grade::WARNING);
    EXPECT_EQ(JudgeClock("Fri, 15 Jan 2027 13:30:00 GMT", NOON).text,
              "differs by 1 h 30 min from the clock of this machine");
    EXPECT_EQ(JudgeClock("", NOON).grade, Grade::WARNING);
}

TEST(Diagnosis, LooksAtTheEndOfTheCertificate)
{
    std::string const end = "Feb 14 12:00:00 2027 GMT"; // 30 days later
    EXPECT_EQ(JudgeCertificate("", NOON).grade, Grade::GOOD);
    EXPECT_EQ(JudgeCertificate(end, NOON).grade, Grade::GOOD);
    EXPECT_EQ(JudgeCertificate(end, NOON + DAY_SEC).grade, Grade::WARNING);
    EXPECT_EQ(JudgeCertificate(end, NOON + 30 * DAY_SEC).grade, Grade::FAULT);
}

TEST(Diagnosis, ComparesTheMajorVersions)
{
    EXPECT_EQ(JudgeVersion("1.4.0", "1.0.0").grade, Grade::GOOD);
    EXPECT_EQ(JudgeVersion("2.0.0", "1.0.0").grade, Grade::WARNING);
}

TEST(Diagnosis, LooksAtTheRoomForJobs)
{
    json const small = json::array({{{"name", "a"}, {"bytes", 20480}}});
    EXPECT_EQ(JudgeDisk(small, json::array()).text, "1 of 1000 jobs with 20 KiB; the host can save");
    EXPECT_EQ(JudgeDisk(small, json::array({{{"text", "The job 'a' cannot be saved: no space"}}})).grade, Grade::FAULT);
    EXPECT_EQ(JudgeDisk(json::array({{{"name", "a"}, {"bytes", 1073000000}}}), json::array()).grade, Grade::WARNING);
}

TEST(Diagnosis, LooksAtServicesAndTheirPorts)
{
    json service{{"id", "ModbusTcp"}, {"status", 0}, {"parameters", {{"port", 1502}}}};
    EXPECT_EQ(JudgeService(service, true).text, "running, its port accepts connections");
    EXPECT_EQ(JudgeService(service, std::nullopt).text, "running");
    EXPECT_EQ(JudgeService(service, false).text, "running, and its port 1502 accepts no connection");
    EXPECT_EQ(JudgeService(service, false).grade, Grade::FAULT);
    service["status"] = 4;
    EXPECT_EQ(JudgeService(service, std::nullopt).grade, Grade::FAULT);
}

TEST(Diagnosis, HasAFaultIfOneFindingIsAFault)
{
    EXPECT_FALSE(HasFault({{"a", Grade::GOOD, "", ""}, {"b", Grade::WARNING, "", ""}}));
    EXPECT_TRUE(HasFault({{"a", Grade::GOOD, "", ""}, {"b", Grade::FAULT, "", ""}}));
    EXPECT_FALSE(AcceptsConnections("127.0.0.1", 1));
}

} // namespace ZuCtl
