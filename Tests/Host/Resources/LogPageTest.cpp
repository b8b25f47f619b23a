#include "Host/Resources/LogPage.h"

#include "ZuApi/Logging.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

using namespace Zu::Logging;

class LogPageTest : public testing::Test
{
protected:
    nlohmann::json Lines()
    {
        return processor.Read("/log", nullptr, "").at("lines");
    }

    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
};

} // namespace

TEST_F(LogPageTest, ShowsWarningsAndErrorsAndNothingElse)
{
    LogPage const page(router);

    Zu_Debug_Log(1, "file", FLAGS_INFO, "The::Place", "fine");
    Zu_Debug_Log(1, "file", FLAGS_WARNING, "The::Place", "strange");
    Zu_Debug_Log(1, "file", FLAGS_USER_ERROR, USER_LABEL, "bad <b>\x1b[31m");

    nlohmann::json const lines = Lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0]["level"], "warning");
    EXPECT_EQ(lines[0]["place"], "The::Place");
    EXPECT_EQ(lines[0]["text"], "strange");
    EXPECT_EQ(lines[1]["level"], "error");
    EXPECT_EQ(lines[1]["text"], "bad <b>\\x1b[31m") << "no character that a terminal would obey";
    EXPECT_EQ(lines[1]["time"].get<std::string>().size(), std::string("2026-01-31T23:59:59Z").size());
}

TEST_F(LogPageTest, KeepsTheNewestLines)
{
    LogPage const page(router);

    for (uint64 i = 0; i < LogPage::MAX_LINES + 3; ++i)
    {
        Zu_Debug_Log(1, "file", FLAGS_WARNING, "place", "%d", static_cast<int>(i));
    }

    nlohmann::json const lines = Lines();
    ASSERT_EQ(lines.size(), LogPage::MAX_LINES);
    EXPECT_EQ(lines.front()["text"], "3");
    EXPECT_EQ(lines.back()["text"], std::to_string(LogPage::MAX_LINES + 2));
}

TEST_F(LogPageTest, BoundsALine)
{
    LogPage const page(router);

    Zu_Debug_Log(1, "file", FLAGS_WARNING, "place", "%s", std::string(LogPage::MAX_TEXT_BYTES + 1, 'x').c_str());
    Zu_Debug_Log(1, "file", FLAGS_WARNING, "place", "%s", std::string(LogPage::MAX_TEXT_BYTES, 'x').c_str());

    nlohmann::json const lines = Lines();
    EXPECT_EQ(lines[0]["text"].get<std::string>(), std::string(LogPage::MAX_TEXT_BYTES, 'x') + "...");
    EXPECT_EQ(lines[1]["text"].get<std::string>(), std::string(LogPage::MAX_TEXT_BYTES, 'x'));
}

TEST_F(LogPageTest, TakesNoLineAfterItsEnd)
{
    {
        LogPage const page(router);
    }
    Zu_Debug_Log(1, "file", FLAGS_WARNING, "place", "late");
    EXPECT_FALSE(router.Find("/log").has_value());
}

} // namespace ZuHost
