#pragma once

#include "Host/Security/AccountResources.h"
#include "Host/Security/Accounts.h"
#include "Host/Security/PasswordHasher.h"
#include "Host/Security/Sessions.h"
#include "Host/Security/SetupCode.h"
#include "Host/Security/UserStore.h"
#include "Host/Security/WordList.h"

#include <filesystem>
#include <functional>

namespace ZuHost
{

class ITrail;
class SecurityStore;

/// The part of the host that knows people: users, passwords, sessions, and the resources for them.
class LoginService final
{
public:
    using RightsTest = std::function<bool(ZuRest::Caller const& caller)>;

    /// Registers the resources. The one-time code may go into a file in `folder`. `isCurrent` tells whether the sender of
    /// a request still has its rights. The other objects outlive this.
    LoginService(ZuRest::ResourceRouter& router, SecurityStore& archive, ITrail& trail,
                 std::filesystem::path const& folder, RightsTest isCurrent);
    ~LoginService(); ///< removes the resources

    LoginService(LoginService const&) = delete;
    LoginService& operator=(LoginService const&) = delete;

    /// The callers whom the gatekeeper knows by a session.
    Sessions& Callers() noexcept;

    /// As `UserStore::Fault`.
    std::string Fault() const;

    /// As `SetupCode::Offer`.
    void OfferFirstAdministrator();

private:
    UserStore users;
    Sessions sessions;
    PasswordHasher hasher;
    WordList words;
    SetupCode setupCode;
    Accounts accounts;
    AccountResources resources;
};

} // namespace ZuHost
