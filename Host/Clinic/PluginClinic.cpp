#include "Host/Clinic/PluginClinic.h"

#include "Host/Clinic/ChildProcess.h"
#include "Host/Clinic/PluginTrial.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace ZuHost
{

namespace
{

using Paths = std::vector<std::filesystem::path>;
using Say = ChildProcess::Say;

// Each text of a child begins with one of these.
constexpr char BEGINS = 'b';    // a step begins; its name follows: "loaded"
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
    Round(std::filesystem::path triedFile, Deployment kind, Say const& usedSay)
        : file(std::move(triedFile)), say(usedSay), trial(file, kind)
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

void TryAdmission(Paths const& files, Deployment deployment, Say const& say)
{
    for (std::filesystem::path const& file : files)
    {
        auto* const round = new Round(file, deployment, say);
        if (round->Loads() && round->Goes("made", [](PluginTrial& trial) { trial.Create(); }))
        {
            say(std::string(1, PRAISES));
        }
    }
}

void TryLife(std::filesystem::path const& file, Deployment deployment, Say const& say)
{
    auto* const round = new Round(file, deployment, say);
    if (!round->Loads())
    {
        return;
    }
    auto const errors = std::make_shared<FirstError>();
    Zu::Logging::AddSink(errors);
    std::string offer;
    bool const goes = round->Goes("made", [](PluginTrial& trial) { trial.Create(); }) &&
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

/// The texts of a child, sorted.
struct Verdict
{
    std::vector<std::string> outcomes; ///< a complaint or a praise for each plug-in that was tried to the end
    std::string station;               ///< name of the last step that began
};

Verdict VerdictOf(std::vector<std::string> const& said)
{
    Verdict verdict;
    for (std::string const& text : said)
    {
        if (text.front() == BEGINS)
        {
            verdict.station = text.substr(1);
        }
        else
        {
            verdict.outcomes.push_back(text);
        }
    }
    return verdict;
}

} // namespace

PluginClinic::PluginClinic(Deployment deploymentKind, std::chrono::milliseconds longestSilence)
    : deployment(deploymentKind), silence(longestSilence)
{
}

PluginClinic::Admission PluginClinic::Admit(Paths files) const
{
    Admission admission;
    while (!files.empty())
    {
        ChildProcess::End const end =
            ChildProcess::Run([&](Say const& say) { TryAdmission(files, deployment, say); }, silence);
        Verdict const verdict = VerdictOf(end.said);
        std::size_t tried = 0;
        for (std::string const& outcome : verdict.outcomes)
        {
            std::filesystem::path const& file = files.at(tried++);
            if (outcome.front() == PRAISES)
            {
                admission.files.push_back(file);
            }
            else
            {
                admission.complaints.push_back({file, outcome.substr(1)});
            }
        }
        if (tried < files.size()) // the child ended while it tried the next one
        {
            std::filesystem::path const& file = files[tried++];
            admission.complaints.push_back({file, Sentence(file, end.fault, verdict.station)});
        }
        files.erase(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(tried));
    }
    return admission;
}

PluginClinic::CheckUp PluginClinic::Check(std::filesystem::path const& file) const
{
    ChildProcess::End const end = ChildProcess::Run([&](Say const& say) { TryLife(file, deployment, say); }, silence);
    Verdict const verdict = VerdictOf(end.said);
    if (verdict.outcomes.empty())
    {
        return {false, Sentence(file, end.fault, verdict.station)};
    }
    std::string const& outcome = verdict.outcomes.front();
    return {outcome.front() == PRAISES, outcome.substr(1)};
}

} // namespace ZuHost
