#pragma once

#include "Host/Store/ArchiveFile.h"
#include "Host/Store/JobName.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuHost
{

/// The result of loading a job.
struct LoadReport
{
    /// The parts of a document are the members of "zu:control": "enabled", "parameters", "outputs",
    /// "registerAssemblyList".
    struct Protocol
    {
        std::string typeName;
        bool isInJob = false;        ///< if false, the job has no document for it and the protocol stayed as it was
        bool isFromLastGood = false; ///< its own document could not be read; its last good state was used
        bool isRefused = false;      ///< the document was not applied: the protocol stayed as it was
        std::vector<std::string> takenOver; ///< parts that have the values of the job
        std::vector<std::string> reset;     ///< parts that the job does not name and that have their defaults
        std::vector<std::string> skipped;   ///< parts that the job names and that have other values
        std::vector<std::string> lines;     ///< the user's log lines about it, in order

        bool operator==(Protocol const&) const = default;
    };

    JobName job;
    std::vector<std::string> faults; ///< faults of the file
    std::vector<Protocol> protocols; ///< in the order of the load
};

/// Observes a load on the thread that made the object, from construction to destruction, and reports the result.
///
/// A log line for the user belongs to the protocol of the last document looked up. To find the parts that were taken
/// over, the reporter compares the loaded documents with the documents of a save after the load.
class LoadReporter final
{
public:
    LoadReporter();
    ~LoadReporter();

    LoadReporter(LoadReporter const&) = delete;
    LoadReporter& operator=(LoadReporter const&) = delete;

    /// The load asks for the document `name`.
    void NoteLookUp(std::string const& name);

    /// `now`: the documents that a save gives after the load.
    LoadReport Report(JobName const& job, ArchiveFile::Documents const& loaded,
                      ArchiveContents::Files const& now) const;

private:
    class Sink;

    std::shared_ptr<Sink> const sink;
};

} // namespace ZuHost
