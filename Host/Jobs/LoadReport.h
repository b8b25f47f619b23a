#pragma once

#include <string>
#include <vector>

namespace ZuHost
{

/// What became of a job that was loaded.
struct LoadReport
{
    /// The parts of a document are those of "zu:control": "enabled", "parameters", "outputs", "registerAssemblyList".
    struct Protocol
    {
        std::string typeName;
        bool isInJob = false;               ///< without a document the protocol stays as it was
        bool isFromLastGood = false;        ///< its own document could not be read
        bool isRefused = false;             ///< the document was not applied at all: the protocol stayed as it was
        std::vector<std::string> takenOver; ///< parts that read as the job says
        std::vector<std::string> reset;     ///< parts that the job does not name: they have their defaults
        std::vector<std::string> skipped;   ///< parts that the job names and that read differently
        std::vector<std::string> lines;     ///< what the user was told of it, in order

        bool operator==(Protocol const&) const = default;
    };

    std::string job;
    std::vector<std::string> faults; ///< what was wrong with the file
    std::vector<Protocol> protocols; ///< in the order of the load
};

} // namespace ZuHost
