#pragma once

#include "ZuApi/AsyncRunner.h"
#include "ZuApi/CallbackGate.h"
#include "ZuApi/Event.h"
#include "ZuApi/Threads/MsgQueue.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "ZuScan/AlignCompletionStatus.h"
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
/// An operation is accepted or refused at once: -976 while another one is in flight, -997 for a bad argument, which is looked
/// at first. It then runs on a worker, and its end is told to the handlers of the protocol that asked, with status 1
/// for success. No operation is ever timed out: an alignment whose scanner never reports keeps every later one refused.
///
/// Threads: operations are called from any thread; handlers run on "CtlProtoOp.Disp". The flag is free by then, so that a
/// handler may start the next operation.
class ZUCONTROL_API ControlProtocolOperations final
{
public:
    /// How long the dispatcher waits for a record, and so how late it notices that it shall end. No limit of an operation.
    static constexpr uint64 OPERATION_TIMEOUT_USEC = 100000;

    /// Both interfaces outlive the object.
    ControlProtocolOperations(IControlSystemInterface& usedSystemInterface,
                              IControlScanEngineInterface& usedScanEngineInterface);
    ~ControlProtocolOperations();

    ControlProtocolOperations(ControlProtocolOperations const&) = delete;
    ControlProtocolOperations& operator=(ControlProtocolOperations const&) = delete;

    void StartScan(ZuEthernetProtocol protocol);
    void StopScan(ZuEthernetProtocol protocol);

    /// An empty scanner id means the first scanner. Name the scanner where you can: only then is the handler on its
    /// event removed at the end, and a later alignment does not find it there.
    void Alignment(ZuEthernetProtocol protocol, char const* scannerId);
    void ClearAlignment(ZuEthernetProtocol protocol, char const* scannerId);

    /// The load stops and starts protocols, possibly the one that asked: its `Stop` must not wait for the operation's end.
    void LoadJob(ZuEthernetProtocol protocol, char const* jobName);
    void SoftwareTrigger(ZuEthernetProtocol protocol, char const* scannerId);
    void SetNextIpConfig(ZuEthernetProtocol protocol, wIpConfig const& config);
    void FactoryRestore(ZuEthernetProtocol protocol);
    void Restart(ZuEthernetProtocol protocol);

    /// Adds a handler of the ends of the protocol's operations; it gets the status and nothing else. One that throws keeps
    /// those behind it from being called for that end. An empty function is not stored and gives an id that is not valid.
    Zu::Event<int>::CallbackId AddOpEndEventHandler(ZuEthernetProtocol protocol, std::function<void(int)> handler);

    /// Removes a handler. It does not wait for one that is running.
    void RemoveOpEndEventHandler(ZuEthernetProtocol protocol, Zu::Event<int>::CallbackId id);

    // How many operations have ended so far, and how many were refused since another one was in flight. Any thread may ask.
    uint64 SucceededCount() const;
    uint64 FailedCount() const;
    uint64 RefusedCount() const;

    /// An operation in flight.
    struct UnderWay
    {
        ZuEthernetProtocol protocol{}; ///< who asked for it
        char const* name = "";         ///< "job load"
        uint64 sinceUsec = 0;          ///< a moment of `wTime_NowUsec`
    };

    /// Any thread may ask.
    std::optional<UnderWay> OperationUnderWay() const;

private:
    friend class ControlProtocolOperationsTest; // the only way to the test actions

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
        std::string scannerId; // of an alignment that ended through its event
    };

    void RunSynchronousOp(ZuEthernetProtocol protocol, ActionId action, ControlOperationsParams params);
    bool RunAction(ZuEthernetProtocol protocol, ActionId action, ControlOperationsParams const& params);
    static bool IsAsynchronous(ActionId action);
    static char const* NameOf(ActionId action);
    bool TakeTheTurn(ZuEthernetProtocol protocol, ActionId action);
    void BeginAlignment(ZuEthernetProtocol protocol, std::string const& scannerId);

    bool OperationBegin();
    int OperationFinish();
    static void ValidateStringArg(char const* value, char const* label, ActionId action);
    static void ValidateScannerId(char const* scannerId, ActionId action);

    void NotifyOperationEnd(ZuEthernetProtocol protocol, int status, char const* scannerId);
    void OnOperationEnd(ZuEthernetProtocol protocol, int status);
    Zu::Event<int>& OperationEndEvent(ZuEthernetProtocol protocol);
    void AlignmentCompletedCallback(ZuEthernetProtocol protocol, std::string const& scannerId,
                                    ZuScan::AlignCompletionStatus status);
    void CleanUpAlignmentCompletedEvent(std::string const& scannerId);
    static int DispatcherThreadFx(void* object);

    IControlSystemInterface& systemInterface;
    IControlScanEngineInterface& scanEngineInterface;
    std::unique_ptr<Zu::AsyncRunner> runner;

    // Leaf lock of the map alone: an event is made on first use and stays where it is.
    Zu::Mutex opEndEventsLock;
    std::map<ZuEthernetProtocol, Zu::Event<int>> opEndEvents ZU_GUARDED_BY(opEndEventsLock);

    std::atomic<int32> operationFlag{0}; // 1 while an operation is in flight; it changes under the lock below

    mutable Zu::Mutex underWayLock; // a leaf, so that what is told of an operation goes with the flag
    std::optional<UnderWay> underWay ZU_GUARDED_BY(underWayLock);

    std::atomic<bool> runningFlag{true};
    std::atomic<uint64> succeededCount{0}; // these three publish nothing
    std::atomic<uint64> failedCount{0};
    std::atomic<uint64> refusedCount{0};
    Zu::MsgQueue<EndOfOpResult> queue;
    wThread thread;

    // The handler of the alignment in flight, of the worker and of the dispatcher in turn. The lock is a leaf: it matters
    // only when a scanner reports one alignment twice.
    Zu::Mutex alignmentLock;
    std::optional<Zu::Event<ZuScan::AlignCompletionStatus>::CallbackId> alignCallbackId ZU_GUARDED_BY(alignmentLock);
    Zu::CallbackGate alignmentGate; // handlers stay on a scanner's event for longer than this object lives
};

} // namespace ZuControl
