#include "Host/Security/TokenFile.h"

#include "Host/Http/IGatekeeper.h"
#include "ZuRest/Caller.h"

#include <utility>

namespace ZuHost
{

TokenFile::TokenFile(std::string newToken) : token(std::move(newToken))
{
}

TokenFile::~TokenFile() = default;

void TokenFile::Set(std::string newToken)
{
    token.Set(std::move(newToken));
}

bool TokenFile::HasCallers() const noexcept
{
    return !token.IsEmpty();
}

Proof TokenFile::Find(Credentials const& credentials)
{
    if (!HasCallers() || credentials.authorization.empty())
    {
        return {};
    }
    if (!token.IsGiven(credentials.authorization))
    {
        return {{}, "", true};
    }
    return {KnownCaller{ZuCommon::Role::ADMINISTRATOR, CALLER, ""}, "", false};
}

bool TokenFile::IsCurrent(ZuRest::Caller const& caller) const noexcept
{
    return caller.name == CALLER;
}

} // namespace ZuHost
