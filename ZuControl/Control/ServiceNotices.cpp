#include "ZuControl/Control/ServiceNotices.h"

#include "ZuApi/Guard.h"

#include <utility>

namespace ZuControl
{

ServiceNotices::ServiceNotices() = default;

ServiceNotices::~ServiceNotices() = default;

void ServiceNotices::NotifyRefusal(Refusal const& refusal) noexcept
{
    ZU_GUARD_BOUNDARY([&] { refused.Fire(refusal); });
}

Zu::Subscription ServiceNotices::SubscribeToRefusals(std::function<void(Refusal const&)> handler)
{
    return refused.Subscribe(std::move(handler));
}

void ServiceNotices::NotifyReplacedFiles() noexcept
{
    ZU_GUARD_BOUNDARY([this] { filesReplaced.Fire(); });
}

Zu::Subscription ServiceNotices::SubscribeToReplacedFiles(std::function<void()> handler)
{
    return filesReplaced.Subscribe(std::move(handler));
}

} // namespace ZuControl
