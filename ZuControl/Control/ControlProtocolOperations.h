#pragma once

#include "ZuApi/AsyncRunner.h"
#include "ZuApi/Event.h"
#include "ZuApi/Signal.h"
#include "ZuApi/Threads/MsgQueue.h"
#include "ZuControl/Control/CommandOrigin.h"
#include "ZuControl/Control/ServiceNotices.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "ZuScan/Sensor.h"
#include "wApi/wIpConfig.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace ZuControl
{

class IControlScanEngineInterface;
class IControlSystemInterface;

/// Long-running operations on the system, one at a time for all protocols.
///
/// A call is accepted or refused at once. It throws `Zu::Status::BAD_ARGUMENT` for a bad argument, which is checked
/// first, and `Zu::Status::BUSY` while another operation is in flight. An accepted operation runs on a worker. At its
/// end the handlers of the protocol that has begun it are called, with `Zu::Status::SUCCESS` or `Zu::Status::FAILURE`.
/// No operation has a time-out: while the scanner does not report the end of an alignment, every later operation is
/// refused.
///
/// Ownership: the module owns the object, which outlives the protocols. Threads: any thread may call any operation, in
/// each state of the service; no operation blocks. Handlers run on "CtlProtoOp.Disp". A handler may begin the next
/// operation. It must not block: the ends of later operations wait for it.
class ZUCONTROL_API ControlProtocolOperations final
{
public:
    /// How long the dispatcher waits for a record, and so the longest delay of its end. It does not limit an operation.
    static constexpr uint64 OPERATION_TIMEOUT_USEC = 100000;

    /// Both interfaces outlive the object.
    ControlProtocolOperations(IControlSystemInterface& usedSystemInterface,
                              IControlScanEngineInterface& usedScanEngineInterface);
    ~ControlProtocolOperations();

    ControlProtocolOperations(ControlProtocolOperations const&) = delete;
    ControlProtocolOperations& operator=(ControlProtocolOperations const&) = delete;

    void StartScan(ZuEthernetProtocol protocol);
    void StopScan(ZuEthernetProtocol protocol);

    /// An empty scanner id means the first scanner. Name the scanner if possible: only then the handler at the
    /// scanner's event is removed at the end of the alignment. Otherwise it stays, and a later alignment calls it
    /// again.
    void Alignment(ZuEthernetProtocol protocol, char const* scannerId);
    void ClearAlignment(ZuEthernetProtocol protocol, char const* scannerId);

    /// The load stops and starts protocols on the worker, possibly also the protocol that has begun it: its `Stop` must
    /// not wait for the end of the operation.
    void LoadJob(ZuEthernetProtocol protocol, char const* jobName);
    void SoftwareTrigger(ZuEthernetProtocol protocol, char const* scannerId);
    void SetNextIpConfig(ZuEthernetProtocol protocol, wIpConfig const& config);
    void FactoryRestore(ZuEthernetProtocol protocol);
    void Restart(ZuEthernetProtocol protocol);

    /// Adds a handler of the ends of the protocol's operations; its argument is the status. An exception of a handler
    /// is logged, and later handlers are not called for that end. An empty function is not stored and gives an
    /// id that is not valid.
    Zu::Event<int>::CallbackId AddOpEndEventHandler(ZuEthernetProtocol protocol, std::function<void(int)> handler);

    /// As above, for a handler that stays until the subscription is destroyed.
    [[nodiscard]] Zu::Subscription SubscribeToOperationEnd(ZuEthernetProtocol protocol,
                                                           std::function<void(int)> handler);

    /// Removes a handler. Waits for a call of it on another thread.
    void RemoveOpEndEventHandler(ZuEthernetProtocol protocol, Zu::Event<int>::CallbackId id);

    // The number of operations that have ended so far, and the number of calls that were refused with
    // `Zu::Status::BUSY`. Any thread may call.
    uint64 SucceededCount() const;
    uint64 FailedCount() const;
    uint64 RefusedCount() const;

    /// An operation in flight.
    struct UnderWay
    {
        ZuEthernetProtocol protocol{}; ///< the protocol that has begun it
        char const* name = "";         ///< "job load"
        uint64 sinceUsec = 0;          ///< a moment of `wTime_NowUsec`
    };

    /// The operation in flight, if any. Any thread may call.
    std::optional<UnderWay> OperationUnderWay() const;

    /// Why an operation has failed, which the handlers of ends do not get.
    struct Cause
    {
        int32 status = 0; ///< of the exception
        std::string text; ///< of the exception, or the status as a text
    };

    /// An operation that has ended, or that was refused.
    struct Ended
    {
        ZuEthernetProtocol protocol{}; ///< the protocol that has begun it
        char const* name = "";         ///< as in `UnderWay`
        std::string argument;          ///< the name of the job or the id of the scanner; empty for other operations
        int32 status = 0;              ///< as for the handlers of ends; `Zu::Status::BUSY` if it was refused
        CommandOrigin origin{};        ///< the client that has asked for it, as `CommandOriginScope` has told
        uint64 sinceUsec = 0;          ///< its begin, or the refusal; a moment of `wTime_NowUsec`
        Cause cause;                   ///< of a failure
    };

    /// Calls `handler` after the end of each operation of any protocol, on "CtlProtoOp.Disp", and for each refused one,
    /// on the thread of the refused caller. After an end the next operation may begin. `handler` must not block and must
    /// not throw.
    [[nodiscard]] Zu::Subscription SubscribeToEveryEnd(std::function<void(Ended const&)> handler) const;

    /// The notices between the services and the host. Every protocol reaches them through this object.
    ServiceNotices& Notices() const;

private:
    friend class ControlProtocolOperationsTest; // only the test begins the test actions

    enum ActionId : uint8
    {
        ActionStartScan = 0,
        ActionStopScan = 1,
        ActionAlignment = 2,
        ActionClearAlignment = 3,
        ActionLoadJob = 4,
        ActionSoftwareTrigger = 5,
        ActionSetNextIpConfig = 6,
        ActionFactoryRestore = 7,
        ActionRestart = 8,
        ActionTestNoOp = 200,
        ActionTestSleep = 201,
        ActionTestThrow = 202,
        ActionTestAsync = 203,
        ActionTestAsyncThrow = 204
    };

    struct ControlOperationsParams
    {
        std::string stringArg; // scanner id or job name
        wIpConfig ipConfig{};
    };

    struct EndOfOpResult
    {
        ZuEthernetProtocol protocol{};
        int32 status = 0;
        std::string scannerId; // of an alignment that has ended through its event
        Cause cause;
    };

    void RunSynchronousOp(ZuEthernetProtocol protocol, ActionId action, ControlOperationsParams params);
    bool RunAction(ZuEthernetProtocol protocol, ActionId action, ControlOperationsParams const& params);
    static bool IsAsynchronous(ActionId action);
    static char const* NameOf(ActionId action);
    bool TakeTheTurn(ZuEthernetProtocol protocol, ActionId action, std::string argument);
    void BeginAlignment(ZuEthernetProtocol protocol, std::string const& scannerId);

    bool OperationBegin();
    int OperationFinish();
    static Ended RefusalOf(ZuEthernetProtocol protocol, ActionId action, std::string const& argument);
    std::optional<Ended> EndOf(EndOfOpResult const& record);
    static void ValidateStringArg(char const* value, char const* label, ActionId action);
    static void ValidateScannerId(char const* scannerId, ActionId action);

    void NotifyOperationEnd(ZuEthernetProtocol protocol, int status, char const* scannerId);
    void NotifyOperationEnd(ZuEthernetProtocol protocol, int status, char const* scannerId, Cause cause);
    void OnOperationEnd(ZuEthernetProtocol protocol, int status);
    Zu::Event<int>& OperationEndEvent(ZuEthernetProtocol protocol);
    void AlignmentCompletedCallback(ZuEthernetProtocol protocol, std::string const& scannerId,
                                    ZuScan::AlignCompletionStatus status);
    void CleanUpAlignmentCompletedEvent(std::string const& scannerId);
    static int DispatcherThreadFx(void* object);

    IControlSystemInterface& systemInterface;
    IControlScanEngineInterface& scanEngineInterface;
    std::unique_ptr<Zu::AsyncRunner> runner;

    // A leaf, which guards the map alone: an event is made on first use, is never removed and does not move.
    Zu::Mutex opEndEventsLock;
    std::map<ZuEthernetProtocol, Zu::Event<int>> opEndEvents ZU_GUARDED_BY(opEndEventsLock);

    std::atomic<int32> operationFlag{0}; // 1 while an operation is in flight; it changes under the lock below

    mutable Zu::Mutex underWayLock; // a leaf; it keeps the flag and `underWay` consistent
    std::optional<UnderWay> underWay ZU_GUARDED_BY(underWayLock);

    std::atomic<bool> runningFlag{true};
    std::atomic<uint64> succeededCount{0}; // these three publish nothing
    std::atomic<uint64> failedCount{0};
    std::atomic<uint64> refusedCount{0};
    Zu::MsgQueue<EndOfOpResult> queue;
    wThread thread;

    // The handler of the alignment in flight. The worker sets it, then the dispatcher clears it; the two meet only when
    // a scanner reports one alignment twice. The lock is a leaf.
    Zu::Mutex alignmentLock;
    std::optional<Zu::Event<ZuScan::AlignCompletionStatus>::CallbackId> alignCallbackId ZU_GUARDED_BY(alignmentLock);
    // A handler may stay at a scanner's event for longer than this object lives. All handlers call this function.
    std::function<void(ZuEthernetProtocol, std::string const&, ZuScan::AlignCompletionStatus)> alignmentEnded;
    Zu::Subscription alignmentSubscription; // of `alignmentEnded`

    std::string underWayArgument ZU_GUARDED_BY(underWayLock); // as in `Ended`
    mutable Zu::Signal<Ended const&> ended;                   // to listen changes no operation
    CommandOrigin underWayOrigin ZU_GUARDED_BY(underWayLock); // as in `Ended`
    mutable ServiceNotices notices;                           // changes no operation either
};

} // namespace ZuControl
