#include "Host/Clinic/PluginClinic.h"

#include "Host/Clinic/ChildProcess.h"
#include "Host/Clinic/PluginAccess.h"
#include "Host/Clinic/PluginTrial.h"
#include "Host/Clinic/SignedPlugins.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

namespace ZuHost
{

namespace
{

using Paths = std::vector<std::filesystem::path>;
using Say = ChildProcess::Say;
using ProtocolType = PluginTrial::ProtocolType;
using LoadPathOf = std::function<std::filesystem::path(std::filesystem::path const&)>;

// Each text of a child begins with one of these.
constexpr char BEGINS = 'b';    // a step begins; its name follows: "loaded"
constexpr char OFFERS = 'o';    // a protocol of the plug-in; its number and type name follow: "1 ModbusTcp"
constexpr char COMPLAINS = 'c'; // this plug-in failed; a sentence follows
constexpr char PRAISES = 'p';   // this plug-in passed; its description follows if it was asked for

/// Keeps the first error that is logged.
class FirstError final : public Zu::Logging::ISink
{
public:
    bool Wants(uint64 flags) const override
    {
        return (flags & Zu::Logging::LEVEL_MASK) == (Zu::Logging::FLAGS_ERROR & Zu::Logging::LEVEL_MASK);
    }

    void Write(Zu::Logging::Entry const& entry) override
    {
        Zu::MutexLock const guard(lock);
        if (text.empty())
        {
            text = entry.text;
        }
    }

    std::string Text() const
    {
        Zu::MutexLock const guard(lock);
        return text;
    }

private:
    mutable Zu::Mutex lock; // a leaf
    std::string text ZU_GUARDED_BY(lock);
};

std::string Sentence(std::filesystem::path const& file, std::string const& fault, std::string const& station)
{
    return "Plug-in " + file.string() + " " + fault + " while it was being " + station;
}

/// The outermost text of nested exceptions, and the innermost if it differs.
std::string TextOf(std::exception const& exception)
{
    std::string const text = exception.what();
    try
    {
        std::rethrow_if_nested(exception);
    }
    catch (std::exception const& nested)
    {
        std::string const inner = TextOf(nested);
        return inner.empty() || inner == text ? text : (text.empty() ? inner : text + ": " + inner);
    }
    catch (...) // an object that is not a std::exception has no text
    {
    }
    int32 const status = Zu::Exception::StatusOf(exception);
    return text.empty() ? "failed with status " + std::to_string(status) : text;
}

/// Takes one plug-in through the steps of its life, in the child.
class Round final
{
public:
    Round(std::filesystem::path triedFile, std::filesystem::path loadPath, Deployment kind, Say const& usedSay)
        : file(std::move(triedFile)), say(usedSay), trial(file, std::move(loadPath), kind)
    {
    }

    /// Returns false when the step failed; the complaint has been sent then.
    template <typename Step>
    bool Goes(std::string const& station, Step&& step)
    {
        say(BEGINS + station);
        try
        {
            step(trial);
            return true;
        }
        catch (std::exception const& exception)
        {
            Complain(station, "failed (" + TextOf(exception) + ")");
        }
        catch (...)
        {
            Complain(station, "threw something that is no exception");
        }
        return false;
    }

    bool Loads()
    {
        say(BEGINS + std::string("loaded"));
        try
        {
            trial.Load();
            return true;
        }
        catch (std::exception const& exception) // the loader's sentence is complete
        {
            say(COMPLAINS + std::string(exception.what()));
            return false;
        }
    }

    bool IsMade()
    {
        return Goes("made", [this](PluginTrial&) {
            trial.Create();
            for (ProtocolType const& type : trial.Types())
            {
                say(OFFERS + std::to_string(type.number) + " " + type.name);
            }
        });
    }

    void Complain(std::string const& station, std::string const& fault)
    {
        say(COMPLAINS + Sentence(file, fault, station));
    }

private:
    std::filesystem::path const file;
    Say const& say;
    PluginTrial trial;
};

// The rounds are never destroyed: the child's end frees them, and a plug-in may hang in its destructor.

void TryAdmission(Paths const& files, LoadPathOf const& loadPathOf, Deployment deployment, Say const& say)
{
    for (std::filesystem::path const& file : files)
    {
        auto* const round = new Round(file, loadPathOf(file), deployment, say);
        if (round->Loads() && round->IsMade())
        {
            say(std::string(1, PRAISES));
        }
    }
}

void TryLife(std::filesystem::path const& file, std::filesystem::path const& loadPath, Deployment deployment,
             Say const& say)
{
    auto* const round = new Round(file, loadPath, deployment, say);
    if (!round->Loads())
    {
        return;
    }
    auto const errors = std::make_shared<FirstError>();
    Zu::Logging::AddSink(errors);
    std::string offer;
    bool const goes = round->IsMade() &&
                      round->Goes("asked for its names", [](PluginTrial& trial) { trial.CheckNames(); }) &&
                      round->Goes("made a second time", [](PluginTrial& trial) { trial.CreateAnew(); }) &&
                      round->Goes("started", [](PluginTrial& trial) { trial.Start(); }) &&
                      round->Goes("asked what it offers", [&](PluginTrial& trial) { offer = trial.Offer(); }) &&
                      round->Goes("fed with results", [](PluginTrial& trial) { trial.Feed(); }) &&
                      round->Goes("stopped", [](PluginTrial& trial) { trial.Stop(); }) &&
                      round->Goes("destroyed", [](PluginTrial& trial) { trial.Destroy(); });
    if (goes && !errors->Text().empty())
    {
        round->Complain("tried", "wrote an error to the log (" + errors->Text() + ")");
    }
    else if (goes)
    {
        say(PRAISES + offer);
    }
}

/// The end of the trial of one plug-in.
struct Outcome
{
    std::string text; ///< a complaint or a praise
    std::vector<ProtocolType> types;
};

/// The texts of a child, sorted.
struct Verdict
{
    std::vector<Outcome> outcomes; ///< of the plug-ins that were tried to the end
    std::string station;           ///< name of the last step that began
};

ProtocolType TypeOf(std::string const& offer)
{
    std::size_t const blank = offer.find(' ');
    return {offer.substr(blank + 1), std::stoi(offer.substr(1, blank))};
}

Verdict VerdictOf(std::vector<std::string> const& said)
{
    Verdict verdict;
    std::vector<ProtocolType> types;
    for (std::string const& text : said)
    {
        if (text.front() == BEGINS)
        {
            verdict.station = text.substr(1);
        }
        else if (text.front() == OFFERS)
        {
            types.push_back(TypeOf(text));
        }
        else
        {
            verdict.outcomes.push_back({text, std::exchange(types, {})});
        }
    }
    return verdict;
}

/// The protocols of several plug-ins, by number and by name.
class Catalogue final
{
public:
    /// Adds the protocols of a plug-in. If one of them has the number of another protocol, adds nothing and returns a
    /// sentence that names both. Of two protocols with one name the module has the first only; the second has no number.
    std::string Add(std::filesystem::path const& file, std::vector<ProtocolType> const& types)
    {
        std::map<int32, Owner> added = byNumber;
        for (ProtocolType const& type : types)
        {
            if (byName.contains(type.name))
            {
                continue;
            }
            if (type.number == static_cast<int32>(ZuControl::HOST_PROTOCOL))
            {
                return "Plug-in " + file.string() + " was refused: its protocol " + type.name + " has the number " +
                       std::to_string(type.number) + " of the host";
            }
            auto const [first, isNew] = added.try_emplace(type.number, Owner{type.name, file});
            if (!isNew)
            {
                return "Plug-in " + file.string() + " was refused: its protocol " + type.name + " has the number " +
                       std::to_string(type.number) + " of " + first->second.typeName + " in " +
                       first->second.file.string();
            }
        }
        byNumber = std::move(added);
        for (ProtocolType const& type : types)
        {
            byName.try_emplace(type.name, file);
        }
        return "";
    }

    /// A sentence about a protocol of a plug-in that has the name of another protocol; empty if there is none.
    std::string TakenName(std::filesystem::path const& file, std::vector<ProtocolType> const& types) const
    {
        for (ProtocolType const& type : types)
        {
            if (auto const first = byName.find(type.name); first != byName.end())
            {
                return "Plug-in " + file.string() + " was refused: its protocol " + type.name +
                       " has the type name of a protocol in " + first->second.string();
            }
        }
        return "";
    }

private:
    struct Owner
    {
        std::string typeName;
        std::filesystem::path file;
    };

    std::map<int32, Owner> byNumber;
    std::map<std::string, std::filesystem::path> byName;
};

} // namespace

/// The trial of one plug-in.
struct PluginClinic::Attempt
{
    std::filesystem::path file;
    std::string complaint; ///< empty for a plug-in that passed
    std::vector<ProtocolType> types;
};

std::filesystem::path PluginClinic::Admission::LoadPath(std::filesystem::path const& file) const
{
    return signatures == nullptr ? file : signatures->LoadPath(file);
}

PluginClinic::PluginClinic(Deployment deploymentKind, std::chrono::milliseconds longestSilence,
                           std::shared_ptr<SignedPlugins> newSignatures)
    : deployment(deploymentKind), silence(longestSilence), signatures(std::move(newSignatures))
{
}

PluginClinic::~PluginClinic() = default;

PluginClinic::Admission PluginClinic::Admit(Paths files) const
{
    Admission admission;
    admission.signatures = signatures;
    std::erase_if(files, [&](std::filesystem::path const& file) {
        std::string const refusal = RefusalOf(file);
        if (!refusal.empty())
        {
            admission.complaints.push_back({file, refusal});
        }
        else if (PluginAccess const access = PluginAccess::Of(file); access.writers == PluginAccess::Writers::GROUP)
        {
            admission.warnings.push_back(access.sentence);
        }
        return !refusal.empty();
    });
    Catalogue catalogue;
    for (Attempt const& attempt : Try(files))
    {
        std::string const complaint =
            attempt.complaint.empty() ? catalogue.Add(attempt.file, attempt.types) : attempt.complaint;
        if (complaint.empty())
        {
            admission.files.push_back(attempt.file);
        }
        else
        {
            admission.complaints.push_back({attempt.file, complaint});
        }
    }
    return admission;
}

/// Why the plug-in must not be loaded, from its file alone; empty if it may be.
std::string PluginClinic::RefusalOf(std::filesystem::path const& file) const
{
    PluginAccess access = PluginAccess::Of(file);
    if (access.writers == PluginAccess::Writers::EVERYONE)
    {
        return std::move(access.sentence);
    }
    return signatures == nullptr ? std::string() : signatures->Admit(file);
}

std::filesystem::path PluginClinic::LoadPath(std::filesystem::path const& file) const
{
    return signatures == nullptr ? file : signatures->LoadPath(file);
}

std::vector<PluginClinic::Attempt> PluginClinic::Try(Paths files) const
{
    LoadPathOf const loadPathOf = [this](std::filesystem::path const& file) { return LoadPath(file); };
    std::vector<Attempt> attempts;
    while (!files.empty())
    {
        ChildProcess::End const end =
            ChildProcess::Run([&](Say const& say) { TryAdmission(files, loadPathOf, deployment, say); }, silence);
        Verdict const verdict = VerdictOf(end.said);
        std::size_t tried = 0;
        for (Outcome const& outcome : verdict.outcomes)
        {
            bool const isPraised = outcome.text.front() == PRAISES;
            attempts.push_back({files.at(tried++), isPraised ? "" : outcome.text.substr(1), outcome.types});
        }
        if (tried < files.size()) // the child ended while it tried the next one
        {
            std::filesystem::path const& file = files[tried++];
            attempts.push_back({file, Sentence(file, end.fault, verdict.station), {}});
        }
        files.erase(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(tried));
    }
    return attempts;
}

PluginClinic::CheckUp PluginClinic::Check(std::filesystem::path const& file, Paths others) const
{
    if (std::string refusal = RefusalOf(file); !refusal.empty())
    {
        return {false, std::move(refusal)};
    }
    ChildProcess::End const end =
        ChildProcess::Run([&](Say const& say) { TryLife(file, LoadPath(file), deployment, say); }, silence);
    Verdict const verdict = VerdictOf(end.said);
    if (verdict.outcomes.empty())
    {
        return {false, Sentence(file, end.fault, verdict.station)};
    }
    Outcome const& outcome = verdict.outcomes.front();
    if (outcome.text.front() != PRAISES)
    {
        return {false, outcome.text.substr(1)};
    }
    Catalogue catalogue;
    std::erase_if(others, [&](auto const& other) {
        return other.filename() == file.filename() || !RefusalOf(other).empty(); // the host does not run it either
    });
    for (Attempt const& attempt : Try(others))
    {
        catalogue.Add(attempt.file, attempt.types);
    }
    std::string const taken = catalogue.TakenName(file, outcome.types);
    std::string const complaint = taken.empty() ? catalogue.Add(file, outcome.types) : taken;
    std::string const signer = signatures == nullptr ? "" : file.string() + " is " + signatures->SignerOf(file) + "\n";
    return complaint.empty() ? CheckUp{true, outcome.text.substr(1) + signer} : CheckUp{false, complaint};
}

} // namespace ZuHost
