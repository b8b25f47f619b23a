#include "ZuApi/Logging.h"

#include "Support/RecordingSink.h"

#include <gtest/gtest.h>

#include <thread>

namespace Zu
{

namespace
{

/// A sink that wants errors only.
class ErrorSink : public Logging::ISink
{
public:
    bool Wants(uint64 flags) const override
    {
        return (flags & Logging::LEVEL_MASK) == 2;
    }

    void Write(Logging::Entry const& entry) override
    {
        texts.emplace_back(entry.text);
    }

    std::vector<std::string> texts;
};

int Counted(int& evaluations)
{
    return ++evaluations;
}

} // namespace

TEST(Logging, GivesFlagsLabelAndTextOfEachKindInOrder)
{
    ZuTest::LogRecorder log;

    ZU_LOG_USER_ERROR("Service %2$s has %1$u", 3u, "a%b");
    ZU_LOG_ERROR("Service %s has %u", "a%b", 3u);
    ZU_LOG_WARNING("w");
    ZU_LOG_INFO("i");
    ZU_LOG_USER_WARNING("uw");
    ZU_LOG_USER_INFO("ui");

    std::vector<ZuTest::LogLine> const expected{
        {0x8000000100000002, "ZuControl", "Service a%b has 3"},
        {0x8000000000000002, "Zu::Logging_GivesFlagsLabelAndTextOfEachKindInOrder_Test::TestBody", "Service a%b has 3"},
        {0x8000000000000001, "Zu::Logging_GivesFlagsLabelAndTextOfEachKindInOrder_Test::TestBody", "w"},
        {0x8000000000000000, "Zu::Logging_GivesFlagsLabelAndTextOfEachKindInOrder_Test::TestBody", "i"},
        {0x8000000100000001, "ZuControl", "uw"},
        {0x8000000100000000, "ZuControl", "ui"}};
    EXPECT_EQ(log.Lines(), expected);
}

TEST(Logging, EvaluatesNoArgumentOfALineThatNobodyWants)
{
    auto const sink = std::make_shared<ErrorSink>();
    Logging::AddSink(sink);
    int evaluations = 0;

    ZU_LOG_INFO("%d", Counted(evaluations));
    ZU_LOG_ERROR("%d", Counted(evaluations));
    Logging::RemoveSink(sink);
    ZU_LOG_ERROR("%d", Counted(evaluations));

    EXPECT_EQ(evaluations, 1);
    EXPECT_EQ(sink->texts, (std::vector<std::string>{"1"}));
}

TEST(Logging, TakesALabelAndATextOfAnyLength)
{
    ZuTest::LogRecorder log;
    std::string const longText(10000, 'y');

    Logging::Zu_Debug_Log(1, "file", Logging::FLAGS_ERROR, "label", "%s", longText.c_str());

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Error("label", longText)}));
}

TEST(Logging, KeepsTheOrderOfEachThread)
{
    ZuTest::LogRecorder log;
    constexpr int LINES = 500;
    auto const write = [](char const* label) {
        for (int i = 0; i < LINES; ++i)
        {
            Logging::Zu_Debug_Log(1, "file", Logging::FLAGS_INFO, label, "%d", i);
        }
    };

    std::thread first(write, "a");
    std::thread second(write, "b");
    first.join();
    second.join();

    int next[2] = {0, 0};
    for (auto const& line : log.Lines())
    {
        EXPECT_EQ(line.text, std::to_string(next[line.label == "b" ? 1 : 0]++));
    }
    EXPECT_EQ(next[0], LINES);
    EXPECT_EQ(next[1], LINES);
}

} // namespace Zu
