#include "ZuControl/Control/ControlProtocolOperations.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Control/IControlSystemInterface.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <utility>

namespace ZuControl
{

namespace
{

constexpr uint64 TEST_SLEEP_USEC = 10000;
constexpr uint64 PAUSE_AFTER_FAILED_WAIT_USEC = 10000; // a wait that fails at once must not flood the log

} // namespace

ControlProtocolOperations::ControlProtocolOperations(IControlSystemInterface& usedSystemInterface,
                                                     IControlScanEngineInterface& usedScanEngineInterface)
    : systemInterface(usedSystemInterface),
      scanEngineInterface(usedScanEngineInterface),
      runner(std::make_unique<Zu::AsyncRunner>())
{
    alignmentEnded = alignmentSubscription.Bind(
        decltype(alignmentEnded)([this](ZuEthernetProtocol protocol, std::string const& scannerId, auto status) {
            AlignmentCompletedCallback(protocol, scannerId, status);
        }));
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "CtlProtoOp.Disp"));
    ZU_CHECK(wThread_Start(thread, DispatcherThreadFx, this));
}

ControlProtocolOperations::~ControlProtocolOperations()
{
    runner.reset(); // first: a running task may still queue its end
    runningFlag.store(false, std::memory_order_relaxed);
    ZU_GUARD_DESTRUCTOR([this] { ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr)); });
    alignmentSubscription.End();
    ZU_GUARD_DESTRUCTOR([this] { queue.Clear(); });
}

void ControlProtocolOperations::StartScan(ZuEthernetProtocol protocol)
{
    RunSynchronousOp(protocol, ActionStartScan, {});
}

void ControlProtocolOperations::StopScan(ZuEthernetProtocol protocol)
{
    RunSynchronousOp(protocol, ActionStopScan, {});
}

void ControlProtocolOperations::Alignment(ZuEthernetProtocol protocol, char const* scannerId)
{
    ValidateScannerId(scannerId, ActionAlignment);
    RunSynchronousOp(protocol, ActionAlignment, {scannerId, {}});
}

void ControlProtocolOperations::ClearAlignment(ZuEthernetProtocol protocol, char const* scannerId)
{
    ValidateScannerId(scannerId, ActionClearAlignment);
    RunSynchronousOp(protocol, ActionClearAlignment, {scannerId, {}});
}

void ControlProtocolOperations::LoadJob(ZuEthernetProtocol protocol, char const* jobName)
{
    ValidateStringArg(jobName, "job name", ActionLoadJob);
    RunSynchronousOp(protocol, ActionLoadJob, {jobName, {}});
}

void ControlProtocolOperations::SoftwareTrigger(ZuEthernetProtocol protocol, char const* scannerId)
{
    ValidateScannerId(scannerId, ActionSoftwareTrigger);
    RunSynchronousOp(protocol, ActionSoftwareTrigger, {scannerId, {}});
}

void ControlProtocolOperations::SetNextIpConfig(ZuEthernetProtocol protocol, wIpConfig const& config)
{
    RunSynchronousOp(protocol, ActionSetNextIpConfig, {{}, config});
}

void ControlProtocolOperations::FactoryRestore(ZuEthernetProtocol protocol)
{
    RunSynchronousOp(protocol, ActionFactoryRestore, {});
}

void ControlProtocolOperations::Restart(ZuEthernetProtocol protocol)
{
    RunSynchronousOp(protocol, ActionRestart, {});
}

Zu::Event<int>::CallbackId ControlProtocolOperations::AddOpEndEventHandler(ZuEthernetProtocol protocol,
                                                                           std::function<void(int)> handler)
{
    return OperationEndEvent(protocol).Add(std::move(handler));
}

Zu::Subscription ControlProtocolOperations::SubscribeToOperationEnd(ZuEthernetProtocol protocol,
                                                                    std::function<void(int)> handler)
{
    return OperationEndEvent(protocol).Subscribe(std::move(handler));
}

void ControlProtocolOperations::RemoveOpEndEventHandler(ZuEthernetProtocol protocol, Zu::Event<int>::CallbackId id)
{
    if (id.second)
    {
        OperationEndEvent(protocol).Remove(id);
    }
}

uint64 ControlProtocolOperations::SucceededCount() const
{
    return succeededCount.load(std::memory_order_relaxed);
}

uint64 ControlProtocolOperations::FailedCount() const
{
    return failedCount.load(std::memory_order_relaxed);
}

uint64 ControlProtocolOperations::RefusedCount() const
{
    return refusedCount.load(std::memory_order_relaxed);
}

std::optional<ControlProtocolOperations::UnderWay> ControlProtocolOperations::OperationUnderWay() const
{
    Zu::MutexLock const guard(underWayLock);
    return underWay;
}

Zu::Subscription ControlProtocolOperations::SubscribeToEveryEnd(std::function<void(Ended const&)> handler) const
{
    return ended.Subscribe(std::move(handler));
}

ServiceNotices& ControlProtocolOperations::Notices() const
{
    return notices;
}

void ControlProtocolOperations::RunSynchronousOp(ZuEthernetProtocol protocol, ActionId action,
                                                 ControlOperationsParams params)
{
    if (!TakeTheTurn(protocol, action, params.stringArg))
    {
        refusedCount.fetch_add(1, std::memory_order_relaxed);
        ZU_GUARD_BOUNDARY([&] { ended.Fire(RefusalOf(protocol, action, params.stringArg)); });
        ZU_THROW(Zu::Status::BUSY, "Protocol %d operation %u rejected because another operation is in progress",
                 static_cast<int32>(protocol), unsigned{action});
    }
    try
    {
        runner->Run([this, protocol, action, params = std::move(params)] {
            int32 status = Zu::Status::SUCCESS;
            Cause cause;
            try
            {
                if (!RunAction(protocol, action, params))
                {
                    ZU_LOG_ERROR("Unexpected action id %u", unsigned{action});
                    cause.status = status = Zu::Status::BAD_ARGUMENT;
                }
            }
            catch (...)
            {
                ZU_LOG_CAUGHT("Exception processing action id %u", unsigned{action});
                status = Zu::Status::FAILURE; // protocols do not get the status of the exception
                cause.status = Zu::CaughtStatus();
                ZU_GUARD_BOUNDARY([&cause] { cause.text = Zu::CaughtReason(); }); // without memory there is no text
            }
            if (IsAsynchronous(action))
            {
                if (status == Zu::Status::SUCCESS)
                {
                    return; // the end comes from the scanner's event
                }
                // Guarded: the end must be queued in any case, or every later operation would be refused.
                ZU_GUARD_BOUNDARY([&] { CleanUpAlignmentCompletedEvent(params.stringArg); });
            }
            NotifyOperationEnd(protocol, status, "", std::move(cause));
        });
    }
    catch (...)
    {
        OperationFinish(); // no task runs that would end the operation
        throw;
    }
}

bool ControlProtocolOperations::RunAction(ZuEthernetProtocol protocol, ActionId action,
                                          ControlOperationsParams const& params)
{
    switch (action)
    {
    case ActionStartScan:
        systemInterface.Start();
        return true;
    case ActionStopScan:
        systemInterface.Stop();
        return true;
    case ActionAlignment:
        BeginAlignment(protocol, params.stringArg);
        return true;
    case ActionClearAlignment:
        scanEngineInterface.ClearAlignment(params.stringArg);
        return true;
    case ActionLoadJob:
        systemInterface.LoadJob(params.stringArg);
        return true;
    case ActionSoftwareTrigger:
        scanEngineInterface.SoftwareTrigger(params.stringArg);
        return true;
    case ActionSetNextIpConfig:
        systemInterface.SetNextIpConfig(params.ipConfig);
        return true;
    case ActionFactoryRestore:
        systemInterface.FactoryRestore();
        return true;
    case ActionRestart:
        systemInterface.Restart();
        return true;
    case ActionTestNoOp:
    case ActionTestAsync:
        return true;
    case ActionTestSleep:
        wThread_Sleep(TEST_SLEEP_USEC);
        return true;
    case ActionTestThrow:
        ZU_THROW(action, "Testing action id %u", unsigned{action});
    case ActionTestAsyncThrow:
        ZU_THROW(action, "Async test action id %u", unsigned{action});
    }
    return false;
}

bool ControlProtocolOperations::IsAsynchronous(ActionId action)
{
    return action == ActionAlignment || action == ActionTestAsync || action == ActionTestAsyncThrow;
}

char const* ControlProtocolOperations::NameOf(ActionId action)
{
    switch (action)
    {
    case ActionStartScan:
        return "scan start";
    case ActionStopScan:
        return "scan stop";
    case ActionAlignment:
        return "alignment";
    case ActionClearAlignment:
        return "removal of the alignment";
    case ActionLoadJob:
        return "job load";
    case ActionSoftwareTrigger:
        return "software trigger";
    case ActionSetNextIpConfig:
        return "change of the IP configuration";
    case ActionFactoryRestore:
        return "factory restore";
    case ActionRestart:
        return "restart";
    default:
        return "test"; // the test actions; no public operation begins one
    }
}

bool ControlProtocolOperations::TakeTheTurn(ZuEthernetProtocol protocol, ActionId action, std::string argument)
{
    CommandOrigin origin = CommandOriginScope::Current();
    Zu::MutexLock const guard(underWayLock);
    if (!OperationBegin())
    {
        return false;
    }
    underWay = UnderWay{protocol, NameOf(action), wTime_NowUsec()};
    underWayArgument = std::move(argument); // a copy here could throw, and the turn would never end
    underWayOrigin = std::move(origin);
    return true;
}

void ControlProtocolOperations::BeginAlignment(ZuEthernetProtocol protocol, std::string const& scannerId)
{
    auto& event = scanEngineInterface.AlignmentCompletedEvent(scannerId);
    auto const id = event.Add([ended = alignmentEnded, protocol, scannerId](ZuScan::AlignCompletionStatus status) {
        ended(protocol, scannerId, status);
    });
    {
        Zu::MutexLock const guard(alignmentLock);
        alignCallbackId = id;
    }
    scanEngineInterface.Alignment(scannerId);
}

bool ControlProtocolOperations::OperationBegin()
{
    int32 idle = 0;
    return operationFlag.compare_exchange_strong(idle, 1);
}

int ControlProtocolOperations::OperationFinish()
{
    Zu::MutexLock const guard(underWayLock);
    underWay.reset();
    return operationFlag.exchange(0);
}

void ControlProtocolOperations::ValidateStringArg(char const* value, char const* label, ActionId action)
{
    if (value == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "No %s for action %u", label, unsigned{action});
    }
    if (*value == '\0')
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Empty %s for action %u", label, unsigned{action});
    }
}

void ControlProtocolOperations::ValidateScannerId(char const* scannerId, ActionId action)
{
    if (scannerId == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Missing scanner id parameter for action %u", unsigned{action});
    }
}

ControlProtocolOperations::Ended ControlProtocolOperations::RefusalOf(ZuEthernetProtocol protocol, ActionId action,
                                                                      std::string const& argument)
{
    return {protocol, NameOf(action), argument, Zu::Status::BUSY, CommandOriginScope::Current(), wTime_NowUsec(), {}};
}

/// Nothing if no operation is under way: a scanner reports one alignment twice.
std::optional<ControlProtocolOperations::Ended> ControlProtocolOperations::EndOf(EndOfOpResult const& record)
{
    Zu::MutexLock const guard(underWayLock);
    if (!underWay.has_value())
    {
        return std::nullopt;
    }
    return Ended{record.protocol, underWay->name,      underWayArgument, record.status,
                 underWayOrigin,  underWay->sinceUsec, record.cause};
}

void ControlProtocolOperations::NotifyOperationEnd(ZuEthernetProtocol protocol, int status, char const* scannerId)
{
    NotifyOperationEnd(protocol, status, scannerId, Cause());
}

void ControlProtocolOperations::NotifyOperationEnd(ZuEthernetProtocol protocol, int status, char const* scannerId,
                                                   Cause cause)
{
    auto record = std::make_unique<EndOfOpResult>();
    record->protocol = protocol;
    record->status = status;
    record->scannerId = scannerId;
    record->cause = std::move(cause);
    queue.Add(std::move(record));
}

void ControlProtocolOperations::OnOperationEnd(ZuEthernetProtocol protocol, int status)
{
    Zu::Event<int>* event = nullptr;
    {
        Zu::MutexLock const guard(opEndEventsLock);
        if (auto const position = opEndEvents.find(protocol); position != opEndEvents.end())
        {
            event = &position->second;
        }
    }
    if (event != nullptr)
    {
        event->Fire(status);
    }
}

Zu::Event<int>& ControlProtocolOperations::OperationEndEvent(ZuEthernetProtocol protocol)
{
    Zu::MutexLock const guard(opEndEventsLock);
    return opEndEvents[protocol];
}

void ControlProtocolOperations::AlignmentCompletedCallback(ZuEthernetProtocol protocol, std::string const& scannerId,
                                                           ZuScan::AlignCompletionStatus status)
{
    // Only queues the end: the dispatcher removes the handler, outside of the event's call.
    bool const succeeded = static_cast<int64>(status) == 0;
    if (succeeded)
    {
        NotifyOperationEnd(protocol, Zu::Status::SUCCESS, scannerId.c_str());
        return;
    }
    NotifyOperationEnd(protocol, Zu::Status::FAILURE, scannerId.c_str(),
                       {Zu::Status::FAILURE, "The scanner reports that the alignment has failed"});
}

void ControlProtocolOperations::CleanUpAlignmentCompletedEvent(std::string const& scannerId)
{
    std::optional<Zu::Event<ZuScan::AlignCompletionStatus>::CallbackId> id;
    {
        Zu::MutexLock const guard(alignmentLock);
        id = alignCallbackId;
    }
    if (scannerId.empty() || !id.has_value())
    {
        return;
    }
    auto& event = scanEngineInterface.AlignmentCompletedEvent(scannerId);
    if (id->second)
    {
        event.Remove(*id);
    }
    Zu::MutexLock const guard(alignmentLock);
    alignCallbackId.reset();
}

int ControlProtocolOperations::DispatcherThreadFx(void* object)
{
    auto& self = *static_cast<ControlProtocolOperations*>(object);
    while (self.runningFlag.load(std::memory_order_relaxed))
    {
        ZU_GUARD_BOUNDARY([&self] {
            std::unique_ptr<EndOfOpResult> record;
            wStatus const waited = self.queue.Remove(record, OPERATION_TIMEOUT_USEC);
            if (waited == Zu::Status::TIME_OUT)
            {
                return;
            }
            if (waited != Zu::Status::SUCCESS)
            {
                ZU_LOG_ERROR("Dispatcher queue wait failed with error %d", waited);
                wThread_Sleep(PAUSE_AFTER_FAILED_WAIT_USEC);
                return;
            }
            auto& count = record->status == Zu::Status::SUCCESS ? self.succeededCount : self.failedCount;
            count.fetch_add(1, std::memory_order_relaxed);
            self.CleanUpAlignmentCompletedEvent(record->scannerId);
            std::optional<Ended> end;
            ZU_GUARD_BOUNDARY([&] { end = self.EndOf(*record); }); // the operation must end in any case
            int const previous = self.OperationFinish(); // before the handlers: they may start the next operation
            if (end.has_value())
            {
                ZU_GUARD_BOUNDARY([&] { self.ended.Fire(*end); });
            }
            self.OnOperationEnd(record->protocol, record->status);
            if (previous != 1)
            {
                ZU_THROW(Zu::Status::WRONG_STATE); // an end without an operation in flight
            }
        });
    }
    return 1;
}

} // namespace ZuControl
