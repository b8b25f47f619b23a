#pragma once

#include <functional>
#include <map>
#include <string>

namespace ZuHost
{

/// The entries of an archive, and its faults.
struct ArchiveContents
{
    /// Bytes by name: "controls/ModbusTcp/config.json".
    using Files = std::map<std::string, std::string, std::less<>>;

    Files entries;
    Files lastGood; ///< the last state of an entry that was known to be good
    Files faults;   ///< entries that cannot be read, and why; an empty name stands for the file as a whole
};

} // namespace ZuHost
