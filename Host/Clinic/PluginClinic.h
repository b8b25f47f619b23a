#pragma once

#include "Host/CommandLine/Options.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ZuHost
{

class SignedPlugins;

/// Tries plug-ins in child processes, so that a plug-in that crashes or hangs does not take the host with it.
///
/// Call it while this process has a single thread: see ChildProcess.
class PluginClinic final
{
public:
    /// Much longer than any step of a working plug-in takes.
    static constexpr std::chrono::milliseconds LONGEST_SILENCE{5000};

    /// A plug-in that must not be loaded.
    struct Complaint
    {
        std::filesystem::path file;
        std::string sentence; ///< names the file and says what failed
    };

    struct Admission
    {
        std::vector<std::filesystem::path> files; ///< files that may be loaded, in the given order
        std::vector<Complaint> complaints;
        std::vector<std::string> warnings;               ///< sentences about plug-ins that a group can write
        std::shared_ptr<SignedPlugins const> signatures; ///< null if none are asked for

        /// The path from which one of `files` is loaded: that of the checked bytes if signatures are asked for.
        std::filesystem::path LoadPath(std::filesystem::path const& file) const;
    };

    struct CheckUp
    {
        bool isSound;
        std::string report; ///< describes what the plug-in offers, or says what failed
    };

    /// `longestSilence`: how long one step in the life of a plug-in may take.
    /// `newSignatures`: asks each plug-in for a signature; null asks none.
    explicit PluginClinic(Deployment deploymentKind, std::chrono::milliseconds longestSilence = LONGEST_SILENCE,
                          std::shared_ptr<SignedPlugins> newSignatures = nullptr);
    ~PluginClinic();

    PluginClinic(PluginClinic const&) = delete;
    PluginClinic& operator=(PluginClinic const&) = delete;

    /// Refuses each file that everyone can write (see PluginAccess), and each without the signature that is asked for. Loads the others and makes their protocols, all in
    /// one child. After a plug-in that crashes or hangs, the remaining files are tried in a new child.
    ///
    /// A plug-in is refused if one of its protocols has the number of another protocol, of this plug-in or of one admitted
    /// before: the module distinguishes protocols by their numbers, which are known only when the protocols exist.
    Admission Admit(std::vector<std::filesystem::path> files) const;

    /// Runs one plug-in through its whole life: loads, makes, makes again, starts, feeds, stops and destroys it. An
    /// error that it logs meanwhile is a failure too, and so is a type name with other characters than letters and
    /// digits.
    ///
    /// A plug-in with the protocol number or the type name of one of `others` fails too. Of those, a file of the same name
    /// is left out: it is another version of the plug-in.
    CheckUp Check(std::filesystem::path const& file, std::vector<std::filesystem::path> others = {}) const;

private:
    struct Attempt;

    std::string RefusalOf(std::filesystem::path const& file) const;
    std::filesystem::path LoadPath(std::filesystem::path const& file) const;
    std::vector<Attempt> Try(std::vector<std::filesystem::path> files) const;

    Deployment const deployment;
    std::chrono::milliseconds const silence;
    std::shared_ptr<SignedPlugins> const signatures;
};

} // namespace ZuHost
