#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ZuHost
{

/// The folder in which jobs and settings live, for one host at a time.
///
/// What becomes of a file in it is durable when the operation returns. Any thread may read; one at a time changes.
class DataFolder final
{
public:
    /// Makes the folder when it is not there. Throws -997 with one clear line when that fails, when it is no folder or when
    /// another host has it.
    explicit DataFolder(std::filesystem::path newPath);
    ~DataFolder();

    DataFolder(DataFolder const&) = delete;
    DataFolder& operator=(DataFolder const&) = delete;

    /// Where the job of this name lives. Throws -997 for what cannot be a name.
    std::filesystem::path JobFile(std::string const& name) const;

    /// What belongs to the protocols, whatever job is loaded.
    std::filesystem::path SettingsFile() const;

    /// The names of the jobs, sorted.
    std::vector<std::string> Jobs() const;

    /// A name for a file that is not there yet; what a crash left of an earlier one is removed.
    std::filesystem::path NewFile() const;

    /// Puts `newFile` in the place of `target`, at one stroke.
    void Install(std::filesystem::path const& newFile, std::filesystem::path const& target) const;

    /// Gives a damaged file a second name, ".damaged-1" behind its own, and tells which. The first one stays until a new file is
    /// installed there.
    std::filesystem::path KeepDamaged(std::filesystem::path const& file) const;

    /// Removes a file and what a crash left beside it. Throws -999 when there is none.
    void Remove(std::filesystem::path const& file) const;

private:
    void Synchronise() const;

    std::filesystem::path const path;
    int descriptor = -1; // of the folder: holds the lock, and is what is synchronised
};

} // namespace ZuHost
