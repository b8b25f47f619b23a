#pragma once

#include "Host/Jobs/JobProblems.h"
#include "Host/Jobs/JobSaver.h"
#include "Host/Jobs/LoadReport.h"
#include "Host/Store/ArchiveFile.h"
#include "ZuApi/Event.h"
#include "ZuCommon/PersistDomain.h"
#include "ZuCommon/PersistManager.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ZuHost
{

class DataFolder;
class PersistRegistry;
class StartRetry;
class UpdateGate;

/// Keeps what is configured: one job is loaded at any time, and what changes in it is saved soon after.
///
/// A save asks all who have registered for their documents, with the update gate held, and stores those that differ from what
/// was loaded or saved last: what a person changes in the file meanwhile stays. Settings of the protocols themselves are
/// saved along with each job. A load takes the gate too, so that no other change falls into it. A service that is wanted
/// although its start has failed is saved as enabled.
/// When a service cannot save its document, the others are stored, the job counts as not saved, and the document that the
/// service stored last is kept.
/// Threads: any thread may call, but for `Begin`, `Run` and `Close`, which belong to the owner; one operation at a time. An
/// operation must not be called by one who holds the update gate. What throws leaves the stored files as they were.
class JobManager final : public ZuCommon::PersistManager
{
public:
    /// A file with a job in it.
    struct Job
    {
        std::string name;
        uint64 bytes = 0; ///< of the file; 0 when it is not there yet
        bool isLoaded = false;
        bool isModified = false; ///< there are changes that are not saved yet
    };

    /// Runs a load while nobody reads what it changes; empty: at once.
    using AloneRunner = std::function<void(std::function<void()> const& load)>;

    /// All that is given outlives it.
    JobManager(PersistRegistry& usedRegistry, UpdateGate& usedGate, StartRetry& usedRetry,
               ZuCommon::ProblemsManager& problemsManager, DataFolder const& usedFolder, JobSaver::Pace pace = {});
    ~JobManager() override;

    JobManager(JobManager const&) = delete;
    JobManager& operator=(JobManager const&) = delete;

    /// To be set before loads can come from other threads.
    void SetAloneRunner(AloneRunner runner);

    /// The start: loads the settings and the job `name`, or makes a new one when there is none of this name. A damaged file
    /// of which nothing can be read is a problem for the user, and a new job takes its place. Of the protocols `toHoldBack`
    /// those are given that the job enables: they are not enabled, since something is to be set before they run, but saved as
    /// enabled until `Run`. Throws what keeps a sound file from being read.
    std::vector<std::string> Begin(std::string const& name, std::set<std::string> const& toHoldBack = {});

    /// From now on changes are saved, also those made before. The caller has started the services that were held back.
    void Run();

    /// The orderly end: saves, and lets nothing happen any more: loads and saves are refused with -1000 from now on. The
    /// handlers are still registered.
    void Close();

    /// Saves the loaded job, then loads this one. Throws -997 for what is no name, -999 when there is no such job, -984 when
    /// nothing of its file can be read, and what keeps the loaded one from being saved; the job before stays loaded. What a
    /// protocol did not take over throws nothing: see `Report`.
    void LoadJob(std::string const& name) override;

    std::string LoadedJob() override;

    /// All jobs, by name.
    std::vector<Job> List();

    /// Saves the loaded job, all of it, and when `name` is another one, a copy under that name; the loaded one stays loaded.
    /// It is durable when this returns.
    void SaveAs(std::string const& name);

    /// The file of a job as it is stored. Throws -999 when there is none.
    std::string Download(std::string const& name);

    /// Stores the bytes of an archive as a job. Throws -984 with what is wrong with it, and -1000 for the loaded one. Gives
    /// whether there was none of this name before.
    bool Upload(std::string const& name, std::string const& bytes);

    /// Throws -999 when there is none and -1000 for the loaded one.
    void Remove(std::string const& name);

    /// What became of the job when it was loaded. Throws -999 for all but the one that was loaded last.
    LoadReport Report(std::string const& name);

    /// Fires behind each change of the list and each load, on the thread that made it. Handlers may ask for the list.
    Zu::Event<>& ListChangedEvent();

private:
    using Files = ArchiveContents::Files;
    using Wanted = std::map<std::string, std::string>; // services by type name, see StartRetry

    static constexpr uint64 NEVER_SAVED = ~uint64{0};

    enum class Scope
    {
        CHANGED, ///< what differs from what was loaded or saved last
        ALL      ///< what differs from the file
    };

    /// A file and what is known to be in it.
    struct Kept
    {
        ArchiveFile file;
        Files known; ///< what the protocols had to say when it was loaded or saved last
    };

    /// The documents of a save, and a sentence for each service that has none.
    struct Collected
    {
        Files files;
        std::vector<std::string> faults;
    };

    void BeginSettings();
    void BeginJob(std::string const& name, std::set<std::string> const& toHoldBack);
    void MakeNew();
    void ResetWhatIsNotLoaded(Files const& loaded);
    ArchiveFile ExistingFile(std::string const& name) const;
    void CheckOpen() const;
    void Load(std::string const& name);
    void TakeOver(std::string const& name, ArchiveFile::Documents const& documents);
    void SaveChanges();
    void Save(Scope scope);
    void SaveJob(Scope scope);
    void GuardedSave(std::function<void()> const& save);
    void TryToSave(Scope scope);
    void SaveFile(Kept& kept, ZuCommon::PersistDomain domain, Scope scope);
    Wanted ToRun() const;
    Collected Collect(ZuCommon::PersistDomain domain, Wanted const& wanted);
    bool IsTakenOver(ArchiveFile::Documents const& documents, uint64 countBefore) const;
    void AddProblems(JobProblems::Kind kind, std::vector<std::string> const& faults);
    void SetLoaded(std::string const& name);
    void SetReport(LoadReport const& report);

    PersistRegistry& registry;
    UpdateGate& gate;
    StartRetry& startRetry;
    DataFolder const& folder;
    AloneRunner runAlone;
    Zu::Event<> listChangedEvent;

    // The modifications that are saved; none yet. Written under operationLock; the list shows it.
    std::atomic<uint64> savedCount{NEVER_SAVED};

    Zu::Mutex operationLock; // held during each operation; the gate and all below are taken under it. Guards these six
    bool isClosed = false;
    JobProblems problems;
    Kept settings;
    std::optional<Kept> job;
    bool keepsReplaced = false;        // what was loaded has not been taken over as it stands
    std::vector<std::string> heldBack; // services that the job enables and that the owner is yet to start

    Zu::Mutex stateLock; // a leaf
    std::string loadedJob ZU_GUARDED_BY(stateLock);
    LoadReport lastReport ZU_GUARDED_BY(stateLock);

    JobSaver saver; // last: it uses all of the above
};

} // namespace ZuHost
