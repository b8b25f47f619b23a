#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <string>
#include <vector>

namespace ZuCommon
{

/// Knows the jobs and which one is loaded.
///
/// This one keeps names only; a store derives from it and does the loading. A name may carry the suffix of its file,
/// `JOB_SUFFIX`. Any thread may call, several at once.
class ZUPLATFORM_API PersistManager
{
public:
    static constexpr char const* JOB_SUFFIX = ".zpjob";

    PersistManager();
    explicit PersistManager(std::vector<std::string> jobNames);
    virtual ~PersistManager();

    PersistManager(PersistManager const&) = delete;
    PersistManager& operator=(PersistManager const&) = delete;

    /// Loads a job before it returns. Throws -999 for one that does not exist, and then the job before stays loaded.
    virtual void LoadJob(std::string const& name);

    /// Name of the loaded job, without the suffix; empty before the first.
    virtual std::string LoadedJob();

    /// Makes a name loadable. Nothing happens when it is already. Throws -997 for an empty one.
    void AddJob(std::string const& name);

    /// The loadable names without the suffix, sorted.
    std::vector<std::string> Jobs() const;

    /// `name` without the suffix.
    static std::string NameWithoutSuffix(std::string const& name);

private:
    mutable Zu::Mutex lock;                            // a leaf
    std::vector<std::string> jobs ZU_GUARDED_BY(lock); // sorted
    std::string loadedJob ZU_GUARDED_BY(lock);
};

} // namespace ZuCommon
