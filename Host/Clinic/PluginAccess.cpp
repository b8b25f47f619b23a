#include "Host/Clinic/PluginAccess.h"

namespace ZuHost
{

namespace
{

using Perms = std::filesystem::perms;

PluginAccess::Writers WritersOf(std::filesystem::path const& place)
{
    std::error_code error;
    std::filesystem::file_status const status = std::filesystem::status(place, error);
    if (error || !std::filesystem::exists(status))
    {
        return PluginAccess::Writers::OWNER;
    }
    if ((status.permissions() & Perms::others_write) != Perms::none)
    {
        return PluginAccess::Writers::EVERYONE;
    }
    return (status.permissions() & Perms::group_write) != Perms::none ? PluginAccess::Writers::GROUP
                                                                      : PluginAccess::Writers::OWNER;
}

} // namespace

PluginAccess PluginAccess::Of(std::filesystem::path const& file)
{
    std::error_code error;
    std::filesystem::path const real = std::filesystem::canonical(file, error); // a link has no mode of its own
    std::filesystem::path const given = std::filesystem::absolute(file, error).parent_path();
    PluginAccess access;
    for (std::filesystem::path const& place : {real, real.parent_path(), given})
    {
        Writers const writers = WritersOf(place);
        if (writers <= access.writers)
        {
            continue;
        }
        access.writers = writers;
        access.sentence = writers == Writers::EVERYONE
                              ? "Plug-in " + file.string() + " was refused: everyone can write " + place.string() +
                                    ". Take that right away with: chmod o-w " + place.string()
                              : "Plug-in " + file.string() + " can be changed by the group of " + place.string() +
                                    ". If only its owner is to change it: chmod g-w " + place.string();
    }
    return access;
}

} // namespace ZuHost
