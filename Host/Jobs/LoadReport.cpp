#include "Host/Jobs/LoadReport.h"

#include "Host/Jobs/JobDocument.h"
#include "ZuApi/Logging.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using Protocol = LoadReport::Protocol;

constexpr std::array PARTS{"enabled", "parameters", "outputs", "registerAssemblyList"};

/// Whether `now` has the values of `wanted`. Members that only one of them has are ignored: some settings are never
/// shown again.
bool Says(Json const& now, Json const& wanted)
{
    if (now.is_object() && wanted.is_object())
    {
        for (auto const& [key, value] : wanted.items())
        {
            auto const found = now.find(key);
            if (found != now.end() && !Says(*found, value))
            {
                return false;
            }
        }
        return true;
    }
    if (now.is_array() && wanted.is_array() && now.size() == wanted.size())
    {
        return std::equal(now.begin(), now.end(), wanted.begin(), Says);
    }
    return now == wanted;
}

/// A document as JSON; null if there is none.
Json DocumentIn(ArchiveContents::Files const& files, std::string const& name)
{
    auto const found = files.find(name);
    return found == files.end() ? Json() : Json::parse(found->second, nullptr, false);
}

/// The settings of a document; null if it has none.
Json SettingsOf(Json const& document)
{
    return document.is_object() && document.contains("zu:control") ? document.at("zu:control") : Json();
}

/// Sorts the parts of an applied document into taken over, reset and skipped.
void Compare(Protocol& protocol, Json const& wanted, Json const& now)
{
    for (char const* const part : PARTS)
    {
        bool const isWanted = wanted.is_object() && wanted.contains(part);
        bool const isThere = now.is_object() && now.contains(part);
        if (!isWanted && isThere)
        {
            protocol.reset.emplace_back(part);
        }
        else if (isWanted)
        {
            bool const isAsWanted = isThere && Says(now.at(part), wanted.at(part));
            (isAsWanted ? protocol.takenOver : protocol.skipped).emplace_back(part);
        }
    }
}

/// Reports all parts of a refused document as skipped.
void SkipAll(Protocol& protocol, Json const& wanted)
{
    std::ranges::copy_if(PARTS, std::back_inserter(protocol.skipped),
                         [&](char const* part) { return wanted.is_object() && wanted.contains(part); });
}

} // namespace

/// Collects the log lines for the user that this thread writes.
class LoadReporter::Sink final : public Zu::Logging::ISink
{
public:
    struct Section
    {
        std::string name;
        std::vector<std::string> lines;
    };

    ~Sink() override = default;

    bool Wants(uint64 flags) const override
    {
        return (flags & Zu::Logging::FLAG_USER) != 0;
    }

    void Write(Zu::Logging::Entry const& entry) override
    {
        if (std::this_thread::get_id() == loader && !sections.empty()) // only the loader's thread reads `sections`
        {
            sections.back().lines.emplace_back(entry.text);
        }
    }

    void Begin(std::string const& name)
    {
        if (sections.empty() || sections.back().name != name)
        {
            sections.push_back({name, {}});
        }
    }

    std::vector<Section> const& Sections() const
    {
        return sections;
    }

private:
    std::thread::id const loader = std::this_thread::get_id();
    std::vector<Section> sections;
};

LoadReporter::LoadReporter() : sink(std::make_shared<Sink>())
{
    Zu::Logging::AddSink(sink);
}

LoadReporter::~LoadReporter()
{
    Zu::Logging::RemoveSink(sink);
}

void LoadReporter::NoteLookUp(std::string const& name)
{
    sink->Begin(name);
}

LoadReport LoadReporter::Report(JobName const& job, ArchiveFile::Documents const& loaded,
                                ArchiveContents::Files const& now) const
{
    LoadReport report{job, loaded.faults, {}};
    for (Sink::Section const& section : sink->Sections())
    {
        Protocol protocol;
        protocol.typeName = JobDocument::TypeNameOf(section.name);
        protocol.isInJob = loaded.files.contains(section.name);
        protocol.isFromLastGood = loaded.fromLastGood.contains(section.name);
        protocol.lines = section.lines;
        Json const document = DocumentIn(loaded.files, section.name);
        protocol.isRefused = protocol.isInJob && !JobDocument::IsAccepted(document);
        if (protocol.isRefused)
        {
            SkipAll(protocol, SettingsOf(document));
        }
        else if (protocol.isInJob)
        {
            Compare(protocol, SettingsOf(document), SettingsOf(DocumentIn(now, section.name)));
        }
        report.protocols.push_back(std::move(protocol));
    }
    return report;
}

} // namespace ZuHost
