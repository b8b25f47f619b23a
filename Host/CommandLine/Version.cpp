#include "Host/CommandLine/Options.h"
#include "ZuPlugin/PluginEntry.h"

namespace ZuHost
{

extern char const COMMIT[]; // in the source that cmake/Commit.cmake writes

std::string VersionText()
{
    return std::string("zucontrol-host " ZU_VERSION "\ncommit ") + COMMIT + "\n" ZU_PLUGIN_ABI_TEXT "\n";
}

} // namespace ZuHost
