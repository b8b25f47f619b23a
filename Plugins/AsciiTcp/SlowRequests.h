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

/// The requests that wait for something: the outputs of the sensor and the resources of the application. They run one after
/// the other on a thread of their own, so that no client waits for the request of another that waits.
///
/// Threads: `Begin` belongs to one at a time, the I/O thread.
class SlowRequests final
{
public:
    static constexpr uint64 READ_TIMEOUT_USEC = 1'000'000;
    static constexpr std::size_t MOST_BYTES_READ = 64 * 1024; ///< of a resource that is sent to a client

    /// Gets the answer of a request, one line without its end, on the thread of the requests.
    using Answered = std::function<void(uint64 ticket, std::string const& line)>;

    /// Both outlive the object; null where the system has none, and then what needs it is refused.
    SlowRequests(ZuControl::IControlHardwareManager* usedHardware, ZuControl::IControlResourceAdaptor* usedResources,
                 Answered whenAnswered);
    ~SlowRequests(); ///< waits for the request that runs; those behind it get no answer
    SlowRequests(SlowRequests const&) = delete;
    SlowRequests& operator=(SlowRequests const&) = delete;

    /// Takes DOUT, AOUT, SERIAL and READ, and gives the ticket of the answer, which is never 0. Throws -997 with a text for
    /// arguments that say nothing, -996 with a text for what the system does not have.
    uint64 Begin(AsciiRequest const& request);

private:
    using Task = std::function<std::string()>; // gives what stands behind "OK"

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
    Zu::AsyncRunner worker{"AsciiTcp.Slow"}; // last: its tasks use all of the above
};

} // namespace AsciiTcp
