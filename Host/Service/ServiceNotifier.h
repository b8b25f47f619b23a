#pragma once

#include "wApi/wTypes.h"

#include <functional>
#include <set>
#include <string>

namespace ZuHost
{

/// Tells the service manager, systemd, what the host does, and that it is alive. Does nothing for a host that no service
/// manager has started.
///
/// The main thread calls all operations but `Beat`, which the thread of the watch calls.
class ServiceNotifier final
{
public:
    /// Sends a message in the form of `sd_notify`. It must not throw.
    using Send = std::function<void(std::string const& message)>;

    /// The service manager that the environment names.
    ServiceNotifier();

    /// `newWatchdogUsec` is the longest time between two beats; 0: no beats are wanted.
    ServiceNotifier(Send newSend, uint64 newWatchdogUsec);
    ~ServiceNotifier();

    ServiceNotifier(ServiceNotifier const&) = delete;
    ServiceNotifier& operator=(ServiceNotifier const&) = delete;

    /// The host serves its clients. `status` is a sentence for people.
    void TellReady(std::string const& status);

    /// The host reads its files again. `TellReady` ends that. `nowUsec` is a time of the monotonic clock.
    void TellReloading(uint64 nowUsec);

    void TellStopping();

    /// Sends a beat if the last one is as old as half of the longest time, and `faults` is empty. With faults the service
    /// manager shows the first of them and, after the longest time, starts the host again. `nowUsec` is a time of the
    /// monotonic clock.
    void Beat(std::set<std::string> const& faults, uint64 nowUsec);

private:
    Send const send;
    uint64 const periodUsec; // 0: no beats

    // Of the thread of the watch.
    uint64 lastBeatUsec = 0;
    std::string shownFault;
};

} // namespace ZuHost
