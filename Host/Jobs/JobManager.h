#pragma once

#include "Host/Jobs/JobProblems.h"
#include "Host/Jobs/JobSaver.h"
#include "Host/Jobs/LoadReport.h"
#include "Host/Store/ArchiveFile.h"
#include "ZuApi/Event.h"
#include "ZuCommon/Persistence.h"
#include "wApi/wMutex.h"

#include <atomic>
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

/// Loads and saves jobs. One job is loaded at any time; each change is saved shortly after it is made.
///
/// A save holds the update gate and collects the documents of all registered handlers. It stores the documents that
/// differ from the state last loaded or saved, so a document that a person changes in the file meanwhile is kept. The
/// settings that belong to the protocols, not to a job, are saved with each job.
/// A load holds the gate too, so that no other change happens during it.
/// A service that failed to start and is being retried (see `StartRetry`) is saved as enabled.
/// When a service cannot save its document, the other documents are stored, the job counts as not saved, and the file
/// keeps the document that the service stored last.
///
/// Threads: any thread may call, except that `Begin`, `Run` and `Close` belong to the owner. Operations run one at a
/// time. The caller must not hold the update gate. An operation that throws leaves the stored files as they were,
/// except that a save stores the documents of the services that did not fail.
class JobManager final : public ZuCommon::PersistManager
{
public:
    /// A job and its file.
    struct Job
    {
        JobName name;
        uint64 bytes = 0; ///< of the file; 0 while the file does not exist
        bool isLoaded = false;
        bool isModified = false; ///< it has unsaved changes
    };

    /// Runs a load while no other thread reads what the load changes. If empty, the load runs at once.
    using AloneRunner = std::function<void(std::function<void()> const& load)>;

    /// All arguments passed by reference outlive the manager.
    JobManager(PersistRegistry& usedRegistry, UpdateGate& usedGate, StartRetry& usedRetry,
               ZuCommon::ProblemsManager& problemsManager, DataFolder const& usedFolder, JobSaver::Pace pace = {});
    ~JobManager() override;

    JobManager(JobManager const&) = delete;
    JobManager& operator=(JobManager const&) = delete;

    /// Call it before other threads can load jobs.
    void SetAloneRunner(AloneRunner runner);

    /// Loads the settings and then the job `name`, at the start of the host. If there is no job of this name, a new one
    /// is made. If nothing in a file can be read, a problem tells the user, and a new job (or default settings) takes
    /// its place. Other failures of reading are thrown.
    ///
    /// The services in `toHoldBack` need something to be set before they run. The load does not enable them; until
    /// `Run` a save stores them as enabled. Returns those of them that the job enables.
    std::vector<std::string> Begin(JobName const& name, std::set<std::string> const& toHoldBack = {});

    /// Starts saving changes, including those made before. The caller has started the services that were held back.
    void Run();

    /// Saves the job and ends operation: from now on loads and saves throw `Zu::Status::WRONG_STATE`, also when this
    /// throws because of the save. The handlers must still be registered.
    void Close();

    /// Saves the loaded job, then loads this one. Throws `Zu::Status::NOT_FOUND` when there is no such job, `Zu::Status::BAD_FORMAT` when nothing in its file can be
    /// read, and the failure of saving the loaded job. In these cases the loaded job stays loaded. Settings that a
    /// protocol does not take over are reported (see `Report`), not thrown.
    void Load(JobName const& name);

    /// As `Load`, for the module. Throws `Zu::Status::BAD_ARGUMENT` for an invalid name too.
    void LoadJob(std::string const& name) override;

    /// The name of the loaded job; empty before `Begin`.
    std::string LoadedJob() override;

    /// All jobs, sorted by name.
    std::vector<Job> List();

    /// Saves all documents of the loaded job. If `name` is another job, also copies the file to that name; the loaded
    /// job stays loaded. The files are durable when this returns.
    void SaveAs(JobName const& name);

    /// Returns the file of a job as it is stored. Throws `Zu::Status::NOT_FOUND` when there is none.
    std::string Download(JobName const& name);

    /// Stores the bytes of an archive as a job. Throws `Zu::Status::BAD_FORMAT` with a description of the fault, and
    /// `Zu::Status::WRONG_STATE` for the loaded job. Returns whether the job is new.
    bool Upload(JobName const& name, std::string const& bytes);

    /// Throws `Zu::Status::NOT_FOUND` when there is no such job and `Zu::Status::WRONG_STATE` for the loaded job.
    void Remove(JobName const& name);

    /// The report of the last load. Throws `Zu::Status::NOT_FOUND` unless `name` is the job that was loaded last.
    LoadReport Report(JobName const& name);

    /// Fires after each change of the list and each load, on the thread that made it. Handlers may call `List`.
    Zu::Signal<>& ListChangedSignal();

private:
    using Files = ArchiveContents::Files;

    static constexpr uint64 NEVER_SAVED = ~uint64{0};

    enum class Scope
    {
        CHANGED, ///< documents that differ from the state last loaded or saved
        ALL      ///< all documents that differ from the file
    };

    /// A file and the documents that it is known to hold.
    struct Kept
    {
        ArchiveFile file;
        Files known; ///< the documents of the handlers at the last load or save
    };

    void BeginSettings() ZU_REQUIRES(operationLock);
    void BeginJob(JobName const& name, std::set<std::string> const& toHoldBack) ZU_REQUIRES(operationLock);
    void MakeNew();
    ArchiveFile ExistingFile(JobName const& name) const;
    void CheckOpen() const ZU_REQUIRES(operationLock);
    void LoadAlone(JobName const& name) ZU_REQUIRES(operationLock);
    void TakeOver(JobName const& name, ArchiveFile::Documents documents) ZU_REQUIRES(operationLock);
    void SaveChanges();
    void Save(Scope scope) ZU_REQUIRES(operationLock);
    void SaveJob(Scope scope) ZU_REQUIRES(operationLock);
    void GuardedSave(std::function<void()> const& save) ZU_REQUIRES(operationLock);
    void TryToSave(Scope scope) ZU_REQUIRES(operationLock);
    void SaveFile(Kept& kept, ZuCommon::PersistDomain domain, Scope scope) ZU_REQUIRES(operationLock);
    void AddProblems(JobProblems::Kind kind, std::vector<std::string> const& faults) ZU_REQUIRES(operationLock);
    void SetLoaded(JobName const& name);
    bool IsLoaded(JobName const& name);
    std::optional<JobName> Loaded();
    void SetReport(LoadReport const& report);

    PersistRegistry& registry;
    UpdateGate& gate;
    StartRetry& startRetry;
    DataFolder const& folder;
    AloneRunner runAlone;
    Zu::Signal<> listChangedSignal;

    // The modification count that the last save covers; `NEVER_SAVED` before. Written under operationLock, read by
    // `List`.
    std::atomic<uint64> savedCount{NEVER_SAVED};

    // Held while a file of a client is unpacked: one at a time may use that memory. Lock order: uploadLock,
    // operationLock, the gate, the leaves.
    Zu::Mutex uploadLock;

    // Held during each operation that uses the loaded job or changes a file.
    Zu::Mutex operationLock;
    bool isClosed ZU_GUARDED_BY(operationLock) = false;
    JobProblems problems ZU_GUARDED_BY(operationLock);
    Kept settings ZU_GUARDED_BY(operationLock);
    std::optional<Kept> job ZU_GUARDED_BY(operationLock);
    /// The next save keeps the documents that it replaces (see `ArchiveFile::Save`).
    bool keepsReplaced ZU_GUARDED_BY(operationLock) = false;
    /// The services that the job enables and that the owner has yet to start.
    std::vector<std::string> heldBack ZU_GUARDED_BY(operationLock);

    Zu::Mutex stateLock; // a leaf
    std::optional<JobName> loadedJob ZU_GUARDED_BY(stateLock);
    std::optional<LoadReport> lastReport ZU_GUARDED_BY(stateLock);

    JobSaver saver; // last: it uses all members above
};

} // namespace ZuHost
