#include "Host/Jobs/LoadReporter.h"

#include "ZuApi/Logging.h"

#include <nlohmann/json.hpp>

#include <array>
#include <mutex>
#include <thread>
#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using Protocol = LoadReport::Protocol;

constexpr std::array PARTS{"enabled", "parameters", "outputs", "registerAssemblyList"};
constexpr std::string_view FOLDER = "controls/";

/// "ModbusTcp" of "controls/ModbusTcp/config.json"; the name itself where it is built differently.
std::string TypeNameOf(std::string const& name)
{
    if (!name.starts_with(FOLDER))
    {
        return name;
    }
    return name.substr(FOLDER.size(), name.find('/', FOLDER.size()) - FOLDER.size());
}

/// Whether `now` says all that `wanted` says. What a document may say beside it, and what is never shown again, counts for
/// nothing: members that `now` has not.
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

/// The settings in a document; null where it has none.
Json SettingsOf(ArchiveContents::Files const& files, std::string const& name)
{
    auto const found = files.find(name);
    Json const document = found == files.end() ? Json() : Json::parse(found->second, nullptr, false);
    return document.is_object() && document.contains("zu:control") ? document.at("zu:control") : Json();
}

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

} // namespace

/// Keeps the lines for the user that this thread writes.
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
        if (std::this_thread::get_id() == loader && !sections.empty()) // none but the loader gets past the first test
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

LoadReport LoadReporter::Report(std::string job, ArchiveFile::Documents const& loaded,
                                ArchiveContents::Files const& now) const
{
    LoadReport report{std::move(job), loaded.faults, {}};
    for (Sink::Section const& section : sink->Sections())
    {
        Protocol protocol;
        protocol.typeName = TypeNameOf(section.name);
        protocol.isInJob = loaded.files.contains(section.name);
        protocol.isFromLastGood = loaded.fromLastGood.contains(section.name);
        protocol.lines = section.lines;
        if (protocol.isInJob)
        {
            Compare(protocol, SettingsOf(loaded.files, section.name), SettingsOf(now, section.name));
        }
        report.protocols.push_back(std::move(protocol));
    }
    return report;
}

} // namespace ZuHost
