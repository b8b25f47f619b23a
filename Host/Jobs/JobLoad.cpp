#include "Host/Jobs/JobLoad.h"

#include "Host/Jobs/DocumentStore.h"
#include "Host/Jobs/JobDocument.h"
#include "Host/Jobs/SavedDocuments.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Retry/StartRetry.h"
#include "ZuApi/Guard.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace
{

using ZuCommon::PersistDomain;
using Wanted = SavedDocuments::Wanted;

/// Adds to the report why enabled services were skipped: their start has failed.
void AddWanted(LoadReport& report, Wanted const& wanted)
{
    for (LoadReport::Protocol& protocol : report.protocols)
    {
        if (auto const found = wanted.find(protocol.typeName); found != wanted.end())
        {
            protocol.lines.push_back(found->second);
        }
    }
}

/// Whether the loaded document differs from the one to be saved. A wanted service counts as enabled although it does
/// not run.
bool IsToBeReplaced(LoadReport::Protocol const& protocol, Wanted const& wanted)
{
    bool const isWanted = wanted.contains(protocol.typeName);
    return std::ranges::any_of(protocol.skipped,
                               [isWanted](std::string const& part) { return !isWanted || part != "enabled"; });
}

/// Forgets the documents that the next save must store: those missing from the job or refused, and unless all was taken
/// over, those that were not, or all of them when the file has faults.
void ForgetWhatIsToBeSaved(JobLoad::Result& result, ArchiveFile::Documents const& documents, Wanted const& wanted)
{
    std::erase_if(result.known, [&](auto const& one) {
        bool const isSkipped = std::ranges::any_of(result.report.protocols, [&](auto const& protocol) {
            return IsToBeReplaced(protocol, wanted) && JobDocument::NameOf(protocol.typeName) == one.first;
        });
        return !JobDocument::HasAccepted(documents.files, JobDocument::TypeNameOf(one.first)) ||
               (!result.isTakenOver && (isSkipped || !documents.faults.empty()));
    });
}

} // namespace

JobLoad::JobLoad(PersistRegistry& usedRegistry, UpdateGate& usedGate, StartRetry& usedRetry)
    : registry(usedRegistry), gate(usedGate), startRetry(usedRetry)
{
}

JobLoad::~JobLoad() = default;

void JobLoad::ResetWhatIsNotIn(Files const& loaded)
{
    GateBracket const bracket(gate);
    ZuControl::IControlManager& controls = registry.Controls();
    for (std::string const& typeName : controls.List())
    {
        if (!JobDocument::HasAccepted(loaded, typeName))
        {
            ZU_GUARD_BOUNDARY([&] {
                controls.GetInstance(typeName).ResetInstance(true, ZuControl::IControlInstance::DataToResetAll);
            });
        }
    }
}

JobLoad::Result JobLoad::Run(JobName const& name, ArchiveFile::Documents documents,
                             std::vector<std::string> const& heldBack)
{
    Result result{{name, {}, {}}, {}, false, registry.ModificationCount()};
    {
        StartRetry::Load const load(startRetry); // first: its destructor's log lines belong to no document
        GateBracket const bracket(gate);
        LoadReporter reporter;
        DocumentStore store(std::move(documents.files), [&](std::string const& asked) { reporter.NoteLookUp(asked); });
        registry.Load(PersistDomain::JOB, store);
        documents.files = store.Take();
        // The next save reports services without a document.
        result.known = SavedDocuments::Collect(registry, PersistDomain::JOB, {}).files;
        result.report = reporter.Report(name, documents, result.known);
    }
    Wanted const wanted = startRetry.Wanted();
    JobDocument::Enable(result.known, SavedDocuments::ToRun(startRetry, heldBack));
    AddWanted(result.report, wanted);
    result.isTakenOver = IsTakenOver(documents, result.modificationCount);
    ForgetWhatIsToBeSaved(result, documents, wanted);
    return result;
}

/// Whether the running configuration equals the file.
bool JobLoad::IsTakenOver(ArchiveFile::Documents const& documents, uint64 countBefore) const
{
    return registry.ModificationCount() == countBefore && documents.faults.empty() &&
           std::ranges::all_of(registry.Controls().List(), [&](std::string const& typeName) {
               return JobDocument::HasAccepted(documents.files, typeName);
           });
}

} // namespace ZuHost
