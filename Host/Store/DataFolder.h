#pragma once

#include "Host/Store/JobName.h"

#include <filesystem>
#include <vector>

namespace ZuHost
{

/// The folder of the jobs and settings. One host uses it at a time.
///
/// Each change is durable when the operation returns. Any thread may read; only one thread at a time may change files.
class DataFolder final
{
public:
    /// Makes the folder if it does not exist. Throws `Zu::Status::BAD_ARGUMENT` with one line for the user when that
    /// fails, when the path is no folder, or when another host uses it.
    explicit DataFolder(std::filesystem::path newPath);
    ~DataFolder();

    DataFolder(DataFolder const&) = delete;
    DataFolder& operator=(DataFolder const&) = delete;

    std::filesystem::path JobFile(JobName const& name) const;

    /// The file of the settings that belong to the protocols and not to a job.
    std::filesystem::path SettingsFile() const;

    /// The names of the jobs, sorted.
    std::vector<JobName> Jobs() const;

    /// A path for a new file. Removes what a crash has left at this path.
    std::filesystem::path NewFile() const;

    /// Atomically replaces `target` with `newFile`.
    void Install(std::filesystem::path const& newFile, std::filesystem::path const& target) const;

    /// Gives a damaged file a second name, such as ".damaged-1" after its own, and returns it. The first name stays
    /// until a new file is installed there.
    std::filesystem::path KeepDamaged(std::filesystem::path const& file) const;

    /// Removes a file and its journal. Throws `Zu::Status::NOT_FOUND` when there is no file.
    void Remove(std::filesystem::path const& file) const;

private:
    void Synchronise() const;

    std::filesystem::path const path;
    int descriptor = -1; // of the folder: holds the lock, and is synchronised
};

} // namespace ZuHost
