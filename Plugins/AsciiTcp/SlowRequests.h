#pragma once

#include "Plugins/AsciiTcp/AsciiRequest.h"
#include "ZuApi/AsyncRunner.h"
#include "wApi/wTypes.h"

#include <cstddef>
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
/// They run one at a time on the thread "AsciiTcp.Slow", so that they never block the I/O thread.
///
/// Threads: one thread at a time calls `Begin`, the I/O thread.
class SlowRequests final
{
public:
    static constexpr uint64 READ_TIMEOUT_USEC = 1'000'000;
    static constexpr std::size_t MOST_BYTES_READ = 64 * 1024; ///< of a resource that is sent to a client

    /// Gets the answer of a request, one line without its end, on the thread "AsciiTcp.Slow".
    using Answered = std::function<void(uint64 ticket, std::string const& line)>;

    /// Both outlive the object. If one is null, `Begin` refuses the requests that need it.
    SlowRequests(ZuControl::IControlHardwareManager* usedHardware, ZuControl::IControlResourceAdaptor* usedResources,
                 Answered whenAnswered);
    ~SlowRequests(); ///< waits for the running request; later ones get no answer
    SlowRequests(SlowRequests const&) = delete;
    SlowRequests& operator=(SlowRequests const&) = delete;

    /// Begins a DOUT, AOUT, SERIAL or READ request and returns the ticket of its answer, never 0. Throws
    /// `Zu::Status::BAD_ARGUMENT` for invalid arguments and `Zu::Status::NOT_SUPPORTED` if the system has no such
    /// outputs or resources; both with a text.
    uint64 Begin(AsciiRequest const& request);

private:
    using Task = std::function<std::string()>; // returns the text that follows "OK"

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
    Zu::AsyncRunner worker{"AsciiTcp.Slow"}; // last: its tasks use all members above
};

} // namespace AsciiTcp
