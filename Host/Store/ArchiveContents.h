#pragma once

#include <functional>
#include <map>
#include <string>

namespace ZuHost
{

/// What an archive was found to hold.
struct ArchiveContents
{
    /// Bytes by name: "controls/ModbusTcp/config.json".
    using Files = std::map<std::string, std::string, std::less<>>;

    Files entries;
    Files lastGood; ///< what an entry held when it was last known to be good
    Files faults;   ///< entries that cannot be read, and why; an empty name stands for the file as a whole
};

} // namespace ZuHost
