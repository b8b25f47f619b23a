#pragma once

#include "ZuApi/Signal.h"
#include "ZuControl/Control/CommandOrigin.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"

#include <functional>
#include <string>

namespace ZuControl
{

/// The notices between the services and the host: a service notifies the host of each client that it refuses, and the host
/// notifies the services of replaced files.
///
/// Threads: any thread may call any operation. Handlers run on the thread that notifies.
class ZUCONTROL_API ServiceNotices final
{
public:
    /// A client that a service does not admit, or a request that the role of its client does not allow.
    struct Refusal
    {
        ZuEthernetProtocol protocol{};
        CommandOrigin client;
        std::string what;   ///< "connection", "function 6"
        std::string reason; ///< as a part of a sentence: "it may not connect"
    };

    ServiceNotices();
    ~ServiceNotices();

    ServiceNotices(ServiceNotices const&) = delete;
    ServiceNotices& operator=(ServiceNotices const&) = delete;

    /// A service calls this for each refusal. An exception of a handler is logged.
    void NotifyRefusal(Refusal const& refusal) noexcept;

    /// `handler` must not block: a service calls it on the thread that serves its clients.
    [[nodiscard]] Zu::Subscription SubscribeToRefusals(std::function<void(Refusal const&)> handler);

    /// The host calls this when the files that parameters name may have other contents. Returns when each service has
    /// read its files. An exception of a handler is logged.
    void NotifyReplacedFiles() noexcept;

    /// `handler` reads files again. It may block.
    [[nodiscard]] Zu::Subscription SubscribeToReplacedFiles(std::function<void()> handler);

private:
    Zu::Signal<Refusal const&> refused;
    Zu::Signal<> filesReplaced;
};

} // namespace ZuControl
