#include "Host/Resources/LogPage.h"

#include "Host/Log/LogLine.h"
#include "Host/Security/UtcTime.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuRest/ResourceRouter.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

#include <deque>
#include <string>
#include <string_view>

namespace ZuHost
{

namespace
{

constexpr char const* LOG_ROUTE = "/log";

std::string Bounded(std::string_view text)
{
    return Printable(text.substr(0, LogPage::MAX_TEXT_BYTES)) + (text.size() > LogPage::MAX_TEXT_BYTES ? "..." : "");
}

} // namespace

/// Keeps the newest lines.
class LogPage::Sink final : public Zu::Logging::ISink
{
public:
    struct Line
    {
        int64 time;
        bool isError;
        std::string place;
        std::string text;
    };

    bool Wants(uint64 flags) const override
    {
        return (flags & Zu::Logging::LEVEL_MASK) != 0;
    }

    void Write(Zu::Logging::Entry const& entry) override
    {
        bool const isError = (entry.flags & Zu::Logging::LEVEL_MASK) > 1;
        Line line{UtcTime::Now(), isError, Bounded(entry.label), Bounded(entry.text)};
        Zu::MutexLock const guard(lock);
        lines.push_back(std::move(line));
        if (lines.size() > MAX_LINES)
        {
            lines.pop_front();
        }
    }

    std::deque<Line> Lines() const
    {
        Zu::MutexLock const guard(lock);
        return lines;
    }

private:
    mutable Zu::Mutex lock; // a leaf
    std::deque<Line> lines ZU_GUARDED_BY(lock);
};

LogPage::LogPage(ZuRest::ResourceRouter& usedRouter) : router(usedRouter), sink(std::make_shared<Sink>())
{
    router.Register(LOG_ROUTE, *this);
    Zu::Logging::AddSink(sink);
}

LogPage::~LogPage()
{
    ZU_GUARD_DESTRUCTOR([this] {
        Zu::Logging::RemoveSink(sink);
        router.Deregister(LOG_ROUTE, false);
    });
}

nlohmann::json LogPage::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    nlohmann::json lines = nlohmann::json::array();
    for (Sink::Line const& line : sink->Lines())
    {
        lines.push_back({{"time", UtcTime::Text(line.time)},
                         {"level", line.isError ? "error" : "warning"},
                         {"place", line.place},
                         {"text", line.text}});
    }
    return {{"lines", std::move(lines)}};
}

} // namespace ZuHost
