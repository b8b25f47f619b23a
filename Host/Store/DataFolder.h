#pragma once

#include "Host/Store/JobName.h"
#include "wApi/wTypes.h"

#include <filesystem>
#include <vector>

namespace ZuHost
{

/// The folder of the jobs and settings. One host uses it at a time.
///
/// Jobs that clients add have a quota, and leave a reserve on the disk for the saves of the loaded job.
///
/// Each change is durable when the operation returns. Any thread may read; only one thread at a time may change files,
/// apart from the trail's.
class DataFolder final
{
public:
    static constexpr std::size_t MAX_JOBS = 1'000;
    static constexpr uint64 QUOTA_BYTES = 1024 * 1024 * 1024;      ///< of all files in the folder
    static constexpr uint64 LEAST_RESERVE_BYTES = 4 * 1024 * 1024; ///< of the disk
    static constexpr std::size_t KEPT_FILES = 5;                   ///< damaged files that are kept for each file

    /// Makes the folder if it does not exist, for its owner alone. Throws `Zu::Status::BAD_ARGUMENT` with one line for the user when that
    /// fails, when the path is no folder, or when another host uses it.
    explicit DataFolder(std::filesystem::path newPath);
    ~DataFolder();

    DataFolder(DataFolder const&) = delete;
    DataFolder& operator=(DataFolder const&) = delete;

    std::filesystem::path JobFile(JobName const& name) const;

    /// The file of the settings that belong to the protocols and not to a job.
    std::filesystem::path SettingsFile() const;

    /// The file of the trail. Its own thread writes and replaces it.
    std::filesystem::path TrailFile() const;

    /// A sentence for the user if other users can read or write the folder; empty if they cannot.
    std::string WideAccess() const;
    /// The file of the users and tokens.
    std::filesystem::path SecurityFile() const;

    /// The folder of the host's own certificates. It need not exist.
    std::filesystem::path TlsFolder() const;

    /// The names of the jobs, sorted.
    std::vector<JobName> Jobs() const;

    /// A path for a new file. Removes what a crash has left at this path.
    std::filesystem::path NewFile() const;

    /// Atomically replaces `target` with `newFile`.
    void Install(std::filesystem::path const& newFile, std::filesystem::path const& target) const;

    /// As `Install`, for a job that a client adds or replaces. Throws `Zu::Status::FULL` and removes `newFile` if the
    /// folder would hold more than `MAX_JOBS` or `QUOTA_BYTES`, or if the disk would have less room than a save of the
    /// loaded job may need: twice the largest file of the folder, and `LEAST_RESERVE_BYTES` at least.
    void InstallCopy(std::filesystem::path const& newFile, std::filesystem::path const& target) const;

    /// Gives a damaged file a second name, such as ".damaged-1" after its own, and returns it. The first name stays
    /// until a new file is installed there. Removes the oldest of these files beyond `KEPT_FILES`.
    std::filesystem::path KeepDamaged(std::filesystem::path const& file) const;

    /// Removes a file and its journal. Throws `Zu::Status::NOT_FOUND` when there is no file.
    void Remove(std::filesystem::path const& file) const;

private:
    void CheckRoom(std::filesystem::path const& newFile, std::filesystem::path const& target) const;
    std::vector<uint64> KeptNumbers(std::filesystem::path const& file) const;
    void Synchronise() const;

    std::filesystem::path const path;
    int descriptor = -1; // of the folder: holds the lock, and is synchronised
};

} // namespace ZuHost
