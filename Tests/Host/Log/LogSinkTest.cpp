#include "Host/Log/LogSink.h"

#include "Host/Log/StreamOutput.h"

#include <gtest/gtest.h>

#include <memory>
#include <unistd.h>

namespace ZuHost
{

TEST(LogSink, WantsItsLevelAndThoseAbove)
{
    using namespace Zu::Logging;
    LogSink const all(LogLevel::INFO, std::make_unique<StreamOutput>(STDERR_FILENO));
    LogSink const warnings(LogLevel::WARNING, std::make_unique<StreamOutput>(STDERR_FILENO));
    LogSink const errors(LogLevel::ERROR, std::make_unique<StreamOutput>(STDERR_FILENO));

    for (uint64 const user : {uint64{0}, FLAG_USER})
    {
        EXPECT_TRUE(all.Wants(FLAGS_INFO | user));
        EXPECT_FALSE(warnings.Wants(FLAGS_INFO | user));
        EXPECT_TRUE(warnings.Wants(FLAGS_WARNING | user));
        EXPECT_FALSE(errors.Wants(FLAGS_WARNING | user));
        EXPECT_TRUE(errors.Wants(FLAGS_ERROR | user));
    }
}

TEST(LogSink, WritesALineWithLevelLabelAndText)
{
    testing::internal::CaptureStderr();
    {
        LogScope const scope(LogLevel::INFO);
        Zu::Logging::Zu_Debug_Log(1, "file", Zu::Logging::FLAGS_WARNING, "The::Label", "%s", "100% {} of %1$s");
    }
    Zu::Logging::Zu_Debug_Log(1, "file", Zu::Logging::FLAGS_WARNING, "The::Label", "not any more");

    std::string const written = testing::internal::GetCapturedStderr();

    EXPECT_NE(written.find(" warning [The::Label] 100% {} of %1$s\n"), std::string::npos) << written;
    EXPECT_EQ(written.find("not any more"), std::string::npos);
}

TEST(LogSink, FollowsANewLowestLevelAtOnce)
{
    testing::internal::CaptureStderr();
    {
        LogScope scope(LogLevel::ERROR);
        ZU_LOG_INFO("before");
        scope.SetLowestLevel(LogLevel::INFO);
        ZU_LOG_INFO("between");
        scope.SetLowestLevel(LogLevel::WARNING);
        ZU_LOG_INFO("behind");
    }

    std::string const written = testing::internal::GetCapturedStderr();

    EXPECT_EQ(written.find("before"), std::string::npos);
    EXPECT_NE(written.find("between"), std::string::npos);
    EXPECT_EQ(written.find("behind"), std::string::npos);
}

TEST(LogSink, GathersTheLinesOfAPlaceBeyondItsBudget)
{
    testing::internal::CaptureStderr();
    {
        LogScope const scope(LogLevel::INFO);
        for (uint64 i = 0; i < LogBudget::MAX_LINES + 20'000; ++i)
        {
            Zu::Logging::Zu_Debug_Log(1, "file", Zu::Logging::FLAGS_ERROR, "The::Label", "the same");
        }
        Zu::Logging::Zu_Debug_Log(2, "file", Zu::Logging::FLAGS_ERROR, "The::Label", "another place");
    }

    std::string const written = testing::internal::GetCapturedStderr();

    EXPECT_LT(written.size(), 20'000u);
    EXPECT_NE(written.find("another place\n"), std::string::npos);
    EXPECT_NE(written.find("[The::Label] ... 20000 more in the last "), std::string::npos) << written;
}

TEST(LogSink, ShortensALongText)
{
    std::string const text(1'000'000, 'x');
    testing::internal::CaptureStderr();
    {
        LogScope const scope(LogLevel::INFO);
        Zu::Logging::Zu_Debug_Log(1, "file", Zu::Logging::FLAGS_ERROR, "The::Label", "%s", text.c_str());
    }

    std::string const written = testing::internal::GetCapturedStderr();

    EXPECT_LT(written.size(), 17'000u);
    EXPECT_TRUE(written.ends_with("x... (983616 bytes more)\n"));
}

} // namespace ZuHost
