#include "ZuCommon/Persistence.h"

#include "ZuApi/Exception.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace ZuCommon
{

PersistManager::PersistManager() = default;

PersistManager::PersistManager(std::vector<std::string> jobNames)
{
    for (std::string const& name : jobNames)
    {
        AddJob(name);
    }
}

PersistManager::~PersistManager() = default;

void PersistManager::LoadJob(std::string const& name)
{
    std::string job = NameWithoutSuffix(name);
    Zu::MutexLock const guard(lock);
    if (!std::ranges::binary_search(jobs, job))
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no job '%s'", name.c_str());
    }
    loadedJob = std::move(job);
}

std::string PersistManager::LoadedJob()
{
    Zu::MutexLock const guard(lock);
    return loadedJob;
}

void PersistManager::AddJob(std::string const& name)
{
    std::string job = NameWithoutSuffix(name);
    if (job.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A job must have a name");
    }
    Zu::MutexLock const guard(lock);
    auto const position = std::ranges::lower_bound(jobs, job);
    if (position == jobs.end() || *position != job)
    {
        jobs.insert(position, std::move(job));
    }
}

std::vector<std::string> PersistManager::Jobs() const
{
    Zu::MutexLock const guard(lock);
    return jobs;
}

std::string PersistManager::NameWithoutSuffix(std::string const& name)
{
    return name.ends_with(JOB_SUFFIX) ? name.substr(0, name.size() - std::strlen(JOB_SUFFIX)) : name;
}

} // namespace ZuCommon
