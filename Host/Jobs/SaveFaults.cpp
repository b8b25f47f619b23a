#include "Host/Jobs/SaveFaults.h"

#include "ZuApi/Logging.h"

#include <string_view>
#include <thread>

namespace ZuHost
{

namespace
{

// The module logs this line for each service that throws. The next line is the log entry of the exception; its text
// follows the first colon.
constexpr std::string_view LABEL = "ZuControl::ControlManager::SavePersistDomain";
constexpr std::string_view THROWN = "EXCEPTION THROWN: ";
constexpr std::string_view COLON = ": ";

} // namespace

class SaveFaults::Sink final : public Zu::Logging::ISink
{
public:
    ~Sink() override = default;

    bool Wants(uint64 flags) const override
    {
        return flags == Zu::Logging::FLAGS_ERROR;
    }

    void Write(Zu::Logging::Entry const& entry) override
    {
        if (std::this_thread::get_id() != saver)
        {
            return;
        }
        std::string_view const text = entry.text;
        if (isEntryNext)
        {
            std::size_t const colon = text.find(COLON);
            reasons.back() = colon != text.npos ? text.substr(colon + COLON.size()) : text;
        }
        isEntryNext = text == THROWN && entry.label == LABEL;
        if (isEntryNext)
        {
            reasons.emplace_back();
        }
    }

    std::vector<std::string> const& Reasons() const
    {
        return reasons;
    }

private:
    std::thread::id const saver = std::this_thread::get_id();
    bool isEntryNext = false; // this and `reasons`: only the saver's thread uses them
    std::vector<std::string> reasons;
};

SaveFaults::SaveFaults() : sink(std::make_shared<Sink>())
{
    Zu::Logging::AddSink(sink);
}

SaveFaults::~SaveFaults()
{
    Zu::Logging::RemoveSink(sink);
}

std::vector<std::string> const& SaveFaults::Reasons() const
{
    return sink->Reasons();
}

} // namespace ZuHost
