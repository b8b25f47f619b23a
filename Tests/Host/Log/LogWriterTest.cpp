#include "Host/Log/LogWriter.h"

#include "Host/Log/CrashSignals.h"
#include "Host/Log/StreamOutput.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <regex>
#include <thread>
#include <unistd.h>

namespace ZuHost
{

namespace
{

constexpr uint64 BOUND_USEC = 20'000'000;

class LogWriterTest : public testing::Test
{
protected:
    LogWriterTest()
    {
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        output.emplace(ends[1]);
        writer.emplace(*output);
    }

    ~LogWriterTest() override
    {
        close(ends[0]);
        writer.reset();
        close(ends[1]);
    }

    /// Fills the pipe, so that the writer cannot write a byte.
    void StallReader()
    {
        int const flags = fcntl(ends[1], F_GETFL);
        fcntl(ends[1], F_SETFL, flags | O_NONBLOCK);
        while (write(ends[1], std::string(4096, '.').data(), 4096) > 0)
        {
        }
        fcntl(ends[1], F_SETFL, flags);
    }

    bool WaitForStalled(bool wanted) const
    {
        uint64 const deadline = wTime_AfterUsec(BOUND_USEC);
        while (writer->IsStalled() != wanted && wTime_NowUsec() < deadline)
        {
            std::this_thread::yield();
        }
        return writer->IsStalled() == wanted;
    }

    /// Reads until the text ends with `end`, without the filling.
    std::string ReadUntil(std::string const& end)
    {
        std::string text;
        std::array<char, 65536> bytes{};
        while (!text.ends_with(end))
        {
            ssize_t const size = read(ends[0], bytes.data(), bytes.size());
            if (size <= 0)
            {
                break;
            }
            text.append(bytes.data(), static_cast<std::size_t>(size));
        }
        text.erase(0, text.find_first_not_of('.'));
        return text;
    }

    std::array<int, 2> ends{};
    std::optional<StreamOutput> output;
    std::optional<LogWriter> writer;
};

} // namespace

TEST_F(LogWriterTest, WritesTheLinesInTheirOrder)
{
    writer->Append("one\n");
    writer->Append("two\n");

    EXPECT_EQ(ReadUntil("two\n"), "one\ntwo\n");
    EXPECT_FALSE(writer->IsStalled());
}

TEST_F(LogWriterTest, LosesAndCountsLinesWhileItsReaderStalls)
{
    StallReader();
    writer->Append("first\n"); // is in the hands of the thread when the writer has stalled
    ASSERT_TRUE(WaitForStalled(true));
    std::string const filling(1023, '-');
    for (uint64 i = 0; i < LogWriter::MAX_WAITING_BYTES / 1024; ++i)
    {
        writer->Append(filling + "\n");
    }

    writer->Append("lost\n");
    writer->Append("lost too\n");

    std::string text = ReadUntil("too slow\n");
    writer->Append("after it\n");
    EXPECT_EQ(ReadUntil("after it\n"), "after it\n");
    EXPECT_TRUE(text.starts_with("first\n")) << text.substr(0, 100);
    EXPECT_EQ(text.find("lost\n"), std::string::npos);
    std::string const last = text.substr(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_TRUE(last.ends_with(" error   [Log] 2 lines of the log were lost here, because its reader was too slow\n"))
        << last;
    EXPECT_TRUE(WaitForStalled(false));
}

TEST_F(LogWriterTest, EndsAlthoughItsReaderStalls)
{
    StallReader();
    writer->Append("in vain\n");
    uint64 const begin = wTime_NowUsec();

    writer.reset();

    EXPECT_GE(wTime_NowUsec() - begin, LogWriter::STOP_PATIENCE_USEC / 2);
    EXPECT_LT(wTime_NowUsec() - begin, BOUND_USEC);
}

TEST_F(LogWriterTest, EndsWithEveryLineWritten)
{
    for (int i = 0; i < 100; ++i)
    {
        writer->Append("line\n");
    }
    writer->Append("last\n");
    writer.reset();

    std::string text;
    for (int i = 0; i < 100; ++i)
    {
        text += "line\n";
    }
    EXPECT_EQ(ReadUntil("last\n"), text + "last\n");
}

TEST(LogWriterDeathTest, WritesWhatWaitsAheadOfAnAbort)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CrashSignals const signals;
            StreamOutput const standardError(STDERR_FILENO);
            LogWriter writer(standardError);
            for (int i = 0; i < 1000; ++i)
            {
                writer.Append("a line that fills the queue\n");
            }
            writer.Append("the line ahead of the abort\n");
            std::abort();
        },
        testing::KilledBySignal(SIGABRT), "the line ahead of the abort\n");
}

} // namespace ZuHost
