#pragma once

#include "Host/Http/BearerToken.h"
#include "Host/Security/ICallerSource.h"

namespace ZuHost
{

/// The token of the option `--token`: its holder is an administrator.
class TokenFile final : public ICallerSource
{
public:
    static constexpr char const* CALLER = "token file";

    explicit TokenFile(std::string newToken); ///< empty: there is no such token
    ~TokenFile() override;

    TokenFile(TokenFile const&) = delete;
    TokenFile& operator=(TokenFile const&) = delete;

    /// Requests that begin from now on must show `newToken` in place of the previous one. An open stream stays open.
    void Set(std::string newToken);

    bool HasCallers() const noexcept override;
    Proof Find(Credentials const& credentials) override;
    bool IsCurrent(ZuRest::Caller const& caller) const noexcept override;

private:
    CurrentToken token;
};

} // namespace ZuHost
