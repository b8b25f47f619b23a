#pragma once

#include <filesystem>
#include <vector>

namespace ZuHost
{

/// Finds the files "*.so" of these folders, sorted by name within each folder. Without folders, searches "plugins"
/// beside the program, or the plug-in folder of an installed program. Throws `Zu::Status::NOT_OFFERED` for a folder
/// that cannot be read.
std::vector<std::filesystem::path> FindPluginFiles(std::vector<std::filesystem::path> const& folders);

} // namespace ZuHost
