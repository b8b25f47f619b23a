#pragma once

#include "Support/ScratchFolder.h"

#include <string>
#include <sys/mount.h>

namespace ZuTest
{

/// A file system in memory, if this process may mount one: see `IsMounted`.
class MountedFolder final
{
public:
    /// `size` has the format of mount: "64k".
    explicit MountedFolder(std::string const& size)
        : isMounted(mount("tmpfs", folder.path.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0)
    {
    }

    ~MountedFolder()
    {
        if (isMounted)
        {
            umount2(folder.path.c_str(), MNT_DETACH);
        }
    }

    MountedFolder(MountedFolder const&) = delete;
    MountedFolder& operator=(MountedFolder const&) = delete;

    bool IsMounted() const
    {
        return isMounted;
    }

    std::filesystem::path const& Path() const
    {
        return folder.path;
    }

    /// Makes the file system read-only from now on.
    bool MakeReadOnly() const
    {
        return mount("tmpfs", folder.path.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    ScratchFolder folder;
    bool const isMounted;
};

} // namespace ZuTest
