#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ZuCommon
{

/// The owner of a stored setting. Other values are passed on unchanged.
enum class PersistDomain : int32
{
    PROTOCOL = 1, ///< the protocol, independent of the loaded job
    JOB = 2       ///< the loaded job
};

/// Named documents of one domain, as bytes. A path looks like "/folder/name.json".
class ZUPLATFORM_API IPersistStore
{
public:
    virtual ~IPersistStore();

    /// Returns the bytes at `path`. Throws `Zu::Status::NOT_FOUND` if there are none.
    virtual std::string Read(std::string const& path) const = 0;

    /// Replaces the bytes at `path` by a copy of `data`.
    virtual void Write(std::string const& path, void const* data, std::size_t size) = 0;

    virtual bool Exists(std::string const& path) const = 0;
};

/// A component with stored settings. The host calls the operations on the thread of its own operation, one at a time.
/// An exception ends the host's operation: later components are not called.
class ZUPLATFORM_API IPersistHandler
{
public:
    virtual ~IPersistHandler(); // slot order is part of the interface: append only

    /// The name of the component, for logs and lists.
    virtual std::string Component() = 0;

    /// Resets the settings of this domain to their defaults. Comes before the load.
    virtual void InitPersistDomain(PersistDomain domain, IPersistStore& store) = 0;

    virtual void LoadPersistDomain(PersistDomain domain, IPersistStore const& store) = 0;

    virtual void SavePersistDomain(PersistDomain domain, IPersistStore& store) = 0;
};

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
