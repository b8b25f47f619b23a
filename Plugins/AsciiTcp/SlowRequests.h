#pragma once

#include "Plugins/AsciiTcp/AsciiRequest.h"
#include "ZuApi/AsyncRunner.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

namespace ZuControl
{
class IControlHardwareManager;
class IControlResourceAdaptor;
} // namespace ZuControl

namespace AsciiTcp
{

/// Carries out the requests that may block: those for the outputs of the sensor and for resources of the application.
/// They run one at a time on the thread "AsciiTcp.Slow", in the order of `Begin`, so that they never block the I/O
/// thread.
///
/// At most MOST_WAITING requests wait. A client has one at most, because its conversation takes no further request before
/// the answer, and abandons the request when the connection ends.
///
/// Threads: one thread at a time calls `Begin` and `Abandon`, the I/O thread.
class SlowRequests final
{
public:
    static constexpr uint64 READ_TIMEOUT_USEC = 1'000'000;
    static constexpr std::size_t MOST_BYTES_READ = 64 * 1024; ///< of a resource that is sent to a client
    static constexpr std::size_t MOST_WAITING = 64;           ///< requests beside the running one

    /// Gets the answer of a request, one line without its end, on the thread "AsciiTcp.Slow".
    using Answered = std::function<void(uint64 ticket, std::string const& line)>;

    /// Both outlive the object. If one is null, `Begin` refuses the requests that need it.
    SlowRequests(ZuControl::IControlHardwareManager* usedHardware, ZuControl::IControlResourceAdaptor* usedResources,
                 Answered whenAnswered);
    ~SlowRequests(); ///< waits for the running request; later ones get no answer
    SlowRequests(SlowRequests const&) = delete;
    SlowRequests& operator=(SlowRequests const&) = delete;

    /// Begins a DOUT, AOUT, SERIAL or READ request and returns the ticket of its answer, never 0. Throws
    /// `Zu::Status::BAD_ARGUMENT` for invalid arguments, `Zu::Status::NOT_SUPPORTED` if the system has no such outputs or
    /// resources, and `Zu::Status::BUSY` while MOST_WAITING requests wait; all with a text.
    uint64 Begin(AsciiRequest const& request);

    /// Drops the request if it has not begun to run. It then gets no answer.
    void Abandon(uint64 ticket);

private:
    using Task = std::function<std::string()>; // returns the text that follows "OK"

    struct Waiting
    {
        uint64 ticket = 0;
        Task task;
    };

    bool TakeNext(Waiting& next);
    void RunAll();

    Task TaskOf(AsciiRequest const& request);
    Task DigitalOutputTask(std::string_view argument);
    Task AnalogOutputTask(std::string_view argument);
    Task SerialOutputTask(std::string_view argument);
    Task ReadTask(std::string_view path);
    ZuControl::IControlHardwareManager& Hardware() const;

    ZuControl::IControlHardwareManager* const hardware;
    ZuControl::IControlResourceAdaptor* const resources;
    Answered const answered;
    uint64 lastTicket = 0;

    Zu::Mutex lock; // the worker's own lock is taken under it; no request runs under it
    std::deque<Waiting> waiting ZU_GUARDED_BY(lock);
    bool isWorking ZU_GUARDED_BY(lock) = false; // a task of the worker takes the waiting requests

    Zu::AsyncRunner worker{"AsciiTcp.Slow"}; // last: its tasks use all members above
};

} // namespace AsciiTcp
