#pragma once

#include <filesystem>
#include <vector>

namespace ZuHost
{

/// The files "*.so" of these folders, folder by folder and by name within each. For no folder those of "plugins" beside the
/// program, or of where an installed program has its plug-ins. Throws -998 for a folder that cannot be read.
std::vector<std::filesystem::path> FindPluginFiles(std::vector<std::filesystem::path> const& folders);

} // namespace ZuHost
