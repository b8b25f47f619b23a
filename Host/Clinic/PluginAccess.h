#pragma once

#include <filesystem>
#include <string>

namespace ZuHost
{

/// Tells which users can write a plug-in or its folder, and so can make the host run other code.
struct PluginAccess
{
    enum class Writers
    {
        OWNER,
        GROUP,
        EVERYONE
    };

    Writers writers = Writers::OWNER;
    std::string sentence; ///< for the user; empty for `OWNER`

    /// Looks at the mode of the file and of the folder that contains it, behind symbolic links. Folders further up and
    /// access control lists are not considered. A file that cannot be looked at has no writers: its load fails.
    static PluginAccess Of(std::filesystem::path const& file);
};

} // namespace ZuHost
