#include "Host/Log/LogWriter.h"

#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr uint64 WORK_PERIOD_USEC = 1'000'000;
constexpr int POLL_MSEC = 100; // a stop is noticed within this time while the reader stalls

// The bytes that all writers hold. A signal handler reads it, so it is no member.
constinit std::atomic<uint64> unwrittenBytes{0};

} // namespace

LogWriter::LogWriter(ILogOutput const& newOutput, std::function<void()> newWork)
    : output(newOutput), work(std::move(newWork))
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "LogWriter"));
    ZU_CHECK(wThread_Start(thread, &LogWriter::Main, this));
}

LogWriter::~LogWriter()
{
    writeDeadlineUsec = wTime_AfterUsec(STOP_PATIENCE_USEC);
    {
        Zu::MutexLock const guard(lock);
        isEnding = true;
    }
    awake.NotifyAll();
    wThread_Join(thread, wTIMEOUT_INFINITE, nullptr);
}

void LogWriter::Append(std::string const& record) noexcept
{
    Zu::MutexLock const guard(lock);
    try
    {
        // One lost record loses all others until the thread takes what waits, so that the number stands in their place.
        if (lostLines == 0 && waiting.size() + record.size() <= MAX_WAITING_BYTES)
        {
            waiting += record;
            unwrittenBytes += record.size();
            awake.NotifyOne();
            return;
        }
    }
    catch (std::exception const&) // no memory
    {
    }
    ++lostLines;
}

bool LogWriter::IsStalled() const
{
    uint64 const sinceUsec = stalledSinceUsec;
    uint64 const nowUsec = wTime_NowUsec();
    Zu::MutexLock const guard(lock);
    return lostLines > 0 || (sinceUsec != 0 && sinceUsec + STALL_USEC <= nowUsec);
}

void LogWriter::AwaitWritten(uint32 timeoutMsec) noexcept
{
    constexpr uint32 STEP_MSEC = 10;
    for (uint32 waitedMsec = 0; unwrittenBytes != 0 && waitedMsec < timeoutMsec; waitedMsec += STEP_MSEC)
    {
        poll(nullptr, 0, STEP_MSEC);
    }
}

int LogWriter::Main(void* argument)
{
    static_cast<LogWriter*>(argument)->Run();
    return 0;
}

void LogWriter::Run()
{
    uint64 workUsec = wTime_AfterUsec(WORK_PERIOD_USEC);
    Zu::MutexLock guard(lock);
    while (!isEnding || !waiting.empty() || lostLines > 0)
    {
        awake.WaitUntil(lock, work ? workUsec : wTIMEOUT_INFINITE,
                        [this]() ZU_REQUIRES(lock) { return isEnding || !waiting.empty() || lostLines > 0; });
        std::string const text = TakeWaiting();
        guard.Unlock();
        WriteAll(text);
        if (work && wTime_NowUsec() >= workUsec)
        {
            work();
            workUsec = wTime_AfterUsec(WORK_PERIOD_USEC);
        }
        guard.Lock();
    }
}

std::string LogWriter::TakeWaiting()
{
    std::string text = std::exchange(waiting, {});
    if (uint64 const lost = std::exchange(lostLines, 0); lost > 0)
    {
        try
        {
            std::string const sentence =
                std::to_string(lost) + " lines of the log were lost here, because its reader was too slow";
            LogRecord record;
            record.level = LogLevel::ERROR;
            record.label = "Log";
            record.text = sentence;
            std::string const formatted = output.Format(record);
            text += formatted;
            unwrittenBytes += formatted.size();
        }
        catch (std::exception const&) // no memory for the line: the number is lost as well
        {
        }
    }
    return text;
}

/// Writes only when the descriptor has room, and no more than such a write takes without blocking. The descriptor cannot
/// be made non-blocking, since other processes share its description.
void LogWriter::WriteAll(std::string const& text) noexcept
{
    std::size_t written = 0;
    stalledSinceUsec = wTime_NowUsec();
    while (written < text.size() && !MustGiveUp())
    {
        pollfd writable{output.Descriptor(), POLLOUT, 0};
        if (poll(&writable, 1, POLL_MSEC) == 0 || (writable.revents == 0))
        {
            continue;
        }
        std::string_view const rest = std::string_view(text).substr(written);
        ssize_t const count = write(output.Descriptor(), rest.data(), output.NextWrite(rest));
        if (count < 0 && errno != EINTR && errno != EAGAIN)
        {
            break;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        stalledSinceUsec = count > 0 ? wTime_NowUsec() : stalledSinceUsec.load();
    }
    stalledSinceUsec = 0;
    unwrittenBytes -= text.size();
}

bool LogWriter::MustGiveUp() const
{
    return wTime_NowUsec() >= writeDeadlineUsec;
}

} // namespace ZuHost
