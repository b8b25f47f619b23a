#include "Host/Clinic/PluginFiles.h"

#include "ZuApi/Exception.h"

#include <algorithm>

namespace ZuHost
{

namespace
{

using Paths = std::vector<std::filesystem::path>;

Paths DefaultFolders()
{
    std::filesystem::path const programFolder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (char const* const folder : {"plugins", ZU_INSTALLED_PLUGINS})
    {
        if (std::filesystem::is_directory(programFolder / folder))
        {
            return {programFolder / folder};
        }
    }
    return {};
}

Paths FilesOf(std::filesystem::path const& folder)
{
    Paths files;
    try
    {
        for (auto const& entry : std::filesystem::directory_iterator(folder))
        {
            if (entry.path().extension() == ".so")
            {
                files.push_back(entry.path());
            }
        }
    }
    catch (std::filesystem::filesystem_error const& error)
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "%s: %s", folder.c_str(), error.code().message().c_str());
    }
    std::ranges::sort(files);
    return files;
}

} // namespace

Paths FindPluginFiles(Paths const& folders)
{
    Paths files;
    for (std::filesystem::path const& folder : folders.empty() ? DefaultFolders() : folders)
    {
        Paths const found = FilesOf(folder);
        files.insert(files.end(), found.begin(), found.end());
    }
    return files;
}

} // namespace ZuHost
