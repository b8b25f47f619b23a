#include "Host/Jobs/JobManager.h"

#include "Host/Jobs/DocumentStore.h"
#include "Host/Jobs/JobDocument.h"
#include "Host/Jobs/JobLoad.h"
#include "Host/Jobs/SavedDocuments.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Retry/StartRetry.h"
#include "Host/Store/DataFolder.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <exception>
#include <malloc.h>
#include <utility>

namespace ZuHost
{

namespace
{

using Files = ArchiveContents::Files;
using Kind = JobProblems::Kind;
using ZuCommon::PersistDomain;

/// Its destructor gives the freed memory of the process back to the system. A load or an upload may have unpacked
/// `Archive::MAX_TOTAL_BYTES`, which the allocator would keep.
class MemoryReturn final
{
public:
    MemoryReturn() = default;

    ~MemoryReturn()
    {
        malloc_trim(0);
    }

    MemoryReturn(MemoryReturn const&) = delete;
    MemoryReturn& operator=(MemoryReturn const&) = delete;
};

[[noreturn]] void ThrowNoJob(JobName const& name)
{
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no job '%s'", name.Text().c_str());
}

} // namespace

JobManager::JobManager(PersistRegistry& usedRegistry, UpdateGate& usedGate, StartRetry& usedRetry,
                       ZuCommon::ProblemsManager& problemsManager, DataFolder const& usedFolder, JobSaver::Pace pace)
    : registry(usedRegistry),
      gate(usedGate),
      startRetry(usedRetry),
      folder(usedFolder),
      problems(problemsManager),
      settings{ArchiveFile(folder, folder.SettingsFile()), {}},
      saver([this] { SaveChanges(); }, pace)
{
    registry.SetModifiedHandler([this] { saver.Note(); });
}

JobManager::~JobManager()
{
    ZU_GUARD_DESTRUCTOR([this] { saver.Stop(); });
    registry.SetModifiedHandler({}); // handlers may still report modifications while they are destroyed
}

void JobManager::SetAloneRunner(AloneRunner runner)
{
    runAlone = std::move(runner);
}

std::vector<std::string> JobManager::Begin(JobName const& name, std::set<std::string> const& toHoldBack)
{
    MemoryReturn const memoryReturn;
    Zu::MutexLock const guard(operationLock);
    BeginSettings();
    BeginJob(name, toHoldBack);
    return heldBack;
}

void JobManager::Run()
{
    {
        Zu::MutexLock const guard(operationLock);
        heldBack.clear(); // the owner has started these services
    }
    saver.Start();
    if (registry.ModificationCount() != savedCount.load(std::memory_order_relaxed))
    {
        saver.Note();
    }
}

void JobManager::Close()
{
    saver.Stop();
    Zu::MutexLock const guard(operationLock);
    if (isClosed || !job.has_value())
    {
        return; // `Begin` has not run, or `Close` has run before
    }
    isClosed = true;
    try
    {
        Save(Scope::CHANGED);
    }
    catch (Zu::Exception const& exception)
    {
        ZU_THROW(exception.Status(), "The job '%s' cannot be saved: %s", LoadedJob().c_str(), exception.what());
    }
}

void JobManager::LoadJob(std::string const& name)
{
    Load(JobName(name));
}

void JobManager::Load(JobName const& name)
{
    MemoryReturn const memoryReturn;
    auto const load = [&] {
        Zu::MutexLock const guard(operationLock);
        CheckOpen();
        LoadAlone(name);
    };
    runAlone ? runAlone(load) : load();
    listChangedSignal.Fire();
}

std::string JobManager::LoadedJob()
{
    std::optional<JobName> const loaded = Loaded();
    return loaded.has_value() ? loaded->Text() : "";
}

std::vector<JobManager::Job> JobManager::List()
{
    std::optional<JobName> const loaded = Loaded();
    std::vector<JobName> names = folder.Jobs();
    if (loaded.has_value() && std::ranges::find(names, *loaded) == names.end())
    {
        names.insert(std::ranges::lower_bound(names, *loaded), *loaded); // a new job that is not saved yet
    }
    bool const isModified = registry.ModificationCount() != savedCount.load(std::memory_order_relaxed);
    std::vector<Job> list;
    for (JobName const& name : names)
    {
        std::error_code error;
        auto const bytes = std::filesystem::file_size(folder.JobFile(name), error);
        list.push_back({name, error ? 0 : bytes, name == loaded, name == loaded && isModified});
    }
    return list;
}

void JobManager::SaveAs(JobName const& name)
{
    {
        Zu::MutexLock const guard(operationLock);
        CheckOpen();
        Save(Scope::ALL);
        if (!IsLoaded(name))
        {
            job->file.CopyTo(folder.JobFile(name));
        }
    }
    listChangedSignal.Fire();
}

std::string JobManager::Download(JobName const& name)
{
    return ExistingFile(name).Image();
}

bool JobManager::Upload(JobName const& name, std::string const& bytes)
{
    MemoryReturn const memoryReturn;
    bool isNew = false;
    {
        Zu::MutexLock const uploadGuard(uploadLock);
        Files const files = ArchiveFile::Checked(name.Text(), bytes);
        Zu::MutexLock const guard(operationLock);
        if (IsLoaded(name))
        {
            ZU_THROW(Zu::Status::WRONG_STATE, "The job '%s' is loaded: load another one before it is replaced",
                     name.Text().c_str());
        }
        ArchiveFile file(folder, folder.JobFile(name));
        isNew = !file.Exists();
        file.Replace(files);
    }
    listChangedSignal.Fire();
    return isNew;
}

void JobManager::Remove(JobName const& name)
{
    {
        Zu::MutexLock const guard(operationLock);
        if (IsLoaded(name))
        {
            ZU_THROW(Zu::Status::WRONG_STATE, "The job '%s' is loaded: load another one before it is deleted",
                     name.Text().c_str());
        }
        if (!std::filesystem::exists(folder.JobFile(name)))
        {
            ThrowNoJob(name);
        }
        folder.Remove(folder.JobFile(name));
    }
    listChangedSignal.Fire();
}

LoadReport JobManager::Report(JobName const& name)
{
    Zu::MutexLock const guard(stateLock);
    if (!lastReport.has_value() || lastReport->job != name)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no report: the job '%s' is not the one that was loaded last",
                 name.Text().c_str());
    }
    return *lastReport;
}

Zu::Signal<>& JobManager::ListChangedSignal()
{
    return listChangedSignal;
}

void JobManager::BeginSettings()
{
    if (settings.file.Exists())
    {
        try
        {
            ArchiveFile::Documents const documents = settings.file.Read();
            AddProblems(Kind::SETTINGS, documents.faults);
            GateBracket const bracket(gate);
            registry.Load(PersistDomain::PROTOCOL, DocumentStore(documents.files));
            return;
        }
        catch (Zu::Exception const& exception)
        {
            if (exception.Status() != Zu::Status::BAD_FORMAT) // the file may be sound: do not replace it
            {
                throw;
            }
            problems.Add(Kind::SETTINGS, "The settings of the protocols cannot be loaded: " + Zu::CaughtReason());
        }
    }
    GateBracket const bracket(gate);
    DocumentStore store;
    registry.Init(PersistDomain::PROTOCOL, store); // the first save collects these documents again
}

void JobManager::BeginJob(JobName const& name, std::set<std::string> const& toHoldBack)
{
    job.emplace(Kept{ArchiveFile(folder, folder.JobFile(name)), {}});
    SetLoaded(name);
    if (job->file.Exists())
    {
        try
        {
            ArchiveFile::Documents documents = job->file.Read();
            heldBack = JobDocument::HoldBack(documents.files, toHoldBack);
            JobLoad(registry, gate, startRetry).ResetWhatIsNotIn(documents.files);
            TakeOver(name, std::move(documents));
            return;
        }
        catch (Zu::Exception const& exception)
        {
            if (exception.Status() != Zu::Status::BAD_FORMAT)
            {
                throw;
            }
            problems.Add(Kind::LOAD, "The job '" + name.Text() + "' cannot be loaded: " + Zu::CaughtReason());
        }
    }
    MakeNew();
    SetReport({name, {}, {}});
    TryToSave(Scope::ALL);
}

void JobManager::MakeNew()
{
    GateBracket const bracket(gate);
    DocumentStore store;
    registry.Init(PersistDomain::JOB, store);
}

ArchiveFile JobManager::ExistingFile(JobName const& name) const
{
    ArchiveFile file(folder, folder.JobFile(name));
    if (!file.Exists())
    {
        ThrowNoJob(name);
    }
    return file;
}

void JobManager::CheckOpen() const
{
    if (isClosed || !job.has_value())
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "The host is stopping: jobs are neither loaded nor saved any more");
    }
}

void JobManager::LoadAlone(JobName const& name)
{
    ArchiveFile file = ExistingFile(name);
    SaveJob(Scope::CHANGED); // before the read: it may be the same file
    std::optional<ArchiveFile::Documents> documents;
    try
    {
        documents = file.Read();
    }
    catch (...)
    {
        problems.Add(Kind::LOAD, "The job '" + name.Text() + "' cannot be loaded: " + Zu::CaughtReason());
        throw;
    }
    problems.Clear(Kind::LOAD);
    // From here on the configuration belongs to the new job, even when a step fails. It must never be saved to the
    // previous job.
    job.emplace(Kept{std::move(file), {}});
    heldBack.clear();
    SetLoaded(name);
    try
    {
        TakeOver(name, std::move(*documents));
    }
    catch (...)
    {
        saver.Note();
        throw;
    }
}

void JobManager::TakeOver(JobName const& name, ArchiveFile::Documents documents)
{
    AddProblems(Kind::LOAD, documents.faults);
    keepsReplaced = true; // until all documents are known to be taken over
    savedCount.store(NEVER_SAVED, std::memory_order_relaxed);
    JobLoad::Result result = JobLoad(registry, gate, startRetry).Run(name, std::move(documents), heldBack);
    job->known = std::move(result.known);
    SetReport(result.report);
    if (result.isTakenOver)
    {
        keepsReplaced = false;
        savedCount.store(result.modificationCount, std::memory_order_relaxed);
        return;
    }
    saver.Note();
}

void JobManager::SaveChanges()
{
    Zu::MutexLock const guard(operationLock);
    Save(Scope::CHANGED);
}

void JobManager::Save(Scope scope)
{
    std::exception_ptr failure; // of the job; the settings are saved even if the job fails
    try
    {
        SaveJob(scope);
    }
    catch (...)
    {
        failure = std::current_exception();
    }
    GuardedSave([&]() ZU_REQUIRES(operationLock) { SaveFile(settings, PersistDomain::PROTOCOL, scope); });
    if (failure != nullptr)
    {
        std::rethrow_exception(failure);
    }
    if (problems.Has(Kind::SAVE))
    {
        problems.Clear(Kind::SAVE);
        ZU_LOG_USER_INFO("The job '%1$s' is saved again", LoadedJob().c_str());
    }
}

void JobManager::SaveJob(Scope scope)
{
    uint64 const count = registry.ModificationCount(); // before the save, which may miss later modifications
    GuardedSave([&]() ZU_REQUIRES(operationLock) { SaveFile(*job, PersistDomain::JOB, scope); });
    savedCount.store(count, std::memory_order_relaxed);
}

void JobManager::GuardedSave(std::function<void()> const& save)
{
    try
    {
        save();
    }
    catch (...)
    {
        problems.Add(Kind::SAVE, "The job '" + LoadedJob() + "' cannot be saved: " + Zu::CaughtReason());
        throw;
    }
}

void JobManager::TryToSave(Scope scope)
{
    try
    {
        Save(scope);
    }
    catch (...) // the user has been told; the saver tries again
    {
    }
}

/// Stores all documents that there are, then throws if a service has none.
void JobManager::SaveFile(Kept& kept, PersistDomain domain, Scope scope)
{
    bool const isJob = domain == PersistDomain::JOB;
    SavedDocuments now = [&]() ZU_REQUIRES(operationLock) {
        GateBracket const bracket(gate);
        // `ToRun` comes first: a service that `StartRetry` starts meanwhile is saved as enabled either way.
        SavedDocuments::Wanted const wanted = SavedDocuments::ToRun(startRetry, heldBack);
        return SavedDocuments::Collect(registry, domain, isJob ? wanted : SavedDocuments::Wanted());
    }();
    std::set<std::string> due;
    for (auto const& [name, bytes] : now.files)
    {
        auto const known = kept.known.find(name);
        if (scope == Scope::ALL || known == kept.known.end() || known->second != bytes)
        {
            due.insert(name);
        }
    }
    if (!due.empty() || (isJob && !kept.file.Exists()))
    {
        kept.file.Save(now.files, due, keepsReplaced && isJob);
    }
    kept.known = std::move(now.files);
    keepsReplaced = keepsReplaced && !isJob;
    if (!now.faults.empty())
    {
        ZU_THROW(Zu::Status::FAILURE, "%s", now.faults.front().c_str());
    }
}

void JobManager::AddProblems(Kind kind, std::vector<std::string> const& faults)
{
    for (std::string const& fault : faults)
    {
        problems.Add(kind, fault);
    }
}

void JobManager::SetLoaded(JobName const& name)
{
    Zu::MutexLock const guard(stateLock);
    loadedJob = name;
}

bool JobManager::IsLoaded(JobName const& name)
{
    Zu::MutexLock const guard(stateLock);
    return loadedJob == name;
}

std::optional<JobName> JobManager::Loaded()
{
    Zu::MutexLock const guard(stateLock);
    return loadedJob;
}

void JobManager::SetReport(LoadReport const& report)
{
    Zu::MutexLock const guard(stateLock);
    lastReport = report;
}

} // namespace ZuHost
