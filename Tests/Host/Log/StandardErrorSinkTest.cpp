#include "Host/Log/StandardErrorSink.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(StandardErrorSink, WantsItsLevelAndThoseAbove)
{
    using namespace Zu::Logging;
    StandardErrorSink const all(LogLevel::INFO);
    StandardErrorSink const warnings(LogLevel::WARNING);
    StandardErrorSink const errors(LogLevel::ERROR);

    for (uint64 const user : {uint64{0}, FLAG_USER})
    {
        EXPECT_TRUE(all.Wants(FLAGS_INFO | user));
        EXPECT_FALSE(warnings.Wants(FLAGS_INFO | user));
        EXPECT_TRUE(warnings.Wants(FLAGS_WARNING | user));
        EXPECT_FALSE(errors.Wants(FLAGS_WARNING | user));
        EXPECT_TRUE(errors.Wants(FLAGS_ERROR | user));
    }
}

TEST(StandardErrorSink, WritesALineWithLevelLabelAndText)
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

} // namespace ZuHost
