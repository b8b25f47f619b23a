#pragma once

#include "Host/Jobs/LoadReport.h"
#include "Host/Store/ArchiveFile.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuHost
{

class PersistRegistry;
class StartRetry;
class UpdateGate;

/// Applies the documents of a job to the services, and finds out which of them they took over. One load at a time.
class JobLoad final
{
public:
    using Files = ArchiveContents::Files;

    struct Result
    {
        LoadReport report;
        Files known; ///< documents that the file holds as the services have them: the next save need not store them
        bool isTakenOver;         ///< whether the running configuration equals the file
        uint64 modificationCount; ///< of the registry, before the load
    };

    /// All arguments outlive this.
    JobLoad(PersistRegistry& usedRegistry, UpdateGate& usedGate, StartRetry& usedRetry);
    ~JobLoad();

    JobLoad(JobLoad const&) = delete;
    JobLoad& operator=(JobLoad const&) = delete;

    /// At the start no job was loaded before: resets each service to its defaults that has no document in `loaded`
    /// which a load applies.
    void ResetWhatIsNotIn(Files const& loaded);

    /// Loads the documents. The services in `heldBack` count as enabled.
    Result Run(JobName const& name, ArchiveFile::Documents documents, std::vector<std::string> const& heldBack);

private:
    bool IsTakenOver(ArchiveFile::Documents const& documents, uint64 countBefore) const;

    PersistRegistry& registry;
    UpdateGate& gate;
    StartRetry& startRetry;
};

} // namespace ZuHost
