#pragma once

#include "Plugins/Common/ICommandRunner.h"
#include "Plugins/Common/ITcpConversation.h"
#include "Plugins/Common/StateFetcher.h"
#include "Plugins/Common/TcpMetrics.h"
#include "Plugins/Common/TcpParams.h"
#include "Plugins/Common/TcpServer.h"
#include "ZuApi/Signal.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "wApi/wMutex.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace ZuControl
{
class ServiceNotices;
}

namespace PluginCommon
{

/// The base of the protocols that serve TCP clients: the server with its I/O thread, start and stop, parameters, client
/// count, registration at the result fan-out, state of system and scanner, commands and metrics.
///
/// A service derives from it, has its records as members, and calls `InitService` in its constructor. It implements
/// `MakeConversation`, and `ProcessResultSets` if its clients get results.
///
/// The destructor of the derived class calls `EndService` first: until then the I/O thread and the dispatcher's thread
/// use its members.
///
/// Threads: the threads of the REST service and of the host call the public operations. The dispatcher's thread delivers
/// results. The I/O thread "<type name>.Io" makes and runs the conversations and begins commands. The thread
/// "<type name>.State" fetches the state. No operation here waits for the end of a system operation, so a job that a
/// client loads can stop and start this service.
class TcpServiceProtocol : public ZuControl::ControlProtocol::ProtocolBase, protected ICommandRunner
{
public:
    ~TcpServiceProtocol() override;

    /// Shows the counters and the address. Calls `ShowMetrics` first.
    Zu::Properties::Structure& UpdateMetrics() override;

    void ResetMetrics() override;

    /// Applies the parameters. A new port or address replaces the listener; the connections stay. If it is refused, the
    /// service goes on at the old address and the exception tells why.
    ///
    /// A refused update leaves no trace: before it throws, the parameters are restored to those of the last accepted
    /// update, start or reset, whichever came last, and applied. If that fails, too, a problem names both failures.
    void ParamsUpdate() override;

    /// Sets the defaults. A running service keeps its settings until the next update or start: a load resets the
    /// parameters before it sets those of the job, and the default port in between would drop all clients.
    void ResetParams() override;

    /// Does nothing if the service runs. Throws as TcpServer::Start does; then nothing runs. A running service that every
    /// machine of a network may use is a problem.
    void Start() override;
    void Stop() override;

    // Registration also reports the data sources and the number of clients to the fan-out, which has neither for a new
    // job.
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;

    /// Takes the control drops so far as the number from which drops of this scan count.
    void OnStartScan() override;

protected:
    struct Identity
    {
        ZuControl::ZuEthernetProtocol number; ///< unique among all protocols
        char const* typeName;                 ///< begins the names of the threads
        char const* displayName;
        /// A client that takes no pending bytes for this time is dropped. Zero: the idle timeout.
        std::chrono::microseconds writeTimeout{0};
        /// Whether results are delivered from start to stop, also while no client is connected: for a service that shows
        /// the newest values to masters that connect for each read. The fan-out then counts the service as a client.
        bool isLive = false;
    };

    /// Members of the derived class.
    struct Records
    {
        TcpParams& params;
        TcpMetrics& metrics;
        TcpCounters& counters;
    };

    /// Throws `Zu::Status::BAD_ARGUMENT` for an `environ` without a data cache or a problems manager, and as the base
    /// class does.
    TcpServiceProtocol(Identity const& identity, ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);

    /// Call it once, in the constructor, in place of `Init`. Sets the parameters and the metrics of `initParams`; the
    /// caller sets the rest.
    void InitService(Records const& records, ZuControl::ControlProtocol::ProtocolInitParams initParams = {});

    /// Stops the service: after it, no thread calls the derived class.
    void EndService() noexcept;

    /// Makes the conversation with a new client. Called on the I/O thread.
    virtual std::unique_ptr<ITcpConversation> MakeConversation() = 0;

    /// Applies the parameters of the derived class. Called at each start and each update of the parameters, one call at
    /// a time. If it throws, the start or update fails. Does nothing by default.
    virtual void ApplyOwnParams();

    /// Sets the metrics that are no counters. Called under `metricsLock`. Does nothing by default.
    virtual void ShowMetrics();

    /// Reports the data sources to the fan-out again, after the derived class has changed its outputs by itself.
    void TellDataSources();

    /// Calls `visit` for each conversation on the I/O thread. `visit` returns whether there may be new bytes to send.
    /// Any thread may call; does nothing if the service does not run.
    void VisitEach(std::function<bool(ITcpConversation&)> visit);

    void DisconnectAll();

    /// The state of the system and of a scanner; an empty id means the first scanner. At most 100 ms old while clients
    /// are connected.
    StateFetcher::State LatestState(std::string const& scannerId);

    // ICommandRunner: the commands of clients. Called on the I/O thread. A command of a client that may not write is
    // refused with `Zu::Status::NOT_OFFERED`.
    void RunCommand(Command const& command) override;
    void FailCommand() override;
    Status CommandStatus() override;
    bool IsSameCommand(Command const& first, Command const& second) override;

    Zu::Mutex metricsLock; ///< held during an update of the metrics; problems of the base class are reported under it

private:
    void ApplyParams() ZU_REQUIRES(lifecycleLock);
    void KeepAccepted() ZU_REQUIRES(lifecycleLock);
    void RestoreAccepted(std::string const& refusal) ZU_REQUIRES(lifecycleLock);
    void Report(std::string const& problem);
    void ReadCertificatesAgain();
    void ShowExposure() ZU_REQUIRES(lifecycleLock);
    void OnClientsChanged(uint64 count);
    void SetServing(bool newIsServing);
    void TellClientCount();

    TcpParams* params = nullptr; // this and the next two are set by `InitService` only
    TcpMetrics* metrics = nullptr;
    TcpCounters* counters = nullptr;
    Identity const identity;
    StateFetcher fetcher;
    ZuCommon::ProblemsManager& problems;
    ZuControl::ServiceNotices& notices;
    ZuCommon::ProblemsTracker restoreProblem;
    ZuCommon::ProblemsTracker exposureProblem;
    ZuCommon::ProblemsTracker certificateProblem;

    // Lock order: this, then `fanOutLock`. Serialises starts, stops and parameter changes. It is held while the I/O
    // thread is joined, so the I/O thread never takes it.
    Zu::Mutex lifecycleLock;
    std::unique_ptr<nlohmann::json> accepted ZU_GUARDED_BY(lifecycleLock); // the parameters to restore
    std::string exposure ZU_GUARDED_BY(lifecycleLock);                     // the reported address; empty for none

    // Held while the client count is reported to the fan-out, so that counts arrive in order. The dispatcher's thread
    // must not take it: the fan-out may join that thread under its own lock.
    Zu::Mutex fanOutLock;
    ZuControl::IControlScanResults* fanOut ZU_GUARDED_BY(fanOutLock) = nullptr; // set while registered for results
    bool isServing ZU_GUARDED_BY(fanOutLock) = false;                           // from start to stop

    std::unique_ptr<TcpServer> server; // made by `InitService`
    Zu::Subscription replacedFiles;    // last: its handler uses the members above
};

} // namespace PluginCommon
