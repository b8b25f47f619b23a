#include "Host/Operation/SensorCommands.h"

#include "Host/Audit/ITrail.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuRest/Caller.h"
#include "ZuScan/ScanEngines.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace ZuHost
{

using ZuControl::HOST_PROTOCOL;

namespace
{

constexpr std::string_view TRIGGER = "software trigger";

OperationLog::Result OutcomeOf(ZuControl::ControlOperationEnd const& end)
{
    return end.status == Zu::Status::SUCCESS ? OperationLog::Result::DONE : OperationLog::Result::FAILED;
}

bool HasFailed(ZuControl::ControlOperationEnd const& end)
{
    return OutcomeOf(end) == OperationLog::Result::FAILED;
}

} // namespace

SensorCommands::Command const& SensorCommands::Find(std::string const& id)
{
    auto const* const found = std::ranges::find(COMMANDS, std::string_view(id), &Command::id);
    if (found == COMMANDS.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The sensor has no command '%s'.", id.c_str());
    }
    return *found;
}

SensorCommands::SensorCommands(ZuControl::ControlModule& usedModule,
                               ZuScan::Internal::ScanEngineManager const& usedEngines, ControlAuthority& usedAuthority,
                               ITrail& usedTrail)
    : module(usedModule), engines(usedEngines), authority(usedAuthority), trail(usedTrail)
{
    ends = module.SubscribeToOperations([this](auto const& end) { ZU_GUARD_BOUNDARY([&] { TakeEnd(end); }); });
}

SensorCommands::~SensorCommands()
{
    ends.End();
}

OperationLog::Operation SensorCommands::Run(Command const& command, std::string const& argument,
                                            ZuRest::Caller const* caller)
{
    OperationLog::Operation operation;
    operation.what = command.what;
    operation.argument = command.argument == Argument::SCANNER ? CheckedScanner(argument) : argument;
    operation.who = caller == nullptr ? "unknown" : caller->name;
    operation.from = caller == nullptr ? "http" : caller->source;
    operation.isOfClient = true;
    operation.beginUsec = wTime_NowUsec();
    Zu::MutexLock const guard(runLock);
    NoteOperationInFlight();
    authority.Check(operation.beginUsec);
    operation.number = log.Add(operation); // before the begin: the end may come before `Begin` returns
    try
    {
        Begin(command, operation.argument);
    }
    catch (...)
    {
        log.Remove(operation.number);
        throw;
    }
    changed.Fire(operation.number);
    return operation;
}

OperationLog const& SensorCommands::Log() const
{
    return log;
}

ControlAuthority::State SensorCommands::Authority()
{
    NoteOperationInFlight();
    return authority.At(wTime_NowUsec());
}

std::string SensorCommands::FirstScanner() const
{
    for (std::string const& engine : engines.List())
    {
        if (auto const scanners = engines.GetInstance(engine).ListScanners(); !scanners.empty())
        {
            return scanners.front();
        }
    }
    return "";
}

Zu::Signal<uint64>& SensorCommands::ChangedSignal()
{
    return changed;
}

/// The named scanner, or the first one. With a name the module removes its handler from the scanner's event.
std::string SensorCommands::CheckedScanner(std::string const& id) const
{
    if (id.empty())
    {
        return FirstScanner();
    }
    auto const hasScanner = [&](std::string const& engine) {
        auto const scanners = engines.GetInstance(engine).ListScanners();
        return std::ranges::find(scanners, id) != scanners.end();
    };
    if (!std::ranges::any_of(engines.List(), hasScanner))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "There is no scanner '%s'.", id.c_str());
    }
    return id;
}

void SensorCommands::Begin(Command const& command, std::string const& argument)
{
    ZuControl::ControlProtocolOperations& operations = module.Operations();
    std::string_view const id = command.id;
    if (id == "start")
    {
        operations.StartScan(HOST_PROTOCOL);
    }
    else if (id == "stop")
    {
        operations.StopScan(HOST_PROTOCOL);
    }
    else if (id == "align")
    {
        operations.Alignment(HOST_PROTOCOL, argument.c_str());
    }
    else if (id == "clearAlignment")
    {
        operations.ClearAlignment(HOST_PROTOCOL, argument.c_str());
    }
    else if (id == "trigger")
    {
        operations.SoftwareTrigger(HOST_PROTOCOL, argument.c_str());
    }
    else
    {
        operations.LoadJob(HOST_PROTOCOL, argument.c_str());
    }
}

void SensorCommands::TakeEnd(ZuControl::ControlOperationEnd const& end)
{
    bool const isRefused = end.status == Zu::Status::BUSY;
    if (!end.isOfHost)
    {
        authority.NoteCommand(end.typeName, isRefused ? wTime_NowUsec() : end.sinceUsec);
    }
    if (isRefused)
    {
        return;
    }
    if (!end.isOfHost)
    {
        TakeEndOfProtocol(end);
        return;
    }
    auto const operation = log.EndOldest(OutcomeOf(end), end.cause, end.reason, wTime_NowUsec());
    if (!operation.has_value())
    {
        return;
    }
    if (end.name != TRIGGER)
    {
        TrailEntry entry{operation->who, operation->from, operation->what, "", "", HasFailed(end) ? "failed" : "done"};
        entry.what += operation->argument.empty() ? "" : " " + operation->argument;
        entry.comesInBursts = true;
        trail.Note(std::move(entry));
    }
    changed.Fire(operation->number);
}

void SensorCommands::TakeEndOfProtocol(ZuControl::ControlOperationEnd const& end)
{
    if (end.name == TRIGGER)
    {
        return; // a protocol may send many a second, which would push out all others
    }
    OperationLog::Operation operation;
    operation.what = end.name;
    operation.argument = end.argument;
    operation.who = end.typeName;
    operation.beginUsec = end.sinceUsec;
    operation.endUsec = wTime_NowUsec();
    operation.result = OutcomeOf(end);
    operation.status = end.cause;
    operation.text = end.reason;
    changed.Fire(log.Add(std::move(operation)));
}

void SensorCommands::NoteOperationInFlight()
{
    ZuControl::ControlVitals::Operation const operation = module.Vitals().operation;
    if (operation.sinceUsec != 0 && !operation.isOfHost)
    {
        authority.NoteCommand(operation.typeName, operation.sinceUsec);
    }
}

} // namespace ZuHost
