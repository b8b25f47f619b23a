#include "Host/Jobs/SavedDocuments.h"

#include "Host/Jobs/DocumentStore.h"
#include "Host/Jobs/JobDocument.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Retry/StartRetry.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/IControlManager.h"

#include <memory>
#include <string_view>
#include <thread>
#include <utility>

namespace ZuHost
{

namespace
{

using ZuCommon::PersistDomain;

// The module logs this line for each service that throws. The next line is the log entry of the exception; its text
// follows the first colon.
constexpr std::string_view LABEL = "ZuControl::ControlManager::SavePersistDomain";
constexpr std::string_view THROWN = "EXCEPTION THROWN: ";
constexpr std::string_view COLON = ": ";

/// Observes a save on the thread that made the object, and collects why services could not save their documents.
///
/// The module catches and logs the failure of a service or of the store, and goes on with the next service. Only the
/// log has the reason.
class SaveFaults final
{
public:
    SaveFaults();
    ~SaveFaults();

    SaveFaults(SaveFaults const&) = delete;
    SaveFaults& operator=(SaveFaults const&) = delete;

    /// One sentence for each failed service, in the order of the save.
    std::vector<std::string> const& Reasons() const;

private:
    class Sink;

    std::shared_ptr<Sink> const sink;
};

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

} // namespace

SavedDocuments SavedDocuments::Collect(PersistRegistry& registry, PersistDomain domain, Wanted const& wanted)
{
    DocumentStore store;
    SaveFaults const watch;
    registry.Save(domain, store);
    SavedDocuments collected{store.Take(), watch.Reasons()};
    JobDocument::Enable(collected.files, wanted);
    if (domain != PersistDomain::JOB)
    {
        return collected;
    }
    std::vector<std::string> missing = registry.Controls().List();
    std::erase_if(missing,
                  [&](auto const& typeName) { return collected.files.contains(JobDocument::NameOf(typeName)); });
    bool const isExplained = missing.size() == watch.Reasons().size(); // both lists are in the order of the services
    collected.faults.clear();
    for (std::size_t i = 0; i < missing.size(); ++i)
    {
        collected.faults.push_back("service " + missing[i] + ": " +
                                   (isExplained ? watch.Reasons()[i] : "it has no document"));
    }
    return collected;
}

SavedDocuments::Wanted SavedDocuments::ToRun(StartRetry const& startRetry, std::vector<std::string> const& heldBack)
{
    Wanted services = startRetry.Wanted();
    for (std::string const& typeName : heldBack)
    {
        services.emplace(typeName, "");
    }
    return services;
}

} // namespace ZuHost
