#include "Host/Service/ServiceNotifier.h"

#include <systemd/sd-daemon.h>
#include <utility>

namespace ZuHost
{

namespace
{

void SendToSystemd(std::string const& message)
{
    sd_notify(0, message.c_str()); // without a service manager it does nothing; a lost message cannot be helped
}

uint64 WatchdogUsecOfEnvironment()
{
    uint64_t usec = 0;
    return sd_watchdog_enabled(0, &usec) > 0 ? usec : 0;
}

} // namespace

ServiceNotifier::ServiceNotifier() : ServiceNotifier(&SendToSystemd, WatchdogUsecOfEnvironment())
{
}

ServiceNotifier::ServiceNotifier(Send newSend, uint64 newWatchdogUsec)
    : send(std::move(newSend)), periodUsec(newWatchdogUsec / 2)
{
}

ServiceNotifier::~ServiceNotifier() = default;

void ServiceNotifier::TellReady(std::string const& status)
{
    send("READY=1\nSTATUS=" + status);
}

void ServiceNotifier::TellReloading(uint64 nowUsec)
{
    send("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(nowUsec) + "\nSTATUS=Reads its files again.");
}

void ServiceNotifier::TellStopping()
{
    send("STOPPING=1\nSTATUS=Stops in order.");
}

void ServiceNotifier::Beat(std::set<std::string> const& faults, uint64 nowUsec)
{
    std::string const fault = faults.empty() ? "" : *faults.begin();
    if (fault != shownFault)
    {
        send("STATUS=" + (fault.empty() ? "Runs without faults." : fault));
        shownFault = fault;
    }
    bool const isDue = lastBeatUsec == 0 || nowUsec - lastBeatUsec >= periodUsec;
    if (periodUsec > 0 && faults.empty() && isDue)
    {
        send("WATCHDOG=1");
        lastBeatUsec = nowUsec;
    }
}

} // namespace ZuHost
