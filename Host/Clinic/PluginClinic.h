#pragma once

#include "Host/CommandLine/Options.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace ZuHost
{

/// Tries plug-ins out in child processes, so that one that dies, hangs or throws does so there and not in the sensor.
///
/// To be asked while this process has a single thread: see ChildProcess.
class PluginClinic final
{
public:
    /// Far more than a plug-in takes that comes to an end at all.
    static constexpr std::chrono::milliseconds LONGEST_SILENCE{5000};

    /// A plug-in that must not be taken in.
    struct Complaint
    {
        std::filesystem::path file;
        std::string sentence; ///< names the file and says what failed
    };

    struct Admission
    {
        std::vector<std::filesystem::path> files; ///< that may be taken in, in the given order
        std::vector<Complaint> complaints;
    };

    struct CheckUp
    {
        bool isSound;
        std::string report; ///< what the plug-in offers, in lines; or the sentence that says what failed
    };

    /// `longestSilence`: how long one station in the life of a plug-in may take.
    explicit PluginClinic(Deployment deploymentKind, std::chrono::milliseconds longestSilence = LONGEST_SILENCE);

    /// Loads each file and makes its protocols. All are tried in one process; each that dies or hangs costs one more.
    Admission Admit(std::vector<std::filesystem::path> files) const;

    /// Leads one plug-in through its whole life: loads, makes, starts, feeds, stops and destroys it. An error that it writes
    /// to the log meanwhile counts as a failure too.
    CheckUp Check(std::filesystem::path const& file) const;

private:
    Deployment const deployment;
    std::chrono::milliseconds const silence;
};

} // namespace ZuHost
