#include "Host/Security/SecurityStore.h"

#include "Host/Store/Archive.h"
#include "ZuApi/Exception.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr mode_t OWNER_ONLY = S_IRUSR | S_IWUSR;

/// Throws when the last call of the system has failed.
void CheckCall(bool isDone, std::filesystem::path const& file)
{
    if (!isDone)
    {
        ZU_THROW(Zu::Status::FAILURE, "The file '%s' of users and tokens cannot be used: %s", file.filename().c_str(),
                 std::strerror(errno));
    }
}

void Write(std::filesystem::path const& file, std::string const& name, nlohmann::json const& document)
{
    constexpr auto WITHOUT_COPY = [](std::string_view) { return false; };
    Archive(file, SqliteFile::Access::CREATE).WriteGood({{name, document.dump()}}, WITHOUT_COPY);
}

/// Makes a file for its owner only, empty. SQLite gives its journal the same rights.
void MakeEmpty(std::filesystem::path const& file)
{
    unlink(file.c_str()); // a crash may have left it, with its journal
    unlink((file.string() + "-journal").c_str());
    int const made = open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, OWNER_ONLY);
    CheckCall(made >= 0, file);
    close(made);
}

void SynchroniseFolder(std::filesystem::path const& file)
{
    int const folder = open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    bool const isDone = folder >= 0 && fsync(folder) == 0;
    close(folder);
    CheckCall(isDone, file);
}

[[noreturn]] void FailDamaged(std::filesystem::path const& file, std::string const& fault)
{
    ZU_THROW(Zu::Status::BAD_FORMAT, "The file '%s' of users and tokens is damaged (%s)", file.filename().c_str(),
             fault.c_str());
}

} // namespace

SecurityStore::SecurityStore(std::filesystem::path newFile) : file(std::move(newFile))
{
    struct stat status = {};
    if (stat(file.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
    {
        CheckCall(chmod(file.c_str(), OWNER_ONLY) == 0, file);
    }
}

SecurityStore::~SecurityStore() = default;

nlohmann::json SecurityStore::Load(std::string const& name) const
{
    Zu::MutexLock const guard(lock);
    if (!std::filesystem::exists(file))
    {
        return nullptr;
    }
    CheckSound();
    ArchiveContents contents = Archive(file, SqliteFile::Access::READ).ReadEntries();
    if (!contents.faults.empty())
    {
        FailDamaged(file, contents.faults.begin()->second);
    }
    auto const found = contents.entries.find(name);
    if (found == contents.entries.end())
    {
        return nullptr;
    }
    nlohmann::json document = nlohmann::json::parse(found->second, nullptr, false);
    if (document.is_discarded())
    {
        FailDamaged(file, "'" + name + "' is not valid JSON");
    }
    return document;
}

void SecurityStore::Save(std::string const& name, nlohmann::json const& document)
{
    Zu::MutexLock const guard(lock);
    if (std::filesystem::exists(file))
    {
        CheckSound();
        Write(file, name, document);
        return;
    }
    std::filesystem::path newFile = file;
    newFile += ".new";
    MakeEmpty(newFile);
    Write(newFile, name, document);
    CheckCall(std::rename(newFile.c_str(), file.c_str()) == 0, file); // so a file is never half made
    SynchroniseFolder(file);
}

void SecurityStore::CheckSound() const
{
    Archive archive(file, SqliteFile::Access::READ);
    std::string fault = archive.FindFault();
    if (fault.empty() && !archive.HasTable())
    {
        fault = "it has no table 'sqlar'";
    }
    if (!fault.empty())
    {
        FailDamaged(file, fault);
    }
}

} // namespace ZuHost
