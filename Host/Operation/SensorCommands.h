#pragma once

#include "Host/Operation/ControlAuthority.h"
#include "Host/Operation/OperationLog.h"
#include "ZuApi/Signal.h"
#include "ZuControl/Control/ControlVitals.h"
#include "wApi/wMutex.h"

#include <array>
#include <functional>
#include <memory>
#include <string>

namespace ZuControl
{
class ControlModule;
}

namespace ZuRest
{
struct Caller;
}

namespace ZuScan::Internal
{
class ScanEngineManager;
}

namespace ZuHost
{

class ITrail;

/// Runs the sensor for REST clients, through the operations of the module, and keeps the last operations of clients and
/// protocols. All operations are thread-safe.
class SensorCommands final
{
public:
    /// The argument that a command takes.
    enum class Argument
    {
        NONE,
        SCANNER, ///< the id of a scanner; empty: the first one
        JOB      ///< the name of a job
    };

    struct Command
    {
        char const* id;
        char const* what; ///< the name of its operation
        Argument argument;
    };

    static constexpr std::array<Command, 6> COMMANDS{{{"start", "scan start", Argument::NONE},
                                                      {"stop", "scan stop", Argument::NONE},
                                                      {"align", "alignment", Argument::SCANNER},
                                                      {"clearAlignment", "removal of the alignment", Argument::SCANNER},
                                                      {"trigger", "software trigger", Argument::SCANNER},
                                                      {"load", "job load", Argument::JOB}}};

    /// Throws `Zu::Status::NOT_FOUND` for an unknown command.
    static Command const& Find(std::string const& id);

    /// All arguments outlive this.
    SensorCommands(ZuControl::ControlModule& usedModule, ZuScan::Internal::ScanEngineManager const& usedEngines,
                   ControlAuthority& usedAuthority, ITrail& usedTrail);
    ~SensorCommands(); ///< waits for a report of an end

    SensorCommands(SensorCommands const&) = delete;
    SensorCommands& operator=(SensorCommands const&) = delete;

    /// Begins a command for `caller`, who may be null, and returns its operation. Throws `Zu::Status::WRONG_STATE`
    /// without authority, `Zu::Status::BUSY` while another operation is in flight, and `Zu::Status::BAD_ARGUMENT` for an
    /// unknown scanner or a missing name of a job.
    OperationLog::Operation Run(Command const& command, std::string const& argument, ZuRest::Caller const* caller);

    OperationLog const& Log() const;

    /// The present authority. An operation in flight counts as a command of its protocol.
    ControlAuthority::State Authority();

    /// The id of the first scanner; empty if there is none.
    std::string FirstScanner() const;

    /// Fires with the number of each operation that has begun or ended, on the thread on which that happened. Handlers
    /// must not block.
    Zu::Signal<uint64>& ChangedSignal();

private:
    std::string CheckedScanner(std::string const& id) const;
    void Begin(Command const& command, std::string const& argument);
    void TakeEnd(ZuControl::ControlOperationEnd const& end);
    void TakeEndOfProtocol(ZuControl::ControlOperationEnd const& end);
    void NoteOperationInFlight();

    ZuControl::ControlModule& module;
    ZuScan::Internal::ScanEngineManager const& engines;
    ControlAuthority& authority;
    ITrail& trail;
    OperationLog log;
    Zu::Signal<uint64> changed;

    Zu::Mutex runLock; // one begin at a time, so that the log has the operations in the order of their begins

    Zu::Subscription ends; // last: its end waits for a call
};

} // namespace ZuHost
