#pragma once

#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlVitals.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace ZuHost
{

/// Tries again to start the services that a job or the command line enables but that failed to start.
///
/// Such a service is wanted until an attempt succeeds, a request names its "enabled", or a job is loaded. The first
/// attempt follows after a second, each later one after twice the wait before it, up to a minute. Meanwhile a problem
/// tells the user why the service does not run, and the job manager saves the service as enabled. The module is not
/// told: it shows the service as disabled.
/// Threads: any thread may call, except that `Run` and `Stop` belong to the owner. The thread "StartRetry" makes the
/// attempts, one after the other; an attempt that hangs holds up the others.
class StartRetry final
{
public:
    static constexpr uint64 FIRST_WAIT_USEC = 1'000'000;
    static constexpr uint64 LONGEST_WAIT_USEC = 60'000'000;

    /// The operations of the host that the attempts use.
    struct Services
    {
        /// Runs `work` on the calling thread as the only change of the service's resources.
        std::function<void(std::string const& typeName, std::function<void()> const& work)> runAsChange;

        std::function<void(std::string const& typeName)> start; ///< throws when the service does not start
        std::function<std::vector<ZuControl::ControlVitals::FailedStarts>()> failedStarts; ///< those of the module
        std::function<void()> noteChange;                                                  ///< has the job saved
    };

    /// A moment in microseconds, as `wTime_NowUsec`.
    using Clock = std::function<uint64()>;

    /// One load of a job, on the thread that makes it. The constructor ends all wishes. After the destructor the
    /// services that failed to start during the load are wanted.
    class Load final
    {
    public:
        explicit Load(StartRetry& usedRetry);
        ~Load();

        Load(Load const&) = delete;
        Load& operator=(Load const&) = delete;

    private:
        StartRetry& retry;
        std::map<std::string, uint64> const countsBefore;
    };

    /// `problemsManager` and all that `newServices` use outlive this.
    StartRetry(ZuCommon::ProblemsManager& problemsManager, Services newServices, Clock newClock = wTime_NowUsec);
    ~StartRetry(); ///< stops, and ends its problems

    StartRetry(StartRetry const&) = delete;
    StartRetry& operator=(StartRetry const&) = delete;

    /// From now on attempts are made.
    void Run();

    /// Waits for an attempt that is running; none follows it. A wanted service stays wanted.
    void Stop();

    /// Starts a service on this thread; when that fails it is wanted. A service that is wanted already is left to the
    /// attempts.
    void Start(std::string const& typeName);

    /// Carries out a client's update of a document: see ZuRest::ResourceRequestProcessor::UpdateRunner. A service is
    /// not wanted any more after a request that names "enabled", unless the request is refused before it has started
    /// the service. After any other change of a wanted service the waits begin anew.
    void RunUpdate(std::string const& path, nlohmann::json const& body, std::function<void()> const& update);

    /// The services that are wanted, each with the sentence that tells the user about it.
    std::map<std::string, std::string> Wanted() const;

    /// Makes the attempts that are due. The thread "StartRetry" calls it; other threads call it only while that does
    /// not run.
    void TryDue();

    /// When the next attempt is due; wTIMEOUT_INFINITE while nothing is wanted.
    uint64 NextUsec() const;

private:
    struct Wish
    {
        std::string reason;
        std::string sentence;
        uint64 waitUsec = 0; ///< from the last failure to the next attempt
        uint64 dueUsec = 0;
        ZuCommon::ProblemsManager::Iterator problem;
    };

    static int Main(void* argument);
    bool WaitUntilDue();
    std::vector<std::string> TakeDue();
    void Try(std::string const& typeName);
    void Want(std::string const& typeName, std::string const& reason);
    void BeginAnew(std::string const& typeName);
    void Schedule(std::string const& typeName, Wish& wish, uint64 waitUsec);
    bool Forget(std::string const& typeName);
    void ForgetAll();
    bool IsWanted(std::string const& typeName) const;
    bool IsEnding() const;
    uint64 NextUsecLocked() const ZU_REQUIRES(lock);
    std::map<std::string, uint64> FailureCounts() const;
    std::string ReasonFor(std::string const& typeName) const;

    ZuCommon::ProblemsManager& problems;
    Services const services;
    Clock const clock;

    mutable Zu::Mutex lock; // held while problems are added and removed; never while a service is called
    Zu::CondVar changed;
    std::map<std::string, Wish> wishes ZU_GUARDED_BY(lock); // by type name
    bool isEnding ZU_GUARDED_BY(lock) = false;

    wThread thread; // last: it uses all members above
};

} // namespace ZuHost
