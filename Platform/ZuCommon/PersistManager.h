#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <string>
#include <vector>

namespace ZuCommon
{

/// Knows the names of the jobs and which job is loaded.
///
/// This class keeps names only; a store derives from it and loads the contents. A job name may carry the suffix of its
/// file, `JOB_SUFFIX`. Any thread may call; several threads may call at the same time.
class ZUPLATFORM_API PersistManager
{
public:
    static constexpr char const* JOB_SUFFIX = ".zpjob";

    PersistManager();
    explicit PersistManager(std::vector<std::string> jobNames);
    virtual ~PersistManager();

    PersistManager(PersistManager const&) = delete;
    PersistManager& operator=(PersistManager const&) = delete;

    /// Loads a job and returns when it is loaded. Throws `Zu::Status::NOT_FOUND` for an unknown job; the previous job
    /// then stays loaded.
    virtual void LoadJob(std::string const& name);

    /// Returns the name of the loaded job without the suffix; empty before the first load.
    virtual std::string LoadedJob();

    /// Makes a name loadable. Does nothing if it is loadable already. Throws `Zu::Status::BAD_ARGUMENT` for an empty
    /// name.
    void AddJob(std::string const& name);

    /// Returns the loadable names without the suffix, sorted.
    std::vector<std::string> Jobs() const;

    /// Returns `name` without the suffix.
    static std::string NameWithoutSuffix(std::string const& name);

private:
    mutable Zu::Mutex lock;                            // a leaf: no other lock is taken under it
    std::vector<std::string> jobs ZU_GUARDED_BY(lock); // sorted
    std::string loadedJob ZU_GUARDED_BY(lock);
};

} // namespace ZuCommon
