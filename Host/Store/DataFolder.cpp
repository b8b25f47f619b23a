#include "Host/Store/DataFolder.h"

#include "ZuApi/Exception.h"
#include "ZuCommon/Persistence.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr char const* SETTINGS_FILE = "settings.zpset";
constexpr char const* NEW_FILE = ".new-archive"; // cannot be a job: its name begins with a dot
constexpr char const* JOURNAL_SUFFIX = "-journal";

std::filesystem::path JournalOf(std::filesystem::path file)
{
    return file += JOURNAL_SUFFIX;
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
    std::filesystem::create_directories(path, error);
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
    CheckCall(std::rename(newFile.c_str(), target.c_str()), "written", target);
    Synchronise();
}

std::filesystem::path DataFolder::KeepDamaged(std::filesystem::path const& file) const
{
    for (unsigned number = 1;; ++number)
    {
        std::filesystem::path kept = file;
        kept += ".damaged-" + std::to_string(number);
        int const result = link(file.c_str(), kept.c_str());
        if (result == 0 || errno != EEXIST)
        {
            CheckCall(result, "kept", file);
            Synchronise();
            return kept;
        }
    }
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
