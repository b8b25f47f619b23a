#include "Host/Store/DataFolder.h"

#include "ZuApi/Exception.h"
#include "ZuCommon/Persistence.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

using Perms = std::filesystem::perms;

constexpr char const* SETTINGS_FILE = "settings.zpset";
constexpr char const* TLS_FOLDER = "tls";
constexpr char const* TRAIL_FILE = "audit.zplog";
constexpr char const* SECURITY_FILE = "security.zpset";
constexpr char const* NEW_FILE = ".new-archive"; // cannot be a job: its name begins with a dot
constexpr char const* JOURNAL_SUFFIX = "-journal";

std::filesystem::path JournalOf(std::filesystem::path file)
{
    return file += JOURNAL_SUFFIX;
}

std::filesystem::path KeptName(std::filesystem::path file, uint64 number)
{
    return file += ".damaged-" + std::to_string(number);
}

/// Takes the rights of other users away. Ignores a file that does not exist or belongs to another user.
void RestrictToOwner(std::filesystem::path const& file)
{
    std::error_code error;
    std::filesystem::permissions(file, Perms::owner_read | Perms::owner_write,
                                 std::filesystem::perm_options::replace | std::filesystem::perm_options::nofollow,
                                 error);
}

void CheckCall(int result, char const* what, std::filesystem::path const& file)
{
    if (result != 0)
    {
        ZU_THROW(errno == ENOENT ? Zu::Status::NOT_FOUND : Zu::Status::FAILURE, "The file '%s' cannot be %s: %s",
                 file.filename().c_str(), what, std::strerror(errno));
    }
}

} // namespace

DataFolder::DataFolder(std::filesystem::path newPath) : path(std::move(newPath))
{
    std::error_code error;
    if (std::filesystem::create_directories(path, error))
    {
        std::filesystem::permissions(path, Perms::owner_all, error);
    }
    descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The data folder '%s' cannot be used: %s", path.c_str(),
                 error ? error.message().c_str() : std::strerror(errno));
    }
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    {
        close(descriptor);
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The data folder '%s' belongs to another host that runs", path.c_str());
    }
    // The host also starts on a file system that has no locks or is read-only.
    RestrictToOwner(SettingsFile()); // it may hold secrets
    RestrictToOwner(TrailFile());
}

DataFolder::~DataFolder()
{
    close(descriptor);
}

std::filesystem::path DataFolder::JobFile(JobName const& name) const
{
    return path / name.FileName();
}

std::filesystem::path DataFolder::SettingsFile() const
{
    return path / SETTINGS_FILE;
}

std::filesystem::path DataFolder::TrailFile() const
{
    return path / TRAIL_FILE;
}

std::filesystem::path DataFolder::SecurityFile() const
{
    return path / SECURITY_FILE;
}

std::string DataFolder::WideAccess() const
{
    std::error_code error;
    Perms const rights = std::filesystem::status(path, error).permissions();
    if (error || (rights & (Perms::group_all | Perms::others_all)) == Perms::none)
    {
        return {};
    }
    return "Other users can reach the data folder '" + path.string() + "'. To keep them out: chmod 700 " +
           path.string();
}

std::filesystem::path DataFolder::TlsFolder() const
{
    return path / TLS_FOLDER;
}

std::vector<JobName> DataFolder::Jobs() const
{
    std::vector<JobName> jobs;
    for (auto const& entry : std::filesystem::directory_iterator(path))
    {
        std::error_code error;
        std::optional<JobName> name = JobName::OfFile(entry.path().filename().string());
        if (name.has_value() && entry.is_regular_file(error))
        {
            jobs.push_back(std::move(*name));
        }
    }
    std::ranges::sort(jobs);
    return jobs;
}

std::filesystem::path DataFolder::NewFile() const
{
    std::filesystem::path file = path / NEW_FILE;
    std::error_code error; // ignored: making the file in a read-only folder fails later
    std::filesystem::remove(JournalOf(file), error);
    std::filesystem::remove(file, error);
    return file;
}

void DataFolder::Install(std::filesystem::path const& newFile, std::filesystem::path const& target) const
{
    // SQLite would apply a journal of the old file to the new one.
    int const removed = unlink(JournalOf(target).c_str());
    CheckCall(removed != 0 && errno == ENOENT ? 0 : removed, "removed", JournalOf(target));
    if (target == SettingsFile())
    {
        RestrictToOwner(newFile);
    }
    CheckCall(std::rename(newFile.c_str(), target.c_str()), "written", target);
    Synchronise();
}

void DataFolder::InstallCopy(std::filesystem::path const& newFile, std::filesystem::path const& target) const
{
    try
    {
        CheckRoom(newFile, target);
    }
    catch (...)
    {
        unlink(newFile.c_str());
        throw;
    }
    Install(newFile, target);
}

/// `newFile` exists and takes its room already.
void DataFolder::CheckRoom(std::filesystem::path const& newFile, std::filesystem::path const& target) const
{
    std::size_t jobs = 1;
    uint64 bytes = 0;
    uint64 largest = 0;
    for (auto const& entry : std::filesystem::directory_iterator(path))
    {
        std::error_code error;
        uint64 const size = entry.is_regular_file(error) ? entry.file_size(error) : 0;
        if (error || entry.path() == target)
        {
            continue;
        }
        jobs += JobName::OfFile(entry.path().filename().string()).has_value() ? 1 : 0;
        bytes += size;
        largest = entry.path() == TrailFile() ? largest : std::max(largest, size); // no job
    }
    if (jobs > MAX_JOBS || bytes > QUOTA_BYTES)
    {
        ZU_THROW(Zu::Status::FULL,
                 "The data folder would hold %zu jobs and %llu bytes in all; it may hold %zu and %llu: delete a job",
                 jobs, static_cast<unsigned long long>(bytes), MAX_JOBS, static_cast<unsigned long long>(QUOTA_BYTES));
    }
    struct statvfs disk = {};
    CheckCall(statvfs(newFile.c_str(), &disk), "written", newFile);
    uint64 const room = static_cast<uint64>(disk.f_bavail) * disk.f_frsize;
    uint64 const reserve = std::max(LEAST_RESERVE_BYTES, 2 * largest);
    bool const isKnown = disk.f_blocks != 0; // some file systems do not tell
    if (isKnown && room < reserve)
    {
        ZU_THROW(Zu::Status::FULL,
                 "The disk would have room for %llu bytes; %llu are reserved for the loaded job: delete a job",
                 static_cast<unsigned long long>(room), static_cast<unsigned long long>(reserve));
    }
}

std::filesystem::path DataFolder::KeepDamaged(std::filesystem::path const& file) const
{
    std::vector<uint64> const numbers = KeptNumbers(file);
    std::filesystem::path kept = KeptName(file, numbers.empty() ? 1 : numbers.back() + 1);
    CheckCall(link(file.c_str(), kept.c_str()), "kept", file);
    for (std::size_t i = 0; i + KEPT_FILES <= numbers.size(); ++i)
    {
        unlink(KeptName(file, numbers[i]).c_str()); // a failure leaves the file for the next time
    }
    Synchronise();
    return kept;
}

/// The numbers of the kept damaged files of `file`, the oldest first.
std::vector<uint64> DataFolder::KeptNumbers(std::filesystem::path const& file) const
{
    std::vector<uint64> numbers;
    std::string const head = KeptName(file, 0).filename().string();
    std::string_view const start = std::string_view(head).substr(0, head.size() - 1);
    for (auto const& entry : std::filesystem::directory_iterator(path))
    {
        std::string const name = entry.path().filename().string();
        uint32 number = 0; // of 32 bits, so that the next one is a number too
        if (!name.starts_with(start))
        {
            continue;
        }
        char const* const end = name.data() + name.size();
        auto const result = std::from_chars(name.data() + start.size(), end, number);
        if (result.ec == std::errc{} && result.ptr == end)
        {
            numbers.push_back(number);
        }
    }
    std::ranges::sort(numbers);
    return numbers;
}

void DataFolder::Remove(std::filesystem::path const& file) const
{
    CheckCall(unlink(file.c_str()), "removed", file);
    Synchronise(); // before the journal goes: otherwise a crash could leave half a transaction
    unlink(JournalOf(file).c_str());
}

void DataFolder::Synchronise() const
{
    CheckCall(fsync(descriptor), "synchronised", path / ".");
}

} // namespace ZuHost
