#pragma once

#include "Host/Store/JobName.h"

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

} // namespace ZuHost
