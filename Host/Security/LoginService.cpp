#include "Host/Security/LoginService.h"

#include <utility>

namespace ZuHost
{

LoginService::LoginService(ZuRest::ResourceRouter& router, SecurityStore& archive, ITrail& trail,
                           std::filesystem::path const& folder, RightsTest isCurrent)
    : users(archive),
      sessions(users),
      setupCode(folder),
      accounts({users, sessions, hasher, words, setupCode, trail, std::move(isCurrent)}),
      resources(router, accounts)
{
}

LoginService::~LoginService() = default;

Sessions& LoginService::Callers() noexcept
{
    return sessions;
}

std::string LoginService::Fault() const
{
    return users.Fault();
}

void LoginService::OfferFirstAdministrator()
{
    setupCode.Offer();
}

} // namespace ZuHost
