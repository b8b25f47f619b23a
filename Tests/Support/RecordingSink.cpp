#include "Support/RecordingSink.h"

#include "wApi/wMutex.h"

#include <algorithm>
#include <ostream>

namespace ZuTest
{

using namespace Zu::Logging;

std::ostream& operator<<(std::ostream& stream, LogLine const& line)
{
    return stream << std::hex << line.flags << std::dec << " [" << line.label << "] " << line.text;
}

LogLine Info(std::string label, std::string text)
{
    return {FLAGS_INFO, std::move(label), std::move(text)};
}

LogLine Warning(std::string label, std::string text)
{
    return {FLAGS_WARNING, std::move(label), std::move(text)};
}

LogLine Error(std::string label, std::string text)
{
    return {FLAGS_ERROR, std::move(label), std::move(text)};
}

LogLine UserInfo(std::string text)
{
    return {FLAGS_USER_INFO, "ZuControl", std::move(text)};
}

LogLine UserWarning(std::string text)
{
    return {FLAGS_USER_WARNING, "ZuControl", std::move(text)};
}

LogLine UserError(std::string text)
{
    return {FLAGS_USER_ERROR, "ZuControl", std::move(text)};
}

LogLine CaughtEntry(int32 status, std::string const& text)
{
    return Error("", "exception with status " + std::to_string(status) + ": " + text);
}

LogLine CaughtForeign(std::string const& text)
{
    return Error("", "exception: " + text);
}

LogLine BackTrace()
{
    return Error("", "back trace");
}

class LogRecorder::Sink : public ISink
{
public:
    bool Wants(uint64 /*flags*/) const override
    {
        return true;
    }

    void Write(Entry const& entry) override
    {
        Zu::MutexLock const guard(lock);
        lines.push_back({entry.flags, entry.label, entry.text});
    }

    std::vector<LogLine> Lines() const
    {
        Zu::MutexLock const guard(lock);
        return lines;
    }

    void Clear()
    {
        Zu::MutexLock const guard(lock);
        lines.clear();
    }

private:
    mutable Zu::Mutex lock;
    std::vector<LogLine> lines;
};

LogRecorder::LogRecorder() : sink(std::make_shared<Sink>())
{
    AddSink(sink);
}

LogRecorder::~LogRecorder()
{
    RemoveSink(sink);
}

std::vector<LogLine> LogRecorder::Lines() const
{
    return sink->Lines();
}

std::vector<LogLine> LogRecorder::LinesWithoutTraces() const
{
    std::vector<LogLine> lines = Lines();
    std::erase_if(lines, IsTrace);
    return lines;
}

std::vector<LogLine> LogRecorder::LinesWithShortTraces() const
{
    std::vector<LogLine> shortened;
    for (LogLine& line : Lines())
    {
        if (!IsTrace(line))
        {
            shortened.push_back(std::move(line));
        }
        else if (!line.text.starts_with("back trace "))
        {
            shortened.push_back({line.flags, "", std::move(line.text)});
        }
        else if (shortened.empty() || shortened.back() != BackTrace())
        {
            shortened.push_back({line.flags, "", "back trace"});
        }
    }
    return shortened;
}

std::size_t LogRecorder::CountOfText(std::string const& text) const
{
    auto const lines = Lines();
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(), [&text](LogLine const& line) { return line.text == text; }));
}

void LogRecorder::Clear()
{
    sink->Clear();
}

bool IsTrace(LogLine const& line)
{
    return line.text.starts_with("exception with status ") || line.text.starts_with("exception: ") ||
           line.text.starts_with("back trace ");
}

} // namespace ZuTest
